#include "krtpal/user.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <pwd.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace krtpal {

namespace {

std::wstring UserName() {
    std::vector<char> buffer(16'384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return WideFromUtf8(found->pw_name);
    }
    return std::to_wstring(geteuid());
}

std::wstring DesktopName() {
    for (const char* const variable : {"WAYLAND_DISPLAY", "DISPLAY"}) {
        if (const char* const value = std::getenv(variable); value != nullptr && *value != '\0') {
            return WideFromUtf8(value);
        }
    }
    return L"Default";
}

// Copies the text with its NUL. Returns false without copying if there is not enough room.
bool CopyText(const std::wstring& text, LPWSTR to, DWORD room) {
    if (to == nullptr || room <= text.size()) {
        return false;
    }
    std::memcpy(to, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    return true;
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

char g_desktop;

} // namespace

BOOL GetUserNameW(LPWSTR name, LPDWORD size) {
    const std::wstring user = UserName();
    const bool copied = CopyText(user, name, *size);
    *size = static_cast<DWORD>(user.size() + 1);
    return copied ? TRUE : Fail(ERROR_INSUFFICIENT_BUFFER);
}

BOOL GetComputerNameW(LPWSTR name, LPDWORD size) {
    char host[HOST_NAME_MAX + 1] = {};
    gethostname(host, sizeof(host) - 1);
    const std::wstring machine = WideFromUtf8(host);
    if (!CopyText(machine, name, *size)) {
        *size = static_cast<DWORD>(machine.size() + 1);
        return Fail(ERROR_BUFFER_OVERFLOW);
    }
    *size = static_cast<DWORD>(machine.size());
    return TRUE;
}

HDESK GetThreadDesktop(DWORD /*threadId*/) {
    return reinterpret_cast<HDESK>(&g_desktop);
}

BOOL GetUserObjectInformationW(HANDLE object, int index, PVOID information, DWORD length, LPDWORD needed) {
    if (object != &g_desktop) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (index != UOI_NAME) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const std::wstring desktop = DesktopName();
    if (needed != nullptr) {
        *needed = static_cast<DWORD>((desktop.size() + 1) * sizeof(wchar_t));
    }
    return CopyText(desktop, static_cast<LPWSTR>(information), length / static_cast<DWORD>(sizeof(wchar_t)))
               ? TRUE
               : Fail(ERROR_INSUFFICIENT_BUFFER);
}

} // namespace krtpal
