#include "TimeText.h"
#include "krtpal/error.h"
#include "support/Expect.h"
#include "support/Rows.h"

#include <cstdlib>
#include <map>
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

using Conversion = decltype(&SystemTimeToTzSpecificLocalTime);

std::string Convert(Conversion convert, const TIME_ZONE_INFORMATION* zone, const std::string& text) {
    const SYSTEMTIME from = ParseTime(text);
    SYSTEMTIME to{};
    SetLastError(0);
    return convert(zone, &from, &to) ? TextOf(to) : "error " + std::to_string(GetLastError());
}

std::string ToLocal(const TIME_ZONE_INFORMATION* zone, const std::string& utc) {
    return Convert(&SystemTimeToTzSpecificLocalTime, zone, utc);
}

std::string ToUtc(const TIME_ZONE_INFORMATION* zone, const std::string& local) {
    return Convert(&TzSpecificLocalTimeToSystemTime, zone, local);
}

} // namespace

TEST(TimeZone, BadRulesAreRefused) {
    TIME_ZONE_INFORMATION bad = kBerlin;
    bad.StandardDate.wMonth = 0;
    EXPECT_EQ(ToLocal(&bad, "2021/03/01 00:00:00.000"), "error 87");
    bad = kBerlin;
    bad.DaylightDate.wDay = 6;
    EXPECT_EQ(ToLocal(&bad, "2021/03/01 00:00:00.000"), "error 87");
}

TEST(TimeZone, RulesHoldToTheSecondInBothHemispheres) {
    TIME_ZONE_INFORMATION india{}; // without rules the bias alone holds
    india.Bias = -330;
    india.StandardBias = 999;
    const std::map<std::string, TIME_ZONE_INFORMATION> zones = {
        {"Berlin", kBerlin}, {"New York", kNewYork}, {"Sydney", kSydney}, {"India", india}};
    for (const auto& row : ReadRows("krtpal/time_zones.tsv")) {
        const auto convert = row[1] == "to local" ? ToLocal : ToUtc;
        EXPECT_EQ(convert(&zones.at(row[0]), row[2]), row[3]) << row[0] << ' ' << row[2];
    }
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
    EXPECT_EQ(TextOf(zone.DaylightDate), TextOf(kBerlin.DaylightDate));
    EXPECT_EQ(TextOf(zone.StandardDate), TextOf(kBerlin.StandardDate));
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
