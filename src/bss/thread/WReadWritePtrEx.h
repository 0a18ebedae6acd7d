// bss::sync::WReadWritePtrEx: many readers or one writer, with time-outs. The first reader acquires the data
// for all readers, the last one releases them.
//
//     bss::sync::WReadWritePtrEx lock;
//     if (lock.AcquireReadLock()) {
//         ...
//         lock.ReleaseReadLock();
//     }
//
// Each wait ends after 2000 ms, except those of CanWrite and of the destructor, which have no time-out.
// Writers have no preference: a steady stream of readers keeps them waiting. Use WReadWriteLock in new code.
//
// Threads: may be used from any thread. While the first reader waits for the data, later readers wait for it.

#ifndef BSS_THREAD_WREADWRITEPTREX_H
#define BSS_THREAD_WREADWRITEPTREX_H

#include "bss/thread/WEvent.h"

#include <cstdint>

namespace bss::sync {

/// A lock for many readers or one writer whose waits end after 2000 ms.
class KRTBSS_API WReadWritePtrEx : public WNoncopyable {
public:
    /// Makes a free lock. Throws std::runtime_error if the mutex or the semaphore can't be created.
    WReadWritePtrEx();
    /// Waits for ever until the data are free.
    /// Throws std::runtime_error, "Critical Failure: destroying a locked object.", if the wait fails.
    ~WReadWritePtrEx() noexcept(false) override; // NOLINT(bugprone-exception-escape): declared to throw

    /// Acquires the data for reading. Returns false after the time-out, which the guard of the reader count
    /// and the data have each. If the data time out, the reader is counted although the result is false
    /// (intended); ReleaseReadLock takes it back.
    bool AcquireReadLock();
    /// Removes one reader; the last one releases the data. Returns true for the last reader only, false for
    /// the others (intended) and if the guard of the reader count times out.
    bool ReleaseReadLock();
    /// Acquires the data for writing. Returns false after the time-out.
    bool AcquireWriteLock();
    /// Releases the data. Returns false if they were not held.
    /// Throws std::runtime_error, "ReleaseWriteLock - Semaphore was not locked!", if the previous count was
    /// not 0.
    bool ReleaseWriteLock();
    /// Returns true if there are readers.
    bool CanRead();
    /// Returns false if there is more than one reader. Otherwise waits for the data without a time-out and
    /// releases them. Returns false even on success (kept for compatibility), true if the wait fails.
    /// Throws std::runtime_error, "WriteOK - ReleaseSemaphore failed", if the release fails.
    bool CanWrite();

private:
    /// Guards the reader count.
    WMutex m_mutex;
    /// Has no free unit while the data are in use.
    WSemaphore m_semaphore{1, 1};
    std::int32_t m_nReaders = 0;
    std::uint32_t m_nTimeoutMs = 2000;
};

} // namespace bss::sync

#endif
