// The system's conversions between wide and narrow text, and upper case.
//
//     const int length = MultiByteToWideChar(CP_UTF8, 0, narrow, -1, nullptr, 0);      // with the NUL
//     std::vector<wchar_t> wide(static_cast<std::size_t>(length));
//     MultiByteToWideChar(CP_UTF8, 0, narrow, -1, wide.data(), length);
//
// For text of the library use krtpal/common/text.h, which converts whole strings of any length.
//
// On Linux wide text is UTF-32 and narrow text is UTF-8 in every code page.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_TEXT_H
#define KRTPAL_TEXT_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Code pages. On Linux all three mean UTF-8.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_THREAD_ACP = 3;
inline constexpr UINT CP_UTF8 = 65001;

/// Flags of the conversions. The ERR_INVALID flags make malformed text a failure. MB_PRECOMPOSED and
/// WC_NO_BEST_FIT_CHARS have no effect and are rejected with CP_UTF8, as on Windows.
inline constexpr DWORD MB_PRECOMPOSED = 0x00000001;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x00000008;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x00000080;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x00000400;

/// Returns the number of wchar_t that are stored, or that are needed if `room` is 0. `length` counts bytes;
/// -1 means up to and including the NUL, which is then counted and converted, too.
/// Without MB_ERR_INVALID_CHARS each malformed piece becomes one U+FFFD. A piece is a lead byte with the
/// bytes that could continue it, including a second byte that makes the form overlong, a surrogate or too
/// large; every other byte is a piece of its own.
/// Fails with 0 and ERROR_INVALID_PARAMETER for null text, a length of 0, negative counts or another code
/// page, ERROR_INVALID_FLAGS, ERROR_INSUFFICIENT_BUFFER if the room is too small,
/// ERROR_NO_UNICODE_TRANSLATION for malformed text with the flag.
KRTPAL_API int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, LPWSTR wide,
                                          int room);
/// Returns the number of bytes that are stored, or that are needed if `room` is 0. `length` counts wchar_t;
/// -1 as above. Without WC_ERR_INVALID_CHARS surrogates and values above U+10FFFF become U+FFFD.
/// REQUIRES: `defaultChar` and `usedDefaultChar` are null, since UTF-8 has every character.
/// Fails with 0 and the codes of MultiByteToWideChar; ERROR_INVALID_PARAMETER for a default character.
KRTPAL_API int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR narrow,
                                          int room, LPCSTR defaultChar, BOOL* usedDefaultChar);

/// Returns `count` and converts that many characters to upper case in place, each by itself by Unicode's
/// simple mapping, in every locale.
KRTPAL_API DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD count);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::CP_ACP, krtpal::CP_THREAD_ACP, krtpal::CP_UTF8, krtpal::MB_PRECOMPOSED,                    \
        krtpal::MB_ERR_INVALID_CHARS, krtpal::WC_ERR_INVALID_CHARS, krtpal::WC_NO_BEST_FIT_CHARS,            \
        krtpal::MultiByteToWideChar, krtpal::WideCharToMultiByte, krtpal::CharUpperBuffW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
