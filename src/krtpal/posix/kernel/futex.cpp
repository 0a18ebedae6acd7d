#include "krtpal/posix/kernel/futex.h"

#include <cerrno>
#include <climits>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace krtpal::posix {

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
// On a kernel that waits on one word only, the interval at which the other words are looked at.
constexpr DWORD kSliceMs = 1;

std::int64_t MonotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

// FUTEX_WAIT_BITSET takes an absolute time of the monotonic clock.
void WaitOnOne(const ExpectedWord& expected, Deadline deadline) {
    const int operation = FUTEX_WAIT_BITSET | (expected.shared ? 0 : FUTEX_PRIVATE_FLAG);
    const timespec time = deadline.Time();
    syscall(SYS_futex, expected.word, operation, expected.value, deadline.IsNever() ? nullptr : &time,
            nullptr, FUTEX_BITSET_MATCH_ANY);
}

// Returns false if the kernel can't wait on several words.
bool WaitOnVector(const ExpectedWord* words, std::size_t count, Deadline deadline) {
#ifdef SYS_futex_waitv
    static std::atomic<bool> isMissing{false};
    if (isMissing.load(std::memory_order_relaxed)) {
        return false;
    }
    futex_waitv vector[kMostWords];
    for (std::size_t i = 0; i < count; ++i) {
        vector[i] = {words[i].value, reinterpret_cast<std::uintptr_t>(words[i].word),
                     static_cast<std::uint32_t>(FUTEX_32 | (words[i].shared ? 0 : FUTEX_PRIVATE_FLAG)), 0};
    }
    const timespec time = deadline.Time();
    const long result = syscall(SYS_futex_waitv, vector, static_cast<unsigned>(count), 0,
                                deadline.IsNever() ? nullptr : &time, CLOCK_MONOTONIC);
    // Sandboxes reject unknown system calls with EPERM.
    if (result == -1 && (errno == ENOSYS || errno == EPERM)) {
        isMissing.store(true, std::memory_order_relaxed);
        return false;
    }
    return true;
#else
    return false;
#endif
}

} // namespace

Deadline Deadline::After(DWORD timeMs) {
    return timeMs == INFINITE ? Never() : Deadline(MonotonicNow() + timeMs * kNanosecondsPerMillisecond);
}

bool Deadline::HasPassed() const {
    return !IsNever() && MonotonicNow() >= m_nanoseconds;
}

timespec Deadline::Time() const {
    return {m_nanoseconds / kNanosecondsPerSecond, m_nanoseconds % kNanosecondsPerSecond};
}

void WaitOnWords(const ExpectedWord* words, std::size_t count, Deadline deadline) {
    if (count == 0) {
        const FutexWord never{0};
        WaitOnOne({&never, 0, false}, deadline);
    } else if (count == 1) {
        WaitOnOne(words[0], deadline);
    } else if (!WaitOnVector(words, count, deadline)) {
        WaitOnOne(words[0], Deadline::Earlier(deadline, Deadline::After(kSliceMs)));
    }
}

void WakeWaiters(FutexWord& word, int most, bool shared) {
    syscall(SYS_futex, &word, FUTEX_WAKE | (shared ? 0 : FUTEX_PRIVATE_FLAG), most, nullptr, nullptr, 0);
}

} // namespace krtpal::posix
