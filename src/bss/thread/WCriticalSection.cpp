#include "bss/thread/WCriticalSection.h"

namespace bss::sync {

WCriticalSection::WCriticalSection() : WSyncObject(nullptr) {
    InitializeCriticalSection(&m_section);
}

WCriticalSection::~WCriticalSection() noexcept {
    DeleteCriticalSection(&m_section);
}

bool WCriticalSection::Lock() {
    EnterCriticalSection(&m_section);
    return true;
}

bool WCriticalSection::Lock(unsigned long /*timeoutMs*/) {
    return Lock();
}

bool WCriticalSection::LockEx(unsigned long /*timeoutMs*/, unsigned long /*wakeMask*/) {
    return Lock();
}

bool WCriticalSection::Unlock() {
    LeaveCriticalSection(&m_section);
    return true;
}

} // namespace bss::sync
