// WExceptionEventLog: turns chains of failures into lines, and sends them somewhere.
// WFileEventLog (its own header) writes them to a stream.
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
// Threads: the default log is built once, whoever asks first. A log takes no lock of its own.

#ifndef BSS_EXCEPTION_WEXCEPTIONEVENTLOG_H
#define BSS_EXCEPTION_WEXCEPTIONEVENTLOG_H

#include "bss/Export.h"

#include <string>
#include <vector>

namespace bss {

class WExceptionEventInfo;
struct WLogParams;

class KRTBSS_API WExceptionEventLog {
public:
    WExceptionEventLog();
    WExceptionEventLog(const WExceptionEventLog&) = default;
    WExceptionEventLog& operator=(const WExceptionEventLog&) = default;
    virtual ~WExceptionEventLog();

    /// Writes one chain, head first. The parameters are borrowed for the call.
    virtual bool Log(const std::vector<const WLogParams*>& params) = 0;

    /// The process's default log, which writes to the standard output; made on the first call.
    static WExceptionEventLog& GetEventLog();
    static void InitDefaultEventLog();
    /// Whether the default log has been made.
    static bool IsValid();

    const std::wstring& GetMachineName() const { return m_sMachineName; }
    const std::wstring& GetAppName() const { return m_sAppName; }

    /// Takes no notice of the message and answers true.
    bool LogAdvisoryMessage(const std::wstring& message);

    /// The starred line: "******** MAJOR    machine::app  ********" and CR LF or LF. Null names count as
    /// empty.
    static std::wstring GetHeader(const WExceptionEventInfo& info, const wchar_t* machine, const wchar_t* app,
                                  bool bCRLF);

    /// One event as text, without a line end: the header if wanted, the column "code name : " if wanted, and
    /// the template with its inserts filled. Arguments that are not set read as empty. The machine and app
    /// names and `bCRLF` serve the header alone. The parameters must have a descriptor. A template that the
    /// system can't format gives "UNABLE TO FORMAT MESSAGE".
    static std::wstring FormatEventMessage(const WLogParams& params, bool bHeader, const wchar_t* machine,
                                           const wchar_t* app, bool bEventName, bool bCRLF);

    /// The least size of a message's buffer, in characters: 300. No limit of a message's length.
    static int GetMaxFormatMsgLength();

protected:
    std::wstring m_sMachineName;
    std::wstring m_sAppName;

    static WExceptionEventLog* m_pEventLog;
    static const wchar_t* const m_pszAppNameUnknown;
    static const int m_nMaxFormatMsgLength;
};

} // namespace bss

#endif
