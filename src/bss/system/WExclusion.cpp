#include "bss/system/WExclusion.h"

#include "bss/module.h"
#include "krtpal/error.h"
#include "krtpal/module.h"
#include "krtpal/process.h"
#include "krtpal/security.h"
#include "krtpal/sync.h"
#include "krtpal/user.h"

#include <cstdint>
#include <cstdio>
#include <utility>

namespace bss {

namespace {

HANDLE Duplicate(HANDLE handle) {
    HANDLE copy = nullptr;
    if (handle != nullptr) {
        DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, FALSE,
                        DUPLICATE_SAME_ACCESS);
    }
    return copy;
}

// Returns the text, or the string of the module if `name` is the number of one.
std::wstring TextOf(const wchar_t* name) {
    const auto number = reinterpret_cast<std::uintptr_t>(name);
    if (number == 0) {
        return {};
    }
    if (number > 0xFFFF) {
        return name;
    }
    wchar_t text[256] = {};
    const int length = LoadStringW(GetBSSHandle(), static_cast<UINT>(number), text, 256);
    return std::wstring(text, static_cast<std::size_t>(length > 0 ? length : 0));
}

std::wstring DesktopSuffix() {
    wchar_t desktop[256] = {};
    DWORD needed = 0;
    const bool known = GetUserObjectInformationW(GetThreadDesktop(GetCurrentThreadId()), UOI_NAME, desktop,
                                                 sizeof(desktop), &needed) != FALSE;
    return L"-" + (known ? std::wstring(desktop) : std::wstring(L"Win9x"));
}

std::wstring LogonSuffix() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) {
        return {};
    }
    TOKEN_STATISTICS statistics{};
    DWORD needed = 0;
    GetTokenInformation(token, TokenStatistics, &statistics, sizeof(statistics), &needed);
    CloseHandle(token);
    char text[24];
    std::snprintf(text, sizeof(text), "-%08x%08x",
                  static_cast<unsigned>(statistics.AuthenticationId.HighPart),
                  static_cast<unsigned>(statistics.AuthenticationId.LowPart));
    return std::wstring(text, text + 17);
}

std::wstring UserSuffix() {
    wchar_t machine[256] = {};
    DWORD machineSize = 256;
    wchar_t user[65] = {};
    DWORD userSize = 65;
    const bool machineKnown = GetComputerNameW(machine, &machineSize) != FALSE;
    const bool userKnown = GetUserNameW(user, &userSize) != FALSE;
    return std::wstring(L"-") + (machineKnown ? machine : L"") + L"-" + (userKnown ? user : L"");
}

} // namespace

WExclusion::WExclusion() = default;

WExclusion::WExclusion(const WExclusion& other) : m_handle(Duplicate(other.m_handle)) {}

WExclusion::WExclusion(WExclusion&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}

WExclusion& WExclusion::operator=(const WExclusion& other) {
    if (this != &other) {
        WExclusion::ReleaseExclusion();
        m_handle = Duplicate(other.m_handle);
    }
    return *this;
}

WExclusion& WExclusion::operator=(WExclusion&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    return *this;
}

WExclusion::~WExclusion() {
    WExclusion::ReleaseExclusion();
}

bool WExclusion::SetExclusion(const wchar_t* name, _kind kind) {
    WExclusion::ReleaseExclusion();
    const std::wstring fullName = CreateExclusionName(name, kind);
    m_handle = CreateMutexW(nullptr, FALSE, fullName.c_str());
    return GetLastError() == ERROR_SUCCESS;
}

void WExclusion::ReleaseExclusion() {
    if (m_handle != nullptr) {
        CloseHandle(std::exchange(m_handle, nullptr));
    }
}

std::wstring WExclusion::CreateExclusionName(const wchar_t* name, _kind kind) {
    const std::wstring text = TextOf(name);
    switch (kind) {
    case Desktop:
        return L"Local\\" + text + DesktopSuffix();
    case Logon:
        return L"Local\\" + text + LogonSuffix();
    case User:
        return text + UserSuffix();
    default:
        return L"Global\\" + text;
    }
}

} // namespace bss
