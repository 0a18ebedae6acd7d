#include "krtpal/user.h"

#include "krtpal/error.h"
#include "krtpal/posix/kernel/handle.h"
#include "krtpal/text.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <pwd.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace krtpal {

namespace {

/// Revision 1, two sub-authorities, authority 22 (users of a Unix system), sub-authorities 1 and the number.
struct UnixSid {
    UCHAR revision = 1;
    UCHAR subAuthorities = 2;
    UCHAR authority[6] = {0, 0, 0, 0, 0, 22};
    DWORD kind = 1;
    DWORD user = 0;
};
static_assert(sizeof(UnixSid) == 16);

class Token final : public posix::KernelObject {
public:
    Token() : KernelObject(posix::ObjectKind::Token) {}
    void AddHandle() override {}
    void DropHandle() override {}
};

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

/// All bits set where the kernel counts no sessions.
DWORD AuditSession() {
    DWORD session = 0xFFFFFFFF;
    std::ifstream("/proc/self/sessionid") >> session;
    return session;
}

/// Copies with NUL if there is room for it.
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
char g_heap;

const HANDLE kThisProcess = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));
const HANDLE kThisThread = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-2));

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

HANDLE GetCurrentProcess() {
    return kThisProcess;
}

HANDLE GetCurrentThread() {
    return kThisThread;
}

BOOL OpenProcessToken(HANDLE process, DWORD access, HANDLE* token) {
    *token = nullptr;
    if (process != kThisProcess) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (access != TOKEN_QUERY) {
        return Fail(ERROR_ACCESS_DENIED);
    }
    *token = posix::OpenHandle(posix::Reference<posix::KernelObject>(new Token));
    return *token != nullptr ? TRUE : FALSE;
}

BOOL OpenThreadToken(HANDLE /*thread*/, DWORD /*access*/, BOOL /*asSelf*/, HANDLE* token) {
    *token = nullptr;
    return Fail(ERROR_NO_TOKEN);
}

BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID information, DWORD length,
                         LPDWORD needed) {
    const posix::UsedHandle used(token);
    if (used.Object() == nullptr || used.Object()->Kind() != posix::ObjectKind::Token) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (kind == TokenUser) {
        *needed = sizeof(TOKEN_USER) + sizeof(UnixSid);
        if (information == nullptr || length < *needed) {
            return Fail(ERROR_INSUFFICIENT_BUFFER);
        }
        UnixSid sid;
        sid.user = geteuid();
        char* const behind = static_cast<char*>(information) + sizeof(TOKEN_USER);
        std::memcpy(behind, &sid, sizeof(sid));
        const TOKEN_USER user{{behind, 0}};
        std::memcpy(information, &user, sizeof(user));
        return TRUE;
    }
    if (kind == TokenStatistics) {
        *needed = sizeof(TOKEN_STATISTICS);
        if (information == nullptr || length < *needed) {
            return Fail(ERROR_INSUFFICIENT_BUFFER);
        }
        TOKEN_STATISTICS statistics{};
        statistics.AuthenticationId = {AuditSession(), static_cast<LONG>(geteuid())};
        std::memcpy(information, &statistics, sizeof(statistics));
        return TRUE;
    }
    return Fail(ERROR_NOT_SUPPORTED);
}

DWORD GetLengthSid(PSID sid) {
    constexpr DWORD header = 8;
    return header + 4U * static_cast<const UCHAR*>(sid)[1];
}

BOOL CopySid(DWORD length, PSID target, PSID source) {
    const DWORD needed = GetLengthSid(source);
    if (length < needed) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(target, source, needed);
    return TRUE;
}

HANDLE GetProcessHeap() {
    return &g_heap;
}

LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    return heap == &g_heap && flags == 0 ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
}

BOOL HeapFree(HANDLE heap, DWORD flags, LPVOID memory) {
    if (heap != &g_heap || flags != 0) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    std::free(memory);
    return TRUE;
}

} // namespace krtpal
