// bss::sync::WEvent, WMutex, WSemaphore: objects of the system's kernel. With a name, processes share them
// (see krtpal/sync.h for the rules of names).
//
//     bss::sync::WMutex mutex(false, L"Local\\instrument");
//     bss::sync::WSingleLock lock(&mutex, false);
//     if (lock.Lock(2000)) { ... }
//
// Constructors throw std::runtime_error if the object can't be made or opened. Security attributes are
// borrowed for the call; null is the system's default.

#ifndef BSS_THREAD_WEVENT_H
#define BSS_THREAD_WEVENT_H

#include "bss/thread/WSyncObject.h"
#include "krtpal/sync.h"

namespace bss::sync {

class KRTBSS_API WEvent : public WSyncObject {
public:
    /// "Critical Error: failed to create Event." if it fails.
    explicit WEvent(bool initialState = false, bool manualReset = false, const wchar_t* name = nullptr,
                    SECURITY_ATTRIBUTES* attributes = nullptr);

    /// True on success.
    bool SetEvent();
    bool ResetEvent();
    bool PulseEvent();
    using WSyncObject::Unlock;
    /// Does nothing, and answers true.
    bool Unlock() override;
};

class KRTBSS_API WMutex : public WSyncObject {
public:
    /// "Critical Error: failed to create Mutex." if it fails.
    explicit WMutex(bool initialOwner = false, const wchar_t* name = nullptr,
                    SECURITY_ATTRIBUTES* attributes = nullptr);

    using WSyncObject::Unlock;
    /// False if the calling thread does not own the mutex.
    bool Unlock() override;
};

class KRTBSS_API WSemaphore : public WSyncObject {
public:
    /// By default free, for one at a time. "Critical Error: failed to create Semaphore." if it fails, also
    /// for counts that 32 bits don't hold.
    explicit WSemaphore(long initialCount = 1, long maximumCount = 1, const wchar_t* name = nullptr,
                        SECURITY_ATTRIBUTES* attributes = nullptr);

    /// Gives `count` units back. False, without effect, if there would be more than the maximum; `previous`,
    /// which may be null, is set on success only.
    bool Unlock(long count, long* previous) override;
    /// Gives one unit back.
    bool Unlock() override;
};

} // namespace bss::sync

#endif
