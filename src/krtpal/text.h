// The system's conversions between wide and narrow text, and upper case.
//
// For text of the library use krtpal/common/text.h, which converts whole strings.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_TEXT_H
#define KRTPAL_TEXT_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_THREAD_ACP = 3;
inline constexpr UINT CP_UTF8 = 65001;

inline constexpr DWORD MB_PRECOMPOSED = 0x00000001;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x00000008;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x00000080;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x00000400;

/// Counts are of char and wchar_t; -1 as length takes the text to its NUL, which is converted too. With room
/// 0 the count that is needed is the result. 0 and the last error on failure.
KRTPAL_API int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, LPWSTR wide,
                                          int room);
KRTPAL_API int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR narrow,
                                          int room, LPCSTR defaultChar, BOOL* usedDefaultChar);

/// Each character in upper case where it has one of its own, in no language's special way. The count.
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
