// Paths of files and their parts.
//
//     wchar_t drive[_MAX_DRIVE], folder[_MAX_DIR], name[_MAX_FNAME], extension[_MAX_EXT];
//     _wsplitpath_s(L"/opt/suite/Control.exe", drive, _MAX_DRIVE, folder, _MAX_DIR, name, _MAX_FNAME,
//                   extension, _MAX_EXT);        // "", "/opt/suite/", "Control", ".exe"
//
// On Linux paths have no drives and no short forms, and a backslash is an ordinary character of a name.
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

/// Sizes of buffers for the parts of a path, in characters with the NUL.
inline constexpr SIZE_T _MAX_DRIVE = 3;   // NOLINT(bugprone-reserved-identifier)
inline constexpr SIZE_T _MAX_DIR = 256;   // NOLINT(bugprone-reserved-identifier)
inline constexpr SIZE_T _MAX_FNAME = 256; // NOLINT(bugprone-reserved-identifier)
inline constexpr SIZE_T _MAX_EXT = 256;   // NOLINT(bugprone-reserved-identifier)

/// Returns 0 and stores the parts of a path, each with a NUL: the folder up to and including the last slash,
/// the name, and the extension from the last point of the name on. The drive is always empty. A part is
/// skipped if its buffer is null and its room 0. Rooms are in characters.
/// Fails with EINVAL for a null path or a buffer without room, or room without a buffer, ERANGE if a part
/// does not fit. The code is in errno, too, and all parts are then empty.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
KRTPAL_API int _wsplitpath_s(LPCWSTR path, LPWSTR drive, SIZE_T driveRoom, LPWSTR folder, SIZE_T folderRoom,
                             LPWSTR name, SIZE_T nameRoom, LPWSTR extension, SIZE_T extensionRoom);

/// Returns the length of the path, without the NUL, and stores the path unchanged. If it does not fit into
/// `room` characters or the buffer is null, nothing is stored and the result is the room that is needed, with
/// the NUL.
/// Fails with 0 and the code of errno if there is no such file (ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND),
/// ERROR_INVALID_PARAMETER for null.
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
