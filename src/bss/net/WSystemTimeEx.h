// WSystemTimeEx: the library's time stamp, a SYSTEMTIME (UTC by convention) with arithmetic, comparison and
// texts.
//
//     bss::WSystemTimeEx start;                     // now, UTC
//     start += 1500LL;                              // 1.5 s later
//     std::wstring name = start.AsStringFileName(); // "03052021_010203004"
//
// Milliseconds are the unit of arithmetic; a tick is the 100 ns of a FILETIME, counted from 1601.
//
// Threads: a value; no shared state.

#ifndef BSS_NET_WSYSTEMTIMEEX_H
#define BSS_NET_WSYSTEMTIMEEX_H

#include "bss/Export.h"
#include "krtpal/time.h"
#include "krtpal/types.h"

#include <concepts>
#include <ctime>
#include <string>
#include <type_traits>

namespace bss {

class KRTBSS_API WSystemTimeEx {
public:
    static const long CONV_MSEC_TO_TICKS; ///< 10000
    static const long CONV_SEC_TO_TICKS;  ///< 10000000
    static const double CONV_SEC_TO_USEC; ///< 1000000.0
    static const double CONV_USEC_TO_SEC; ///< 0.000001
    static const double CONV_SEC_TO_MIN;  ///< 60.0

    /// The current UTC time.
    WSystemTimeEx();
    WSystemTimeEx(const SYSTEMTIME& time); // NOLINT: conversions are meant, here and below
    WSystemTimeEx(const WSystemTimeEx&) = default;
    /// All fields are zero if the ticks name no time.
    WSystemTimeEx(const FILETIME& time);
    /// From an OLE date: days since 30 December 1899, the time of day as the fraction's absolute value. All
    /// fields are zero if it is out of range (years 100 to 9999).
    WSystemTimeEx(const double& date);
    WSystemTimeEx(const std::tm& time);
    /// Seconds since 1 January 1970, UTC. All fields are zero if there is no such time.
    WSystemTimeEx(const LONGLONG& seconds, unsigned short milliseconds);
    virtual ~WSystemTimeEx();

    WSystemTimeEx& operator=(const WSystemTimeEx&) = default;
    WSystemTimeEx& operator=(const SYSTEMTIME& time);
    WSystemTimeEx& operator=(const std::tm& time);

    operator SYSTEMTIME() const { return m_time; }
    /// Zero if the fields name no time.
    operator FILETIME() const;
    /// Ticks since 1601, zero if the fields name no time.
    operator LONGLONG() const;
    /// The OLE date, 0.0 on failure.
    operator double() const;
    /// `tm_isdst` is -1, `tm_yday` is not set.
    operator std::tm() const;
    /// The same as LONGLONG, for where the 64-bit type of the platform is another one.
    template <std::signed_integral Integer>
    requires(sizeof(Integer) == sizeof(LONGLONG) && !std::same_as<Integer, LONGLONG>)
    operator Integer() const {
        return static_cast<LONGLONG>(*this);
    }
    /// In the time zone of the process.
    SYSTEMTIME GetLocalTime() const;

    int GetYear() const { return m_time.wYear; }
    int GetMonth() const { return m_time.wMonth; }         ///< 1 to 12
    int GetDayOfWeek() const { return m_time.wDayOfWeek; } ///< 0 is Sunday
    int GetDay() const { return m_time.wDay; }
    int GetHour() const { return m_time.wHour; }
    int GetMinute() const { return m_time.wMinute; }
    int GetSecond() const { return m_time.wSecond; }
    int GetMilliSeconds() const { return m_time.wMilliseconds; }

