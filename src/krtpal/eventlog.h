// The system's application log.
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
#include "krtpal/security.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

inline constexpr WORD EVENTLOG_SUCCESS = 0x0000;
inline constexpr WORD EVENTLOG_ERROR_TYPE = 0x0001;
inline constexpr WORD EVENTLOG_WARNING_TYPE = 0x0002;
inline constexpr WORD EVENTLOG_INFORMATION_TYPE = 0x0004;
inline constexpr WORD EVENTLOG_AUDIT_SUCCESS = 0x0008;
inline constexpr WORD EVENTLOG_AUDIT_FAILURE = 0x0010;

/// Null and the last error if there is no daemon, or for a server that is not null.
KRTPAL_API HANDLE WINAPI RegisterEventSourceW(LPCWSTR server, LPCWSTR source);
KRTPAL_API BOOL WINAPI DeregisterEventSource(HANDLE source);
/// The first of the texts; the category, the number, the user and the data count for nothing. FALSE and the
/// last error if the daemon did not take it.
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
