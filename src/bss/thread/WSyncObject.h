// bss::sync: objects that threads wait for. This header has their base class and an overview.
//
//     bss::sync::WEvent ready;                       // or WMutex, WSemaphore, WCriticalSection
//     if (ready.Lock(500)) { ... }                   // waits up to 500 ms
//     ready.SetEvent();                              // from another thread
//
// Which one?
//
// | class | header | choose it for |
// |---|---|---|
// | WCriticalSection | WCriticalSection.h | a lock inside one process; the fastest |
// | WMutex | WEvent.h | a lock that processes share by name; detects an owner that ended |
// | WEvent | WEvent.h | a signal from one thread to others |
// | WSemaphore | WEvent.h | a count of equal units |
// | WReadWriteLock | WReadWriteLock.h | many readers or one writer, writers first |
// | WReadWritePtrEx | WReadWritePtrEx.h | many readers or one writer, with time-outs (older code) |
//
// Take locks through WSingleLock or WMultiLock (WSingleLock.h), which release them at the end of their scope.
// Lock acquires, Unlock releases. Time-outs are milliseconds; every value from 0xFFFFFFFF up waits for ever.
//
// WSynchronizer.h has the older family, with the verbs Acquire and Release.
//
// Threads: all objects may be used from any thread. An object must not be destroyed while it is in use.

#ifndef BSS_THREAD_WSYNCOBJECT_H
#define BSS_THREAD_WSYNCOBJECT_H

#include "bss/Export.h"
#include "krtpal/types.h"

namespace bss::sync {

/// Base of the classes of bss::sync, which can't be copied or assigned. Derive from it to forbid copies.
class KRTBSS_API WNoncopyable {
public:
    WNoncopyable(const WNoncopyable&) = delete;
    WNoncopyable& operator=(const WNoncopyable&) = delete;

protected:
    WNoncopyable();
    /// May throw, because the destructor of WReadWritePtrEx does. All other derived classes declare theirs
    /// noexcept.
    virtual ~WNoncopyable() noexcept(false);
};

/// An object that a thread can wait for. Owns the handle that a derived class stores in m_handle.
class KRTBSS_API WSyncObject : public WNoncopyable {
public:
    /// Makes an object without a handle. The name is ignored: derived classes pass it to the system.
    explicit WSyncObject(const wchar_t* name);
    /// Closes the handle.
    ~WSyncObject() noexcept override;

    /// Waits for the object and acquires it.
    /// Returns true if acquired in time. Returns false after the time-out, if the wait fails or if there is
    /// no handle. An abandoned mutex (its owner ended without releasing it) returns false although the caller
    /// now owns it.
    virtual bool Lock(unsigned long timeoutMs);
    /// Waits as Lock does, and removes and dispatches the thread's messages meanwhile. `wakeMask` is the
    /// kinds of input (QS_...) that interrupt the wait. Returns as Lock does. Returns true at once, without
    /// acquiring the object, if a WM_QUIT message is removed; the message is not posted again. The time-out
    /// starts again whenever input arrives.
    virtual bool LockEx(unsigned long timeoutMs, unsigned long wakeMask);
    /// Returns true and does nothing. WSemaphore overrides it to release `count` units.
    virtual bool Unlock(long count, long* previous);
    /// Releases the object. Returns true on success.
    virtual bool Unlock() = 0;

    /// Returns the handle of the kernel object, null if there is none. The handle is still owned by this
    /// object.
    operator void*() const { return m_handle; }

protected:
    /// The handle of the kernel object. Set by the derived class, closed by this one.
    HANDLE m_handle = nullptr;
};

} // namespace bss::sync

#endif
