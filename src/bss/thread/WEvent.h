// bss::sync::WEvent, WMutex, WSemaphore: objects of the system's kernel. Processes share those with a name
// (krtpal/sync.h has the rules of names).
//
//     bss::sync::WMutex mutex(false, L"Local\\instrument");
//     bss::sync::WSingleLock lock(&mutex, false);
//     if (lock.Lock(2000)) { ... }
//
// A constructor opens the existing object of that name, if there is one; its other arguments are then
// ignored. Security attributes are borrowed for the call; null means the system's default.
//
// Threads: all operations may be used from any thread. The thread that acquires a mutex owns it.

#ifndef BSS_THREAD_WEVENT_H
#define BSS_THREAD_WEVENT_H

#include "bss/thread/WSyncObject.h"
#include "krtpal/sync.h"

namespace bss::sync {

/// A flag that threads wait for. Lock waits until the event is set; a successful wait clears an auto-reset
/// event and leaves a manual-reset event set.
class KRTBSS_API WEvent : public WSyncObject {
public:
    /// Creates or opens an event. `initialState` true: set. `manualReset` false: an auto-reset event. Null
    /// name: known to this process only.
    /// Throws std::runtime_error, "Critical Error: failed to create Event.", on failure.
    explicit WEvent(bool initialState = false, bool manualReset = false, const wchar_t* name = nullptr,
                    SECURITY_ATTRIBUTES* attributes = nullptr);

    /// Sets the event. Releases one waiting thread of an auto-reset event, all of a manual-reset one.
    /// Returns true on success.
    bool SetEvent();
    /// Clears the event. Returns true on success.
    bool ResetEvent();
    /// Releases the threads that wait now (one of them, for an auto-reset event) and clears the event.
    /// Returns true on success.
    bool PulseEvent();
    using WSyncObject::Unlock;
    /// Returns true and does nothing: an event has no owner.
    bool Unlock() override;
};

/// A recursive lock that processes can share by name.
class KRTBSS_API WMutex : public WSyncObject {
public:
    /// Creates or opens a mutex. With `initialOwner` the calling thread owns a mutex that was created, not
    /// one that existed. Null name: known to this process only. Throws std::runtime_error, "Critical Error:
    /// failed to create Mutex.", on failure.
    explicit WMutex(bool initialOwner = false, const wchar_t* name = nullptr,
                    SECURITY_ATTRIBUTES* attributes = nullptr);

    using WSyncObject::Unlock;
    /// Releases the mutex once. Returns false, without effect, if the calling thread does not own it.
    bool Unlock() override;
};

/// A count of free units. Lock takes one unit and waits while there is none.
class KRTBSS_API WSemaphore : public WSyncObject {
public:
    /// Creates or opens a semaphore. The default is one free unit of one. Null name: known to this process
    /// only.
    /// Throws std::runtime_error, "Critical Error: failed to create Semaphore.", on failure, and for counts
    /// beyond 32 bits.
    explicit WSemaphore(long initialCount = 1, long maximumCount = 1, const wchar_t* name = nullptr,
                        SECURITY_ATTRIBUTES* attributes = nullptr);

    /// Releases `count` units. `previous` (may be null) receives the number of free units before.
    /// Returns false, without effect, if `count` is below 1 or the result would be over the maximum;
    /// `*previous` is then unchanged.
    bool Unlock(long count, long* previous) override;
    /// Releases one unit. See Unlock(long, long*).
    bool Unlock() override;
};

} // namespace bss::sync

#endif
