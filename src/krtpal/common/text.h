// Conversion between wide text, narrow text and UTF-16 code units.
//
// wchar_t holds UTF-16 on Windows and UTF-32 on Linux. Text that leaves the process, or is counted, summed or
// compared as bytes, consists of UTF-16 code units on both:
//
//     const auto units = krtpal::Utf16FromWide(text);    // no copy on Windows
//     Write(units.data(), units.size() * 2);
//     std::wstring back = krtpal::WideFromUtf16(krtpal::Utf16View(units));
//
// From UTF-16 and back the conversion is lossless for every sequence of 16-bit values: a lone surrogate,
// U+FFFE or NUL is preserved. From UTF-32 and back it is lossless except that a high surrogate directly
// before a low one becomes one character, and values above U+10FFFF become U+FFFD.
//
// Narrow text is in the current code page on Windows and UTF-8 on Linux:
//
//     std::wstring wide = krtpal::WidenText(message.what());
//     std::string narrow = krtpal::NarrowText(wide);
//
// No call fails: text that has no form in the target is replaced. Memory is the only failure
// (std::bad_alloc).
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_COMMON_TEXT_H
#define KRTPAL_COMMON_TEXT_H

#include "krtpal/export.h"

#include <string>
#include <string_view>
#include <type_traits>

namespace krtpal {

/// A 16-bit code unit: wchar_t itself if that has 16 bits.
using Utf16Unit = std::conditional_t<sizeof(wchar_t) == 2, wchar_t, char16_t>;
/// Code units of a text, as a view and as a string. Both may contain NULs.
using Utf16View = std::basic_string_view<Utf16Unit>;
using Utf16String = std::basic_string<Utf16Unit>;

/// The result of Utf16FromWide: a view of the argument on Windows, a string on Linux.
using Utf16Result = std::conditional_t<sizeof(wchar_t) == 2, Utf16View, Utf16String>;

/// Returns the code units of a wide text as a string on both systems.
KRTPAL_API Utf16String EncodeUtf16(std::wstring_view text);
/// Returns the wide text of code units as a string on both systems.
KRTPAL_API std::wstring DecodeUtf16(Utf16View units);
/// Returns the number of code units of a wide text. Callers use Utf16Length, which does not make a call on
/// Windows.
KRTPAL_API std::size_t CountUtf16(std::wstring_view text);

/// Returns the code units of a wide text without a copy on Windows, where the text must outlive the result.
template <typename Result = Utf16Result>
Result Utf16FromWide(std::wstring_view text) {
    if constexpr (std::is_same_v<Result, std::wstring_view>) {
        return text;
    } else {
        return EncodeUtf16(text);
    }
}

/// Returns the number of code units of a wide text.
inline std::size_t Utf16Length(std::wstring_view text) {
    return sizeof(wchar_t) == sizeof(Utf16Unit) ? text.size() : CountUtf16(text);
}

/// Returns the wide text of code units without a copy on Windows, where the units must outlive the result.
template <typename Result = std::conditional_t<sizeof(wchar_t) == 2, std::wstring_view, std::wstring>>
Result WideFromUtf16(Utf16View units) {
    if constexpr (std::is_same_v<Result, Utf16View>) {
        return units;
    } else {
        return DecodeUtf16(units);
    }
}

/// Stores the code units of a text at `bytes`, which need not be aligned. Returns the end of the stored
/// bytes.
/// REQUIRES: room for 2 * Utf16Length(text) bytes.
KRTPAL_API void* PutUtf16(std::wstring_view text, void* bytes);
/// Sets `text` to the wide text of `count` code units at `bytes`, which need not be aligned. Reuses the
/// memory of `text`.
KRTPAL_API void TakeUtf16(const void* bytes, std::size_t count, std::wstring& text);

/// Converts narrow text in the current code page (UTF-8 on Linux) to wide text of any length, NULs included.
/// Malformed text becomes U+FFFD, or the system's replacement on Windows.
KRTPAL_API std::wstring WidenText(std::string_view text);
/// Converts wide text to narrow text in the current code page. Characters without a form become U+FFFD, or
/// the system's replacement on Windows.
KRTPAL_API std::string NarrowText(std::wstring_view text);
/// Converts UTF-8 to wide text in every code page. Malformed text becomes U+FFFD.
KRTPAL_API std::wstring WideFromUtf8(std::string_view text);
/// Converts wide text to UTF-8 in every code page. Lone surrogates and values above U+10FFFF become U+FFFD.
KRTPAL_API std::string Utf8FromWide(std::wstring_view text);

} // namespace krtpal

#endif
