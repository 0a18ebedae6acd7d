#include "bss/exception/WFileEventLog.h"

#include "bss/exception/WExceptionEventInfo.h"
#include "bss/exception/WLogParams.h"
#include "krtpal/common/console.h"

namespace bss {

WFileEventLog::WFileEventLog(std::wostream& stream, const std::wstring& appName)
    : m_stream(krtpal::ConsoleBufferFor(stream)) {
    m_sAppName = appName;
    m_stream.exceptions(stream.exceptions());
}

WFileEventLog::~WFileEventLog() = default;

bool WFileEventLog::Log(const std::vector<const WLogParams*>& params) {
    // An error of an earlier write must not suppress this one.
    m_stream.clear();
    if (params.empty()) {
        m_stream << L"Empty LogParams list\n" << std::flush;
        return false;
    }
    m_stream << GetHeader(params.front()->GetEventInfo(), m_sMachineName.c_str(), m_sAppName.c_str(), false);
    for (const WLogParams* entry : params) {
        m_stream << FormatEventMessage(*entry, false, m_sMachineName.c_str(), m_sAppName.c_str(), true, true)
                 << L'\n' << std::flush;
    }
    return true;
}

} // namespace bss
