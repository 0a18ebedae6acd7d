#include "krtpal/posix/kernel/thread.h"

#include "krtpal/posix/kernel/futex.h"
#include "krtpal/process.h"
#include "krtpal/sync.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace krtpal {

namespace {

// Read on each entry to a lock: this model avoids a call of the dynamic linker.
[[gnu::tls_model("initial-exec")]] constinit thread_local DWORD t_number = 0;
constinit thread_local posix::ThreadIdentity t_identity;

[[gnu::noinline]] DWORD FetchThreadNumber() {
    // The child of a fork has another number.
    static const int registered = pthread_atfork(nullptr, nullptr, [] {
        t_number = 0;
        t_identity = {};
    });
    static_cast<void>(registered);
    t_number = static_cast<DWORD>(syscall(SYS_gettid));
    return t_number;
}

// Reads the state letter and the start time of a thread from /proc. Returns false if there is no such file.
bool ReadThreadFile(std::uint32_t process, std::uint32_t thread, char* state, std::uint64_t* start) {
    char path[64];
    std::snprintf(path, sizeof(path), "/proc/%u/task/%u/stat", process, thread);
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file == -1) {
        return false;
    }
    char text[1024];
    const ssize_t length = read(file, text, sizeof(text) - 1);
    close(file);
    if (length <= 0) {
        return false;
    }
    text[length] = '\0';
    // The name in parentheses may contain anything. The state follows it; the start time is 19 fields
    // further.
    const char* field = std::strrchr(text, ')');
    if (field == nullptr || field[1] != ' ') {
        return false;
    }
    field += 2;
    *state = *field;
    constexpr int kFieldsToStart = 19;
    for (int i = 0; i < kFieldsToStart && field != nullptr; ++i) {
        field = std::strchr(field + 1, ' ');
    }
    *start = field == nullptr ? 0 : std::strtoull(field, nullptr, 10);
    return true;
}

} // namespace

DWORD GetCurrentThreadId() {
    const DWORD number = t_number;
    return number != 0 ? number : FetchThreadNumber();
}

void Sleep(DWORD timeMs) {
    const posix::Deadline deadline = posix::Deadline::After(timeMs);
    while (!deadline.HasPassed()) {
        posix::WaitOnWords(nullptr, 0, deadline);
    }
}

namespace posix {

ThreadIdentity CurrentThread() {
    if (!t_identity.IsSet()) {
        ThreadIdentity identity{GetCurrentProcessId(), GetCurrentThreadId(), 0};
        char state = 0;
        ReadThreadFile(identity.process, identity.thread, &state, &identity.start);
        t_identity = identity;
    }
    return t_identity;
}

bool IsAlive(const ThreadIdentity& thread) {
    char state = 0;
    std::uint64_t start = 0;
    if (ReadThreadFile(thread.process, thread.thread, &state, &start)) {
        const bool hasEnded = state == 'Z' || state == 'X' || state == 'x';
        return !hasEnded && (thread.start == 0 || start == thread.start);
    }
    // The thread has ended, or /proc is missing or not readable.
    return syscall(SYS_tgkill, thread.process, thread.thread, 0) == 0 || errno == EPERM;
}

} // namespace posix

} // namespace krtpal
