#include "krtpal/time.h"

#include "krtpal/error.h"
#include "krtpal/posix/time/calendar.h"
#include "krtpal/posix/time/ticks.h"

#include <cerrno>
#include <ctime>

namespace krtpal {

namespace {

constexpr LONGLONG kLastSecond = 32'535'244'799; // end of the year 3000 at 8 hours west of UTC

} // namespace

namespace posix {

std::optional<std::int64_t> TicksFromSystemTime(const SYSTEMTIME& time) {
    if (time.wYear < 1601 || time.wYear > 30827 || time.wMonth < 1 || time.wMonth > 12 || time.wDay < 1 ||
        time.wDay > DaysInMonth(time.wYear, time.wMonth) || time.wHour > 23 || time.wMinute > 59 ||
        time.wSecond > 59 || time.wMilliseconds > 999) {
        return std::nullopt;
    }
    const std::int64_t days = DaysFromDate({time.wYear, time.wMonth, time.wDay});
    const std::int64_t seconds =
        days * 86'400 + std::int64_t{time.wHour} * 3'600 + std::int64_t{time.wMinute} * 60 + time.wSecond;
    std::int64_t ticks = 0;
    // The largest count lies in September 30828, beyond the limit above.
    if (__builtin_mul_overflow(seconds, kTicksPerSecond, &ticks) ||
        __builtin_add_overflow(ticks, time.wMilliseconds * kTicksPerMillisecond, &ticks)) {
        return std::nullopt;
    }
    return ticks;
}

SYSTEMTIME SystemTimeFromTicks(std::int64_t ticks) {
    const std::int64_t days = ticks / kTicksPerDay;
    const std::int64_t milliseconds = ticks % kTicksPerDay / kTicksPerMillisecond;
    const CivilDate date = DateFromDays(days);
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(date.year);
    time.wMonth = static_cast<WORD>(date.month);
    time.wDayOfWeek = static_cast<WORD>(DayOfWeek(days));
    time.wDay = static_cast<WORD>(date.day);
    time.wHour = static_cast<WORD>(milliseconds / 3'600'000);
    time.wMinute = static_cast<WORD>(milliseconds / 60'000 % 60);
    time.wSecond = static_cast<WORD>(milliseconds / 1'000 % 60);
    time.wMilliseconds = static_cast<WORD>(milliseconds % 1'000);
    return time;
}

} // namespace posix

namespace {

ULONGLONG Count(const FILETIME& ticks) {
    return (static_cast<ULONGLONG>(ticks.dwHighDateTime) << 32) | ticks.dwLowDateTime;
}

FILETIME FileTime(std::int64_t ticks) {
    return {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
}

std::int64_t Now() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return (now.tv_sec + posix::kSecondsToUnixEpoch) * posix::kTicksPerSecond + now.tv_nsec / 100;
}

} // namespace

void GetSystemTime(SYSTEMTIME* time) {
    *time = posix::SystemTimeFromTicks(Now());
}

void GetSystemTimeAsFileTime(FILETIME* time) {
    *time = FileTime(Now());
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* ticks) {
    const auto count = posix::TicksFromSystemTime(*time);
    if (!count) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *ticks = FileTime(*count);
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* ticks, SYSTEMTIME* time) {
    const ULONGLONG count = Count(*ticks);
    if (count > static_cast<ULONGLONG>(INT64_MAX)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *time = posix::SystemTimeFromTicks(static_cast<std::int64_t>(count));
    return TRUE;
}

LONG CompareFileTime(const FILETIME* a, const FILETIME* b) {
    const ULONGLONG first = Count(*a);
    const ULONGLONG second = Count(*b);
    return first < second ? -1 : first > second ? 1 : 0;
}

LONGLONG _mktime64(std::tm* time) { // NOLINT(bugprone-reserved-identifier)
    std::tm fields = time == nullptr ? std::tm{} : *time;
    const LONGLONG seconds = time == nullptr ? -1 : mktime(&fields);
    if (seconds < 0 || seconds > kLastSecond) {
        errno = EINVAL;
        return -1;
    }
    *time = fields;
    return seconds;
}

int _gmtime64_s(std::tm* time, const LONGLONG* seconds) { // NOLINT(bugprone-reserved-identifier)
    if (time == nullptr) {
        errno = EINVAL;
        return EINVAL;
    }
    *time = std::tm{};
    if (seconds == nullptr || *seconds < 0 || *seconds > kLastSecond) {
        time->tm_sec = time->tm_min = time->tm_hour = -1;
        time->tm_mday = time->tm_mon = time->tm_year = -1;
        time->tm_wday = time->tm_yday = time->tm_isdst = -1;
        errno = EINVAL;
        return EINVAL;
    }
    const std::int64_t total = *seconds + posix::kSecondsToUnixEpoch;
    const std::int64_t days = total / 86'400;
    const int second = static_cast<int>(total % 86'400);
    const posix::CivilDate date = posix::DateFromDays(days);
    time->tm_sec = second % 60;
    time->tm_min = second / 60 % 60;
    time->tm_hour = second / 3'600;
    time->tm_mday = date.day;
    time->tm_mon = date.month - 1;
    time->tm_year = static_cast<int>(date.year - 1900);
    time->tm_wday = posix::DayOfWeek(days);
    time->tm_yday = static_cast<int>(days - posix::DaysFromDate({date.year, 1, 1}));
    return 0;
}

ULONGLONG GetTickCount64() {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<ULONGLONG>(now.tv_sec) * 1'000 + static_cast<ULONGLONG>(now.tv_nsec) / 1'000'000;
}

} // namespace krtpal
