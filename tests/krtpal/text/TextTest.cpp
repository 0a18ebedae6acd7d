#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/text.h"
#include "support/Expect.h"
#include "support/Hex.h"
#include "support/Rows.h"
#include "support/Wine.h"

#include <vector>

namespace {

std::wstring FromUnits(const std::vector<int>& units) {
    krtpal::Utf16String text;
    for (const int unit : units) {
        text += static_cast<krtpal::Utf16Unit>(unit);
    }
    return std::wstring(krtpal::WideFromUtf16(krtpal::Utf16View(text)));
}

std::vector<int> UnitsOf(std::wstring_view text) {
    const auto units = krtpal::Utf16FromWide(text);
    return {units.begin(), units.end()};
}

/// By the call itself: the text, or "error N".
std::wstring Widen(std::string_view bytes, DWORD flags, UINT codePage = CP_UTF8) {
    wchar_t buffer[100];
    SetLastError(0);
    const int count =
        MultiByteToWideChar(codePage, flags, bytes.data(), static_cast<int>(bytes.size()), buffer, 100);
    return count == 0 ? L"error " + std::to_wstring(GetLastError())
                      : std::wstring(buffer, static_cast<std::size_t>(count));
}

} // namespace

TEST(Utf16, AnySequenceOfUnitsComesBack) {
    const std::vector<std::vector<int>> rows = {
        {},       {0},      {'a', 0, 'b'},    {0xFFFE, 0xFFFF, 0xFEFF},         {0xD83D, 0xDE00},
        {0xD83D}, {0xDE00}, {0xDE00, 0xD83D}, {0xD83D, 0xD83D, 0xDE00, 0xDE00}, {0xD83D, 'x', 0xDE00}};
    for (const auto& row : rows) {
        const std::wstring wide = FromUnits(row);
        EXPECT_EQ(UnitsOf(wide), row);
        EXPECT_EQ(krtpal::Utf16Length(wide), row.size());
    }
    std::vector<int> all;
    for (int unit = 0xFFFF; unit >= 0; --unit) {
        all.push_back(unit);
    }
    EXPECT_EQ(UnitsOf(FromUnits(all)), all);
    EXPECT_EQ(UnitsOf(L"\U0010FFFF"), (std::vector<int>{0xDBFF, 0xDFFF}));
    if constexpr (sizeof(wchar_t) == 4) {
        const std::wstring beyond(1, static_cast<wchar_t>(0x110000));
        EXPECT_EQ(UnitsOf(beyond), (std::vector<int>{0xFFFD}));
        EXPECT_EQ(krtpal::Utf16Length(beyond), 1U);
    }
}

TEST(Utf8, BadArgumentsAreRefused) {
    wchar_t wide[4];
    char narrow[4];
    EXPECT_FAILS(MultiByteToWideChar(CP_UTF8, 0, "a", 0, wide, 4), ERROR_INVALID_PARAMETER);
    EXPECT_FAILS(MultiByteToWideChar(CP_UTF8, 0, nullptr, 1, wide, 4), ERROR_INVALID_PARAMETER);
    EXPECT_FAILS(MultiByteToWideChar(CP_UTF8, 0, "a", 1, nullptr, 4), ERROR_INVALID_PARAMETER);
    EXPECT_FAILS(MultiByteToWideChar(12345, 0, "a", 1, wide, 4), ERROR_INVALID_PARAMETER);
    EXPECT_FAILS(WideCharToMultiByte(CP_UTF8, 0, L"a", 0, narrow, 4, nullptr, nullptr),
                 ERROR_INVALID_PARAMETER);
    EXPECT_FAILS(MultiByteToWideChar(CP_UTF8, 0x80, "a", 1, wide, 4), ERROR_INVALID_FLAGS);
    EXPECT_FAILS(MultiByteToWideChar(CP_UTF8, 0, "abcde", 5, wide, 4), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_FAILS(WideCharToMultiByte(CP_UTF8, 0, L"abc\u00E9", 4, narrow, 4, nullptr, nullptr),
                 ERROR_INSUFFICIENT_BUFFER);
    if (!RunsUnderWine()) { // which takes default characters and leaves them unused
        BOOL used = FALSE;
        EXPECT_FAILS(WideCharToMultiByte(CP_UTF8, 0, L"a", 1, narrow, 4, nullptr, &used),
                     ERROR_INVALID_PARAMETER);
        EXPECT_FAILS(WideCharToMultiByte(CP_UTF8, 0, L"a", 1, narrow, 4, "?", nullptr),
                     ERROR_INVALID_PARAMETER);
    }
}

TEST(Utf8, CountsIncludeTheNulOnlyForLengthMinusOne) {
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a\xC3\xA9", -1, nullptr, 0), 3);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a\xC3\xA9", 3, nullptr, 0), 2);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"a\u00E9", -1, nullptr, 0, nullptr, nullptr), 4);
    EXPECT_EQ(Widen(std::string_view("a\0b", 3), 0), std::wstring(L"a\0b", 3));
}

TEST(Utf8, MalformedTextIsReplacedByPiecesOrRefused) {
    for (const auto& row : ReadRows("krtpal/malformed_utf8.tsv")) {
        EXPECT_EQ(Widen(FromHex(row[0]), 0), krtpal::WideFromUtf8(row[1])) << row[0];
        EXPECT_EQ(Widen(FromHex(row[0]), MB_ERR_INVALID_CHARS), L"error 1113") << row[0];
    }
}

TEST(Utf8, LoneSurrogatesAreReplacedOrRefused) {
    const wchar_t lone[] = {L'a', static_cast<wchar_t>(0xD800), L'b'};
    EXPECT_EQ(krtpal::Utf8FromWide({lone, 3}), "a\xEF\xBF\xBD\x62");
    EXPECT_FAILS(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, lone, 3, nullptr, 0, nullptr, nullptr),
                 ERROR_NO_UNICODE_TRANSLATION);
}

TEST(Utf8, EveryCharacterComesBack) {
    std::wstring all;
    for (char32_t c = 0; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 13) {
        if (c >= 0xD800 && c <= 0xDFFF) {
            continue;
        }
        if (sizeof(wchar_t) == 4 || c < 0x10000) {
            all += static_cast<wchar_t>(c);
        } else {
            all += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10U));
            all += static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FFU));
        }
    }
    EXPECT_EQ(krtpal::WideFromUtf8(krtpal::Utf8FromWide(all)), all);
    EXPECT_EQ(krtpal::Utf8FromWide(L"\u00FC\u20AC\U0001F600"), "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(krtpal::Utf8FromWide(L""), "");
}

TEST(NarrowText, PassesThroughTheCodePage) {
    EXPECT_EQ(krtpal::WidenText("plain"), L"plain");
    EXPECT_EQ(krtpal::NarrowText(L"plain"), "plain");
    EXPECT_EQ(krtpal::WidenText(""), L"");
    EXPECT_EQ(krtpal::NarrowText(std::wstring_view(L"a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(Widen("plain", 0, CP_ACP), L"plain");
    EXPECT_EQ(Widen("plain", 0, CP_THREAD_ACP), L"plain");
    // A letter that the usual code pages have
    EXPECT_EQ(krtpal::WidenText(krtpal::NarrowText(L"\u00E9")), L"\u00E9");
}
