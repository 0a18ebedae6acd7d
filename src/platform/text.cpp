#include "platform/text.h"

namespace platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// The system's calls count in int: longer text is converted in pieces that end where no character is split.
constexpr std::size_t kPiece = 1U << 28U;

bool ContinuesUtf8(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

std::wstring Widen(UINT codePage, std::string_view text) {
    std::wstring wide;
    while (!text.empty()) {
        std::size_t length = text.size();
        if (length > kPiece) {
            length = kPiece;
            while (length > kPiece - 4 && ContinuesUtf8(text[length])) {
                --length;
            }
        }
        const int count = static_cast<int>(length);
        const int room = MultiByteToWideChar(codePage, 0, text.data(), count, nullptr, 0);
        const std::size_t before = wide.size();
        wide.resize(before + static_cast<std::size_t>(room));
        MultiByteToWideChar(codePage, 0, text.data(), count, wide.data() + before, room);
        text.remove_prefix(length);
    }
    return wide;
}

std::string Narrow(UINT codePage, std::wstring_view text) {
    std::string narrow;
    while (!text.empty()) {
        std::size_t length = text.size();
        if (length > kPiece) {
            length = IsHighSurrogate(static_cast<char32_t>(text[kPiece - 1])) ? kPiece - 1 : kPiece;
        }
        const int count = static_cast<int>(length);
        const int room = WideCharToMultiByte(codePage, 0, text.data(), count, nullptr, 0, nullptr, nullptr);
        const std::size_t before = narrow.size();
        narrow.resize(before + static_cast<std::size_t>(room));
        WideCharToMultiByte(codePage, 0, text.data(), count, narrow.data() + before, room, nullptr, nullptr);
        text.remove_prefix(length);
    }
    return narrow;
}

} // namespace

Utf16String EncodeUtf16(std::wstring_view text) {
    if constexpr (sizeof(wchar_t) == sizeof(Utf16Unit)) {
        return {text.begin(), text.end()};
    }
    Utf16String units;
    units.reserve(text.size());
    for (const wchar_t character : text) {
        const auto codePoint = static_cast<char32_t>(character);
        if (codePoint < 0x10000) {
            units += static_cast<Utf16Unit>(codePoint);
        } else if (codePoint <= kLastCodePoint) {
            units += static_cast<Utf16Unit>(0xD800 + ((codePoint - 0x10000) >> 10U));
            units += static_cast<Utf16Unit>(0xDC00 + ((codePoint - 0x10000) & 0x3FFU));
        } else {
            units += static_cast<Utf16Unit>(kReplacement);
        }
    }
    return units;
}

std::wstring DecodeUtf16(Utf16View units) {
    if constexpr (sizeof(wchar_t) == sizeof(Utf16Unit)) {
        return {units.begin(), units.end()};
    }
    std::wstring text;
    text.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        if (IsHighSurrogate(unit) && i + 1 < units.size() && IsLowSurrogate(units[i + 1])) {
            text += static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10U) + (units[i + 1] - 0xDC00U));
            ++i;
        } else {
            text += static_cast<wchar_t>(unit);
        }
    }
    return text;
}

std::size_t CountUtf16(std::wstring_view text) {
    std::size_t count = text.size();
    if constexpr (sizeof(wchar_t) != sizeof(Utf16Unit)) {
        for (const wchar_t character : text) {
            const auto codePoint = static_cast<char32_t>(character);
            count += codePoint >= 0x10000 && codePoint <= kLastCodePoint ? 1 : 0;
        }
    }
    return count;
}

std::wstring WidenText(std::string_view text) {
    return Widen(CP_ACP, text);
}
std::string NarrowText(std::wstring_view text) {
    return Narrow(CP_ACP, text);
}
std::wstring WideFromUtf8(std::string_view text) {
    return Widen(CP_UTF8, text);
}
std::string Utf8FromWide(std::wstring_view text) {
    return Narrow(CP_UTF8, text);
}

} // namespace platform
