// bss::sync: objects that threads wait for. This header has their root.
//
//     bss::sync::WEvent ready;                       // or WMutex, WSemaphore, WCriticalSection
//     if (ready.Lock(500)) { ... }                   // waits up to 500 ms
//     ready.SetEvent();                              // from another thread
//
// Which one?
//
// | class | for |
// |---|---|
// | WCriticalSection | a lock inside one process; the fast one |
// | WMutex | a lock that processes share by name |
// | WEvent | one thread tells others |
// | WSemaphore | so many units |
// | WReadWriteLock | many readers or one writer |
//
// Take locks through WSingleLock, which gives them back at the end of its scope. Lock waits, Unlock gives
// back. Time-outs are milliseconds; every value from 0xFFFFFFFF up means for ever.
//
// The older family round bss::WSynchronizer (Acquire and Release) stands in WSynchronizer.h.
//
// Threads: all objects may be used from any thread. None may be destroyed while it is used.

#ifndef BSS_THREAD_WSYNCOBJECT_H
#define BSS_THREAD_WSYNCOBJECT_H

#include "bss/Export.h"
#include "krtpal/types.h"

namespace bss::sync {

/// Derive from it to forbid copies.
class KRTBSS_API WNoncopyable {
public:
    WNoncopyable(const WNoncopyable&) = delete;
    WNoncopyable& operator=(const WNoncopyable&) = delete;

protected:
    WNoncopyable();
    /// Derived classes whose destructors can't fail say so.
    virtual ~WNoncopyable() noexcept(false);
};

class KRTBSS_API WSyncObject : public WNoncopyable {
public:
    /// Owns the handle that a derived class fills in. The name counts for nothing here.
    explicit WSyncObject(const wchar_t* name);
    /// Closes the handle.
    ~WSyncObject() noexcept override;

    /// Waits for the object. True exactly when it was had in time: a mutex that its owner left locked when it
    /// ended gives false, although it is then owned. False without a handle.
    virtual bool Lock(unsigned long timeoutMs);
    /// Waits as Lock does, and dispatches the thread's messages meanwhile; `wakeMask` holds the kinds of
    /// input (QS_...) that are looked for. True as well, at once, when WM_QUIT is met, which is lost. The
    /// time-out begins anew whenever input arrives.
    virtual bool LockEx(unsigned long timeoutMs, unsigned long wakeMask);
    /// Does nothing here, and answers true.
    virtual bool Unlock(long count, long* previous);
    virtual bool Unlock() = 0;

    /// The handle of the kernel object; null if there is none. Stays owned by this object.
    operator void*() const { return m_handle; }

protected:
    HANDLE m_handle = nullptr;
};

} // namespace bss::sync

#endif
