#include "bss/thread/WSyncObject.h"

#include "bss/thread/private/Wait.h"
#include "krtpal/sync.h"

namespace bss::sync {

WNoncopyable::WNoncopyable() = default;
WNoncopyable::~WNoncopyable() noexcept(false) {} // NOLINT(modernize-use-equals-default)

WSyncObject::WSyncObject(const wchar_t* /*name*/) {}

WSyncObject::~WSyncObject() noexcept {
    if (m_handle != nullptr) {
        CloseHandle(m_handle);
        m_handle = nullptr;
    }
}

bool WSyncObject::Lock(unsigned long timeoutMs) {
    return wait::ForObject(m_handle, timeoutMs);
}

bool WSyncObject::LockEx(unsigned long timeoutMs, unsigned long wakeMask) {
    return wait::ForObjectOrInput(m_handle, timeoutMs, wakeMask);
}

bool WSyncObject::Unlock(long /*count*/, long* /*previous*/) {
    return true;
}

} // namespace bss::sync
