// Who a thread is, in terms that other processes understand, and whether it still runs.

#ifndef KRTPAL_POSIX_KERNEL_THREAD_H
#define KRTPAL_POSIX_KERNEL_THREAD_H

#include <cstdint>

namespace krtpal::posix {

/// Numbers are used anew by the system; with the time of its start a thread is known for good. All 0: nobody.
struct ThreadIdentity {
    std::uint32_t process = 0;
    std::uint32_t thread = 0;
    std::uint64_t start = 0; ///< clock ticks since the start of the system; 0 if unknown

    bool IsSet() const { return thread != 0; }
    bool operator==(const ThreadIdentity&) const = default;
};

ThreadIdentity CurrentThread();
/// False for a thread that has ended, or whose process ended, reaped or not. Costs a read of /proc.
bool IsAlive(const ThreadIdentity& thread);

} // namespace krtpal::posix

#endif
