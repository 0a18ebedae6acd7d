#include "krtpal/posix/time/calendar.h"
#include "krtpal/time.h"

#include <cmath>

namespace krtpal {

namespace {

// 30 December 1899, day 0 of OLE dates, from 1 January 1601.
constexpr std::int64_t kDayZero = posix::DaysFromDate({1899, 12, 30});
constexpr std::int64_t kFirstDay = posix::DaysFromDate({100, 1, 1}) - kDayZero;
constexpr std::int64_t kLastDay = posix::DaysFromDate({9999, 12, 31}) - kDayZero;
static_assert(kFirstDay == -657434 && kLastDay == 2958465);

// Years of two digits mean 1950 to 2049.
std::int64_t FullYear(WORD year) {
    return year > 99 ? year : year < 50 ? year + 2000 : year + 1900;
}

} // namespace

INT SystemTimeToVariantTime(SYSTEMTIME* time, double* date) {
    if (time->wMonth > 12 || time->wDay > 31 || static_cast<SHORT>(time->wYear) < 0) {
        return FALSE;
    }
    // Month 0 and day 0 precede the first ones. The time of day may be negative or beyond the day.
    posix::CivilDate month{FullYear(time->wYear), time->wMonth, 1};
    if (month.month == 0) {
        month = {month.year - 1, 12, 1};
    }
    const std::int64_t seconds = static_cast<SHORT>(time->wHour) * 3'600 +
                                 static_cast<SHORT>(time->wMinute) * 60 + static_cast<SHORT>(time->wSecond);
    const std::int64_t carried = posix::FloorDivide(seconds, 86'400);
    const std::int64_t day = posix::DaysFromDate(month) + time->wDay - 1 - kDayZero + carried;
    if (day < kFirstDay || day > kLastDay) {
        return FALSE;
    }
    const auto secondOfDay = static_cast<int>(seconds - carried * 86'400);
    const double sign = day < 0 ? -1.0 : 1.0;
    double value = static_cast<double>(day);
    // Added part by part, as Windows does: the last bit of stored dates depends on it.
    const int hours = secondOfDay / 3'600;
    const int minutes = secondOfDay / 60 % 60;
    value += hours / 24.0 * sign;
    value += minutes / 1'440.0 * sign;
    value += secondOfDay % 60 / 86'400.0 * sign;
    *date = value;
    return TRUE;
}

INT VariantTimeToSystemTime(double date, SYSTEMTIME* time) {
    constexpr double kFirst = static_cast<double>(kFirstDay);
    constexpr double kLast = static_cast<double>(kLastDay);
    if (!(date > kFirst - 1.0 && date < kLast + 1.0)) {
        return FALSE;
    }
    const double wholeDays = std::trunc(date);
    // Compensates seconds that no fraction of a day expresses exactly.
    constexpr double kSlack = 1e-11;
    const double fraction = std::fabs(date - wholeDays);
    double rest = fraction + kSlack < 1.0 ? fraction + kSlack : fraction;
    rest *= 24.0;
    const double hour = std::floor(rest);
    rest = (rest - hour) * 60.0;
    const double minute = std::floor(rest);
    rest = (rest - minute) * 60.0;
    const double second = std::floor(rest);
    std::int64_t seconds = static_cast<std::int64_t>(hour) * 3'600 + static_cast<std::int64_t>(minute) * 60 +
                           static_cast<std::int64_t>(second) + (rest - second > 0.5 ? 1 : 0);
    auto day = static_cast<std::int64_t>(wholeDays);
    if (seconds == 86'400) {
        ++day;
        seconds = 0;
    }
    if (day > kLastDay) {
        return FALSE;
    }
    const posix::CivilDate civil = posix::DateFromDays(day + kDayZero);
    time->wYear = static_cast<WORD>(civil.year);
    time->wMonth = static_cast<WORD>(civil.month);
    time->wDayOfWeek = static_cast<WORD>(posix::DayOfWeek(day + kDayZero));
    time->wDay = static_cast<WORD>(civil.day);
    time->wHour = static_cast<WORD>(seconds / 3'600);
    time->wMinute = static_cast<WORD>(seconds / 60 % 60);
    time->wSecond = static_cast<WORD>(seconds % 60);
    time->wMilliseconds = 0;
    return TRUE;
}

} // namespace krtpal
