// The older family of locks: bss::WSynchronizer, bss::WEvent, bss::WCriticalSection, with the verbs Acquire
// and Release. It stays for callers that use the counts of bss::WCriticalSection for each thread; new code
// takes bss::sync (WSyncObject.h).
//
//     bss::WEvent event;                    // clear, auto-reset
//     event.SetEvent();
//     if (event.Acquire(100)) { ... }
//
// Nothing here throws: an object that could not be made has a null handle, and its operations answer false.
// Time-outs are milliseconds; every value from 0xFFFFFFFF up means for ever.

#ifndef BSS_THREAD_WSYNCHRONIZER_H
#define BSS_THREAD_WSYNCHRONIZER_H

#include "bss/Export.h"
#include "krtpal/sync.h"

#include <cstdint>
#include <map>

namespace bss {

class KRTBSS_API WSynchronizer {
public:
    /// The name is kept as a pointer: the caller keeps the text alive.
    explicit WSynchronizer(const wchar_t* name);
    WSynchronizer(const WSynchronizer&) = delete;
    WSynchronizer& operator=(const WSynchronizer&) = delete;
    /// Closes the handle; a failure goes to the debugger's output with the system's text.
    virtual ~WSynchronizer();

    /// As bss::sync::WSyncObject::Lock and LockEx.
    virtual bool Acquire(unsigned long timeoutMs);
    virtual bool AcquireEx(unsigned long timeoutMs, unsigned long wakeMask);
    virtual bool Release() = 0;

    operator void*() const { return m_handle; }
    operator const wchar_t*() const { return m_name; }

protected:
    HANDLE m_handle = nullptr;

private:
    const wchar_t* m_name;
};

class KRTBSS_API WEvent : public WSynchronizer {
public:
    explicit WEvent(bool initialState = false, bool manualReset = false, const wchar_t* name = nullptr,
                    SECURITY_ATTRIBUTES* attributes = nullptr);
    ~WEvent() override;

    bool Acquire(unsigned long timeoutMs) override;
    bool AcquireEx(unsigned long timeoutMs, unsigned long wakeMask) override;
    /// Sets the event.
    bool Release() override;
    virtual bool ResetEvent();
    virtual bool SetEvent();
    virtual bool PulseEvent();
};

/// A critical section that can count entries for each thread. The three operations that do so
/// (EnterForReleaseAll, SingleEnter, ReleaseAll) keep a list without a guard of its own: callers see to it
/// that they don't run in two threads at once.
class KRTBSS_API WCriticalSection : public WSynchronizer {
public:
    WCriticalSection();
    /// Leaves the section as often as it was entered.
    ~WCriticalSection() override;

    void Enter();
    /// Always true; a free object is left alone.
    bool Release() override;
    /// Enters, and counts the entry for the calling thread.
    void EnterForReleaseAll();
    /// The same, unless the thread has an entry.
    void SingleEnter();
    /// Leaves as often as the calling thread has entries, but only where a Release has cleared the state
    /// before: otherwise nothing happens. This is meant. Always true.
    bool ReleaseAll();
    /// The owner's thread number, as the system keeps it; null when not locked.
    HANDLE GetOwnerThread() const;

private:
    /// Enters; always true.
    bool Acquire(unsigned long timeoutMs) override;

    bool m_bInitialized = false;
    bool m_bLocked = false;
    std::int32_t m_nRecursion = 0;
    CRITICAL_SECTION m_section;
    std::map<std::int32_t, std::int32_t> m_entries; ///< by thread number
};

} // namespace bss

#endif
