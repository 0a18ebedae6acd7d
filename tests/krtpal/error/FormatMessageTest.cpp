#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/memory.h"
#include "support/Expect.h"
#include "support/Rows.h"
#include "support/Wine.h"

#include <algorithm>
#include <string>

namespace {

constexpr DWORD kFromString = FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY;

/// Arguments 1 to 4 are texts, 5 and 6 the numbers 42 and -3, 7 a character, 8 to 10 the numbers 6, 3 and 7,
/// 11 to 99 texts.
std::va_list* Arguments() {
    static DWORD_PTR arguments[99];
    static const wchar_t* const texts[] = {L"one", L"%1two\n", L"", L"four", L"many"};
    const DWORD_PTR numbers[] = {42, static_cast<DWORD_PTR>(-3), L'Z', 6, 3, 7};
    for (std::size_t i = 0; i < 99; ++i) {
        arguments[i] = reinterpret_cast<DWORD_PTR>(texts[std::min<std::size_t>(i, 4)]);
    }
    std::ranges::copy(numbers, arguments + 4);
    return reinterpret_cast<std::va_list*>(arguments);
}

/// The text, or "error N".
std::wstring Format(const wchar_t* source, DWORD flags = kFromString, std::va_list* arguments = Arguments()) {
    wchar_t* text = nullptr;
    SetLastError(0);
    const DWORD length = FormatMessageW(flags | FORMAT_MESSAGE_ALLOCATE_BUFFER, source, 0, 0,
                                        reinterpret_cast<LPWSTR>(&text), 300, arguments);
    if (length == 0) {
        EXPECT_EQ(text, nullptr);
        return L"error " + std::to_wstring(GetLastError());
    }
    const std::wstring result = text;
    EXPECT_EQ(result.size(), length);
    LocalFree(text);
    return result;
}

} // namespace

TEST(FormatMessage, RefusesBadArguments) {
    wchar_t buffer[8];
    EXPECT_FAILS(FormatMessageW(kFromString, L"x", 0, 0, nullptr, 8, Arguments()), ERROR_INVALID_PARAMETER);
    EXPECT_FAILS(FormatMessageW(0, L"x", 0, 0, buffer, 8, Arguments()), ERROR_INVALID_PARAMETER);
    if (!RunsUnderWine()) { // which sets no last error
        EXPECT_FAILS(FormatMessageW(kFromString, nullptr, 0, 0, buffer, 8, Arguments()),
                     ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(Format(L"%1", kFromString, nullptr), L"error 87");
    EXPECT_EQ(Format(L"no inserts %%", kFromString, nullptr), L"no inserts %");
}

TEST(FormatMessage, FillsTemplatesAsTheSystemDoes) {
    for (const auto& row : ReadRows("krtpal/format_messages.tsv")) {
        EXPECT_EQ(Format(krtpal::WideFromUtf8(row[0]).c_str()), krtpal::WideFromUtf8(row[1])) << row[0];
    }
    DWORD_PTR null[1] = {0};
    EXPECT_EQ(Format(L"[%1]", kFromString, reinterpret_cast<std::va_list*>(null)), L"[(null)]");
}

TEST(FormatMessage, TakesSixtyFourBitArgumentsWhereAnArgumentHasThem) {
    if constexpr (sizeof(DWORD_PTR) < 8) {
        GTEST_SKIP() << "an argument has 32 bits here";
    }
    EXPECT_EQ(Format(L"%6!I64d!|%6!I64x!|%6!lld!"), L"-3|fffffffffffffffd|-3");
}

TEST(FormatMessage, LeavesInsertsAloneAndJoinsLinesOnDemand) {
    constexpr DWORD flags = FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_IGNORE_INSERTS;
    EXPECT_EQ(Format(L"%1 %99!d! %% %! %z a%nb%rc\nd%0e", flags, nullptr),
              L"%1 %99!d! %% %! %z a\r\nb\rc\r\nd");
    EXPECT_EQ(Format(L"x%", flags, nullptr), L"error 87");
    EXPECT_EQ(Format(L"a\nb\r\nc\n\nd%ne %1", kFromString | FORMAT_MESSAGE_MAX_WIDTH_MASK),
              L"a b c  d\r\ne one");
}

TEST(FormatMessage, FillsBuffersOfTheCallerOrMakesOnesOfTheSizeAskedFor) {
    wchar_t buffer[8];
    for (const DWORD size : {1U, 3U, 4U}) {
        EXPECT_FAILS(FormatMessageW(kFromString, L"a%1", 0, 0, buffer, size, Arguments()),
                     ERROR_INSUFFICIENT_BUFFER);
    }
    EXPECT_EQ(FormatMessageW(kFromString, L"a%1", 0, 0, buffer, 5, Arguments()), 4U);
    EXPECT_STREQ(buffer, L"aone");

    wchar_t* text = nullptr;
    ASSERT_EQ(FormatMessageW(kFromString | FORMAT_MESSAGE_ALLOCATE_BUFFER, L"ab", 0, 0,
                             reinterpret_cast<LPWSTR>(&text), 1000, Arguments()),
              2U);
    std::fill(text + 3, text + 1000, L'x'); // an address sanitizer looks at this
    EXPECT_EQ(text[1], L'b');
    LocalFree(text);
    const std::wstring whole(70'000, L'x');
    EXPECT_EQ(Format(whole.c_str()), whole);
}

TEST(FormatMessage, GivesSystemTexts) {
    wchar_t lines[200];
    wchar_t joined[200];
    constexpr DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    for (const DWORD language : {0U, 1024U, 0x409U}) {
        const DWORD length =
            FormatMessageW(flags, nullptr, ERROR_FILE_NOT_FOUND, language, lines, 200, nullptr);
        ASSERT_GT(length, 2U) << language;
        EXPECT_STREQ(lines + length - 2, L"\r\n");
        ASSERT_EQ(FormatMessageW(flags | FORMAT_MESSAGE_MAX_WIDTH_MASK, nullptr, ERROR_FILE_NOT_FOUND,
                                 language, joined, 200, nullptr),
                  length - 1);
        EXPECT_EQ(std::wstring(lines, length - 2) + L" ", joined);
    }
    EXPECT_FAILS(FormatMessageW(flags, nullptr, 0x0EEEEEEE, 0, lines, 200, nullptr), ERROR_MR_MID_NOT_FOUND);
}

#ifndef _WIN32
TEST(FormatMessage, RefusesWhatItDoesNotSupport) {
    EXPECT_EQ(Format(L"%5!e!"), L"error 50");
    EXPECT_EQ(Format(L"%5!99999d!"), L"error 87");
    EXPECT_EQ(Format(L"x", kFromString | 40), L"error 50");
    EXPECT_EQ(Format(L"x", kFromString | FORMAT_MESSAGE_FROM_HMODULE), L"error 50");
    EXPECT_EQ(Format(L"x", kFromString | 0x10000), L"error 87");
    EXPECT_EQ(Format(L"%1", FORMAT_MESSAGE_FROM_STRING), L"error 50");
    wchar_t buffer[100];
    EXPECT_FAILS(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, ERROR_FILE_NOT_FOUND, 0x407, buffer, 100,
                                nullptr),
                 ERROR_RESOURCE_LANG_NOT_FOUND);
}
#else
SKIPPED_TEST(FormatMessage, RefusesWhatItDoesNotSupport, "the system supports it")
#endif
