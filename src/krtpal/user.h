// Who and where the process is: user, machine and desktop.
//
//     wchar_t name[257];
//     DWORD size = 257;
//     GetUserNameW(name, &size);               // size counts the NUL afterwards
//
// On Linux the desktop is the display (of Wayland or X) of the process, or "Default".
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_USER_H
#define KRTPAL_USER_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

struct HDESK__;
using HDESK = HDESK__*;

inline constexpr int UOI_NAME = 2;
inline constexpr DWORD UNLEN = 256;

/// FALSE and ERROR_INSUFFICIENT_BUFFER with the size that is needed, if `size` characters are not enough.
KRTPAL_API BOOL WINAPI GetUserNameW(LPWSTR name, LPDWORD size);
/// Likewise (ERROR_BUFFER_OVERFLOW), but the size counts without the NUL on success.
KRTPAL_API BOOL WINAPI GetComputerNameW(LPWSTR name, LPDWORD size);
/// Not to be closed. Every thread has the process's desktop.
KRTPAL_API HDESK WINAPI GetThreadDesktop(DWORD threadId);
/// UOI_NAME of a desktop only. Sizes are bytes.
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
