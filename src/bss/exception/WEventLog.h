// WEventLog: writes entries to the system's application log, under one source for the whole process.
//
//     bss::WEventLog::Register(L"Instrument Control");
//     bss::WEventLog::Write(L"the laser is off", bss::WEventLog::Warning);
//     bss::WEventLog::Destroy();                // at the end
//
// States: no instance (before the first Register and after Destroy), instance without a source (the first
// Register failed), instance with a source. Write succeeds in the last state only.
//
// On Windows the library's module is the message file of the source. Registering a source requires the right
// to write to HKEY_LOCAL_MACHINE; without it, nothing is logged. On Linux entries go to the log daemon;
// without one, nothing is logged. Failures are results: nothing throws, except std::bad_alloc from the narrow
// Register.
//
// Threads: all operations may be called from any thread.

#ifndef BSS_EXCEPTION_WEVENTLOG_H
#define BSS_EXCEPTION_WEVENTLOG_H

#include "bss/Export.h"
#include "bss/thread/WCriticalSection.h"
#include "krtpal/types.h"

#include <string>

namespace bss {

/// The process's writer to the application log. All public operations are static.
class KRTBSS_API WEventLog {
public:
    /// Kinds of entries. Any other value is written as EVENTLOG_SUCCESS.
    enum e_event : int {
        Error = 1,        ///< Written as EVENTLOG_ERROR_TYPE.
        Warning = 2,      ///< Written as EVENTLOG_WARNING_TYPE.
        Information = 3,  ///< Written as EVENTLOG_INFORMATION_TYPE.
        AuditSuccess = 4, ///< Written as EVENTLOG_AUDIT_SUCCESS.
        AuditFailure = 5  ///< Written as EVENTLOG_AUDIT_FAILURE.
    };

    /// Not copyable: the process has one instance.
    WEventLog(const WEventLog&) = delete;
    /// Not assignable: the process has one instance.
    WEventLog& operator=(const WEventLog&) = delete;
    /// Deregisters the source, if there is one.
    virtual ~WEventLog();

    /// Returns true if a source is registered. The first call creates the instance and decides: later calls
    /// return the same result and ignore their name, until Destroy. Returns false for null and for a name
    /// that is too long for its registry key (262 characters with the key's path).
    static bool Register(const wchar_t* source);
    /// Widens the name from the current code page (UTF-8 on Linux) and registers it. Returns false for null,
    /// without creating the instance. Throws std::bad_alloc if memory is short.
    static bool Register(const char* source);
    /// Returns true if the entry was written; false without a source, for null and if the system fails.
    static bool Write(const wchar_t* text, e_event kind);
    /// Widens the text from the current code page (UTF-8 on Linux) and writes it. Returns false for null and
    /// if memory is short.
    static bool Write(const char* text, e_event kind);
    /// Destroys the instance and deregisters the source. A later Register may name another source.
    static void Destroy();

protected:
    /// Constructs an instance without a source.
    WEventLog();
    /// Returns true if the source is registered. On Windows also writes the source's registry key.
    bool Initialize(const wchar_t* source);
    /// Returns true if the entry was written; false without a source and for null.
    bool WriteEvent(const wchar_t* text, e_event kind);
    /// Returns the SID of the thread's user in a block of the process heap, which the caller frees by
    /// HeapFree; null on failure.
    void* GetUserSid();

private:
    static WEventLog* m_pEventLog;
    static sync::WCriticalSection m_CriticalSection; // guards m_pEventLog; acquired before m_section

    std::wstring m_sUnused;
    HANDLE m_hEventSource = nullptr;
    sync::WCriticalSection m_section; // guards m_hEventSource
};

} // namespace bss

#endif
