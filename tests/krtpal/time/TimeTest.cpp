#include "TimeText.h"
#include "krtpal/error.h"
#include "support/Expect.h"
#include "support/Rows.h"
#include "support/Wine.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

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

TEST(SystemTime, FieldsThatDoNotExistAreRefused) {
    std::vector<const char*> texts = {"1600/12/31 23:59:59.999",  "2000/00/01 00:00:00.000",
                                      "2000/13/01 00:00:00.000",  "2000/01/00 00:00:00.000",
                                      "2000/04/31 00:00:00.000",  "2000/01/01 24:00:00.000",
                                      "2000/01/01 00:60:00.000",  "2000/01/01 00:00:60.000",
                                      "2000/01/01 00:00:00.1000", "40000/01/01 00:00:00.000"};
    if (!RunsUnderWine()) { // which takes 29 February in every year, and years beyond the last
        texts.insert(texts.end(),
                     {"1900/02/29 00:00:00.000", "2001/02/29 00:00:00.000", "30828/01/01 00:00:00.000"});
    }
    for (const char* const text : texts) {
        const SYSTEMTIME time = ParseTime(text);
        FILETIME ticks{7, 7};
        EXPECT_FAILS(SystemTimeToFileTime(&time, &ticks), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(ticks.dwLowDateTime, 7U) << text;
    }
    const FILETIME negative = FileTimeOf(0x8000000000000000);
    SYSTEMTIME time{};
    EXPECT_FAILS(FileTimeToSystemTime(&negative, &time), ERROR_INVALID_PARAMETER);
}

TEST(SystemTime, LimitsConvertBothWays) {
    for (const auto& row : ReadRows("krtpal/file_times.tsv")) {
        SYSTEMTIME time = ParseTime(row[0]);
        time.wDayOfWeek = static_cast<WORD>(std::stoi(row[1]));
        FILETIME ticks{};
        SYSTEMTIME back{};
        ASSERT_TRUE(SystemTimeToFileTime(&time, &ticks));
        EXPECT_EQ(Ticks(ticks), std::stoull(row[2])) << row[0];
        const FILETIME withRest = FileTimeOf(std::stoull(row[2]) + 9'999);
        ASSERT_TRUE(FileTimeToSystemTime(&withRest, &back));
        EXPECT_EQ(std::memcmp(&back, &time, sizeof(back)), 0) << row[0];
    }
}

TEST(SystemTime, NowIsTheSameByBothCallsAndByTheStandardClock) {
    FILETIME now{};
    SYSTEMTIME fields{};
    FILETIME later{};
    const std::time_t before = std::time(nullptr);
    GetSystemTimeAsFileTime(&now);
    GetSystemTime(&fields);
    ASSERT_TRUE(SystemTimeToFileTime(&fields, &later));
    const auto seconds = static_cast<std::time_t>(Ticks(now) / 10'000'000 - 11'644'473'600);
    EXPECT_TRUE(seconds >= before - 1 && seconds < before + 60) << seconds - before;
    EXPECT_GE(Ticks(later) + 10'000, Ticks(now));
}

TEST(FileTime, ComparesAsOneUnsignedNumber) {
    const FILETIME ascending[] = {FileTimeOf(0x1FFFFFFFF), FileTimeOf(0x200000000),
                                  FileTimeOf(0xFFFFFFFF00000000)};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            EXPECT_EQ(CompareFileTime(&ascending[i], &ascending[j]), (i > j) - (i < j));
        }
    }
}

TEST(Gmtime, BreaksSecondsDownAndRefusesCountsOutsideItsYears) {
    for (const auto& row : ReadRows("krtpal/gmtime.tsv")) {
        const LONGLONG seconds = std::stoll(row[0]);
        const int result = row[1] == "refused" ? EINVAL : 0;
        std::tm time{};
        errno = 0;
        EXPECT_EQ(_gmtime64_s(&time, &seconds), result) << seconds;
        EXPECT_EQ(errno, result);
        std::string fields;
        for (const int field : {time.tm_year, time.tm_mon, time.tm_mday, time.tm_hour, time.tm_min,
                                time.tm_sec, time.tm_wday, time.tm_yday, time.tm_isdst}) {
            fields += ' ' + std::to_string(field);
        }
        EXPECT_EQ(fields, result == 0 ? ' ' + row[1] : " -1 -1 -1 -1 -1 -1 -1 -1 -1") << seconds;
    }
}
