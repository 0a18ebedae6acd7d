// Access tokens, security identifiers (SIDs), and the security attributes of objects.
//
//     HANDLE token = nullptr;
//     if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
//         DWORD needed = 0;
//         GetTokenInformation(token, TokenUser, nullptr, 0, &needed);    // sets `needed`
//         CloseHandle(token);
//     }
//
// On Linux the user's SID is S-1-22-1-<user number>. The logon is the user number (high part) and the audit
// session (low part), which all processes since one login share.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_SECURITY_H
#define KRTPAL_SECURITY_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

using PSID = void*;

/// Who may open an object. On Linux the descriptor must be null, which means the user who made the object,
/// and handles are never inherited.
struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

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

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::PSID, krtpal::SECURITY_ATTRIBUTES, krtpal::LPSECURITY_ATTRIBUTES, krtpal::TOKEN_QUERY,     \
        krtpal::LUID, krtpal::SID_AND_ATTRIBUTES, krtpal::TOKEN_USER, krtpal::TOKEN_STATISTICS,              \
        krtpal::OpenProcessToken, krtpal::OpenThreadToken, krtpal::GetTokenInformation,                      \
        krtpal::GetLengthSid, krtpal::CopySid, krtpal::TOKEN_INFORMATION_CLASS, krtpal::TokenUser,           \
        krtpal::TokenStatistics
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
