// Broken-down times, 100-nanosecond ticks, OLE dates and the time zone.
//
//     SYSTEMTIME utc;
//     GetSystemTime(&utc);
//     FILETIME ticks;                       // 100 ns since 1 January 1601
//     SystemTimeToFileTime(&utc, &ticks);   // FALSE and the last error if a field is out of range
//     SYSTEMTIME local;
//     SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
//
// The calendar is the Gregorian one, without leap seconds. SYSTEMTIME and FILETIME reach from 1601 to 30827,
// OLE dates from 100 to 9999.
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

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;     ///< 1 to 12
    WORD wDayOfWeek; ///< 0 for Sunday
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

/// 64-bit count of 100 ns since 1 January 1601, in halves.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using LPFILETIME = FILETIME*;

/// Days since 30 December 1899; the fraction is the time of the day, counted away from zero before that day
/// too.
using DATE = double;

/// Biases in minutes: UTC = local time + bias. A date with year 0 names a day of each year: wDay is the week
/// (5: the last one) and wDayOfWeek the day in it. Month 0: no daylight saving.
struct TIME_ZONE_INFORMATION {
    LONG Bias;
    WCHAR StandardName[32];
    SYSTEMTIME StandardDate;
    LONG StandardBias;
    WCHAR DaylightName[32];
    SYSTEMTIME DaylightDate;
    LONG DaylightBias;
};
using LPTIME_ZONE_INFORMATION = TIME_ZONE_INFORMATION*;

inline constexpr DWORD TIME_ZONE_ID_UNKNOWN = 0;
inline constexpr DWORD TIME_ZONE_ID_STANDARD = 1;
inline constexpr DWORD TIME_ZONE_ID_DAYLIGHT = 2;
inline constexpr DWORD TIME_ZONE_ID_INVALID = 0xFFFFFFFF;

/// Milliseconds of the monotonic clock since the start of the system.
KRTPAL_API ULONGLONG WINAPI GetTickCount64();
/// The current UTC time, to the millisecond.
KRTPAL_API void WINAPI GetSystemTime(SYSTEMTIME* time);
KRTPAL_API void WINAPI GetSystemTimeAsFileTime(FILETIME* time);
/// The day of week is ignored. FALSE and ERROR_INVALID_PARAMETER if a field is out of range.
KRTPAL_API BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* ticks);
/// Cuts to milliseconds. FALSE and ERROR_INVALID_PARAMETER for counts from 2^63 up.
KRTPAL_API BOOL WINAPI FileTimeToSystemTime(const FILETIME* ticks, SYSTEMTIME* time);
/// -1, 0 or 1
KRTPAL_API LONG WINAPI CompareFileTime(const FILETIME* a, const FILETIME* b);

/// FALSE if a field is out of range.
KRTPAL_API INT WINAPI SystemTimeToVariantTime(SYSTEMTIME* time, double* date);
/// FALSE for dates outside the years 100 to 9999.
KRTPAL_API INT WINAPI VariantTimeToSystemTime(double date, SYSTEMTIME* time);

/// The zone of the process (environment variable TZ or the machine's setting) with the rules of the current
/// year.
KRTPAL_API DWORD WINAPI GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone);
/// A null zone is that of the process.
KRTPAL_API BOOL WINAPI SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* zone,
                                                       const SYSTEMTIME* utc, SYSTEMTIME* local);
KRTPAL_API BOOL WINAPI TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* zone,
                                                       const SYSTEMTIME* local, SYSTEMTIME* utc);

/// Seconds since 1 January 1970 to UTC fields, years 1970 to 3000. EINVAL with all fields -1 for other
/// counts.
KRTPAL_API int _gmtime64_s(std::tm* time, const LONGLONG* seconds); // NOLINT(bugprone-reserved-identifier)
/// Local fields to seconds since 1 January 1970; brings the fields into their ranges. -1, EINVAL and the
/// fields as they were for times outside the years 1970 to 3000.
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
