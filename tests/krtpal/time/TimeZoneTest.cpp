#include "krtpal/error.h"
#include "krtpal/time.h"
#include "support/Expect.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace {

TIME_ZONE_INFORMATION Zone(LONG bias, SYSTEMTIME daylight, SYSTEMTIME standard) {
    return {bias, L"", standard, 0, L"", daylight, -60};
}

// Month, day of week, week of the month, hour
const TIME_ZONE_INFORMATION kBerlin = Zone(-60, {0, 3, 0, 5, 2, 0, 0, 0}, {0, 10, 0, 5, 3, 0, 0, 0});
const TIME_ZONE_INFORMATION kNewYork = Zone(300, {0, 3, 0, 2, 2, 0, 0, 0}, {0, 11, 0, 1, 2, 0, 0, 0});
const TIME_ZONE_INFORMATION kSydney = Zone(-600, {0, 10, 0, 1, 2, 0, 0, 0}, {0, 4, 0, 1, 3, 0, 0, 0});

SYSTEMTIME Parse(const std::string& text) {
    SYSTEMTIME time{};
    EXPECT_EQ(std::sscanf(text.c_str(), "%hu/%hu/%hu %hu:%hu:%hu.%hu", &time.wYear, &time.wMonth, &time.wDay,
                          &time.wHour, &time.wMinute, &time.wSecond, &time.wMilliseconds),
              7);
    return time;
}

std::string Text(const SYSTEMTIME& time) {
    char text[60];
    std::snprintf(text, sizeof(text), "%04u/%02u/%02u %02u:%02u:%02u.%03u", time.wYear, time.wMonth,
                  time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return text;
}

using Conversion = decltype(&SystemTimeToTzSpecificLocalTime);

std::string Convert(Conversion convert, const TIME_ZONE_INFORMATION* zone, const std::string& text) {
    const SYSTEMTIME from = Parse(text);
    SYSTEMTIME to{};
    SetLastError(0);
    return convert(zone, &from, &to) ? Text(to) : "error " + std::to_string(GetLastError());
}

std::string ToLocal(const TIME_ZONE_INFORMATION* zone, const std::string& utc) {
    return Convert(&SystemTimeToTzSpecificLocalTime, zone, utc);
}

std::string ToUtc(const TIME_ZONE_INFORMATION* zone, const std::string& local) {
    return Convert(&TzSpecificLocalTimeToSystemTime, zone, local);
}

} // namespace

TEST(TimeZone, BadTimesAndRulesAreRefused) {
    EXPECT_EQ(ToLocal(&kBerlin, "2021/13/01 00:00:00.000"), "error 87");
    EXPECT_EQ(ToUtc(&kBerlin, "2021/02/30 00:00:00.000"), "error 87");
    TIME_ZONE_INFORMATION bad = kBerlin;
    bad.StandardDate.wMonth = 0;
    EXPECT_EQ(ToLocal(&bad, "2021/03/01 00:00:00.000"), "error 87");
    bad = kBerlin;
    bad.DaylightDate.wDay = 6;
    EXPECT_EQ(ToLocal(&bad, "2021/03/01 00:00:00.000"), "error 87");
}

TEST(TimeZone, RulesHoldToTheSecondInBothHemispheres) {
    const struct {
        const TIME_ZONE_INFORMATION* zone;
        const char* utc;
        const char* local;
    } rows[] = {
        {&kBerlin, "2021/03/28 00:59:59.999", "2021/03/28 01:59:59.999"},
        {&kBerlin, "2021/03/28 01:00:00.000", "2021/03/28 03:00:00.000"},
        {&kBerlin, "2021/10/31 00:59:59.999", "2021/10/31 02:59:59.999"},
        {&kBerlin, "2021/10/31 01:00:00.000", "2021/10/31 02:00:00.000"},
        {&kBerlin, "1601/01/01 00:00:00.000", "1601/01/01 01:00:00.000"},
        {&kNewYork, "2021/03/14 07:00:00.000", "2021/03/14 03:00:00.000"},
        {&kNewYork, "2021/11/07 06:00:00.000", "2021/11/07 01:00:00.000"},
        {&kNewYork, "2021/01/01 03:00:00.000", "2020/12/31 22:00:00.000"},
        {&kSydney, "2021/10/02 15:59:59.000", "2021/10/03 01:59:59.000"},
        {&kSydney, "2021/10/02 16:00:00.000", "2021/10/03 03:00:00.000"},
        {&kSydney, "2021/04/03 15:59:59.000", "2021/04/04 02:59:59.000"},
        {&kSydney, "2021/04/03 16:00:00.000", "2021/04/04 02:00:00.000"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ToLocal(row.zone, row.utc), row.local);
    }
}

