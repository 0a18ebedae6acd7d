// The identity of a thread in terms that other processes understand, and whether it still runs.

#ifndef KRTPAL_POSIX_KERNEL_THREAD_H
#define KRTPAL_POSIX_KERNEL_THREAD_H

#include <cstdint>

namespace krtpal::posix {

/// Identifies a thread for ever: the kernel uses numbers again, but not with the same start time. All 0 means
/// no thread.
struct ThreadIdentity {
    std::uint32_t process = 0;
    std::uint32_t thread = 0;
    std::uint64_t start = 0; ///< clock ticks since the start of the system; 0 if unknown

    bool IsSet() const { return thread != 0; }
    bool operator==(const ThreadIdentity&) const = default;
};

ThreadIdentity CurrentThread();
/// Returns false if the thread or its process has ended, reaped or not. Reads a file of /proc.
bool IsAlive(const ThreadIdentity& thread);

} // namespace krtpal::posix

#endif
