// bss::sync::WCriticalSection: the library's usual lock inside one process. It is recursive: the owner can
// acquire it again, and releases it as many times.
//
//     bss::sync::WCriticalSection section;
//     {
//         bss::sync::WSingleLock lock(&section, true);
//         ...
//     }
//
// A wait ends only with the acquired lock: time-outs and wake masks are ignored, and no operation fails.
//
// Threads: may be used from any thread.

#ifndef BSS_THREAD_WCRITICALSECTION_H
#define BSS_THREAD_WCRITICALSECTION_H

#include "bss/thread/WSyncObject.h"
#include "krtpal/sync.h"

namespace bss::sync {

/// A recursive lock inside one process. It has no kernel object: the handle is null, so that WMultiLock can't
/// wait for it.
class KRTBSS_API WCriticalSection : public WSyncObject {
public:
    /// Makes a free lock.
    WCriticalSection();
    /// REQUIRES: no thread owns the lock or waits for it.
    ~WCriticalSection() noexcept override;

    /// Waits until the calling thread owns the lock. Returns true.
    bool Lock();
    /// See Lock(). The time-out is ignored.
    bool Lock(unsigned long timeoutMs) override;
    /// See Lock(). The arguments are ignored, and no messages are dispatched.
    bool LockEx(unsigned long timeoutMs, unsigned long wakeMask) override;
    using WSyncObject::Unlock;
    /// Releases the lock once. Returns true.
    /// REQUIRES: the calling thread owns the lock.
    bool Unlock() override;

    /// Returns the system's critical section, still owned by this object.
    operator _RTL_CRITICAL_SECTION*() { return &m_section; }

private:
    CRITICAL_SECTION m_section;
};

} // namespace bss::sync

#endif
