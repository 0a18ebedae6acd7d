#include "krtpal/error.h"
#include "krtpal/posix/kernel/handle.h"
#include "krtpal/process.h"
#include "krtpal/security.h"

#include <cstring>
#include <fstream>
#include <unistd.h>

namespace krtpal {

namespace {

// S-1-22-1-<user number>: revision 1, authority 22 (users of a Unix system), two sub-authorities.
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

// Returns the audit session of the login, all bits set if the kernel does not count sessions.
DWORD AuditSession() {
    DWORD session = 0xFFFFFFFF;
    std::ifstream("/proc/self/sessionid") >> session;
    return session;
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

} // namespace

BOOL OpenProcessToken(HANDLE process, DWORD access, HANDLE* token) {
    *token = nullptr;
    if (process != GetCurrentProcess()) {
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
    constexpr DWORD kHeader = 8;
    return kHeader + 4U * static_cast<const UCHAR*>(sid)[1];
}

BOOL CopySid(DWORD length, PSID target, PSID source) {
    const DWORD needed = GetLengthSid(source);
    if (length < needed) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(target, source, needed);
    return TRUE;
}

} // namespace krtpal
