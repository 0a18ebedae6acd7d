// Broken-down times, 100-nanosecond ticks, OLE dates and the time zone.
//
//     SYSTEMTIME utc;
//     GetSystemTime(&utc);
//     FILETIME ticks;                       // 100 ns since 1 January 1601
//     SystemTimeToFileTime(&utc, &ticks);   // FALSE and the last error if a field is out of range
//     SYSTEMTIME local;
//     SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
//
// The calendar is the Gregorian one, without leap seconds. SYSTEMTIME and FILETIME range from 1601 to 30827,
// OLE dates from 100 to 9999.
//
// A local time that occurs twice, at the end of daylight saving, means the first occurrence; one that is left
// out, at its beginning, is taken by the new offset. On Linux the zone of the process is that of the
// environment variable TZ or of the machine, with the rules of the zone database for the year in question.
// Windows uses the rules of the current year for all years.
//
// Threads: all calls may be used from any thread. The zone of the process is read at each call.

#ifndef KRTPAL_TIME_H
#define KRTPAL_TIME_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#include <ctime>

#ifdef _WIN32
#include <oleauto.h>
#else

namespace krtpal {

/// A broken-down time, in UTC or local.
struct SYSTEMTIME {
    WORD wYear;      ///< 1601 to 30827; 0 in a rule of TIME_ZONE_INFORMATION
    WORD wMonth;     ///< 1 to 12
    WORD wDayOfWeek; ///< 0 to 6, 0 for Sunday; ignored by conversions
    WORD wDay;       ///< 1 to 31
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

/// A 64-bit count of 100 ns since 1 January 1601 UTC, in halves.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using LPFILETIME = FILETIME*;

/// Days since 30 December 1899. The fraction is the time of day; it counts away from zero, so that -1.25 is
/// 06:00 on 29 December 1899.
using DATE = double;

/// Offsets and rules of a zone. Biases are in minutes: UTC = local time + Bias + StandardBias or
/// DaylightBias.
/// A date with year 0 is a rule: wDay is the week in the month (1 to 5, 5 the last one) and wDayOfWeek the
/// day in that week. A date with another year names a day of the month; the year is ignored. Month 0 in
/// DaylightDate means no daylight saving; StandardBias and DaylightBias are then ignored.
struct TIME_ZONE_INFORMATION {
    LONG Bias;
    WCHAR StandardName[32];  ///< on Linux the abbreviation ("CET"), at most 31 characters
    SYSTEMTIME StandardDate; ///< end of daylight saving, in daylight-saving time
    LONG StandardBias;
    WCHAR DaylightName[32];
    SYSTEMTIME DaylightDate; ///< begin of daylight saving, in standard time
    LONG DaylightBias;
};
using LPTIME_ZONE_INFORMATION = TIME_ZONE_INFORMATION*;

/// Results of GetTimeZoneInformation.
inline constexpr DWORD TIME_ZONE_ID_UNKNOWN = 0;
inline constexpr DWORD TIME_ZONE_ID_STANDARD = 1;
inline constexpr DWORD TIME_ZONE_ID_DAYLIGHT = 2;
inline constexpr DWORD TIME_ZONE_ID_INVALID = 0xFFFFFFFF;

/// Returns the milliseconds since the start of the system, including suspended time. Changes of the date do
/// not affect it.
KRTPAL_API ULONGLONG WINAPI GetTickCount64();
/// Stores the current UTC time, cut to milliseconds.
KRTPAL_API void WINAPI GetSystemTime(SYSTEMTIME* time);
/// Stores the current UTC time, cut to 100 ns.
KRTPAL_API void WINAPI GetSystemTimeAsFileTime(FILETIME* time);
/// Returns TRUE and stores the ticks. The day of week is ignored.
/// Fails with ERROR_INVALID_PARAMETER if a field is out of range; the ticks are then unchanged.
KRTPAL_API BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* ticks);
/// Returns TRUE and stores the fields, cut to milliseconds.
/// Fails with ERROR_INVALID_PARAMETER for counts from 2^63 up.
KRTPAL_API BOOL WINAPI FileTimeToSystemTime(const FILETIME* ticks, SYSTEMTIME* time);
/// Returns -1, 0 or 1 if `a` is before, equal to or after `b`, as unsigned 64-bit counts.
KRTPAL_API LONG WINAPI CompareFileTime(const FILETIME* a, const FILETIME* b);

/// Returns TRUE and stores the OLE date. Milliseconds are ignored. Years of two digits mean 1950 to 2049.
/// Month 0 is December of the year before, day 0 the last day of the month before; days beyond the month and
/// times beyond the day, also negative ones, carry over.
/// Fails with FALSE, the date and the last error unchanged, for a month above 12, a day above 31, or a result
/// outside the years 100 to 9999. On Windows the span of two-digit years is a setting of the user.
KRTPAL_API INT WINAPI SystemTimeToVariantTime(SYSTEMTIME* time, double* date);
/// Returns TRUE and stores the fields, rounded to whole seconds (half up). 1e-11 days are added first, since
/// most seconds have no exact fraction of a day. wMilliseconds is 0.
/// Fails with FALSE, the fields and the last error unchanged, for NaN and for dates outside the years 100 to
/// 9999, also if only rounding leaves them.
KRTPAL_API INT WINAPI VariantTimeToSystemTime(double date, SYSTEMTIME* time);

/// Returns whether standard time or daylight saving applies now, and stores the zone of the process with the
/// rules of the current year. Returns TIME_ZONE_ID_UNKNOWN, and no dates, if the year does not have exactly
/// two changes.
/// Fails with TIME_ZONE_ID_INVALID and ERROR_INVALID_PARAMETER for null. Unlike on Windows, names are
/// abbreviations.
KRTPAL_API DWORD WINAPI GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone);
/// Returns TRUE and converts UTC to the local time of a zone; a null zone is that of the process.
/// Fails with ERROR_INVALID_PARAMETER for null times, fields out of range, invalid rules of the zone, or a
/// result out of range.
KRTPAL_API BOOL WINAPI SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* zone,
                                                       const SYSTEMTIME* utc, SYSTEMTIME* local);
