// bss::sync::WReadWritePtrEx: many readers or one writer, with time-outs. The first reader takes the data for
// all, the last one gives them back.
//
//     bss::sync::WReadWritePtrEx lock;
//     if (lock.AcquireReadLock()) {
//         ...
//         lock.ReleaseReadLock();
//     }
//
// Each wait ends after 2000 ms, but for those of CanWrite and of the destructor. There is no preference for
// writers. New code takes WReadWriteLock.

#ifndef BSS_THREAD_WREADWRITEPTREX_H
#define BSS_THREAD_WREADWRITEPTREX_H

#include "bss/thread/WEvent.h"

#include <cstdint>

namespace bss::sync {

class KRTBSS_API WReadWritePtrEx : public WNoncopyable {
public:
    WReadWritePtrEx();
    /// Waits for ever until the data are free; throws std::runtime_error, "Critical Failure: destroying a
    /// locked object.", if the wait fails.
    ~WReadWritePtrEx() noexcept(false) override; // NOLINT(bugprone-exception-escape): told to throw

    /// False if the data, or the turn to ask for them, did not come in time. In the first case the reader is
    /// counted all the same, and this is meant: ReleaseReadLock takes it back.
    bool AcquireReadLock();
    /// True for the last reader. False for the others, which is no failure, or if the turn did not come in
    /// time.
    bool ReleaseReadLock();
    bool AcquireWriteLock();
    /// False if the data were not held. Throws std::runtime_error, "ReleaseWriteLock - Semaphore was not
    /// locked!", if the count before was not 0.
    bool ReleaseWriteLock();
    /// Whether there are readers.
    bool CanRead();
    /// False if there are several readers. Otherwise waits for the data for ever and gives them back: false
    /// if they could be had, which is meant so, true if the wait failed. Throws std::runtime_error, "WriteOK
    /// - ReleaseSemaphore failed", if they could not be given back.
    bool CanWrite();

private:
    WMutex m_mutex; ///< guards the count
    WSemaphore m_semaphore{1, 1};
    std::int32_t m_nReaders = 0;
    std::uint32_t m_nTimeoutMs = 2000;
};

} // namespace bss::sync

#endif
