// Conversion between wide text, narrow text and UTF-16 code units.
//
// wchar_t holds UTF-16 on Windows and UTF-32 on Linux. What leaves the process, or is counted, summed or
// compared as bytes, is UTF-16 code units on both:
//
//     const auto units = krtpal::Utf16FromWide(text);    // no copy on Windows
//     Write(units.data(), units.size() * 2);
//     std::wstring back = krtpal::WideFromUtf16(krtpal::Utf16View(units));
//
// That pair is lossless for any sequence of 16-bit values: a lone surrogate, U+FFFE or NUL passes unchanged.
// Narrow text is in the current code page on Windows and UTF-8 on Linux:
//
//     std::wstring wide = krtpal::WidenText(message.what());
//     std::string narrow = krtpal::NarrowText(wide);
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_COMMON_TEXT_H
#define KRTPAL_COMMON_TEXT_H

#include "krtpal/export.h"

#include <string>
#include <string_view>
#include <type_traits>

namespace krtpal {

/// One 16-bit code unit: wchar_t itself where that has 16 bits.
using Utf16Unit = std::conditional_t<sizeof(wchar_t) == 2, wchar_t, char16_t>;
using Utf16View = std::basic_string_view<Utf16Unit>;
using Utf16String = std::basic_string<Utf16Unit>;

/// The code units of a wide text: a view of the text where wchar_t is a code unit (it must outlive the
/// result), otherwise a string. Values above U+10FFFF, which no code units can express, become U+FFFD.
using Utf16Result = std::conditional_t<sizeof(wchar_t) == 2, Utf16View, Utf16String>;

KRTPAL_API Utf16String EncodeUtf16(std::wstring_view text);
KRTPAL_API std::wstring DecodeUtf16(Utf16View units);
KRTPAL_API std::size_t CountUtf16(std::wstring_view text);

template <typename Result = Utf16Result>
Result Utf16FromWide(std::wstring_view text) {
    if constexpr (std::is_same_v<Result, std::wstring_view>) {
        return text;
    } else {
        return EncodeUtf16(text);
    }
}

/// How many code units a wide text has.
inline std::size_t Utf16Length(std::wstring_view text) {
    return sizeof(wchar_t) == sizeof(Utf16Unit) ? text.size() : CountUtf16(text);
}

/// The wide text of code units: a view of them where wchar_t is a code unit (they must outlive the result).
template <typename Result = std::conditional_t<sizeof(wchar_t) == 2, std::wstring_view, std::wstring>>
Result WideFromUtf16(Utf16View units) {
    if constexpr (std::is_same_v<Result, Utf16View>) {
        return units;
    } else {
        return DecodeUtf16(units);
    }
}

/// The code units of a text as they stand in memory, 2 bytes each and Utf16Length of them, wherever `bytes`
/// lies. Answers their end.
KRTPAL_API void* PutUtf16(std::wstring_view text, void* bytes);
/// Sets the text of `count` such code units; its memory is used again.
KRTPAL_API void TakeUtf16(const void* bytes, std::size_t count, std::wstring& text);

/// Narrow text in the current code page (UTF-8 on Linux) to wide. What is no text there becomes U+FFFD or
/// what the system puts in its place. NULs inside pass.
KRTPAL_API std::wstring WidenText(std::string_view text);
/// Wide text to narrow, likewise.
KRTPAL_API std::string NarrowText(std::wstring_view text);
/// UTF-8 to wide, whatever the code page.
KRTPAL_API std::wstring WideFromUtf8(std::string_view text);
KRTPAL_API std::string Utf8FromWide(std::wstring_view text);

} // namespace krtpal

#endif
