// bss::sync::WReadWriteLock and its holder: many readers or one writer; writers go first.
//
//     bss::sync::WReadWriteLock lock;
//     {
//         bss::sync::WSingleLockReadWrite reader(&lock, bss::sync::WSingleLockReadWrite::ReadLock);
//         ...
//     }
//
// While a writer waits, new readers queue behind it; when it is done, all of them go on together. The lock
// does not know its owners: a thread that holds the read lock and asks for it again while a writer waits
// blocks for ever, and one Unlock too many counts as a reader that never goes.
//
// Threads: the lock may be used from any thread, a holder from the one that made it.

#ifndef BSS_THREAD_WREADWRITELOCK_H
#define BSS_THREAD_WREADWRITELOCK_H

#include "bss/thread/WCriticalSection.h"

#include <cstdint>

namespace bss::sync {

class KRTBSS_API WReadWriteLock : public WNoncopyable {
public:
    /// That the system gave the semaphores is not tested.
    WReadWriteLock();
    /// Nobody may hold or await it.
    ~WReadWriteLock() noexcept override;

    /// Both wait for ever.
    void AcquireReadLock();
    void AcquireWriteLock();
    /// Gives back what the caller holds, for reading or writing.
    void Unlock();

private:
    WCriticalSection m_section; ///< guards the counts; never held while waiting or releasing
    HANDLE m_readers;           ///< semaphore on which readers wait
    HANDLE m_writers;
    std::int32_t m_nWaitingReaders = 0;
    std::int32_t m_nWaitingWriters = 0;
    std::int32_t m_nActive = 0; ///< so many readers; -1 for a writer; 0 when free
};

class KRTBSS_API WSingleLockReadWrite : public WNoncopyable {
public:
    enum e_lockstate : int { ReadLock = 1, WriteLock = 2 };

    /// Takes the lock as `state` says; any other value takes none. A null lock makes all operations do
    /// nothing.
    WSingleLockReadWrite(WReadWriteLock* lock, e_lockstate state);
    /// Unlocks once, also where nothing was locked: this is meant.
    ~WSingleLockReadWrite() noexcept override;

    virtual void AcquireReadLock();
    virtual void AcquireWriteLock();
    /// Unlocks without a look at IsLocked.
    virtual void Unlock();
    virtual bool IsLocked() const;

private:
    WReadWriteLock* m_pLock;
    std::uint32_t m_nState = 0; ///< not used
    bool m_bLocked = false;
};

} // namespace bss::sync

#endif
