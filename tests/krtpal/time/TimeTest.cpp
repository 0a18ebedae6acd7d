#include "krtpal/time.h"
#include "krtpal/error.h"
#include "support/Wine.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

namespace {

std::uint64_t Ticks(const FILETIME& time) {
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32U) | time.dwLowDateTime;
}

FILETIME FileTimeOf(std::uint64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
}

TEST(Mktime, BringsFieldsIntoTheirRanges) {
    std::tm time{};
    time.tm_year = 104;
    time.tm_mon = 12; // the next January
    time.tm_mday = 32;
    time.tm_isdst = -1;
    const LONGLONG seconds = _mktime64(&time);
    EXPECT_EQ(time.tm_year, 105);
    EXPECT_EQ(time.tm_mon, 1);
    EXPECT_EQ(time.tm_mday, 1);
    EXPECT_EQ(time.tm_wday, 2);
    std::tm utc{};
    ASSERT_EQ(_gmtime64_s(&utc, &seconds), 0);
    EXPECT_EQ(utc.tm_year, 105); // whatever the zone
    std::tm early{};
    early.tm_year = 50;
    early.tm_mday = 1;
    EXPECT_EQ(_mktime64(&early), -1);
    EXPECT_EQ(early.tm_year, 50);
}

} // namespace

