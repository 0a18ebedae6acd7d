// WExceptionEventLog: formats chains of exceptions as lines of text, and is the base of the logs that write
// them. WFileEventLog (in its own header) writes to a stream.
//
//     catch (const bss::WNestedException& e) {
//         e.Log(bss::WExceptionEventLog::GetEventLog());
//     }
//
// prints
//
//     ******** MAJOR    LocalHost::Unknown  ********
//     2.3809 WNEDataIOError         : Data I/O Error: while writing Run
//     1.2911 WNEODBCError           : ODBC Error: table is locked
//
// A log of one's own derives from this class, implements Log with the help of GetHeader and
// FormatEventMessage, and is passed to WNestedException::Log.
//
// Threads: the default log is constructed once, also if several threads ask for it first. A log has no lock:
// lines of several threads may mix. The static formatting operations may be called from any thread.

#ifndef BSS_EXCEPTION_WEXCEPTIONEVENTLOG_H
#define BSS_EXCEPTION_WEXCEPTIONEVENTLOG_H

#include "bss/Export.h"

#include <string>
#include <vector>

namespace bss {

class WExceptionEventInfo;
struct WLogParams;

/// Base of the logs of exceptions, with the formatting that they share.
class KRTBSS_API WExceptionEventLog {
public:
    /// Sets the machine name "LocalHost" and the application name "Unknown".
    WExceptionEventLog();
    /// Copies both names.
    WExceptionEventLog(const WExceptionEventLog&) = default;
    /// Copies both names.
    WExceptionEventLog& operator=(const WExceptionEventLog&) = default;
    /// Destroys the log.
    virtual ~WExceptionEventLog();

    /// Writes one chain, head first; the implementation defines the result. The parameters are borrowed for
    /// the call.
    virtual bool Log(const std::vector<const WLogParams*>& params) = 0;

    /// Returns the process's default log, which writes to the standard output. The first call constructs it;
    /// it is never destroyed, so static destructors may log.
    static WExceptionEventLog& GetEventLog();
    /// Constructs the default log, unless it exists.
    static void InitDefaultEventLog();
    /// Returns true if the default log has been constructed.
    static bool IsValid();

    /// Returns the machine name that the header shows.
    const std::wstring& GetMachineName() const { return m_sMachineName; }
    /// Returns the application name that the header shows.
    const std::wstring& GetAppName() const { return m_sAppName; }

    /// Ignores the message and returns true.
    bool LogAdvisoryMessage(const std::wstring& message);

    /// Returns the header line "******** MAJOR    machine::app  ********" with the descriptor's severity,
    /// ended by CR LF if `bCRLF`, otherwise by LF. Null names are taken as empty.
    static std::wstring GetHeader(const WExceptionEventInfo& info, const wchar_t* machine, const wchar_t* app,
                                  bool bCRLF);

    /// Returns one event as text, without a line end: GetHeader if `bHeader`, then the column "code name"
    /// padded to 30 characters and ": " if `bEventName`, then the message template with its inserts filled.
    /// The code is shown as code / 4096, a point and code % 4096. A longer column is not cut. Arguments that
    /// are not set are inserted as empty text. `machine`, `app` and `bCRLF` affect the header only. A
    /// template that FormatMessageW rejects gives "UNABLE TO FORMAT MESSAGE". REQUIRES: `params` has a
    /// descriptor. Throws std::bad_alloc if memory is short.
    static std::wstring FormatEventMessage(const WLogParams& params, bool bHeader, const wchar_t* machine,
                                           const wchar_t* app, bool bEventName, bool bCRLF);

    /// Returns the minimum size of a message's buffer in characters, 300. It does not limit the length.
    static int GetMaxFormatMsgLength();

protected:
    std::wstring m_sMachineName; ///< Machine name of the header.
    std::wstring m_sAppName;     ///< Application name of the header.

    static WExceptionEventLog* m_pEventLog;          ///< The default log, null before its construction.
    static const wchar_t* const m_pszAppNameUnknown; ///< "Unknown".
    static const int m_nMaxFormatMsgLength;          ///< 300, see GetMaxFormatMsgLength.
};

} // namespace bss

#endif
