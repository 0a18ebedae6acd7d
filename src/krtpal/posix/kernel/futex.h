// Waits on 32-bit words, the mechanism of every wait of this layer.
//
// A waiter reads a word, decides to wait, and waits while the word has that value. A change of the state that
// the word represents changes the word first and wakes the waiters then.

#ifndef KRTPAL_POSIX_KERNEL_FUTEX_H
#define KRTPAL_POSIX_KERNEL_FUTEX_H

#include "krtpal/types.h"

#include <atomic>
#include <cstdint>
#include <ctime>

namespace krtpal::posix {

using FutexWord = std::atomic<std::uint32_t>;
static_assert(sizeof(FutexWord) == 4 && FutexWord::is_always_lock_free);

/// A time of the monotonic clock in nanoseconds, or never.
class Deadline {
public:
    static Deadline Never() { return Deadline(kNever); }
    /// Returns the time after this interval; INFINITE is never.
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
    bool shared; ///< by several processes
};

/// Maximum number of words of one wait.
inline constexpr std::size_t kMostWords = 128;

/// Returns if a word has another value or is woken, or the deadline passes. May also return without a reason.
void WaitOnWords(const ExpectedWord* words, std::size_t count, Deadline deadline);
void WakeWaiters(FutexWord& word, int most, bool shared);

} // namespace krtpal::posix

#endif
