// WFileEventLog: writes chains of exceptions to a wide stream.
//
//     std::wofstream file("failures.log");
//     bss::WFileEventLog log(file, L"scanner");
//     e.Log(log);
//
// Threads: no lock. Lines of several threads, or of several logs on one stream, may mix.

#ifndef BSS_EXCEPTION_WFILEEVENTLOG_H
#define BSS_EXCEPTION_WFILEEVENTLOG_H

#include "bss/exception/WExceptionEventLog.h"

#include <ostream>
#include <string>

namespace bss {

/// A log that writes to a wide stream.
class KRTBSS_API WFileEventLog : public WExceptionEventLog {
public:
    /// Shares the stream's buffer and copies its exception mask.
    /// REQUIRES: the buffer outlives the log. Throws std::bad_alloc if memory is short.
    ///
    /// A stream that uses the C++ library's buffer of the standard output or standard error is replaced: the
    /// log writes UTF-8 (to a Windows console: wide characters) in every locale, since the standard buffers
    /// stop at the first character that the process's locale can't encode. Text pending in the standard
    /// streams is flushed first.
    WFileEventLog(std::wostream& stream, const std::wstring& appName);
    /// Destroys the log; the stream and its buffer are unchanged.
    ~WFileEventLog() override;

    /// Writes the header with the severity of the first entry, then one line per entry, each flushed; returns
    /// true. For an empty list writes the line "Empty LogParams list" and returns false. An earlier error
    /// state of the log's stream is cleared first; a write that fails is not reported in the result.
    /// REQUIRES: each entry has a descriptor. Throws what the stream's exception mask asks for.
    bool Log(const std::vector<const WLogParams*>& params) override;

private:
    std::wostream m_stream;
};

} // namespace bss

#endif
