#include "krtpal/time.h"
#include "support/Wine.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

void ExpectNoDate(SYSTEMTIME time) {
    double date = -7.0;
    EXPECT_FALSE(SystemTimeToVariantTime(&time, &date)) << time.wYear;
    EXPECT_EQ(date, -7.0);
}

void ExpectNoTime(double date) {
    SYSTEMTIME time{};
    EXPECT_FALSE(VariantTimeToSystemTime(date, &time)) << date;
}

TEST(OleDate, FieldsAndDatesOutOfRangeAreRefused) {
    ExpectNoDate({10000, 1, 0, 1, 0, 0, 0, 0});
    ExpectNoDate({40000, 1, 0, 1, 0, 0, 0, 0});
    ExpectNoDate({2001, 13, 0, 1, 0, 0, 0, 0});
    ExpectNoDate({2001, 1, 0, 32, 0, 0, 0, 0});
    for (const double date :
         {-657435.0, -657435.5, 2958466.0, 1e300, -1e300, std::numeric_limits<double>::infinity()}) {
        ExpectNoTime(date);
    }
    if (!RunsUnderWine()) { // which goes beyond both ends by the time of the day
        ExpectNoDate({9999, 12, 0, 31, 24, 0, 0, 0});
        ExpectNoDate({100, 1, 0, 0, 0, 0, 0, 0});
        ExpectNoTime(2958465.999999);
    }
}

TEST(OleDate, FieldsBecomeDatesToTheLastBit) {
    const struct {
        SYSTEMTIME time;
        double date;
    } rows[] = {
        {{1899, 12, 0, 30, 0, 0, 0, 0}, 0.0},
        {{1899, 12, 0, 30, 6, 0, 0, 0}, 0.25},
        {{1899, 12, 0, 29, 6, 0, 0, 0}, -1.25},
        {{1900, 3, 0, 1, 0, 0, 0, 0}, 61.0},
        {{2000, 1, 0, 1, 12, 34, 56, 789}, 36526.524259259255}, // milliseconds do not count
        {{1800, 2, 0, 28, 23, 59, 59, 999}, -36464.99998842593},
        {{100, 1, 0, 1, 0, 0, 0, 0}, -657434.0},
        {{9999, 12, 0, 31, 23, 59, 59, 0}, 2958465.999988426},
        // Years of two digits
        {{0, 1, 0, 1, 0, 0, 0, 0}, 36526.0},
        {{49, 1, 0, 1, 0, 0, 0, 0}, 54424.0},
        {{50, 1, 0, 1, 0, 0, 0, 0}, 18264.0},
        {{99, 1, 0, 1, 0, 0, 0, 0}, 36161.0},
        // Fields that reach into the next month or day
        {{2001, 2, 0, 31, 0, 0, 0, 0}, 36953.0},
        {{1900, 2, 0, 29, 0, 0, 0, 0}, 61.0},
        {{2001, 0, 0, 1, 0, 0, 0, 0}, 36861.0},
        {{2001, 1, 0, 0, 0, 0, 0, 0}, 36891.0},
        {{2001, 12, 0, 31, 30, 70, 70, 0}, 37257.299421296295},
        {{2001, 1, 0, 1, 65535, 0, 0, 0}, 36891.958333333336},
    };
    for (const auto& row : rows) {
        SYSTEMTIME time = row.time;
        double date = 1e9;
        ASSERT_TRUE(SystemTimeToVariantTime(&time, &date)) << row.date;
#if defined(_WIN32) && !defined(_WIN64)
        // The 32-bit system adds day and time in the x87's wider registers: one unit in the last place.
        constexpr double tolerance = 2.3e-16;
#else
        constexpr double tolerance = 0.0;
#endif
        EXPECT_NEAR(date, row.date, std::fabs(row.date) * tolerance)
            << row.time.wYear << "-" << row.time.wMonth << "-" << row.time.wDay;
    }
}

TEST(OleDate, DatesBecomeFieldsRoundedToSeconds) {
    const struct {
        double date;
        WORD fields[6];
    } rows[] = {
        {0.0, {1899, 12, 30, 0, 0, 0}},
        {-0.25, {1899, 12, 30, 6, 0, 0}},
        {-1.25, {1899, 12, 29, 6, 0, 0}},
        {-2.5, {1899, 12, 28, 12, 0, 0}},
        {-3.0000059, {1899, 12, 27, 0, 0, 1}},
        {0.0000057, {1899, 12, 30, 0, 0, 0}},
        {0.0000058, {1899, 12, 30, 0, 0, 1}},
        {60.0, {1900, 2, 28, 0, 0, 0}},
        {45000.99999421, {2023, 3, 15, 23, 59, 59}},
        {45000.999994213, {2023, 3, 16, 0, 0, 0}}, // half a second before midnight
        {-657434.0, {100, 1, 1, 0, 0, 0}},
        {-657434.99999, {100, 1, 1, 23, 59, 59}},
        {-100000.123456, {1626, 3, 16, 2, 57, 47}},
        {2958465.999988426, {9999, 12, 31, 23, 59, 59}},
    };
    for (const auto& row : rows) {
        SYSTEMTIME time{};
        ASSERT_TRUE(VariantTimeToSystemTime(row.date, &time)) << row.date;
        const WORD fields[6] = {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
        EXPECT_TRUE(std::ranges::equal(fields, row.fields)) << row.date;
        EXPECT_EQ(time.wMilliseconds, 0);
    }
}

TEST(OleDate, SecondsAcrossDayZeroComeBack) {
    for (WORD second = 0; second < 60; ++second) {
        for (const WORD hour : {WORD{0}, WORD{11}, WORD{23}}) {
            for (const WORD day : {WORD{29}, WORD{30}}) {
                SYSTEMTIME time{1899, 12, 0, day, hour, 59, second, 0};
                SYSTEMTIME back{};
                double date = 0.0;
                ASSERT_TRUE(SystemTimeToVariantTime(&time, &date));
                ASSERT_TRUE(VariantTimeToSystemTime(date, &back));
                ASSERT_TRUE(back.wDay == day && back.wHour == hour && back.wMinute == 59 &&
                            back.wSecond == second)
                    << date;
            }
        }
    }
}

} // namespace
