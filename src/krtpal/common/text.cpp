#include "krtpal/common/text.h"

#include "krtpal/text.h"

#include <cstring>

namespace krtpal {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The system's calls count in int: longer text is converted in pieces that do not split a character.
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
    Utf16String units(Utf16Length(text), 0);
    PutUtf16(text, units.data());
    return units;
}

std::wstring DecodeUtf16(Utf16View units) {
    std::wstring text;
    TakeUtf16(units.data(), units.size(), text);
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

void* PutUtf16(std::wstring_view text, void* bytes) {
    auto* target = static_cast<unsigned char*>(bytes);
    if constexpr (sizeof(wchar_t) == sizeof(Utf16Unit)) {
        std::memcpy(target, text.data(), sizeof(Utf16Unit) * text.size());
        return target + sizeof(Utf16Unit) * text.size();
    }
    const auto put = [&target](char32_t value) {
        const auto unit = static_cast<Utf16Unit>(value);
        std::memcpy(target, &unit, sizeof(unit));
        target += sizeof(unit);
    };
    for (const wchar_t character : text) {
        const auto codePoint = static_cast<char32_t>(character);
        if (codePoint < 0x10000) {
            put(codePoint);
        } else if (codePoint <= kLastCodePoint) {
            put(0xD800 + ((codePoint - 0x10000) >> 10U));
            put(0xDC00 + ((codePoint - 0x10000) & 0x3FFU));
        } else {
            put(kReplacement);
        }
    }
    return target;
}

void TakeUtf16(const void* bytes, std::size_t count, std::wstring& text) {
    const auto* const source = static_cast<const unsigned char*>(bytes);
    text.resize(count);
    if constexpr (sizeof(wchar_t) == sizeof(Utf16Unit)) {
        std::memcpy(text.data(), source, sizeof(Utf16Unit) * count);
        return;
    }
    const auto unitAt = [source](std::size_t i) {
        Utf16Unit unit = 0;
        std::memcpy(&unit, source + sizeof(unit) * i, sizeof(unit));
        return static_cast<char32_t>(unit);
    };
    wchar_t* target = text.data();
    for (std::size_t i = 0; i < count; ++i) {
        char32_t value = unitAt(i);
        if (IsHighSurrogate(value) && i + 1 < count && IsLowSurrogate(unitAt(i + 1))) {
            value = 0x10000 + ((value - 0xD800) << 10U) + (unitAt(++i) - 0xDC00U);
        }
        *target++ = static_cast<wchar_t>(value);
    }
    text.resize(static_cast<std::size_t>(target - text.data()));
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

} // namespace krtpal
