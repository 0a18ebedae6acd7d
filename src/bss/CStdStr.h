// CStdStr: the library's wide string class, a standard string with formatting and trimming.
//
//     CStdStr<wchar_t> text;
//     text.Format(L"%d.%d of %s", 1, 2, L"file");     // wide text, on every system
//     text.TrimRight(L" .");
//
// It has the layout and the operations of std::basic_string, and converts from and to it. Only
// CStdStr<wchar_t> can format.
//
// Threads: objects are values.

#ifndef BSS_CSTDSTR_H
#define BSS_CSTDSTR_H

#include "bss/Export.h"

#include <cstdarg>
#include <string>
#include <utility>

namespace bss {

/// Formats as printf does, with the conversions of this library's wide interfaces: %s and %c take wide text,
/// %S, %hs and %hc narrow text; I64 is the size prefix of 64-bit integers.
/// Returns the text. Returns an empty text if it can't be formed: narrow text that is not valid in the
/// program's locale, or more than 16 million characters.
/// REQUIRES: the arguments match the format; `format` is not null.
KRTBSS_API std::wstring FormatWideText(const wchar_t* format, std::va_list arguments);

/// A std::basic_string with formatting and trimming.
template <class Character>
class CStdStr : public std::basic_string<Character> {
    using Base = std::basic_string<Character>;

public:
    using Base::Base;
    /// Makes an empty text.
    CStdStr() = default;
    /// Copies the text of a standard string.
    CStdStr(const Base& text) : Base(text) {}
    /// Takes the text of a standard string.
    CStdStr(Base&& text) noexcept : Base(std::move(text)) {}
    /// Copies the text. Null gives an empty text.
    CStdStr(const Character* text) : Base(text == nullptr ? Base() : Base(text)) {}

    using Base::operator=;
    /// Replaces the text. Null gives an empty text.
    CStdStr& operator=(const Character* text) { return *this = CStdStr(text); }

    /// Replaces the text by the formatted arguments, which may point into it. See FormatWideText.
    void Format(const Character* format, ...) {
        std::va_list arguments;
        va_start(arguments, format);
        FormatV(format, arguments);
        va_end(arguments);
    }
    /// Replaces the text by the formatted arguments. See Format.
    void FormatV(const Character* format, std::va_list arguments) {
        *this = FormatWideText(format, arguments);
    }

    /// Removes white space at both ends. Returns this object.
    CStdStr& Trim() { return TrimRight().TrimLeft(); }
    /// Removes the characters of `set` at the beginning. Returns this object.
    CStdStr& TrimLeft(const Character* set = kWhiteSpace) {
        this->erase(0, this->find_first_not_of(set));
        return *this;
    }
    /// Removes the characters of `set` at the end. Returns this object.
    CStdStr& TrimRight(const Character* set = kWhiteSpace) {
        this->erase(this->find_last_not_of(set) + 1); // npos + 1 is 0
        return *this;
    }

private:
    /// The default set of the Trim operations: the white space of the C locale.
    static constexpr Character kWhiteSpace[] = {' ', '\t', '\n', '\v', '\f', '\r', 0};
};

} // namespace bss

#endif
