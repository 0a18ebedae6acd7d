#include "bss/thread/WReadWritePtrEx.h"

#include "krtpal/sync.h"

#include <stdexcept>

namespace bss::sync {

WReadWritePtrEx::WReadWritePtrEx() = default;

WReadWritePtrEx::~WReadWritePtrEx() noexcept(false) { // NOLINT(bugprone-exception-escape)
    if (!m_semaphore.Lock(INFINITE)) {
        throw std::runtime_error("Critical Failure: destroying a locked object.");
    }
}

bool WReadWritePtrEx::AcquireReadLock() {
    if (!m_mutex.Lock(m_nTimeoutMs)) {
        return false;
    }
    bool result = true;
    if (++m_nReaders == 1) {
        result =
            m_semaphore.Lock(m_nTimeoutMs); // the count stays raised if this fails (kept for compatibility)
    }
    m_mutex.Unlock();
    return result;
}

bool WReadWritePtrEx::ReleaseReadLock() {
    if (!m_mutex.Lock(m_nTimeoutMs)) {
        return false;
    }
    bool result = false;
    if (--m_nReaders == 0) {
        long previous = 0;
        result = m_semaphore.Unlock(1, &previous);
    }
    m_mutex.Unlock();
    return result;
}

bool WReadWritePtrEx::AcquireWriteLock() {
    return m_semaphore.Lock(m_nTimeoutMs);
}

bool WReadWritePtrEx::ReleaseWriteLock() {
    long previous = 0;
    const bool result = m_semaphore.Unlock(1, &previous);
    if (previous != 0) {
        throw std::runtime_error("ReleaseWriteLock - Semaphore was not locked!");
    }
    return result;
}

bool WReadWritePtrEx::CanRead() {
    return m_nReaders > 0;
}

bool WReadWritePtrEx::CanWrite() {
    if (m_nReaders > 1) {
        return false;
    }
    if (!m_semaphore.Lock(INFINITE)) {
        return true;
    }
    if (!m_semaphore.Unlock(1, nullptr)) {
        throw std::runtime_error("WriteOK - ReleaseSemaphore failed");
    }
    return false; // also on success (kept for compatibility)
}

} // namespace bss::sync