TEST(TimeZone, LocalTimesGoBackToUtc) {
    EXPECT_EQ(ToUtc(&kBerlin, "2021/03/28 01:59:59.000"), "2021/03/28 00:59:59.000");
    EXPECT_EQ(ToUtc(&kBerlin, "2021/03/28 03:00:00.000"), "2021/03/28 01:00:00.000");
    EXPECT_EQ(ToUtc(&kBerlin, "2021/10/31 02:30:00.000"), "2021/10/31 00:30:00.000"); // the first of the two
    EXPECT_EQ(ToUtc(&kBerlin, "2021/10/31 03:00:00.000"), "2021/10/31 02:00:00.000");
    EXPECT_EQ(ToUtc(&kSydney, "2021/01/15 12:00:00.000"), "2021/01/15 01:00:00.000");
    EXPECT_EQ(ToUtc(&kSydney, "2021/06/15 12:00:00.000"), "2021/06/15 02:00:00.000");
    TIME_ZONE_INFORMATION india{}; // without rules the bias alone holds
    india.Bias = -330;
    india.StandardBias = 999;
    EXPECT_EQ(ToLocal(&india, "2021/06/15 20:00:00.000"), "2021/06/16 01:30:00.000");
    EXPECT_EQ(ToUtc(&india, "2021/06/16 01:30:00.000"), "2021/06/15 20:00:00.000");
    EXPECT_EQ(ToUtc(&india, "1601/01/01 05:00:00.000"), "error 87");
}

TEST(TimeZone, ProcessZoneIsTheOneThatIsReported) {
    TIME_ZONE_INFORMATION zone{};
    const DWORD id = GetTimeZoneInformation(&zone);
    ASSERT_NE(id, TIME_ZONE_ID_INVALID);
    SYSTEMTIME now{};
    GetSystemTime(&now);
    EXPECT_EQ(ToLocal(nullptr, Text(now)), ToLocal(&zone, Text(now)));
}

#ifndef _WIN32
namespace {

/// Sets the zone of the process, and takes it back to that of the machine.
class ProcessZone {
public:
    explicit ProcessZone(const char* name) { setenv("TZ", name, 1); }
    ProcessZone(const ProcessZone&) = delete;
    ProcessZone& operator=(const ProcessZone&) = delete;
    ~ProcessZone() {
        m_before ? setenv("TZ", m_before->c_str(), 1) : unsetenv("TZ");
        tzset();
    }

private:
    std::optional<std::string> m_before =
        std::getenv("TZ") == nullptr ? std::nullopt : std::optional<std::string>(std::getenv("TZ"));
};

} // namespace

// The zones are given by rule, so that no zone database is needed.
TEST(TimeZone, ProcessZoneFollowsItsVariable) {
    const ProcessZone zoneOfTest("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(ToLocal(nullptr, "2021/03/28 00:59:59.999"), "2021/03/28 01:59:59.999");
    EXPECT_EQ(ToLocal(nullptr, "2021/03/28 01:00:00.000"), "2021/03/28 03:00:00.000");
    EXPECT_EQ(ToUtc(nullptr, "2021/07/01 12:00:00.007"), "2021/07/01 10:00:00.007");
    EXPECT_EQ(ToUtc(nullptr, "2021/10/31 02:30:00.000"), "2021/10/31 00:30:00.000");
    EXPECT_EQ(ToUtc(nullptr, "2021/03/28 02:30:00.000"), "2021/03/28 00:30:00.000");
    TIME_ZONE_INFORMATION zone{};
    const DWORD id = GetTimeZoneInformation(&zone);
    EXPECT_TRUE(id == TIME_ZONE_ID_STANDARD || id == TIME_ZONE_ID_DAYLIGHT);
    EXPECT_EQ(zone.Bias, -60);
    EXPECT_EQ(zone.DaylightBias, -60);
    EXPECT_EQ(zone.StandardBias, 0);
    EXPECT_STREQ(zone.StandardName, L"CET");
    EXPECT_STREQ(zone.DaylightName, L"CEST");
    EXPECT_EQ(Text(zone.DaylightDate), Text(kBerlin.DaylightDate));
    EXPECT_EQ(Text(zone.StandardDate), Text(kBerlin.StandardDate));
}

TEST(TimeZone, ProcessZoneWithoutDaylightSavingHasNoRules) {
    const ProcessZone india("IST-5:30");
    TIME_ZONE_INFORMATION zone{};
    EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_UNKNOWN);
    EXPECT_EQ(zone.Bias, -330);
    EXPECT_EQ(zone.DaylightDate.wMonth, 0);
    EXPECT_EQ(ToLocal(nullptr, "9999/12/31 12:00:00.000"), "9999/12/31 17:30:00.000");
    EXPECT_EQ(ToLocal(nullptr, "1601/01/01 00:00:00.000"), "1601/01/01 05:30:00.000");
}
#else
SKIPPED_TEST(TimeZone, ProcessZoneFollowsItsVariable, "the zone of the machine can't be set for a test")
SKIPPED_TEST(TimeZone, ProcessZoneWithoutDaylightSavingHasNoRules,
             "the zone of the machine can't be set for a test")
#endif
