// WEventLog: entries in the system's application log, for the whole process, under one source.
//
//     bss::WEventLog::Register(L"Instrument Control");
//     bss::WEventLog::Write(L"the laser is off", bss::WEventLog::Warning);
//     bss::WEventLog::Destroy();                // at the end
//
// On Windows the library's module is the message file of the source, and to register a source takes the right
// to write to HKEY_LOCAL_MACHINE; without it, nothing is logged. On Linux entries go to the log daemon;
// without one, nothing is logged. Nothing here throws.
//
// Threads: all operations may be used from any thread.

#ifndef BSS_EXCEPTION_WEVENTLOG_H
#define BSS_EXCEPTION_WEVENTLOG_H

#include "bss/Export.h"
#include "bss/thread/WCriticalSection.h"
#include "krtpal/types.h"

#include <string>

namespace bss {

class KRTBSS_API WEventLog {
public:
    /// Kinds of entries; any other value is a success.
    enum e_event : int { Error = 1, Warning = 2, Information = 3, AuditSuccess = 4, AuditFailure = 5 };

    WEventLog(const WEventLog&) = delete;
    WEventLog& operator=(const WEventLog&) = delete;
    /// Deregisters the source.
    virtual ~WEventLog();

    /// Whether a source is registered afterwards. A first call that fails, and the name of a first that does
    /// not, stay in force until Destroy. Narrow text is of the current code page.
    static bool Register(const wchar_t* source);
    static bool Register(const char* source);
    /// Whether the entry was written.
    static bool Write(const wchar_t* text, e_event kind);
    static bool Write(const char* text, e_event kind);
    static void Destroy();

protected:
    WEventLog();
    bool Initialize(const wchar_t* source);
    bool WriteEvent(const wchar_t* text, e_event kind);
    /// The caller's SID in a block of the process heap, which the caller of this frees; null if it can't be
    /// had.
    void* GetUserSid();

private:
    static WEventLog* m_pEventLog;
    static sync::WCriticalSection m_CriticalSection; ///< guards the instance; taken before its own

    std::wstring m_sUnused;
    HANDLE m_hEventSource = nullptr;
    sync::WCriticalSection m_section; ///< guards the handle
};

} // namespace bss

#endif
