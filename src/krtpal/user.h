// The user, the machine and the desktop of the process.
//
//     wchar_t name[UNLEN + 1];
//     DWORD size = UNLEN + 1;
//     GetUserNameW(name, &size);               // size counts the NUL afterwards
//
// On Linux the desktop is the display of the process: the value of WAYLAND_DISPLAY or else of DISPLAY, or
// "Default".
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_USER_H
#define KRTPAL_USER_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// A desktop. On Linux it is one constant, which is not a kernel handle.
struct HDESK__;
using HDESK = HDESK__*;

/// The name of a user object, the only supported information.
inline constexpr int UOI_NAME = 2;
/// Most characters of a user name, without the NUL.
inline constexpr DWORD UNLEN = 256;

/// Returns TRUE and stores the name of the effective user, or its number if it has no name. `*size` is the
/// room in characters before the call, the length with the NUL after it.
/// Fails with ERROR_INSUFFICIENT_BUFFER if the name does not fit or is null; `*size` is then the room that is
/// needed.
KRTPAL_API BOOL WINAPI GetUserNameW(LPWSTR name, LPDWORD size);
/// Returns TRUE and stores the host name. `*size` is the room in characters before the call, the length
/// without the NUL after it.
/// Fails with ERROR_BUFFER_OVERFLOW if the name does not fit or is null; `*size` is then the room that is
/// needed. Unlike Windows, the name keeps its case and may be longer than 15 characters.
KRTPAL_API BOOL WINAPI GetComputerNameW(LPWSTR name, LPDWORD size);
/// Returns the desktop of the process for every thread number. It is not owned and must not be closed.
KRTPAL_API HDESK WINAPI GetThreadDesktop(DWORD threadId);
/// Returns TRUE and stores the name of a desktop with its NUL. Sizes are in bytes; `*needed`, unless it is
/// null, is the size of the name with the NUL.
/// Fails with ERROR_INSUFFICIENT_BUFFER if `length` bytes are too few, ERROR_INVALID_HANDLE if the object is
/// not a desktop, ERROR_INVALID_PARAMETER for another index than UOI_NAME.
KRTPAL_API BOOL WINAPI GetUserObjectInformationW(HANDLE object, int index, PVOID information, DWORD length,
                                                 LPDWORD needed);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::HDESK, krtpal::UOI_NAME, krtpal::UNLEN, krtpal::GetUserNameW, krtpal::GetComputerNameW,    \
        krtpal::GetThreadDesktop, krtpal::GetUserObjectInformationW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
