#include "bss/thread/WEvent.h"

#include "bss/thread/private/EventCalls.h"
#include "krtpal/error.h"

#include <limits>
#include <stdexcept>

namespace bss::sync {

namespace {

bool FitsCount(long value) {
    return value >= std::numeric_limits<LONG>::min() && value <= std::numeric_limits<LONG>::max();
}

} // namespace

WEvent::WEvent(bool initialState, bool manualReset, const wchar_t* name, SECURITY_ATTRIBUTES* attributes)
    : WSyncObject(name) {
    m_handle = CreateEventW(attributes, manualReset ? TRUE : FALSE, initialState ? TRUE : FALSE, name);
    if (m_handle == nullptr) {
        throw std::runtime_error("Critical Error: failed to create Event.");
    }
}

bool WEvent::SetEvent() {
    return SignalEvent(m_handle);
}

bool WEvent::ResetEvent() {
    return ClearEvent(m_handle);
}

bool WEvent::PulseEvent() {
    return SignalAndClearEvent(m_handle);
}

bool WEvent::Unlock() {
    return true;
}

WMutex::WMutex(bool initialOwner, const wchar_t* name, SECURITY_ATTRIBUTES* attributes) : WSyncObject(name) {
    m_handle = CreateMutexW(attributes, initialOwner ? TRUE : FALSE, name);
    if (m_handle == nullptr) {
        throw std::runtime_error("Critical Error: failed to create Mutex.");
    }
}

bool WMutex::Unlock() {
    return ReleaseMutex(m_handle) != FALSE;
}

WSemaphore::WSemaphore(long initialCount, long maximumCount, const wchar_t* name,
                       SECURITY_ATTRIBUTES* attributes)
    : WSyncObject(name) {
    if (FitsCount(initialCount) && FitsCount(maximumCount)) {
        m_handle = CreateSemaphoreW(attributes, static_cast<LONG>(initialCount),
                                    static_cast<LONG>(maximumCount), name);
    }
    if (m_handle == nullptr) {
        throw std::runtime_error("Critical Error: failed to create Semaphore.");
    }
}

bool WSemaphore::Unlock(long count, long* previous) {
    if (!FitsCount(count)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    LONG before = 0;
    if (ReleaseSemaphore(m_handle, static_cast<LONG>(count), &before) == FALSE) {
        return false;
    }
    if (previous != nullptr) {
        *previous = before;
    }
    return true;
}

bool WSemaphore::Unlock() {
    return Unlock(1, nullptr);
}

} // namespace bss::sync
