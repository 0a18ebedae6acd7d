#include "bss/thread/WSingleLock.h"

#include "bss/thread/WEvent.h"
#include "bss/thread/private/Wait.h"
#include "krtpal/message.h"
#include "krtpal/sync.h"

#include <algorithm>
#include <memory>

namespace bss::sync {

WSingleLock::WSingleLock(WSyncObject* object, bool initialLock) : m_pObject(object), m_handle(*object) {
    if (initialLock) {
        m_bLocked = m_pObject->Lock(INFINITE);
    }
}

WSingleLock::~WSingleLock() noexcept {
    Unlock();
}

bool WSingleLock::Lock(unsigned long timeoutMs) {
    m_bLocked = m_pObject->Lock(timeoutMs);
    return m_bLocked;
}

bool WSingleLock::LockEx(unsigned long timeoutMs, unsigned long wakeMask) {
    m_bLocked = m_pObject->LockEx(timeoutMs, wakeMask);
    return m_bLocked;
}

bool WSingleLock::Unlock() {
    if (!m_bLocked) {
        return true;
    }
    const bool result = m_pObject->Unlock();
    m_bLocked = !result;
    return result;
}

bool WSingleLock::Unlock(long count, long* previous) {
    if (!m_bLocked) {
        return true;
    }
    const bool result = m_pObject->Unlock(count, previous);
    m_bLocked = !result;
    return result;
}

WMultiLock::WMultiLock(WSyncObject** objects, unsigned int count, bool initialLock)
    : m_ppObjects(objects), m_pHandles(m_aHandles), m_pLocked(m_aLocked), m_nCount(count) {
    if (count > kInline) {
        std::unique_ptr<HANDLE[]> handles(new HANDLE[count]());
        m_pLocked = new bool[count]();
        m_pHandles = handles.release();
    }
    for (unsigned int i = 0; i < count; ++i) {
        m_pHandles[i] = *objects[i];
    }
    if (initialLock && WaitForMultipleObjects(count, m_pHandles, TRUE, INFINITE) < count) {
        std::fill_n(m_pLocked, count, true);
    }
}

WMultiLock::~WMultiLock() noexcept {
    Unlock();
    if (m_pHandles != m_aHandles) {
        delete[] m_pHandles;
        delete[] m_pLocked;
    }
}

unsigned long WMultiLock::Lock(unsigned long timeoutMs, bool waitAll, unsigned long wakeMask) {
    const DWORD time = wait::TimeOut(timeoutMs);
    const BOOL all = waitAll ? TRUE : FALSE;
    const DWORD result = wakeMask != 0 ? MsgWaitForMultipleObjects(m_nCount, m_pHandles, all, time,
                                                                   static_cast<DWORD>(wakeMask))
                                       : WaitForMultipleObjects(m_nCount, m_pHandles, all, time);
    if (result < m_nCount) {
        if (waitAll) {
            std::fill_n(m_pLocked, m_nCount, true);
        } else {
            m_pLocked[result] = true;
        }
    }
    return result;
}

bool WMultiLock::Unlock() {
    for (unsigned int i = 0; i < m_nCount; ++i) {
        if (m_pLocked[i]) {
            m_pLocked[i] = !m_ppObjects[i]->Unlock();
        }
    }
    return true;
}

bool WMultiLock::Unlock(long count, long* previous) {
    bool met = false;
    for (unsigned int i = 0; i < m_nCount; ++i) {
        if (!m_pLocked[i]) {
            continue;
        }
        if (auto* const semaphore = dynamic_cast<WSemaphore*>(m_ppObjects[i])) {
            met = true;
            m_pLocked[i] = !semaphore->Unlock(count, previous);
        }
    }
    return met;
}

} // namespace bss::sync
