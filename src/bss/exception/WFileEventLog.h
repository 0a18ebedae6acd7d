// WFileEventLog: writes chains of failures to a wide stream.
//
//     std::wofstream file("failures.log");
//     bss::WFileEventLog log(file, L"scanner");
//     e.Log(log);

#ifndef BSS_EXCEPTION_WFILEEVENTLOG_H
#define BSS_EXCEPTION_WFILEEVENTLOG_H

#include "bss/exception/WExceptionEventLog.h"

#include <ostream>
#include <string>

namespace bss {

class KRTBSS_API WFileEventLog : public WExceptionEventLog {
public:
    /// Shares the stream's buffer, which has to outlive the log, and takes over which errors the stream
    /// throws.
    ///
    /// A stream that still stands on the process's standard output or standard error is written to in UTF-8
    /// (a console of the system: in its own wide form), whatever locale the process has: text outside ASCII
    /// arrives whole, which the standard streams do not promise. Text that is waiting in those streams goes
    /// out first.
    WFileEventLog(std::wostream& stream, const std::wstring& appName);
    ~WFileEventLog() override;

    /// The header, by the severity of the first entry, then a line an entry, each flushed. Answers true.
    /// An empty list gives the line "Empty LogParams list" and false. Lets the stream's exceptions pass.
    /// Takes no lock: lines of several threads may mix.
    bool Log(const std::vector<const WLogParams*>& params) override;

private:
    std::wostream m_stream;
};

} // namespace bss

#endif
