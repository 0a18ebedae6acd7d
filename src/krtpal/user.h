// Who and where the process is: user, machine, desktop, logon; and the process's access token, from which
// some of it is read.
//
//     wchar_t name[257];
//     DWORD size = 257;
//     GetUserNameW(name, &size);               // size counts the NUL afterwards
//
// On Linux: the desktop is the display (of Wayland or X) of the process, or "Default"; the logon is the user
// number (high part) and the audit session (low part), which all processes since one login share.
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
using PSID = void*;

inline constexpr int UOI_NAME = 2;
inline constexpr DWORD UNLEN = 256;

inline constexpr DWORD TOKEN_QUERY = 0x0008;

enum TOKEN_INFORMATION_CLASS { TokenUser = 1, TokenStatistics = 10 };

struct LUID {
    DWORD LowPart;
    LONG HighPart;
};

struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};

/// Followed by the SID itself.
struct TOKEN_USER {
    SID_AND_ATTRIBUTES User;
};

/// Only the identifiers are known; the rest is 0.
struct TOKEN_STATISTICS {
    LUID TokenId;
    LUID AuthenticationId; ///< of the logon
    LONGLONG ExpirationTime;
    int TokenType;
    int ImpersonationLevel;
    DWORD DynamicCharged;
    DWORD DynamicAvailable;
    DWORD GroupCount;
    DWORD PrivilegeCount;
    LUID ModifiedId;
};

/// FALSE and ERROR_INSUFFICIENT_BUFFER with the size that is needed, if `size` characters are not enough.
KRTPAL_API BOOL WINAPI GetUserNameW(LPWSTR name, LPDWORD size);
/// Likewise (ERROR_BUFFER_OVERFLOW), but the size counts without the NUL on success.
KRTPAL_API BOOL WINAPI GetComputerNameW(LPWSTR name, LPDWORD size);
/// Not to be closed. Every thread has the process's desktop.
KRTPAL_API HDESK WINAPI GetThreadDesktop(DWORD threadId);
/// UOI_NAME of a desktop only. Sizes are bytes.
KRTPAL_API BOOL WINAPI GetUserObjectInformationW(HANDLE object, int index, PVOID information, DWORD length,
                                                 LPDWORD needed);

KRTPAL_API HANDLE WINAPI GetCurrentProcess();
KRTPAL_API HANDLE WINAPI GetCurrentThread();
/// Of the calling process, with TOKEN_QUERY. To be closed.
KRTPAL_API BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, HANDLE* token);
/// FALSE and ERROR_NO_TOKEN: threads have no tokens of their own.
KRTPAL_API BOOL WINAPI OpenThreadToken(HANDLE thread, DWORD access, BOOL asSelf, HANDLE* token);
/// TokenUser (a SID of the form S-1-22-1-<user number>) and TokenStatistics.
KRTPAL_API BOOL WINAPI GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID information,
                                           DWORD length, LPDWORD needed);
/// Bytes of a SID.
KRTPAL_API DWORD WINAPI GetLengthSid(PSID sid);
KRTPAL_API BOOL WINAPI CopySid(DWORD length, PSID target, PSID source);

KRTPAL_API HANDLE WINAPI GetProcessHeap();
KRTPAL_API LPVOID WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes);
KRTPAL_API BOOL WINAPI HeapFree(HANDLE heap, DWORD flags, LPVOID memory);

} // namespace krtpal

using namespace krtpal; // NOLINT(google-build-using-namespace)
#endif

#endif
