#include "bss/CStdStr.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using Text = bss::CStdStr<wchar_t>;

TEST(StdStr, FormatsWideTextByPlainConversions) {
    Text text;
    text.Format(L"%s|%5s|%-4s|%.2s|%c|%%", L"\u20AC", L"ab", L"cd", L"xyz", L'\u00B5');
    EXPECT_EQ(text, L"\u20AC|   ab|cd  |xy|\u00B5|%");
    text.Format(L"%S|%hs|%ls|%ws|%hc", "narrow", "narrow", L"wide", L"wide", 'c');
    EXPECT_EQ(text, L"narrow|narrow|wide|wide|c");
    text.Format(L"%04x %d %u %I64d %lld %.3f %*d", 0x4B0, -1, 7U, 1LL << 40, 1LL << 40, 0.5, 4, 9);
    EXPECT_EQ(text, L"04b0 -1 7 1099511627776 1099511627776 0.500    9");
    text = L"self";
    text.Format(L"%s and %s", text.c_str(), std::wstring(5'000, L'x').c_str());
    EXPECT_EQ(text, L"self and " + std::wstring(5'000, L'x'));
    text.Format(L"");
    EXPECT_EQ(text, L"");
}

TEST(StdStr, IsAStandardStringThatTrims) {
    static_assert(sizeof(Text) == sizeof(std::wstring));
    Text text(L" \t two words\r\n");
    EXPECT_EQ(Text(text).TrimLeft(), L"two words\r\n");
    EXPECT_EQ(Text(text).TrimRight(), L" \t two words");
    EXPECT_EQ(text.Trim(), L"two words");
    EXPECT_EQ(text.TrimRight(L"sd"), L"two wor");
    EXPECT_EQ(Text(L" \n ").Trim(), L"");
    text = static_cast<const wchar_t*>(nullptr);
    EXPECT_EQ(text, L"");
    const std::wstring plain = Text(L"a") + L"b";
    EXPECT_EQ(plain, L"ab");
}

} // namespace
