#include "bss/thread/WSynchronizer.h"

#include "bss/thread/private/EventCalls.h"
#include "bss/thread/private/Wait.h"
#include "krtpal/debug.h"
#include "krtpal/error.h"
#include "krtpal/memory.h"
#include "krtpal/process.h"

#include <string>

namespace bss {

namespace {

std::int32_t ThreadNumber() {
    return static_cast<std::int32_t>(GetCurrentThreadId());
}

} // namespace

WSynchronizer::WSynchronizer(const wchar_t* name) : m_name(name) {}

WSynchronizer::~WSynchronizer() {
    if (m_handle == nullptr || CloseHandle(m_handle) != FALSE) {
        return;
    }
    wchar_t* text = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                       FORMAT_MESSAGE_IGNORE_INSERTS,
                   nullptr, GetLastError(), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                   reinterpret_cast<LPWSTR>(&text), 0, nullptr);
    OutputDebugStringW(L"\tWSynchronizer:\t::~WSynchronizer get last error: ");
    if (text != nullptr) {
        OutputDebugStringW(text);
    }
    OutputDebugStringW(L"\n");
    LocalFree(text);
}

bool WSynchronizer::Acquire(unsigned long timeoutMs) {
    return wait::ForObject(m_handle, timeoutMs);
}

bool WSynchronizer::AcquireEx(unsigned long timeoutMs, unsigned long wakeMask) {
    return wait::ForObjectOrInput(m_handle, timeoutMs, wakeMask);
}

WEvent::WEvent(bool initialState, bool manualReset, const wchar_t* name, SECURITY_ATTRIBUTES* attributes)
    : WSynchronizer(name) {
    m_handle = CreateEventW(attributes, manualReset ? TRUE : FALSE, initialState ? TRUE : FALSE, name);
}

WEvent::~WEvent() = default;

bool WEvent::Acquire(unsigned long timeoutMs) {
    return m_handle != nullptr && WSynchronizer::Acquire(timeoutMs);
}

bool WEvent::AcquireEx(unsigned long timeoutMs, unsigned long wakeMask) {
    return m_handle != nullptr && WSynchronizer::AcquireEx(timeoutMs, wakeMask);
}

bool WEvent::Release() {
    return m_handle != nullptr && SignalEvent(m_handle);
}

bool WEvent::ResetEvent() {
    return m_handle != nullptr && ClearEvent(m_handle);
}

bool WEvent::SetEvent() {
    return m_handle != nullptr && SignalEvent(m_handle);
}

bool WEvent::PulseEvent() {
    return SignalAndClearEvent(m_handle);
}

WCriticalSection::WCriticalSection() : WSynchronizer(nullptr) {
    InitializeCriticalSection(&m_section);
    m_bInitialized = true;
}

WCriticalSection::~WCriticalSection() {
    if (!m_bInitialized) {
        return;
    }
    if (m_bLocked) {
        while (m_nRecursion > 0) {
            LeaveCriticalSection(&m_section);
            --m_nRecursion;
        }
        m_bLocked = false;
    }
    DeleteCriticalSection(&m_section);
}

void WCriticalSection::Enter() {
    EnterCriticalSection(&m_section);
    ++m_nRecursion;
    m_bLocked = true;
}

bool WCriticalSection::Acquire(unsigned long /*timeoutMs*/) {
    Enter();
    return true;
}

bool WCriticalSection::Release() {
    if (!m_bLocked) {
        return true;
    }
    if (--m_nRecursion == 0) {
        m_bLocked = false;
    }
    LeaveCriticalSection(&m_section);
    return true;
}

void WCriticalSection::EnterForReleaseAll() {
    ++m_entries[ThreadNumber()]; // without a guard: callers serialize (see the class)
    Enter();
}

void WCriticalSection::SingleEnter() {
    if (m_entries.emplace(ThreadNumber(), 1).second) {
        Enter();
    }
}

bool WCriticalSection::ReleaseAll() {
    if (m_bLocked) {
        return true;
    }
    if (--m_nRecursion == 0) {
        m_bLocked = false;
    }
    const auto entry = m_entries.find(ThreadNumber());
    if (entry != m_entries.end()) {
        std::int32_t count = entry->second;
        m_entries.erase(entry);
        for (; count > 0; --count) {
            LeaveCriticalSection(&m_section);
        }
    }
    return true;
}

HANDLE WCriticalSection::GetOwnerThread() const {
    return m_bLocked ? m_section.OwningThread : nullptr;
}

} // namespace bss
