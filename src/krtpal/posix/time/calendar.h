// Arithmetic of the proleptic Gregorian calendar on 64-bit counts of days.

#ifndef KRTPAL_POSIX_TIME_CALENDAR_H
#define KRTPAL_POSIX_TIME_CALENDAR_H

#include <cstdint>

namespace krtpal::posix {

struct CivilDate {
    std::int64_t year;
    int month; ///< 1 to 12
    int day;   ///< 1 to 31
};

constexpr bool IsLeapYear(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// REQUIRES: month 1 to 12.
constexpr int DaysInMonth(std::int64_t year, int month) {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

constexpr std::int64_t FloorDivide(std::int64_t a, std::int64_t b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

/// Returns the days from 1 January 1601 to a date. The year is counted from March, so that the leap day is
/// its last one and (153 m + 2) / 5 days precede month m.
constexpr std::int64_t DaysFromDate(const CivilDate& date) {
    const std::int64_t year = date.month > 2 ? date.year : date.year - 1;
    const std::int64_t monthFromMarch = date.month > 2 ? date.month - 3 : date.month + 9;
    const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + date.day - 1;
    const std::int64_t days =
        365 * year + FloorDivide(year, 4) - FloorDivide(year, 100) + FloorDivide(year, 400) + dayOfYear;
    constexpr std::int64_t kDaysBefore1601 = 365 * 1600 + 400 - 16 + 4 + 306;
    return days - kDaysBefore1601;
}

/// Returns the date of a number of days from 1 January 1601.
constexpr CivilDate DateFromDays(std::int64_t days) {
    constexpr std::int64_t kDaysOf400Years = 146097;
    // From 1 March 1600, the start of a cycle of 400 years.
    const std::int64_t shifted = days + 306;
    const std::int64_t cycle = FloorDivide(shifted, kDaysOf400Years);
    const std::int64_t dayOfCycle = shifted - cycle * kDaysOf400Years;
    const std::int64_t yearOfCycle =
        (dayOfCycle - dayOfCycle / 1460 + dayOfCycle / 36524 - dayOfCycle / 146096) / 365;
    const std::int64_t dayOfYear = dayOfCycle - (365 * yearOfCycle + yearOfCycle / 4 - yearOfCycle / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const int month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    const int day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    return {1600 + cycle * 400 + yearOfCycle + (month < 3 ? 1 : 0), month, day};
}

/// Returns 0 for Sunday. 1 January 1601 was a Monday.
constexpr int DayOfWeek(std::int64_t days) {
    const std::int64_t weekday = (days + 1) % 7;
    return static_cast<int>(weekday < 0 ? weekday + 7 : weekday);
}

static_assert(DaysFromDate({1601, 1, 1}) == 0 && DaysFromDate({1970, 1, 1}) == 134774);

} // namespace krtpal::posix

#endif
