// The system's application log, and the registry keys by which its sources are known.
//
//     HANDLE source = RegisterEventSourceW(nullptr, L"krtbss");
//     const wchar_t* texts[] = {L"the laser is off"};
//     ReportEventW(source, EVENTLOG_WARNING_TYPE, 1, 1001, nullptr, 1, 0, texts, nullptr);
//     DeregisterEventSource(source);
//
// On Linux an entry is a message to the system's log daemon: a datagram to /dev/log, or to the socket that
// the environment variable KRTBSS_SYSLOG_SOCKET names. The first text is the entry; line ends in it become
// blanks.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_EVENTLOG_H
#define KRTPAL_EVENTLOG_H

#include "krtpal/export.h"
#include "krtpal/types.h"
#include "krtpal/user.h"

#ifndef _WIN32

namespace krtpal {

inline constexpr WORD EVENTLOG_SUCCESS = 0x0000;
inline constexpr WORD EVENTLOG_ERROR_TYPE = 0x0001;
inline constexpr WORD EVENTLOG_WARNING_TYPE = 0x0002;
inline constexpr WORD EVENTLOG_INFORMATION_TYPE = 0x0004;
inline constexpr WORD EVENTLOG_AUDIT_SUCCESS = 0x0008;
inline constexpr WORD EVENTLOG_AUDIT_FAILURE = 0x0010;

struct HKEY__;
using HKEY = HKEY__*;
using LSTATUS = LONG;
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000002));
inline constexpr DWORD KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_DWORD = 4;

/// Sources of the log need no key here: one below the log's own place is made and forgotten; any other is
/// refused with ERROR_NOT_SUPPORTED.
KRTPAL_API LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR keyClass,
                                          DWORD options, DWORD access, struct SECURITY_ATTRIBUTES* attributes,
                                          HKEY* made, LPDWORD disposition);
KRTPAL_API LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                                         DWORD bytes);
KRTPAL_API LSTATUS WINAPI RegCloseKey(HKEY key);

/// Null and the last error if there is no daemon, or for a server that is not null.
KRTPAL_API HANDLE WINAPI RegisterEventSourceW(LPCWSTR server, LPCWSTR source);
KRTPAL_API BOOL WINAPI DeregisterEventSource(HANDLE source);
/// The first of the texts; the category, the number, the user and the data count for nothing. FALSE and the
/// last error if the daemon did not take it.
KRTPAL_API BOOL WINAPI ReportEventW(HANDLE source, WORD type, WORD category, DWORD eventId, PSID user,
                                    WORD count, DWORD dataSize, LPCWSTR* texts, LPVOID data);

} // namespace krtpal

using namespace krtpal; // NOLINT(google-build-using-namespace)
#endif

#endif