/// Returns TRUE and converts the local time of a zone to UTC. Otherwise as SystemTimeToTzSpecificLocalTime.
KRTPAL_API BOOL WINAPI TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* zone,
                                                       const SYSTEMTIME* local, SYSTEMTIME* utc);

/// Returns 0 and stores the UTC fields of a count of seconds since 1 January 1970, years 1970 to 3000.
/// Fails with EINVAL, in the result and in errno, for null and for other counts; all fields are then -1.
KRTPAL_API int _gmtime64_s(std::tm* time, const LONGLONG* seconds); // NOLINT(bugprone-reserved-identifier)
/// Returns the seconds since 1 January 1970 of local fields, which may have any values; they are brought into
/// their ranges.
/// Fails with -1, EINVAL in errno and unchanged fields for null and for times outside the years 1970 to 3000.
KRTPAL_API LONGLONG _mktime64(std::tm* time); // NOLINT(bugprone-reserved-identifier)

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::SYSTEMTIME, krtpal::LPSYSTEMTIME, krtpal::FILETIME, krtpal::LPFILETIME, krtpal::DATE,      \
        krtpal::TIME_ZONE_INFORMATION, krtpal::LPTIME_ZONE_INFORMATION, krtpal::TIME_ZONE_ID_UNKNOWN,        \
        krtpal::TIME_ZONE_ID_STANDARD, krtpal::TIME_ZONE_ID_DAYLIGHT, krtpal::TIME_ZONE_ID_INVALID,          \
        krtpal::GetTickCount64, krtpal::GetSystemTime, krtpal::GetSystemTimeAsFileTime,                      \
        krtpal::SystemTimeToFileTime, krtpal::FileTimeToSystemTime, krtpal::CompareFileTime,                 \
        krtpal::SystemTimeToVariantTime, krtpal::VariantTimeToSystemTime, krtpal::GetTimeZoneInformation,    \
        krtpal::SystemTimeToTzSpecificLocalTime, krtpal::TzSpecificLocalTimeToSystemTime,                    \
        krtpal::_gmtime64_s, krtpal::_mktime64
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

namespace krtpal {
static_assert(sizeof(SYSTEMTIME) == 16 && sizeof(FILETIME) == 8);
}

#endif
