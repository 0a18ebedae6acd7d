#include "bss/exception/WExceptionEventLog.h"

#include "bss/exception/WExceptionEventInfo.h"
#include "bss/exception/WFileEventLog.h"
#include "bss/exception/WLogParams.h"
#include "krtpal/error.h"
#include "krtpal/memory.h"

#include <iostream>

namespace bss {

WExceptionEventLog* WExceptionEventLog::m_pEventLog = nullptr;
const wchar_t* const WExceptionEventLog::m_pszAppNameUnknown = L"Unknown";
const int WExceptionEventLog::m_nMaxFormatMsgLength = 300;

namespace {

constexpr std::size_t kEventColumnWidth = 30;

const wchar_t* TextOrEmpty(const wchar_t* text) {
    return text == nullptr ? L"" : text;
}

std::wstring EventColumn(const WExceptionEventInfo& info) {
    const long code = info.GetId();
    std::wstring column = std::to_wstring(code / 4096) + L'.' + std::to_wstring(code % 4096) + L' ' +
                          TextOrEmpty(info.GetName());
    if (column.size() < kEventColumnWidth) {
        column.resize(kEventColumnWidth, L' ');
    }
    return column + L": ";
}

std::wstring FilledTemplate(const WLogParams& params, DWORD minimumSize) {
    DWORD_PTR arguments[8];
    for (int i = 0; i < WLogParams::ARGUMENT_COUNT; ++i) {
        arguments[i] = reinterpret_cast<DWORD_PTR>(TextOrEmpty(params.GetFormatArg(i)));
    }
    wchar_t* buffer = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY,
        params.GetEventInfo().GetMsg(), 0, 0, reinterpret_cast<LPWSTR>(&buffer), minimumSize,
        reinterpret_cast<va_list*>(arguments));
    if (length == 0) {
        return L"UNABLE TO FORMAT MESSAGE";
    }
    std::wstring text(buffer, length);
    LocalFree(buffer);
    return text;
}

} // namespace

WExceptionEventLog::WExceptionEventLog() : m_sMachineName(L"LocalHost"), m_sAppName(m_pszAppNameUnknown) {}

WExceptionEventLog::~WExceptionEventLog() = default;

WExceptionEventLog& WExceptionEventLog::GetEventLog() {
    InitDefaultEventLog();
    return *m_pEventLog;
}

void WExceptionEventLog::InitDefaultEventLog() {
    // Never destroyed: static destructors may log.
    static WFileEventLog& log = *new WFileEventLog(std::wcout, m_pszAppNameUnknown);
    static const bool made = (m_pEventLog = &log, true);
    (void)made;
}

bool WExceptionEventLog::IsValid() {
    return m_pEventLog != nullptr;
}

int WExceptionEventLog::GetMaxFormatMsgLength() {
    return m_nMaxFormatMsgLength;
}

bool WExceptionEventLog::LogAdvisoryMessage(const std::wstring& /*message*/) {
    return true;
}

std::wstring WExceptionEventLog::GetHeader(const WExceptionEventInfo& info, const wchar_t* machine,
                                           const wchar_t* app, bool bCRLF) {
    std::wstring header = L"******** ";
    header += WExceptionEventInfo::GetSeverity(info.GetSeverity());
    header += L' ';
    header += TextOrEmpty(machine);
    header += L"::";
    header += TextOrEmpty(app);
    header += L"  ********";
    header += bCRLF ? L"\r\n" : L"\n";
    return header;
}

std::wstring WExceptionEventLog::FormatEventMessage(const WLogParams& params, bool bHeader,
                                                    const wchar_t* machine, const wchar_t* app,
                                                    bool bEventName, bool bCRLF) {
    std::wstring message;
    if (bHeader) {
        message = GetHeader(params.GetEventInfo(), machine, app, bCRLF);
    }
    if (bEventName) {
        message += EventColumn(params.GetEventInfo());
    }
    return message + FilledTemplate(params, static_cast<DWORD>(m_nMaxFormatMsgLength));
}

} // namespace bss
