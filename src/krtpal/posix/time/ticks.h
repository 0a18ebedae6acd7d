// Conversion between broken-down times and 64-bit tick counts.

#ifndef KRTPAL_POSIX_TIME_TICKS_H
#define KRTPAL_POSIX_TIME_TICKS_H

#include "krtpal/time.h"

#include <cstdint>
#include <optional>

namespace krtpal::posix {

inline constexpr std::int64_t kTicksPerMillisecond = 10'000;
inline constexpr std::int64_t kTicksPerSecond = 10'000'000;
inline constexpr std::int64_t kTicksPerMinute = 60 * kTicksPerSecond;
inline constexpr std::int64_t kTicksPerDay = 86'400 * kTicksPerSecond;
/// Seconds from 1 January 1601 to 1 January 1970.
inline constexpr std::int64_t kSecondsToUnixEpoch = 11'644'473'600;

/// Returns the ticks since 1601, or nothing if a field is out of range. The day of week is ignored.
std::optional<std::int64_t> TicksFromSystemTime(const SYSTEMTIME& time);
/// REQUIRES: ticks >= 0.
SYSTEMTIME SystemTimeFromTicks(std::int64_t ticks);

} // namespace krtpal::posix

#endif
