// Paths of files and their parts.
//
//     wchar_t drive[_MAX_DRIVE], folder[_MAX_DIR], name[_MAX_FNAME], extension[_MAX_EXT];
//     _wsplitpath_s(L"/opt/suite/Control.exe", drive, _MAX_DRIVE, folder, _MAX_DIR, name, _MAX_FNAME,
//                   extension, _MAX_EXT);        // "", "/opt/suite/", "Control", ".exe"
//
// On Linux there are no drives and no short forms, and a backslash is a character of a name.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_PATH_H
#define KRTPAL_PATH_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#include <cstdlib>

#ifdef _WIN32
#include <stdlib.h>
#else

namespace krtpal {

inline constexpr SIZE_T _MAX_DRIVE = 3;   // NOLINT(bugprone-reserved-identifier)
inline constexpr SIZE_T _MAX_DIR = 256;   // NOLINT(bugprone-reserved-identifier)
inline constexpr SIZE_T _MAX_FNAME = 256; // NOLINT(bugprone-reserved-identifier)
inline constexpr SIZE_T _MAX_EXT = 256;   // NOLINT(bugprone-reserved-identifier)

/// The parts, each with its NUL: folder with the last slash, name, extension from the last point on. Any
/// buffer may be null with room 0. EINVAL for a null path, ERANGE if a part does not fit; then all parts are
/// empty.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
KRTPAL_API int _wsplitpath_s(LPCWSTR path, LPWSTR drive, SIZE_T driveRoom, LPWSTR folder, SIZE_T folderRoom,
                             LPWSTR name, SIZE_T nameRoom, LPWSTR extension, SIZE_T extensionRoom);

/// The path as it is, since nothing is shortened here. The length without NUL; the length with NUL if that is
/// over `room`; 0 and the last error if there is no such file.
KRTPAL_API DWORD WINAPI GetShortPathNameW(LPCWSTR path, LPWSTR shortPath, DWORD room);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::_MAX_DRIVE, krtpal::_MAX_DIR, krtpal::_MAX_FNAME, krtpal::_MAX_EXT, krtpal::_wsplitpath_s, \
        krtpal::GetShortPathNameW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
