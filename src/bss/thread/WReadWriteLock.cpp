#include "bss/thread/WReadWriteLock.h"

#include "bss/thread/WSingleLock.h"
#include "krtpal/sync.h"

namespace bss::sync {

WReadWriteLock::WReadWriteLock()
    : m_readers(CreateSemaphoreW(nullptr, 0, 0x7FFFFFFF, nullptr)),
      m_writers(CreateSemaphoreW(nullptr, 0, 0x7FFFFFFF, nullptr)) {}

WReadWriteLock::~WReadWriteLock() noexcept {
    CloseHandle(m_readers);
    CloseHandle(m_writers);
}

void WReadWriteLock::AcquireReadLock() {
    bool waits = false;
    {
        const WSingleLock guard(&m_section, true);
        if (m_nWaitingWriters > 0 || m_nActive < 0) {
            ++m_nWaitingReaders;
            waits = true;
        } else {
            ++m_nActive;
        }
    }
    if (waits) {
        WaitForSingleObject(m_readers, INFINITE); // the releaser has counted this reader as active
    }
}

void WReadWriteLock::AcquireWriteLock() {
    bool waits = false;
    {
        const WSingleLock guard(&m_section, true);
        if (m_nActive != 0) {
            ++m_nWaitingWriters;
            waits = true;
        } else {
            m_nActive = -1;
        }
    }
    if (waits) {
        WaitForSingleObject(m_writers, INFINITE); // the releaser has set the active count
    }
}

void WReadWriteLock::Unlock() {
    HANDLE chosen = nullptr;
    LONG count = 0;
    {
        const WSingleLock guard(&m_section, true);
        m_nActive += m_nActive < 1 ? 1 : -1;
        if (m_nActive == 0) {
            if (m_nWaitingWriters > 0) {
                --m_nWaitingWriters;
                m_nActive = -1;
                chosen = m_writers;
                count = 1;
            } else if (m_nWaitingReaders > 0) {
                m_nActive = m_nWaitingReaders;
                count = m_nWaitingReaders;
                m_nWaitingReaders = 0;
                chosen = m_readers;
            }
        }
    }
    if (chosen != nullptr) {
        ReleaseSemaphore(chosen, count, nullptr);
    }
}

WSingleLockReadWrite::WSingleLockReadWrite(WReadWriteLock* lock, e_lockstate state) : m_pLock(lock) {
    if (state == ReadLock) {
        WSingleLockReadWrite::AcquireReadLock();
    } else if (state == WriteLock) {
        WSingleLockReadWrite::AcquireWriteLock();
    }
}

WSingleLockReadWrite::~WSingleLockReadWrite() noexcept {
    WSingleLockReadWrite::Unlock();
}

void WSingleLockReadWrite::AcquireReadLock() {
    if (m_pLock != nullptr) {
        m_pLock->AcquireReadLock();
        m_bLocked = true;
    }
}

void WSingleLockReadWrite::AcquireWriteLock() {
    if (m_pLock != nullptr) {
        m_pLock->AcquireWriteLock();
        m_bLocked = true;
    }
}

void WSingleLockReadWrite::Unlock() {
    if (m_pLock != nullptr) {
        m_pLock->Unlock();
        m_bLocked = false;
    }
}

bool WSingleLockReadWrite::IsLocked() const {
    return m_bLocked;
}

} // namespace bss::sync
