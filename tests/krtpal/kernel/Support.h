// Handles that close themselves, names that no other run uses, and time enough for anything that is to
// happen.

#ifndef TESTS_KRTPAL_KERNEL_SUPPORT_H
#define TESTS_KRTPAL_KERNEL_SUPPORT_H

#include "krtpal/error.h"
#include "krtpal/process.h"
#include "krtpal/sync.h"
#include "krtpal/unqualified.h"

#include <cstdlib>
#include <string>
#include <utility>

/// A wait that takes so long has failed.
inline constexpr DWORD kLongMs = 60'000;
/// So long a thread gets to reach its wait, where nothing tells that it is there.
inline constexpr DWORD kSettleMs = 100;
inline constexpr DWORD kShortMs = 50;

class Handle {
public:
    Handle(HANDLE handle = nullptr) : m_handle(handle) {}
    Handle(Handle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Handle() { Close(); }
    void Close() {
        if (m_handle != nullptr) {
            CloseHandle(std::exchange(m_handle, nullptr));
        }
    }
    operator HANDLE() const { return m_handle; }

private:
    HANDLE m_handle;
};

inline Handle AutoEvent(bool set = false, const wchar_t* name = nullptr) {
    return CreateEventW(nullptr, FALSE, set ? TRUE : FALSE, name);
}
inline Handle ManualEvent(bool set = false, const wchar_t* name = nullptr) {
    return CreateEventW(nullptr, TRUE, set ? TRUE : FALSE, name);
}
inline Handle Mutex(bool owned = false, const wchar_t* name = nullptr) {
    return CreateMutexW(nullptr, owned ? TRUE : FALSE, name);
}
inline Handle Semaphore(LONG count, LONG maximum, const wchar_t* name = nullptr) {
    return CreateSemaphoreW(nullptr, count, maximum, name);
}

inline DWORD Poll(HANDLE handle) {
    return WaitForSingleObject(handle, 0);
}

/// A count from the environment; otherwise the short one, or the long one where KRTBSS_TEST_LONG is set.
inline long CountFrom(const char* variable, long shortCount, long longCount) {
    const char* const wanted = std::getenv(variable);
    return wanted != nullptr ? std::atol(wanted) : std::getenv("KRTBSS_TEST_LONG") ? longCount : shortCount;
}

/// A name for this process alone.
inline std::wstring OwnName(const std::wstring& what) {
    return L"krtbss-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" + what;
}

#endif
