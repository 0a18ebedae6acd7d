// Files of the C library by wide paths, and the texts of errno.
//
//     std::FILE* file = nullptr;
//     if (_wfopen_s(&file, L"\u00FCber.dat", L"rb") != 0) {
//         wchar_t text[260];
//         _wcserror_s(text, 260, errno);
//     }
//
// On Linux paths are stored as UTF-8, and text mode translates nothing. Files are not locked against other
// openers, whereas Windows opens a file for one writer or for readers. Programs that the process starts do
// not inherit open files.
//
// Errors are values of errno, both as the result and in errno. The last error is unchanged.
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

/// 0 or a value of errno.
using errno_t = int;

/// Returns 0 and sets `*file` to an open file, which the caller closes by std::fclose. Modes are r, w or a,
/// followed by + and b in any order.
/// Fails with null in `*file` and EINVAL for null or another mode, EILSEQ if the path has no form in UTF-8,
/// EACCES for a folder in every mode, otherwise with the system's error. Unlike Windows, a path through a
/// file fails with ENOTDIR instead of ENOENT, and null arguments do not end the program.
KRTPAL_API errno_t _wfopen_s(std::FILE** file, LPCWSTR path, LPCWSTR mode); // NOLINT(bugprone-*)

/// Returns 0 and stores the English text of an errno value, cut to `size` characters with the NUL; "Unknown
/// error" for another number.
/// Fails with EINVAL for a null buffer or a size of 0.
KRTPAL_API errno_t _wcserror_s(LPWSTR buffer, SIZE_T size, int number); // NOLINT(bugprone-*)
/// Stores narrow text. Otherwise as _wcserror_s.
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
