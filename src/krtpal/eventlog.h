// The system's application log.
//
//     HANDLE source = RegisterEventSourceW(nullptr, L"krtbss");
//     const wchar_t* texts[] = {L"the laser is off"};
//     ReportEventW(source, EVENTLOG_WARNING_TYPE, 1, 1001, nullptr, 1, 0, texts, nullptr);
//     DeregisterEventSource(source);
//
// On Linux an entry is a datagram to the system's log daemon, in the form of RFC 3164: to /dev/log, or to the
// socket that the environment variable KRTBSS_SYSLOG_SOCKET names. The entry has the first text only; line
// ends in it become blanks. An entry is cut at 8192 bytes, between characters.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_EVENTLOG_H
#define KRTPAL_EVENTLOG_H

#include "krtpal/export.h"
#include "krtpal/security.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Types of entries. They become severities of the facility user: error, warning, otherwise informational.
/// Audits go to the facility security, with the severity notice (success) or warning (failure).
inline constexpr WORD EVENTLOG_SUCCESS = 0x0000;
inline constexpr WORD EVENTLOG_ERROR_TYPE = 0x0001;
inline constexpr WORD EVENTLOG_WARNING_TYPE = 0x0002;
inline constexpr WORD EVENTLOG_INFORMATION_TYPE = 0x0004;
inline constexpr WORD EVENTLOG_AUDIT_SUCCESS = 0x0008;
inline constexpr WORD EVENTLOG_AUDIT_FAILURE = 0x0010;

/// Returns a handle to a connection to the log, to be closed by DeregisterEventSource. The source precedes
/// each entry; blanks and control characters in it become underscores.
/// Fails with null and the code of errno if there is no daemon (ERROR_FILE_NOT_FOUND), ERROR_NOT_SUPPORTED
/// for a server that is not null, ERROR_INVALID_PARAMETER for a null or empty source. Unlike Windows, the
/// source needs no entry in the registry.
KRTPAL_API HANDLE WINAPI RegisterEventSourceW(LPCWSTR server, LPCWSTR source);
/// Returns TRUE and closes the handle.
/// Fails with ERROR_INVALID_HANDLE if the handle is not that of a source.
KRTPAL_API BOOL WINAPI DeregisterEventSource(HANDLE source);
/// Returns TRUE after the daemon has taken the entry; connects again once if the daemon was restarted. The
/// category, the number, the user, the data and all texts except the first are ignored.
/// Fails with ERROR_INVALID_HANDLE if the handle is not that of a source, ERROR_INVALID_PARAMETER without a
/// text, otherwise with the code of errno.
KRTPAL_API BOOL WINAPI ReportEventW(HANDLE source, WORD type, WORD category, DWORD eventId, PSID user,
                                    WORD count, DWORD dataSize, LPCWSTR* texts, LPVOID data);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::EVENTLOG_SUCCESS, krtpal::EVENTLOG_ERROR_TYPE, krtpal::EVENTLOG_WARNING_TYPE,              \
        krtpal::EVENTLOG_INFORMATION_TYPE, krtpal::EVENTLOG_AUDIT_SUCCESS, krtpal::EVENTLOG_AUDIT_FAILURE,   \
        krtpal::RegisterEventSourceW, krtpal::DeregisterEventSource, krtpal::ReportEventW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
