#include "Text.h"

#include "bss/system/WGuid.h"
#include "krtpal/common/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace krtstore {

namespace {

constexpr char kHex[] = "0123456789abcdef";

void AppendUnit(std::wstring& text, unsigned unit) {
    text += L"\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
        text += static_cast<wchar_t>(kHex[unit >> static_cast<unsigned>(shift) & 0xFU]);
    }
}

bool IsHigh(unsigned unit) {
    return (unit & 0xFC00U) == 0xD800U;
}

bool IsLow(unsigned unit) {
    return (unit & 0xFC00U) == 0xDC00U;
}

/// What no character stands for, or what would not be seen.
bool IsEscaped(unsigned unit) {
    return unit < 0x20U || (unit >= 0x7FU && unit < 0xA0U) || (unit & 0xFFFEU) == 0xFFFEU ||
           (unit >= 0xFDD0U && unit < 0xFDF0U);
}

} // namespace

std::wstring Wide(std::string_view utf8) {
    return krtpal::WideFromUtf8(utf8);
}

std::string Utf8(std::wstring_view text) {
    return krtpal::Utf8FromWide(text);
}

std::string Quote(const std::wstring& text) {
    return Quote(Utf8(text));
}

std::string JsonText(const std::wstring& text) {
    const auto units = krtpal::Utf16FromWide(text);
    std::wstring quoted = L"\"";
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto unit = static_cast<char16_t>(units[i]);
        if (unit == u'"' || unit == u'\\') {
            quoted += {L'\\', static_cast<wchar_t>(unit)};
        } else if (unit == u'\n' || unit == u'\r' || unit == u'\t') {
            quoted += {L'\\', unit == u'\n' ? L'n' : unit == u'\r' ? L'r' : L't'};
        } else if (IsHigh(unit) && i + 1 < units.size() && IsLow(static_cast<char16_t>(units[i + 1]))) {
            quoted += krtpal::WideFromUtf16<std::wstring>(krtpal::Utf16View(units).substr(i, 2));
            ++i;
        } else if (IsHigh(unit) || IsLow(unit) || IsEscaped(unit)) {
            AppendUnit(quoted, unit);
        } else {
            quoted += static_cast<wchar_t>(unit);
        }
    }
    return Utf8(quoted + L"\"");
}

std::string JsonNumber(double value) {
    if (!std::isfinite(value)) {
        return std::isnan(value) ? "\"NaN\"" : value < 0.0 ? "\"-Infinity\"" : "\"Infinity\"";
    }
    if (value == 0.0 && std::signbit(value)) {
        return "-0.0"; // as an integer it would lose its sign
    }
    char text[32];
    const std::to_chars_result end = std::to_chars(std::begin(text), std::end(text), value);
    return {static_cast<const char*>(text), static_cast<const char*>(end.ptr)};
}

std::string UnitDigits(const std::wstring& text) {
    std::string digits;
    for (const auto unit : krtpal::Utf16FromWide(text)) {
        for (int shift = 12; shift >= 0; shift -= 4) {
            digits +=
                kHex[static_cast<unsigned>(static_cast<char16_t>(unit)) >> static_cast<unsigned>(shift) &
                     0xFU];
        }
    }
    return digits;
}

std::string ByteDigits(std::span<const unsigned char> bytes) {
    std::string digits;
    for (const unsigned char byte : bytes) {
        digits += digits.empty() ? "" : " ";
        digits += {kHex[byte >> 4U], kHex[byte & 0xFU]};
    }
    return digits;
}

std::string VersionText(std::int64_t packed) {
    std::string text;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        text.insert(0, "." + std::to_string(static_cast<std::uint64_t>(packed) >> shift & 0xFFU));
    }
    return std::to_string(packed >> 24) + text; // a number below zero stays one
}

std::string GuidText(const GUID& guid) {
    return Utf8(bss::WGuid::GetAsText(guid));
}

std::optional<GUID> ParseGuid(const std::wstring& text) {
    const bss::WGuid guid(text.c_str());
    std::wstring upper = text;
    std::transform(upper.begin(), upper.end(), upper.begin(), [](wchar_t c) {
        return c >= L'a' && c <= L'f' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
    });
    // The class takes any text; an identifier is what comes back the same.
    return guid.GetAsText() == upper ? std::optional(guid.GetGuid()) : std::nullopt;
}

std::optional<std::int64_t> ParseInteger(std::string_view text) {
    std::int64_t value = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    if (error != std::errc() || text.empty()) {
        return std::nullopt;
    }
    const std::string_view rest(end, static_cast<std::size_t>(last - end));
    const bool isWhole =
        rest.empty() || (rest[0] == '.' && rest.find_first_not_of('0', 1) == std::string_view::npos);
    return isWhole ? std::optional(value) : std::nullopt;
}

std::string Count(std::size_t number, const std::string& noun) {
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::size_t Width(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string PadRight(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, Width(text)), ' ');
}

std::string PadLeft(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, Width(text)), ' ') + text;
}

} // namespace krtstore
