#include "bss/CStdStr.h"

#include <algorithm>
#include <cwchar>
#include <string_view>

namespace bss {

namespace {

// Returns the format with the conversions that mean the same to every C library.
std::wstring PortableFormat(std::wstring_view format) {
    std::wstring portable;
    while (!format.empty()) {
        const std::size_t percent = format.find(L'%');
        portable += format.substr(0, percent);
        format.remove_prefix(std::min(percent, format.size()));
        if (format.empty()) {
            break;
        }
        const std::size_t sizeAt = std::min(format.find_first_not_of(L"-+ #0123456789.*", 1), format.size());
        portable += format.substr(0, sizeAt);
        format.remove_prefix(sizeAt);
        std::size_t kindAt = 0;
        if (format.substr(0, 3) == L"I64") {
            portable += L"ll";
            kindAt = 3;
        } else {
            kindAt = std::min(format.find_first_not_of(L"hlwLqjzt"), format.size());
        }
        const std::wstring_view size = format.substr(0, kindAt);
        const wchar_t kind = kindAt < format.size() ? format[kindAt] : L'\0';
        const bool isText = kind == L's' || kind == L'S' || kind == L'c' || kind == L'C';
        if (isText) {
            const bool isWide = size.empty() ? kind == L's' || kind == L'c' : size[0] != L'h';
            portable += isWide ? L'l' : L'h';
            portable += kind == L's' || kind == L'S' ? L's' : L'c';
        } else {
            portable += size == L"I64" ? std::wstring_view() : size;
            portable += format.substr(kindAt, 1);
        }
        format.remove_prefix(std::min(kindAt + 1, format.size()));
    }
    return portable;
}

} // namespace

std::wstring FormatWideText(const wchar_t* format, std::va_list arguments) {
    const std::wstring portable = PortableFormat(format);
    constexpr std::size_t kMostCharacters = std::size_t{1} << 24;
    // vswprintf does not report the required size.
    for (std::size_t room = 256; room <= kMostCharacters; room *= 4) {
        std::wstring text(room, L'\0');
        std::va_list again;
        va_copy(again, arguments);
        const int length = std::vswprintf(text.data(), room, portable.c_str(), again);
        va_end(again);
        if (length >= 0 && static_cast<std::size_t>(length) < room) {
            text.resize(static_cast<std::size_t>(length));
            return text;
        }
    }
    return {};
}

} // namespace bss
