// Waits on 32-bit words: the one mechanism under every wait of this layer.
//
// A waiter reads a word, decides that it has to wait, and waits as long as the word keeps that value; whoever
// changes what the word stands for changes the word, then wakes.

#ifndef KRTPAL_POSIX_KERNEL_FUTEX_H
#define KRTPAL_POSIX_KERNEL_FUTEX_H

#include "krtpal/types.h"

#include <atomic>
#include <cstdint>
#include <ctime>

namespace krtpal::posix {

using FutexWord = std::atomic<std::uint32_t>;
static_assert(sizeof(FutexWord) == 4 && FutexWord::is_always_lock_free);

/// A point of the monotonic clock, in nanoseconds, or never.
class Deadline {
public:
    static Deadline Never() { return Deadline(kNever); }
    /// INFINITE is never.
    static Deadline After(DWORD timeMs);
    static Deadline Earlier(Deadline a, Deadline b) { return a.m_nanoseconds < b.m_nanoseconds ? a : b; }
    bool IsNever() const { return m_nanoseconds == kNever; }
    bool HasPassed() const;
    timespec Time() const;

private:
    static constexpr std::int64_t kNever = INT64_MAX;
    explicit Deadline(std::int64_t nanoseconds) : m_nanoseconds(nanoseconds) {}
    std::int64_t m_nanoseconds;
};

struct ExpectedWord {
    const FutexWord* word;
    std::uint32_t value;
    bool shared; ///< between processes
};

/// Most words of one wait.
inline constexpr std::size_t kMostWords = 128;

/// Returns when one of the words has another value, was woken, or the deadline passed; or without a reason.
void WaitOnWords(const ExpectedWord* words, std::size_t count, Deadline deadline);
void WakeWaiters(FutexWord& word, int most, bool shared);

} // namespace krtpal::posix

#endif
