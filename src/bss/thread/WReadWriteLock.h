// bss::sync::WReadWriteLock: many readers or one writer, writers first. WSingleLockReadWrite holds it for a
// scope.
//
//     bss::sync::WReadWriteLock lock;
//     {
//         bss::sync::WSingleLockReadWrite reader(&lock, bss::sync::WSingleLockReadWrite::ReadLock);
//         ...
//     }
//
// New readers wait while a writer waits. When the last writer releases the lock, all waiting readers acquire
// it together.
//
// The lock does not know its owners and is not recursive. A thread that holds the read lock and acquires it
// again while a writer waits deadlocks. An Unlock of a free lock is not detected: it counts as a reader that
// never leaves, so that writers wait for ever.
//
// Threads: the lock may be used from any thread, a holder from the thread that made it.

#ifndef BSS_THREAD_WREADWRITELOCK_H
#define BSS_THREAD_WREADWRITELOCK_H

#include "bss/thread/WCriticalSection.h"

#include <cstdint>

namespace bss::sync {

/// A lock for many readers or one writer inside one process.
class KRTBSS_API WReadWriteLock : public WNoncopyable {
public:
    /// Makes a free lock. The creation of its two semaphores is not checked.
    WReadWriteLock();
    /// REQUIRES: no thread holds the lock or waits for it.
    ~WReadWriteLock() noexcept override;

    /// Waits, without a time-out, until no writer holds the lock or waits for it; then holds it for reading.
    void AcquireReadLock();
    /// Waits, without a time-out, until the lock is free; then holds it for writing.
    void AcquireWriteLock();
    /// Releases one reader, or the writer. The last to release passes the lock to one waiting writer, or if
    /// there is none, to all waiting readers.
    /// REQUIRES: the caller holds the lock; this is not checked.
    void Unlock();

private:
    /// Guards the counts. Never held during a wait or a release of a semaphore.
    WCriticalSection m_section;
    /// Semaphore on which readers wait.
    HANDLE m_readers;
    /// Semaphore on which writers wait.
    HANDLE m_writers;
    std::int32_t m_nWaitingReaders = 0;
    std::int32_t m_nWaitingWriters = 0;
    /// The number of readers; -1 for a writer; 0 if the lock is free.
    std::int32_t m_nActive = 0;
};

/// Holds a WReadWriteLock for a scope. Borrows the lock, which must outlive the holder. With a null lock no
/// operation has an effect.
class KRTBSS_API WSingleLockReadWrite : public WNoncopyable {
public:
    /// How the constructor acquires the lock.
    enum e_lockstate : int { ReadLock = 1, WriteLock = 2 };

    /// Acquires the lock for reading or writing. Any other value of `state` acquires nothing.
    WSingleLockReadWrite(WReadWriteLock* lock, e_lockstate state);
    /// Releases the lock once, even if the holder never acquired it. This is intended.
    ~WSingleLockReadWrite() noexcept override;

    /// Acquires the lock for reading; see WReadWriteLock. IsLocked is then true.
    virtual void AcquireReadLock();
    /// Acquires the lock for writing; see WReadWriteLock. IsLocked is then true.
    virtual void AcquireWriteLock();
    /// Releases the lock once, without a test of IsLocked, which is then false.
    virtual void Unlock();
    /// Returns true from an acquisition to the next Unlock.
    virtual bool IsLocked() const;

private:
    WReadWriteLock* m_pLock;
    /// Not used.
    std::uint32_t m_nState = 0;
    bool m_bLocked = false;
};

} // namespace bss::sync

#endif
