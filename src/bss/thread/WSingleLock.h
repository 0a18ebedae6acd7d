// bss::sync::WSingleLock, WMultiLock: hold one or several objects of bss::sync for a scope.
//
//     bss::sync::WSingleLock guard(&section, true);     // the standard guard
//
//     bss::sync::WSyncObject* both[] = {&mutex, &event};
//     bss::sync::WMultiLock lock(both, 2, false);
//     if (lock.Lock(1000, true, 0) == WAIT_OBJECT_0) { ... }
//
// A holder borrows its objects, which must outlive it, and gives back at its end what it holds.
//
// Threads: a holder belongs to the thread that made it.

#ifndef BSS_THREAD_WSINGLELOCK_H
#define BSS_THREAD_WSINGLELOCK_H

#include "bss/thread/WSyncObject.h"

#include <cstdint>

namespace bss::sync {

class KRTBSS_API WSingleLock : public WNoncopyable {
public:
    /// With `initialLock` waits for the object, for ever; whether it was had, IsLocked tells.
    WSingleLock(WSyncObject* object, bool initialLock);
    ~WSingleLock() noexcept override;

    /// The object's operation; its result becomes the state, whatever the state was.
    bool Lock(unsigned long timeoutMs);
    bool LockEx(unsigned long timeoutMs, unsigned long wakeMask);
    /// True, and nothing is done, unless locked. Otherwise the object's result; it stays locked on false.
    bool Unlock();
    bool Unlock(long count, long* previous);
    bool IsLocked() const { return m_bLocked; }

private:
    WSyncObject* m_pObject;
    HANDLE m_handle;
    bool m_bLocked = false;
};

class KRTBSS_API WMultiLock : public WNoncopyable {
public:
    /// Of `count` objects; the array is borrowed, too. With `initialLock` waits for all of them, for ever.
    WMultiLock(WSyncObject** objects, unsigned int count, bool initialLock);
    ~WMultiLock() noexcept override;

    /// The result of WaitForMultipleObjects, or with a wake mask that of MsgWaitForMultipleObjects. Below the
    /// count, all objects are held (`waitAll`) or the one of that index.
    unsigned long Lock(unsigned long timeoutMs, bool waitAll, unsigned long wakeMask);
    /// Gives all back that are held. Always true.
    bool Unlock();
    /// Gives units back to the semaphores that are held, and to no other object. False if there is none.
    bool Unlock(long count, long* previous);
    /// `index` is not looked at: it must be below the count.
    bool IsLocked(unsigned int index) const { return m_pLocked[index]; }

private:
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
