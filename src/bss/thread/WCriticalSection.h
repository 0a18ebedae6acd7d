// bss::sync::WCriticalSection: the library's usual lock, inside one process; its owner can take it again.
//
//     bss::sync::WCriticalSection section;
//     {
//         bss::sync::WSingleLock lock(&section, true);
//         ...
//     }
//
// Waits never fail: time-outs and masks count for nothing.

#ifndef BSS_THREAD_WCRITICALSECTION_H
#define BSS_THREAD_WCRITICALSECTION_H

#include "bss/thread/WSyncObject.h"
#include "krtpal/sync.h"

namespace bss::sync {

class KRTBSS_API WCriticalSection : public WSyncObject {
public:
    WCriticalSection();
    /// Nobody may hold it.
    ~WCriticalSection() noexcept override;

    /// Always true.
    bool Lock();
    bool Lock(unsigned long timeoutMs) override;
    bool LockEx(unsigned long timeoutMs, unsigned long wakeMask) override;
    using WSyncObject::Unlock;
    /// Always true. By the owner only.
    bool Unlock() override;

    /// Stays owned by this object.
    operator _RTL_CRITICAL_SECTION*() { return &m_section; }

private:
    CRITICAL_SECTION m_section;
};

} // namespace bss::sync

#endif
