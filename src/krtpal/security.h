// Access tokens, security identifiers (SIDs) and the security attributes of objects.
//
//     HANDLE token = nullptr;
//     if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
//         DWORD needed = 0;
//         GetTokenInformation(token, TokenUser, nullptr, 0, &needed);    // sets `needed`
//         CloseHandle(token);
//     }
//
// On Linux the SID of a user is S-1-22-1-<user number>. A logon is identified by the user number (high part)
// and the audit session (low part), which all processes since one login share; the session has all bits set
// if the kernel does not count sessions.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_SECURITY_H
#define KRTPAL_SECURITY_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// A SID in its published binary layout: revision, number of sub-authorities, authority (6 bytes),
/// sub-authorities (4 bytes each).
using PSID = void*;

/// Access to a new object. On Linux the descriptor must be null, which grants access to the user who creates
/// the object. Calls that do not support a descriptor fail with ERROR_NOT_SUPPORTED.
struct SECURITY_ATTRIBUTES {
    DWORD nLength;               ///< size of the structure; ignored
    LPVOID lpSecurityDescriptor; ///< null
    BOOL bInheritHandle;         ///< ignored: handles are never inherited
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

/// The only right to a token.
inline constexpr DWORD TOKEN_QUERY = 0x0008;

/// Kinds of information about a token.
enum TOKEN_INFORMATION_CLASS { TokenUser = 1, TokenStatistics = 10 };

/// An identifier that is unique on the machine until it restarts.
struct LUID {
    DWORD LowPart;
    LONG HighPart;
};

/// A SID, by address, and its attributes, always 0.
struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};

/// Information of TokenUser. The SID lies in the same buffer, after this structure.
struct TOKEN_USER {
    SID_AND_ATTRIBUTES User;
};

/// Information of TokenStatistics. Only AuthenticationId is known; all other members are 0.
struct TOKEN_STATISTICS {
    LUID TokenId;
    LUID AuthenticationId; ///< identifies the logon
    LONGLONG ExpirationTime;
    int TokenType;
    int ImpersonationLevel;
    DWORD DynamicCharged;
    DWORD DynamicAvailable;
    DWORD GroupCount;
    DWORD PrivilegeCount;
    LUID ModifiedId;
};

/// Returns TRUE and sets `*token` to the token of the process, to be closed by CloseHandle.
/// Fails with null in `*token` and ERROR_INVALID_HANDLE for another process than GetCurrentProcess(),
/// ERROR_ACCESS_DENIED for other rights than TOKEN_QUERY, ERROR_NOT_ENOUGH_MEMORY if there are too many
/// handles.
KRTPAL_API BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, HANDLE* token);
/// Returns FALSE always, with null in `*token` and ERROR_NO_TOKEN: threads do not impersonate other users
/// here. Callers then open the token of the process, as on Windows.
KRTPAL_API BOOL WINAPI OpenThreadToken(HANDLE thread, DWORD access, BOOL asSelf, HANDLE* token);
/// Returns TRUE and stores TokenUser (TOKEN_USER with a SID) or TokenStatistics. `*needed` is the size in
/// bytes.
/// REQUIRES: `needed` is not null. `information` may be null to get the size.
/// Fails with ERROR_INSUFFICIENT_BUFFER, and the size in `*needed`, if `length` bytes are too few,
/// ERROR_NOT_SUPPORTED for another kind, ERROR_INVALID_HANDLE if the handle is not that of a token.
KRTPAL_API BOOL WINAPI GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID information,
                                           DWORD length, LPDWORD needed);
/// Returns the size of a valid SID in bytes. The SID is not checked.
KRTPAL_API DWORD WINAPI GetLengthSid(PSID sid);
/// Returns TRUE and copies a valid SID.
/// Fails with ERROR_INSUFFICIENT_BUFFER if `length` bytes are too few; the target is then unchanged.
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
