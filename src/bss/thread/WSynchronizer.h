// bss::WSynchronizer, bss::WEvent, bss::WCriticalSection: the older family of locks, with the verbs Acquire
// and Release. It remains for callers that use the per-thread counts of bss::WCriticalSection. Use bss::sync
// (WSyncObject.h) in new code.
//
//     bss::WEvent event;                    // clear, auto-reset
//     event.SetEvent();
//     if (event.Acquire(100)) { ... }
//
// Nothing here throws. An object that could not be created has a null handle; its operations return false.
// Time-outs are milliseconds; every value from 0xFFFFFFFF up waits for ever.
//
// Threads: all objects may be used from any thread, except the per-thread counts of bss::WCriticalSection.

#ifndef BSS_THREAD_WSYNCHRONIZER_H
#define BSS_THREAD_WSYNCHRONIZER_H

#include "bss/Export.h"
#include "krtpal/sync.h"

#include <cstdint>
#include <map>

namespace bss {

/// Base of the older family. Owns the handle that a derived class stores in m_handle.
class KRTBSS_API WSynchronizer {
public:
    /// Makes an object without a handle. Stores the pointer `name`, not a copy: the text must outlive the
    /// object. Null is allowed.
    explicit WSynchronizer(const wchar_t* name);
    WSynchronizer(const WSynchronizer&) = delete;
    WSynchronizer& operator=(const WSynchronizer&) = delete;
    /// Closes the handle. A failure is written to the debugger's output, with the system's text.
    virtual ~WSynchronizer();

    /// See bss::sync::WSyncObject::Lock.
    virtual bool Acquire(unsigned long timeoutMs);
    /// See bss::sync::WSyncObject::LockEx.
    virtual bool AcquireEx(unsigned long timeoutMs, unsigned long wakeMask);
    /// Releases the object. Returns true on success.
    virtual bool Release() = 0;

    /// Returns the handle, null if there is none. It is still owned by this object.
    operator void*() const { return m_handle; }
    /// Returns the pointer that the constructor was given.
    operator const wchar_t*() const { return m_name; }

protected:
    /// The handle of the kernel object. Set by the derived class, closed by this one.
    HANDLE m_handle = nullptr;

private:
    const wchar_t* m_name;
};

/// An event of the system's kernel. See bss::sync::WEvent.
class KRTBSS_API WEvent : public WSynchronizer {
public:
    /// Creates or opens an event. On failure the handle is null.
    explicit WEvent(bool initialState = false, bool manualReset = false, const wchar_t* name = nullptr,
                    SECURITY_ATTRIBUTES* attributes = nullptr);
    ~WEvent() override;

    /// See WSynchronizer::Acquire.
    bool Acquire(unsigned long timeoutMs) override;
    /// See WSynchronizer::AcquireEx.
    bool AcquireEx(unsigned long timeoutMs, unsigned long wakeMask) override;
    /// Sets the event, as SetEvent does.
    bool Release() override;
    /// Clears the event. Returns true on success.
    virtual bool ResetEvent();
    /// Sets the event. Returns true on success.
    virtual bool SetEvent();
    /// Releases the threads that wait now and clears the event. Returns true on success.
    virtual bool PulseEvent();
};

/// A recursive lock that can count entries by thread.
///
/// EnterForReleaseAll, SingleEnter and ReleaseAll use a list without a guard of its own.
/// REQUIRES: no two threads run any of these three operations at the same time.
class KRTBSS_API WCriticalSection : public WSynchronizer {
public:
    /// Makes a free lock.
    WCriticalSection();
    /// Releases the lock as many times as it was entered.
    ~WCriticalSection() override;

    /// Waits until the calling thread owns the lock.
    void Enter();
    /// Releases the lock once. Returns true. Does nothing if the lock is free.
    /// REQUIRES: the calling thread owns the lock, or it is free.
    bool Release() override;
    /// Counts an entry for the calling thread, then enters.
    void EnterForReleaseAll();
    /// Counts an entry and enters if the calling thread has no entry. Otherwise does nothing.
    void SingleEnter();
    /// Removes the calling thread's entries and leaves the section that many times, but only after a Release
    /// has cleared the locked state; does nothing while the state is locked (kept for compatibility).
    /// Returns true.
    bool ReleaseAll();
    /// Returns the owner's thread number in the system's form, null if not locked.
    HANDLE GetOwnerThread() const;

private:
    /// Enters. The time-out is ignored. Returns true.
    bool Acquire(unsigned long timeoutMs) override;

    bool m_bInitialized = false;
    bool m_bLocked = false;
    std::int32_t m_nRecursion = 0;
    CRITICAL_SECTION m_section;
    /// The number of entries, by thread number.
    std::map<std::int32_t, std::int32_t> m_entries;
};

} // namespace bss

#endif
