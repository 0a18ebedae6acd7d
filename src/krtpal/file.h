// Files of the C library by wide paths, and the texts of errno.
//
//     std::FILE* file = nullptr;
//     if (_wfopen_s(&file, L"\u00FCber.dat", L"rb") != 0) {
//         wchar_t text[260];
//         _wcserror_s(text, 260, errno);
//     }
//
// On Linux paths are UTF-8 on disk, a path that has no such form can't be opened, and nothing is translated
// in text mode. Files that are open are not inherited by programs that are started.
//
// Threads: errno belongs to the calling thread. All calls may be used from any thread.

#ifndef KRTPAL_FILE_H
#define KRTPAL_FILE_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cwchar>

#ifndef _WIN32

namespace krtpal {

using errno_t = int;

/// Modes are r, w or a, with + and b behind it. 0, or the error, which errno has too, and a null file. A
/// folder is refused with EACCES, whatever the mode; a path without a form in UTF-8 with EILSEQ.
KRTPAL_API errno_t _wfopen_s(std::FILE** file, LPCWSTR path, LPCWSTR mode); // NOLINT(bugprone-*)

/// The text of an errno value, cut to `size` characters with the NUL; "Unknown error" for others. EINVAL for
/// a null buffer or no room.
KRTPAL_API errno_t _wcserror_s(LPWSTR buffer, SIZE_T size, int number); // NOLINT(bugprone-*)
KRTPAL_API errno_t strerror_s(LPSTR buffer, SIZE_T size, int number);

} // namespace krtpal

#define KRTPAL_NAMES using krtpal::errno_t, krtpal::_wfopen_s, krtpal::_wcserror_s, krtpal::strerror_s
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
