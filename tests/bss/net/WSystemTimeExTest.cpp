#include "bss/net/WSystemTimeEx.h"

#include "support/DebugOutput.h"

#include <chrono>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>

using bss::WSystemTimeEx;
namespace chrono = std::chrono;

namespace {

SYSTEMTIME Time(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                int milliseconds = 0) {
    const chrono::weekday weekday(chrono::sys_days(chrono::year(year) / month / day));
    SYSTEMTIME t{};
    t.wYear = static_cast<WORD>(year);
    t.wMonth = static_cast<WORD>(month);
    t.wDayOfWeek = static_cast<WORD>(weekday.c_encoding());
    t.wDay = static_cast<WORD>(day);
    t.wHour = static_cast<WORD>(hour);
    t.wMinute = static_cast<WORD>(minute);
    t.wSecond = static_cast<WORD>(second);
    t.wMilliseconds = static_cast<WORD>(milliseconds);
    return t;
}

const WSystemTimeEx spring(Time(2021, 3, 5, 1, 2, 3, 4));

TEST(WSystemTimeEx, AgreesWithAnotherCalendarFrom1601To9999) {
    constexpr LONGLONG millisecondsOfDay = 86400000;
    const auto epoch = chrono::sys_days(chrono::year(1601) / 1 / 1);
    const auto oleEpoch = chrono::sys_days(chrono::year(1899) / 12 / 30);
    WSystemTimeEx walking(Time(1601, 1, 1, 18, 30));
    for (auto day = epoch; day <= chrono::sys_days(chrono::year(9999) / 12 / 31);) {
        const chrono::year_month_day date(day);
        const auto year = static_cast<int>(date.year());
        const auto month = static_cast<int>(static_cast<unsigned>(date.month()));
        const auto ofMonth = static_cast<int>(static_cast<unsigned>(date.day()));
        ASSERT_EQ(walking, WSystemTimeEx(Time(year, month, ofMonth, 18, 30)));
        ASSERT_EQ(walking.GetDayOfWeek(), WSystemTimeEx::CalcDayOfWeek(year, month, ofMonth));
        ASSERT_EQ(static_cast<LONGLONG>(walking), (day - epoch).count() * 864000000000 + 666000000000);

        // The fraction of an OLE date counts away from zero: -1.75 is 18:00 on 29 December 1899.
        const double days = static_cast<double>((day - oleEpoch).count());
        const double oleDate = walking;
        ASSERT_NEAR(days < 0 ? days - 37.0 / 48.0 : days + 37.0 / 48.0, oleDate, 1e-9) << year;
        ASSERT_EQ(walking, WSystemTimeEx(oleDate)) << oleDate;

        const int step = year < 2401 ? 1 : 365; // each day of two cycles of leap years, then one a year
        day += chrono::days(step);
        walking.AddMilliseconds(step * millisecondsOfDay);
    }
}

TEST(WSystemTimeEx, DefaultIsNowInUtc) {
    const auto secondsOff = [](LONGLONG ticks) {
        const auto now = chrono::system_clock::now().time_since_epoch();
        return std::abs(ticks / 10000000 - 11644473600 - chrono::duration_cast<chrono::seconds>(now).count());
    };
    const WSystemTimeEx now;
    WSystemTimeEx updated(spring);
    updated.Update(nullptr);
    EXPECT_LE(secondsOff(now), 5);
    EXPECT_LE(secondsOff(updated), 5);
    EXPECT_TRUE(now.HasElapsed(0));
    EXPECT_FALSE(now.HasElapsed(3600000));
    const SYSTEMTIME given = spring;
    updated.Update(&given);
    EXPECT_EQ(spring, updated);
}

TEST(WSystemTimeEx, ArithmeticIsInMillisecondsAndMendsTheDayOfWeek) {
    WSystemTimeEx t(Time(2021, 1, 1));
    t.AddMilliseconds(-1);
    EXPECT_EQ(WSystemTimeEx(Time(2020, 12, 31, 23, 59, 59, 999)), t);
    t += 1;
    EXPECT_EQ(WSystemTimeEx(Time(2021, 1, 1)), t);
    t -= 86400000LL;
    EXPECT_EQ(WSystemTimeEx(Time(2020, 12, 31)), t);

    const WSystemTimeEx later(spring + 1500);
    EXPECT_EQ(1500, later - spring);
    EXPECT_EQ(-1.5, WSystemTimeEx::DifferenceInFractionalSeconds(spring, later));
    EXPECT_EQ(spring, WSystemTimeEx(later - 1500LL));
    EXPECT_EQ(spring, WSystemTimeEx(spring + 0.9));
    EXPECT_EQ(spring, WSystemTimeEx(spring - 0.9));
    EXPECT_EQ(1, WSystemTimeEx(spring + 1.9) - spring);
    EXPECT_EQ(spring, WSystemTimeEx(spring + std::numeric_limits<double>::quiet_NaN()));
}

TEST(WSystemTimeEx, ResultOutsideTheCalendarLeavesTheTime) {
    WSystemTimeEx t(spring);
    t -= 100LL * 365 * 86400000 * 10;
    EXPECT_EQ(spring, t);
    t += 1e300;
    t -= std::numeric_limits<LONGLONG>::min();
    t += std::numeric_limits<LONGLONG>::max();
    EXPECT_EQ(spring, t);

    SYSTEMTIME none = Time(2021, 3, 5);
    none.wMonth = 13;
    EXPECT_EQ(0, static_cast<LONGLONG>(WSystemTimeEx(none)));
    EXPECT_EQ(0.0, static_cast<double>(WSystemTimeEx(none)));
    const LONGLONG ticks = spring;
    DebugOutput output;
    EXPECT_EQ(static_cast<double>(ticks) / 1e7, WSystemTimeEx::DifferenceInFractionalSeconds(spring, none));
    EXPECT_NE(output.Text().find(L" (0x57)"), std::wstring::npos); // what is no time
}

TEST(WSystemTimeEx, OtherFormsOfTimeGiveZerosWhereTheyNameNone) {
    EXPECT_EQ(WSystemTimeEx(Time(1970, 1, 1, 0, 0, 0, 7)), WSystemTimeEx(0LL, 7));
    EXPECT_EQ(WSystemTimeEx(Time(2001, 9, 9, 1, 46, 40)), WSystemTimeEx(1000000000LL, 0));
    const WSystemTimeEx none(SYSTEMTIME{});
    EXPECT_EQ(none, WSystemTimeEx(std::numeric_limits<LONGLONG>::max(), 7));
    EXPECT_EQ(none, WSystemTimeEx(FILETIME{0, 0x80000000}));
    EXPECT_EQ(none, WSystemTimeEx(1e9));
}

TEST(WSystemTimeEx, OrderLooksAtMillisecondsToo) {
    const WSystemTimeEx next(spring + 1);
    const WSystemTimeEx a(Time(2021, 3, 5, 12, 0, 1, 100));
    const WSystemTimeEx b(Time(2021, 3, 5, 12, 0, 0, 200));
    EXPECT_TRUE(a < b && b < a && spring < next && next > spring);
    EXPECT_FALSE(a > b || b > a || spring < spring || spring > spring || next < spring);
    EXPECT_EQ(-1, a.Compare(b));
    EXPECT_EQ(1, next.Compare(static_cast<SYSTEMTIME>(spring)));
    EXPECT_EQ(0, spring.Compare(spring));
    SYSTEMTIME stale = spring;
    stale.wDayOfWeek = 1;
    EXPECT_NE(spring, WSystemTimeEx(stale));
    EXPECT_EQ(1, spring.Compare(stale));
}

TEST(WSystemTimeEx, DayOfWeekStaysInRangeForAnyInput) {
    constexpr int extremes[] = {INT_MIN, -1900, -400, -1, 0, 1, 12, 13, 121, INT_MAX};
    for (const int year : extremes) {
        for (const int month : extremes) {
            for (const int day : extremes) {
                EXPECT_LE(static_cast<unsigned>(WSystemTimeEx::CalcDayOfWeek(year, month, day)), 6U);
            }
        }
    }
}

TEST(WSystemTimeEx, ConvertsToAndFromTm) {
    const std::tm time = spring;
    EXPECT_EQ(121, time.tm_year);
    EXPECT_EQ(2, time.tm_mon);
    EXPECT_EQ(5, time.tm_wday);
    EXPECT_EQ(-1, time.tm_isdst);
    EXPECT_EQ(-4, WSystemTimeEx(time) - spring); // milliseconds are lost

    std::tm unknown = time;
    unknown.tm_wday = 7;
    WSystemTimeEx assigned;
    assigned = unknown;
    EXPECT_EQ(5, assigned.GetDayOfWeek());

    // By the rule for `tm` values, which is not the calendar's: 5 of month 2 of year 121.
    SYSTEMTIME stale = spring;
    stale.wDayOfWeek = 7;
    const std::tm computed = WSystemTimeEx(stale);
    EXPECT_EQ(WSystemTimeEx::CalcDayOfWeek(121, 2, 5), computed.tm_wday);
}

TEST(WSystemTimeEx, TextForms) {
    EXPECT_EQ(L"03/05/2021 01:02:03.004", spring.AsString());
    EXPECT_EQ(L"03052021_010203004", spring.AsStringFileName());
    EXPECT_EQ(L"2021", spring.AsStringEx(L"%Y", false));
    const WSystemTimeEx whole(Time(2021, 3, 5, 13, 2, 3));
    const auto begins = [](const std::wstring& text, const std::wstring& begin) {
        return text.substr(0, begin.size()) == begin;
    };
    EXPECT_TRUE(begins(spring.AsStringEx(L"", false), L"Friday March 05, 2021 01:02:03.004 AM "));
    EXPECT_TRUE(begins(whole.AsStringEx(L"", false), L"Friday March 05, 2021 01:02:03 PM "));
    EXPECT_TRUE(begins(whole.AsStringEx(L"", true), L"Friday March 05, 2021 01:02:03.000 PM "));
    EXPECT_EQ(L"", spring.AsStringEx(std::wstring(100, L'x'), false));
    EXPECT_EQ(std::wstring(99, L'x'), spring.AsStringEx(std::wstring(99, L'x'), false));
}

TEST(WSystemTimeEx, LocalTimeIsThatOfTheZone) {
#ifdef _WIN32
    GTEST_SKIP() << "the zone is that of the machine, which no test may set";
#else
    const char* const before = std::getenv("TZ");
    const std::string zone = before == nullptr ? "" : before;
    setenv("TZ", "TST+02:30", 1);
    EXPECT_EQ(WSystemTimeEx(Time(2021, 3, 4, 22, 32, 3, 4)), WSystemTimeEx(spring.GetLocalTime()));
    EXPECT_EQ(L"03/04/2021 22:32:03.004", spring.AsStringLocalTime());
    EXPECT_EQ(L"Thursday March 04, 2021 10:32:03.004 PM ",
              spring.AsStringLocalTimeEx(L"", true).substr(0, 40));
    EXPECT_EQ(L"03/05/2021 01:02:03.004", spring.AsString());
    before == nullptr ? unsetenv("TZ") : setenv("TZ", zone.c_str(), 1);
    tzset();
#endif
}

TEST(WSystemTimeEx, TextOfWhatIsNoTimeIsInvalid) {
    EXPECT_EQ(L"invalid", WSystemTimeEx(SYSTEMTIME{1899, 12, 0, 31, 0, 0, 0, 0}).AsStringEx(L"", false));
    for (const auto& [month, hour] : {std::pair<int, int>{0, 0}, {13, 0}, {3, 24}}) {
        SYSTEMTIME t = spring;
        t.wMonth = static_cast<WORD>(month);
        t.wHour = static_cast<WORD>(hour);
        EXPECT_EQ(L"invalid", WSystemTimeEx(t).AsStringEx(L"%Y", false));
    }
}

} // namespace