    /// Also puts the day of the week right. A result outside the calendar leaves the time as it is.
    void AddMilliseconds(LONGLONG milliseconds);
    WSystemTimeEx& operator+=(LONGLONG milliseconds);
    WSystemTimeEx& operator-=(LONGLONG milliseconds);
    SYSTEMTIME operator+(LONGLONG milliseconds) const;
    SYSTEMTIME operator-(LONGLONG milliseconds) const;
    /// Doubles are cut to whole milliseconds: adding 0.9 adds nothing.
    WSystemTimeEx& operator+=(double milliseconds);
    WSystemTimeEx& operator-=(double milliseconds);
    SYSTEMTIME operator+(double milliseconds) const;
    SYSTEMTIME operator-(double milliseconds) const;
    /// Other integers count as LONGLONG.
    template <std::integral Integer>
    WSystemTimeEx& operator+=(Integer milliseconds) {
        return *this += static_cast<LONGLONG>(milliseconds);
    }
    template <std::integral Integer>
    WSystemTimeEx& operator-=(Integer milliseconds) {
        return *this -= static_cast<LONGLONG>(milliseconds);
    }
    template <std::integral Integer>
    SYSTEMTIME operator+(Integer milliseconds) const {
        return *this + static_cast<LONGLONG>(milliseconds);
    }
    template <std::integral Integer>
    SYSTEMTIME operator-(Integer milliseconds) const {
        return *this - static_cast<LONGLONG>(milliseconds);
    }
    /// Whole milliseconds from `other` to this time, negative if `other` is later.
    LONGLONG operator-(const WSystemTimeEx& other) const;
    /// Whether at least so many milliseconds have passed since this time, by the system's clock (UTC).
    bool HasElapsed(LONGLONG milliseconds) const;
    /// Becomes the given time, or the current UTC time for null.
    void Update(const SYSTEMTIME* time);
    static void SetToCurrentTime(SYSTEMTIME& time);
    /// Seconds from `b` to `a`. A time that names none counts as what its conversion left (zero ticks); a
    /// debug text tells.
    static double DifferenceInFractionalSeconds(const SYSTEMTIME& a, const SYSTEMTIME& b);

    /// All eight fields count, the day of the week among them.
    bool operator==(const WSystemTimeEx& other) const;
    bool operator!=(const WSystemTimeEx& other) const { return !(*this == other); }
    /// No strict order, on purpose: do not sort by it. The milliseconds decide where this time is not the
    /// earlier one, so that 12:00:01.100 counts as `<` 12:00:00.200.
    bool operator<(const WSystemTimeEx& other) const;
    /// No strict order either, and not the mirror image of `<`: false wherever this time's milliseconds are
    /// fewer.
    bool operator>(const WSystemTimeEx& other) const;
    /// 0 when all fields are equal, -1 by the rule of `<`, otherwise 1.
    int Compare(const WSystemTimeEx& other) const;
    int Compare(const SYSTEMTIME& other) const;

    /// Milliseconds become 0; a `tm_wday` outside 0 to 6 is computed.
    static void Copy(SYSTEMTIME& to, const std::tm& from);
    /// `tm_isdst` becomes -1, `tm_yday` stays as it is. A day of the week above 6 is replaced by
    /// CalcDayOfWeek of the `tm` values (year less 1900, month from 0), which is not the calendar's: kept for
    /// agreement with stored results.
    static void Copy(std::tm& to, const SYSTEMTIME& from);
    /// 0 (Sunday) to 6, from the year, the month from 1 to 12 and the day.
    static int CalcDayOfWeek(int year, int month, int day);

    std::wstring AsString() const;          ///< "03/05/2021 01:02:03.004": month, day, year
    std::wstring AsStringLocalTime() const; ///< the same in the time zone of the process
    std::wstring AsStringFileName() const;  ///< "03052021_010203004"; sorts by month first
    /// By a format of `wcsftime` (99 characters at most, a longer text comes out empty), with the C locale's
    /// names. An empty format gives weekday, month, day, year and time on a 12-hour clock, with milliseconds
    /// if there are any or if they are asked for, and the process's zone, though the time may be UTC.
    /// "invalid" for a year before 1900, a month outside 1 to 12 or an hour of 24 and more.
    std::wstring AsStringEx(const std::wstring& format, bool showZeroMilliseconds) const;
    std::wstring AsStringLocalTimeEx(const std::wstring& format, bool showZeroMilliseconds) const;

private:
    SYSTEMTIME m_time{};
};

} // namespace bss

#endif
