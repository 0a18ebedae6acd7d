#include "bss/exception/WEventLog.h"

#include "bss/module.h"
#include "bss/thread/WSingleLock.h"
#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/eventlog.h"
#include "krtpal/memory.h"
#include "krtpal/module.h"
#include "krtpal/process.h"
#include "krtpal/registry.h"
#include "krtpal/security.h"
#include "krtpal/sync.h"
#include "krtpal/user.h"

#include <cwchar>
#include <memory>
#include <new>

namespace bss {

namespace {

constexpr wchar_t kSourcesKey[] = L"SYSTEM\\CurrentControlSet\\Services\\Eventlog\\Application\\";
constexpr std::size_t kKeyRoom = 262;
// Identifiers in the module's message table, see messages.mc.
constexpr WORD kCategory = 1;
constexpr DWORD kEvent = 1001;

WORD TypeOf(WEventLog::e_event kind) {
    switch (kind) {
    case WEventLog::Error:
        return EVENTLOG_ERROR_TYPE;
    case WEventLog::Warning:
        return EVENTLOG_WARNING_TYPE;
    case WEventLog::Information:
        return EVENTLOG_INFORMATION_TYPE;
    case WEventLog::AuditSuccess:
        return EVENTLOG_AUDIT_SUCCESS;
    case WEventLog::AuditFailure:
        return EVENTLOG_AUDIT_FAILURE;
    default:
        return EVENTLOG_SUCCESS;
    }
}

void SetText(HKEY key, const wchar_t* name, const wchar_t* text) {
    RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                   static_cast<DWORD>((std::wcslen(text) + 1) * sizeof(wchar_t)));
}

void SetNumber(HKEY key, const wchar_t* name, DWORD number) {
    RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number));
}

// Returns a copy of the token user's SID on the process heap, null on failure.
void* CopyUserSid(HANDLE token) {
    DWORD size = 0;
    if (GetTokenInformation(token, TokenUser, nullptr, 0, &size) != FALSE ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return nullptr;
    }
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[size]);
    if (buffer == nullptr || GetTokenInformation(token, TokenUser, buffer.get(), size, &size) == FALSE) {
        return nullptr;
    }
    const auto* const user = reinterpret_cast<const TOKEN_USER*>(buffer.get());
    const DWORD length = GetLengthSid(user->User.Sid);
    void* const sid = HeapAlloc(GetProcessHeap(), 0, length);
    if (sid != nullptr && CopySid(length, sid, user->User.Sid) == FALSE) {
        HeapFree(GetProcessHeap(), 0, sid);
        return nullptr;
    }
    return sid;
}

} // namespace

WEventLog* WEventLog::m_pEventLog = nullptr;
sync::WCriticalSection WEventLog::m_CriticalSection;

WEventLog::WEventLog() = default;

WEventLog::~WEventLog() {
    const sync::WSingleLock lock(&m_section, true);
    if (m_hEventSource != nullptr) {
        DeregisterEventSource(m_hEventSource);
        m_hEventSource = nullptr;
    }
}

bool WEventLog::Register(const wchar_t* source) {
    const sync::WSingleLock lock(&m_CriticalSection, true);
    if (m_pEventLog == nullptr) {
        m_pEventLog = new (std::nothrow) WEventLog;
        if (m_pEventLog == nullptr) {
            return false;
        }
        m_pEventLog->Initialize(source);
    }
    return m_pEventLog->m_hEventSource != nullptr;
}

bool WEventLog::Register(const char* source) {
    return source != nullptr && Register(krtpal::WidenText(source).c_str());
}

bool WEventLog::Initialize(const wchar_t* source) {
    const sync::WSingleLock lock(&m_section, true);
    if (source == nullptr || std::wcslen(kSourcesKey) + std::wcslen(source) >= kKeyRoom) {
        return false;
    }
    wchar_t keyName[kKeyRoom];
    std::wcscpy(keyName, kSourcesKey);
    std::wcscat(keyName, source);
    wchar_t module[MAX_PATH + 1] = {};
    GetModuleFileNameW(GetBSSHandle(), module, MAX_PATH);

    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, keyName, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                        nullptr, &key, nullptr) != ERROR_SUCCESS) {
        return false; // the usual result without administrator rights
    }
    SetText(key, L"EventMessageFile", module);
    SetText(key, L"CategoryMessageFile", module);
    SetNumber(key, L"CategoryCount", 1);
    constexpr DWORD kAllTypes = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE |
                                EVENTLOG_AUDIT_SUCCESS | EVENTLOG_AUDIT_FAILURE;
    SetNumber(key, L"TypesSupported", kAllTypes);
    RegCloseKey(key);
    m_hEventSource = RegisterEventSourceW(nullptr, source);
    return m_hEventSource != nullptr;
}

bool WEventLog::Write(const wchar_t* text, e_event kind) {
    const sync::WSingleLock lock(&m_CriticalSection, true);
    if (m_pEventLog == nullptr || m_pEventLog->m_hEventSource == nullptr) {
        return false;
    }
    return m_pEventLog->WriteEvent(text, kind);
}

bool WEventLog::Write(const char* text, e_event kind) {
    try {
        return text != nullptr && Write(krtpal::WidenText(text).c_str(), kind);
    } catch (...) {
        return false;
    }
}

bool WEventLog::WriteEvent(const wchar_t* text, e_event kind) {
    const sync::WSingleLock lock(&m_section, true);
    if (m_hEventSource == nullptr || text == nullptr) {
        return false;
    }
    void* const sid = GetUserSid();
    const wchar_t* texts[] = {text};
    const bool written =
        ReportEventW(m_hEventSource, TypeOf(kind), kCategory, kEvent, sid, 1, 0, texts, nullptr) != FALSE;
    if (sid != nullptr) {
        HeapFree(GetProcessHeap(), 0, sid);
    }
    return written;
}

void* WEventLog::GetUserSid() {
    HANDLE token = nullptr;
    if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) == FALSE &&
        (GetLastError() != ERROR_NO_TOKEN ||
         OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE)) {
        return nullptr;
    }
    void* const sid = CopyUserSid(token);
    CloseHandle(token);
    return sid;
}

void WEventLog::Destroy() {
    const sync::WSingleLock lock(&m_CriticalSection, true);
    delete m_pEventLog;
    m_pEventLog = nullptr;
}

} // namespace bss
