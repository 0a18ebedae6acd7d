#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/posix/time/calendar.h"
#include "krtpal/posix/time/ticks.h"
#include "krtpal/time.h"

#include <algorithm>
#include <ctime>
#include <iterator>

namespace krtpal {

namespace {

// The zone of the process at a moment, by the zone database of the machine.
struct ZoneMoment {
    std::int64_t offset; // seconds east of UTC
    bool daylight;
    std::string name;
};

ZoneMoment ZoneAt(std::int64_t unixSeconds) {
    const std::time_t moment = unixSeconds;
    std::tm local{};
    if (localtime_r(&moment, &local) == nullptr) {
        return {0, false, "UTC"};
    }
    return {local.tm_gmtoff, local.tm_isdst > 0, local.tm_zone == nullptr ? "" : local.tm_zone};
}

std::int64_t OffsetAt(std::int64_t unixSeconds) {
    return ZoneAt(unixSeconds).offset;
}

// A local time that occurs twice means the first one; one that is left out is taken by the new offset.
std::int64_t ProcessLocalToUtc(std::int64_t localSeconds) {
    constexpr std::int64_t kDay = 86'400;
    const std::int64_t before = OffsetAt(localSeconds - kDay);
    const std::int64_t after = OffsetAt(localSeconds + kDay);
    return OffsetAt(localSeconds - before) == before ? localSeconds - before : localSeconds - after;
}

// Returns whether a rule is valid: a month, and the week and day of the week if the rule has no year.
bool IsValidRule(const SYSTEMTIME& rule) {
    return rule.wMonth >= 1 && rule.wMonth <= 12 &&
           (rule.wYear != 0 || (rule.wDay >= 1 && rule.wDay <= 5 && rule.wDayOfWeek <= 6));
}

// Returns the local ticks at which a rule takes effect in a year.
std::int64_t TransitionInYear(const SYSTEMTIME& rule, int year) {
    const int month = rule.wMonth;
    int day = rule.wDay;
    if (rule.wYear == 0) {
        const int firstWeekday = posix::DayOfWeek(posix::DaysFromDate({year, month, 1}));
        day = 1 + (rule.wDayOfWeek - firstWeekday + 7) % 7 + 7 * (rule.wDay - 1);
        if (day > posix::DaysInMonth(year, month)) {
            day -= 7;
        }
    }
    return posix::DaysFromDate({year, month, day}) * posix::kTicksPerDay +
           (rule.wHour * 60 + rule.wMinute) * posix::kTicksPerMinute;
}

// Gets the minutes by which UTC is ahead of the zone's local time at a moment in UTC or local time. Returns
// false if the zone's rules are invalid.
bool ZoneBias(const TIME_ZONE_INFORMATION& zone, std::int64_t ticks, bool isLocal, std::int64_t* bias) {
    if (zone.DaylightDate.wMonth == 0) {
        *bias = zone.Bias;
        return true;
    }
    if (!IsValidRule(zone.StandardDate) || !IsValidRule(zone.DaylightDate)) {
        return false;
    }
    const std::int64_t plain = isLocal ? ticks : ticks - zone.Bias * posix::kTicksPerMinute;
    const int year = posix::SystemTimeFromTicks(std::max<std::int64_t>(plain, 0)).wYear;
    // Each rule is in the time that it ends.
    const std::int64_t daylightClock = isLocal ? plain : plain - zone.DaylightBias * posix::kTicksPerMinute;
    const std::int64_t standardClock = isLocal ? plain : plain - zone.StandardBias * posix::kTicksPerMinute;
    const bool beforeStandard = daylightClock < TransitionInYear(zone.StandardDate, year);
    const bool afterDaylight = standardClock >= TransitionInYear(zone.DaylightDate, year);
    const bool northern = zone.DaylightDate.wMonth < zone.StandardDate.wMonth;
    const bool daylight = northern ? beforeStandard && afterDaylight : beforeStandard || afterDaylight;
    *bias = static_cast<std::int64_t>(zone.Bias) + (daylight ? zone.DaylightBias : zone.StandardBias);
    return true;
}

BOOL Fail() {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

BOOL Convert(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* from, SYSTEMTIME* to, bool fromLocal) {
    if (from == nullptr || to == nullptr) {
        return Fail();
    }
    const auto ticks = posix::TicksFromSystemTime(*from);
    if (!ticks) {
        return Fail();
    }
    std::int64_t shift = 0; // UTC minus local time
    if (zone != nullptr) {
        std::int64_t bias = 0;
        if (!ZoneBias(*zone, *ticks, fromLocal, &bias)) {
            return Fail();
        }
        shift = bias * posix::kTicksPerMinute;
    } else {
        tzset();
        const std::int64_t seconds = *ticks / posix::kTicksPerSecond - posix::kSecondsToUnixEpoch;
        const std::int64_t offset = fromLocal ? seconds - ProcessLocalToUtc(seconds) : OffsetAt(seconds);
        shift = -offset * posix::kTicksPerSecond;
    }
    std::int64_t result = 0;
    if (__builtin_add_overflow(*ticks, fromLocal ? shift : -shift, &result) || result < 0) {
        return Fail();
    }
    *to = posix::SystemTimeFromTicks(result);
    return TRUE;
}

void SetName(WCHAR (&name)[32], const std::string& text) {
    const std::wstring wide = WideFromUtf8(text);
    const std::size_t length = std::min(wide.size(), std::size(name) - 1);
    std::copy_n(wide.begin(), length, name);
    name[length] = L'\0';
}

// Returns a moment as a rule for every year, in the local time with this offset.
SYSTEMTIME RuleFromMoment(std::int64_t unixSeconds, std::int64_t offset) {
    SYSTEMTIME rule = posix::SystemTimeFromTicks((unixSeconds + offset + posix::kSecondsToUnixEpoch) *
                                                 posix::kTicksPerSecond);
    const bool last = rule.wDay + 7 > posix::DaysInMonth(rule.wYear, rule.wMonth);
    rule.wDay = static_cast<WORD>(last ? 5 : (rule.wDay - 1) / 7 + 1);
    rule.wYear = 0;
    return rule;
}

// Returns the first second after `low` at which daylight saving is that of `high`.
std::int64_t FindTransition(std::int64_t low, std::int64_t high) {
    const bool wanted = ZoneAt(high).daylight;
    while (high - low > 1) {
        const std::int64_t middle = low + (high - low) / 2;
        (ZoneAt(middle).daylight == wanted ? high : low) = middle;
    }
    return high;
}

} // namespace

DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone) {
    if (zone == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return TIME_ZONE_ID_INVALID;
    }
    tzset();
    *zone = TIME_ZONE_INFORMATION{};
    const std::int64_t now = std::time(nullptr);
    const ZoneMoment current = ZoneAt(now);
    const int year = posix::SystemTimeFromTicks((now + current.offset + posix::kSecondsToUnixEpoch) *
                                                posix::kTicksPerSecond)
                         .wYear;
    const auto startOfYear = [](int y) {
        return posix::DaysFromDate({y, 1, 1}) * 86'400 - posix::kSecondsToUnixEpoch;
    };
    ZoneMoment standard = current;
    ZoneMoment daylight = current;
    int changes = 0;
    constexpr std::int64_t kStep = std::int64_t{7} * 86'400;
    for (std::int64_t low = startOfYear(year); low < startOfYear(year + 1); low += kStep) {
        const std::int64_t high = std::min(low + kStep, startOfYear(year + 1));
        if (ZoneAt(low).daylight == ZoneAt(high).daylight) {
            continue;
        }
        ++changes;
        const std::int64_t moment = FindTransition(low, high);
        const ZoneMoment before = ZoneAt(moment - 1);
        const ZoneMoment after = ZoneAt(moment);
        (after.daylight ? daylight : standard) = after;
        (after.daylight ? zone->DaylightDate : zone->StandardDate) = RuleFromMoment(moment, before.offset);
    }
    SetName(zone->StandardName, standard.name);
    SetName(zone->DaylightName, daylight.name);
    zone->Bias = static_cast<LONG>(-standard.offset / 60);
    if (changes != 2) {
        zone->StandardDate = SYSTEMTIME{};
        zone->DaylightDate = SYSTEMTIME{};
        return TIME_ZONE_ID_UNKNOWN;
    }
    zone->DaylightBias = static_cast<LONG>((standard.offset - daylight.offset) / 60);
    return current.daylight ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_STANDARD;
}

BOOL SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* utc,
                                     SYSTEMTIME* local) {
    return Convert(zone, utc, local, false);
}

BOOL TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* local,
                                     SYSTEMTIME* utc) {
    return Convert(zone, local, utc, true);
}

} // namespace krtpal
