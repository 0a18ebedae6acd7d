#include "krtpal/time.h"
#include "krtpal/error.h"
#include "support/Expect.h"
#include "support/Wine.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
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
        EXPECT_FAILS(SystemTimeToFileTime(&row, &ticks), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(ticks.dwLowDateTime, 7U);
    }
    const FILETIME negative = FileTimeOf(0x8000000000000000);
    SYSTEMTIME time{};
    EXPECT_FAILS(FileTimeToSystemTime(&negative, &time), ERROR_INVALID_PARAMETER);
}

TEST(SystemTime, DaysAndYearsThatDoNotExistAreRefused) {
    if (RunsUnderWine()) {
        GTEST_SKIP() << "Wine takes 29 February in every year, and years beyond the last";
    }
    for (const SYSTEMTIME& time :
         {SYSTEMTIME{1900, 2, 0, 29, 0, 0, 0, 0}, SYSTEMTIME{2001, 2, 0, 29, 0, 0, 0, 0},
          SYSTEMTIME{30828, 1, 0, 1, 0, 0, 0, 0}}) {
        FILETIME ticks{};
        EXPECT_FAILS(SystemTimeToFileTime(&time, &ticks), ERROR_INVALID_PARAMETER);
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
        {{1700, 2, 0, 28, 0, 0, 0, 0}, 31'291'488'000'000'000},
        {{1700, 3, 1, 1, 0, 0, 0, 0}, 31'292'352'000'000'000},
        {{1999, 12, 5, 31, 0, 0, 0, 0}, 125'910'720'000'000'000},
        {{2000, 2, 2, 29, 23, 59, 59, 999}, 125'963'423'999'990'000},
        {{2000, 12, 0, 31, 12, 34, 56, 789}, 126'227'396'967'890'000},
        {{2100, 3, 1, 1, 0, 0, 0, 0}, 157'520'160'000'000'000},
        {{9999, 12, 5, 31, 0, 0, 0, 0}, 2'650'466'880'000'000'000},
        {{30827, 12, 5, 31, 23, 59, 59, 999}, 0x7FFF35F4F06C58F0},
    };
    for (const auto& row : rows) {
        FILETIME ticks{};
        SYSTEMTIME back{};
        ASSERT_TRUE(SystemTimeToFileTime(&row.time, &ticks));
        EXPECT_EQ(Ticks(ticks), row.ticks) << row.time.wYear;
        const FILETIME withRest = FileTimeOf(row.ticks + 9'999);
        ASSERT_TRUE(FileTimeToSystemTime(&withRest, &back));
        EXPECT_EQ(std::memcmp(&back, &row.time, sizeof(back)), 0) << row.time.wYear;
    }
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
    const auto nowMs = static_cast<long long>((Ticks(now) - 116'444'736'000'000'000) / 10'000);
    EXPECT_GE(nowMs, before - 1);
    EXPECT_LT(nowMs, before + 60'000);
    EXPECT_GE(Ticks(later) + 10'000, Ticks(now));
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

TEST(Gmtime, BreaksSecondsDownAndRefusesCountsOutsideItsYears) {
    const struct {
        LONGLONG seconds;
        int result;
        int fields[9]; // year, month, day, hour, minute, second, day of week, day of year, daylight saving
    } rows[] = {
        {0, 0, {70, 0, 1, 0, 0, 0, 4, 0, 0}},
        {951'868'799, 0, {100, 1, 29, 23, 59, 59, 2, 59, 0}},
        {4'107'542'399, 0, {200, 1, 28, 23, 59, 59, 0, 58, 0}},
        {32'535'244'799, 0, {1101, 0, 1, 7, 59, 59, 4, 0, 0}},
        {-43'201, EINVAL, {-1, -1, -1, -1, -1, -1, -1, -1, -1}},
        {99'999'999'999, EINVAL, {-1, -1, -1, -1, -1, -1, -1, -1, -1}},
        {std::numeric_limits<LONGLONG>::min(), EINVAL, {-1, -1, -1, -1, -1, -1, -1, -1, -1}},
    };
    for (const auto& row : rows) {
        std::tm time{};
        errno = 0;
        EXPECT_EQ(_gmtime64_s(&time, &row.seconds), row.result) << row.seconds;
        EXPECT_EQ(errno, row.result);
        const int fields[] = {time.tm_year, time.tm_mon,  time.tm_mday, time.tm_hour, time.tm_min,
                              time.tm_sec,  time.tm_wday, time.tm_yday, time.tm_isdst};
        EXPECT_TRUE(std::ranges::equal(fields, row.fields)) << row.seconds;
    }
}