TEST(SystemTime, OutOfRangeFieldsAreRefused) {
    const SYSTEMTIME rows[] = {
        {1600, 12, 0, 31, 23, 59, 59, 999}, {2000, 0, 0, 1, 0, 0, 0, 0},  {2000, 13, 0, 1, 0, 0, 0, 0},
        {2000, 1, 0, 0, 0, 0, 0, 0},        {2000, 4, 0, 31, 0, 0, 0, 0}, {2000, 1, 0, 1, 24, 0, 0, 0},
        {2000, 1, 0, 1, 0, 60, 0, 0},       {2000, 1, 0, 1, 0, 0, 60, 0}, {2000, 1, 0, 1, 0, 0, 0, 1000},
        {40000, 1, 0, 1, 0, 0, 0, 0},
    };
    for (const SYSTEMTIME& row : rows) {
        FILETIME ticks{7, 7};
        SetLastError(0);
        EXPECT_FALSE(SystemTimeToFileTime(&row, &ticks)) << row.wYear << "-" << row.wMonth << "-" << row.wDay;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
        EXPECT_EQ(ticks.dwLowDateTime, 7U);
    }
    const FILETIME negative = FileTimeOf(0x8000000000000000);
    SYSTEMTIME time{};
    SetLastError(0);
    EXPECT_FALSE(FileTimeToSystemTime(&negative, &time));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(SystemTime, DaysThatAFebruaryDoesNotHaveAreRefused) {
    if (RunsUnderWine()) {
        GTEST_SKIP() << "Wine takes 29 February in every year";
    }
    for (const WORD year : {WORD{1900}, WORD{2001}, WORD{2100}}) {
        const SYSTEMTIME time{year, 2, 0, 29, 0, 0, 0, 0};
        FILETIME ticks{};
        EXPECT_FALSE(SystemTimeToFileTime(&time, &ticks)) << year;
    }
}

TEST(SystemTime, LimitsConvertBothWays) {
    const struct {
        SYSTEMTIME time;
        std::uint64_t ticks;
    } rows[] = {
        {{1601, 1, 1, 1, 0, 0, 0, 0}, 0},
        {{1601, 1, 1, 1, 0, 0, 0, 1}, 10'000},
        {{1970, 1, 4, 1, 0, 0, 0, 0}, 116'444'736'000'000'000},
        {{2000, 2, 2, 29, 23, 59, 59, 999}, 125'963'423'999'990'000},
        {{30827, 12, 5, 31, 23, 59, 59, 999}, 0x7FFF35F4F06C58F0},
    };
    for (const auto& row : rows) {
        FILETIME ticks{};
        SYSTEMTIME back{};
        ASSERT_TRUE(SystemTimeToFileTime(&row.time, &ticks));
        EXPECT_EQ(Ticks(ticks), row.ticks);
        const FILETIME withRest = FileTimeOf(row.ticks + 9'999);
        ASSERT_TRUE(FileTimeToSystemTime(&withRest, &back));
        EXPECT_EQ(std::memcmp(&back, &row.time, sizeof(back)), 0) << row.time.wYear;
    }
}

// Another source for the calendar: the one of the standard library.
TEST(SystemTime, EveryDayFrom1601To9999AgreesWithTheStandardCalendar) {
    using namespace std::chrono;
    const sys_days first{year(1601) / January / 1};
    const sys_days last{year(9999) / December / 31};
    std::uint64_t ticks = 0;
    for (sys_days day = first; day <= last; day += days(1), ticks += 864'000'000'000) {
        const year_month_day date(day);
        const FILETIME count = FileTimeOf(ticks + 123'450'000);
        SYSTEMTIME time{};
        FILETIME back{};
        ASSERT_TRUE(FileTimeToSystemTime(&count, &time));
        ASSERT_EQ(time.wYear, static_cast<int>(date.year()));
        ASSERT_EQ(time.wMonth, static_cast<unsigned>(date.month())) << time.wYear;
        ASSERT_EQ(time.wDay, static_cast<unsigned>(date.day())) << time.wYear;
        ASSERT_EQ(time.wDayOfWeek, weekday(day).c_encoding()) << time.wYear;
        ASSERT_TRUE(time.wHour == 0 && time.wMinute == 0 && time.wSecond == 12 && time.wMilliseconds == 345);
        ASSERT_TRUE(SystemTimeToFileTime(&time, &back));
        ASSERT_EQ(Ticks(back), Ticks(count));
    }
    EXPECT_EQ(ticks, 2'650'467'744'000'000'000U);
}

TEST(SystemTime, NowIsTheSameByBothCallsAndByTheStandardClock) {
    using namespace std::chrono;
    FILETIME now{};
    SYSTEMTIME fields{};
    FILETIME later{};
    const auto before = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    GetSystemTimeAsFileTime(&now);
    GetSystemTime(&fields);
    ASSERT_TRUE(SystemTimeToFileTime(&fields, &later));
    constexpr std::uint64_t toUnixEpoch = 116'444'736'000'000'000;
    const auto milliseconds1 = static_cast<long long>((Ticks(now) - toUnixEpoch) / 10'000);
    EXPECT_GE(milliseconds1, before - 1);
    EXPECT_GE(Ticks(later) + 10'000, Ticks(now));
    EXPECT_LT(milliseconds1, before + 60'000);
}

TEST(FileTime, ComparesAsOneUnsignedNumber) {
    const FILETIME small = FileTimeOf(0x00000001FFFFFFFF);
    const FILETIME large = FileTimeOf(0x0000000200000000);
    const FILETIME top = FileTimeOf(0xFFFFFFFF00000000);
    EXPECT_EQ(CompareFileTime(&small, &large), -1);
    EXPECT_EQ(CompareFileTime(&large, &small), 1);
    EXPECT_EQ(CompareFileTime(&large, &large), 0);
    EXPECT_EQ(CompareFileTime(&top, &large), 1);
}

TEST(Gmtime, RefusesCountsOutsideItsYears) {
    for (const LONGLONG seconds : {-1LL - 43'200LL, 99'999'999'999LL, std::numeric_limits<LONGLONG>::max(),
                                   std::numeric_limits<LONGLONG>::min()}) {
        std::tm time{};
        errno = 0;
        EXPECT_EQ(_gmtime64_s(&time, &seconds), EINVAL) << seconds;
        EXPECT_EQ(errno, EINVAL);
        for (const int field : {time.tm_sec, time.tm_min, time.tm_hour, time.tm_mday, time.tm_mon,
                                time.tm_year, time.tm_wday, time.tm_yday, time.tm_isdst}) {
            EXPECT_EQ(field, -1);
        }
    }
}

TEST(Gmtime, BreaksSecondsDown) {
    const struct {
        LONGLONG seconds;
        int fields[8]; // year, month, day, hour, minute, second, day of week, day of year
    } rows[] = {
        {0, {70, 0, 1, 0, 0, 0, 4, 0}},
        {951'868'799, {100, 1, 29, 23, 59, 59, 2, 59}},
        {4'107'542'399, {200, 1, 28, 23, 59, 59, 0, 58}},
        {32'535'215'999, {1100, 11, 31, 23, 59, 59, 3, 364}},
    };
    for (const auto& row : rows) {
        std::tm time{};
        ASSERT_EQ(_gmtime64_s(&time, &row.seconds), 0);
        const int fields[8] = {time.tm_year, time.tm_mon, time.tm_mday, time.tm_hour,
                               time.tm_min,  time.tm_sec, time.tm_wday, time.tm_yday};
        for (int i = 0; i < 8; ++i) {
            EXPECT_EQ(fields[i], row.fields[i]) << row.seconds << " field " << i;
        }
        EXPECT_EQ(time.tm_isdst, 0);
    }
}
