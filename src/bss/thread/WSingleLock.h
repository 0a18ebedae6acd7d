// bss::sync::WSingleLock, WMultiLock: hold one object or several objects of bss::sync for a scope.
//
//     bss::sync::WSingleLock guard(&section, true);     // the standard guard
//
//     bss::sync::WSyncObject* both[] = {&mutex, &event};
//     bss::sync::WMultiLock lock(both, 2, false);
//     if (lock.Lock(1000, true, 0) == WAIT_OBJECT_0) { ... }
//
// A holder borrows its objects, which must outlive it. Its destructor releases the objects that it holds.
//
// Time-outs are milliseconds; every value from 0xFFFFFFFF up waits for ever.
//
// Threads: a holder belongs to the thread that made it.

#ifndef BSS_THREAD_WSINGLELOCK_H
#define BSS_THREAD_WSINGLELOCK_H

#include "bss/thread/WSyncObject.h"

#include <cstdint>

namespace bss::sync {

/// Holds one object for a scope.
class KRTBSS_API WSingleLock : public WNoncopyable {
public:
    /// Stores the object. With `initialLock`, waits for it without a time-out; IsLocked is the result.
    /// REQUIRES: `object` is not null.
    WSingleLock(WSyncObject* object, bool initialLock);
    /// Releases the object if it is held.
    ~WSingleLock() noexcept override;

    /// Calls the object's Lock and returns its result, which also becomes the state, whatever the state was.
    bool Lock(unsigned long timeoutMs);
    /// Calls the object's LockEx. See Lock.
    bool LockEx(unsigned long timeoutMs, unsigned long wakeMask);
    /// Calls the object's Unlock and returns its result; on false the holder stays locked. Returns true and
    /// does nothing if not locked.
    bool Unlock();
    /// Calls the object's Unlock(count, previous). See Unlock().
    bool Unlock(long count, long* previous);
    /// Returns the state: true from a successful wait to a successful Unlock.
    bool IsLocked() const { return m_bLocked; }

private:
    WSyncObject* m_pObject;
    HANDLE m_handle;
    bool m_bLocked = false;
};

/// Holds any of several objects for a scope. A WCriticalSection has no handle and can't be among them.
class KRTBSS_API WMultiLock : public WNoncopyable {
public:
    /// Stores `count` objects; the array is borrowed as well. With `initialLock`, waits for all of them
    /// without a time-out; if the wait fails none is held.
    WMultiLock(WSyncObject** objects, unsigned int count, bool initialLock);
    /// Releases the objects that are held.
    ~WMultiLock() noexcept override;

    /// Waits for all objects (`waitAll`) or for one of them. A `wakeMask` other than 0 ends the wait on input
    /// of these kinds (QS_...) as well.
    /// Returns the result of WaitForMultipleObjects, or with a wake mask of MsgWaitForMultipleObjects. If it
    /// is below the count, all objects are held, or without `waitAll` the one with that index.
    unsigned long Lock(unsigned long timeoutMs, bool waitAll, unsigned long wakeMask);
    /// Releases all objects that are held. Returns true, even if a release fails; that object stays held.
    bool Unlock();
    /// Releases `count` units of each semaphore that is held, and no other object. `previous` (may be null)
    /// receives the count of the last one. Returns true if at least one semaphore was held, whatever the
    /// results of the releases.
    bool Unlock(long count, long* previous);
    /// Returns true if the object with that index is held.
    /// REQUIRES: `index` is below the count; this is not checked.
    bool IsLocked(unsigned int index) const { return m_pLocked[index]; }

private:
    /// Up to this many objects need no memory from the heap.
    static constexpr unsigned int kInline = 8;

    HANDLE m_aHandles[kInline] = {};
    bool m_aLocked[kInline] = {};
    WSyncObject** m_ppObjects;
    HANDLE* m_pHandles;
    bool* m_pLocked;
    std::uint32_t m_nCount;
};

} // namespace bss::sync

#endif
