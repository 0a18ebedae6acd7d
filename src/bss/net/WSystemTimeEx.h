// WSystemTimeEx: the library's time stamp, a SYSTEMTIME with conversions, arithmetic, comparison and texts.
//
//     bss::WSystemTimeEx start;                     // now, UTC
//     start += 1500LL;                              // 1.5 s later
//     std::wstring name = start.AsStringFileName(); // "03052021_010203004"
//
// The time is UTC by convention; the class stores no zone. The unit of arithmetic is the millisecond. A tick
// is 100 ns, the unit of a FILETIME, counted from 1 January 1601.
//
// No operation throws, except std::bad_alloc from those that make a text. A SYSTEMTIME whose fields are not a
// time of the calendar is stored as given; each conversion documents its result for such fields.
//
// Threads: a value without shared state. One object may be read by many threads or changed by one.

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

/// A time stamp with millisecond resolution, in UTC by convention.
class KRTBSS_API WSystemTimeEx {
public:
    static const long CONV_MSEC_TO_TICKS; ///< Ticks per millisecond, 10000.
    static const long CONV_SEC_TO_TICKS;  ///< Ticks per second, 10000000.
    static const double CONV_SEC_TO_USEC; ///< Microseconds per second, 1000000.0.
    static const double CONV_USEC_TO_SEC; ///< Seconds per microsecond, 0.000001.
    static const double CONV_SEC_TO_MIN;  ///< Seconds per minute, 60.0.

    /// Takes the current UTC time.
    WSystemTimeEx();
    /// Copies the fields unchecked.
    WSystemTimeEx(const SYSTEMTIME& time); // NOLINT: conversions are meant, here and below
    /// Copies the fields.
    WSystemTimeEx(const WSystemTimeEx&) = default;
    /// Converts ticks since 1601. All fields are zero if the ticks are outside the calendar.
    WSystemTimeEx(const FILETIME& time);
    /// Converts an OLE date: days since 30 December 1899, the time of day as the absolute value of the
    /// fraction, rounded to seconds. All fields are zero if the date is outside the years 100 to 9999.
    WSystemTimeEx(const double& date);
    /// Converts by Copy(SYSTEMTIME&, const std::tm&).
    WSystemTimeEx(const std::tm& time);
    /// Converts seconds since 1 January 1970, UTC, and stores the milliseconds. All fields are zero if
    /// _gmtime64_s rejects the seconds.
    WSystemTimeEx(const LONGLONG& seconds, unsigned short milliseconds);
    /// Destroys the value; virtual for derived classes.
    virtual ~WSystemTimeEx();

    /// Copies the fields.
    WSystemTimeEx& operator=(const WSystemTimeEx&) = default;
    /// Copies the fields unchecked.
    WSystemTimeEx& operator=(const SYSTEMTIME& time);
    /// Converts by Copy(SYSTEMTIME&, const std::tm&).
    WSystemTimeEx& operator=(const std::tm& time);

    /// Returns the fields.
    operator SYSTEMTIME() const { return m_time; }
    /// Returns the ticks since 1601, zero if the fields are not a time of the calendar.
    operator FILETIME() const;
    /// Returns the ticks since 1601, zero if the fields are not a time of the calendar.
    operator LONGLONG() const;
    /// Returns the OLE date without its milliseconds, 0.0 if the conversion fails.
    operator double() const;
    /// Returns the fields as Copy(std::tm&, const SYSTEMTIME&) converts them, with `tm_yday` 0.
    operator std::tm() const;
    /// Returns the same as LONGLONG, for the platform's other 64-bit integer type.
    template <std::signed_integral Integer>
    requires(sizeof(Integer) == sizeof(LONGLONG) && !std::same_as<Integer, LONGLONG>)
    operator Integer() const {
        return static_cast<LONGLONG>(*this);
    }
    /// Returns the time in the process's time zone. All fields are zero if the conversion fails.
    SYSTEMTIME GetLocalTime() const;

    int GetYear() const { return m_time.wYear; }           ///< Returns the year, such as 2021.
    int GetMonth() const { return m_time.wMonth; }         ///< Returns the month, 1 to 12.
    int GetDayOfWeek() const { return m_time.wDayOfWeek; } ///< Returns the day of the week, 0 is Sunday.
    int GetDay() const { return m_time.wDay; }             ///< Returns the day of the month, from 1.
    int GetHour() const { return m_time.wHour; }           ///< Returns the hour, 0 to 23.
    int GetMinute() const { return m_time.wMinute; }       ///< Returns the minute, 0 to 59.
    int GetSecond() const { return m_time.wSecond; }       ///< Returns the second, 0 to 59.
    int GetMilliSeconds() const { return m_time.wMilliseconds; } ///< Returns the milliseconds, 0 to 999.

    /// Adds milliseconds and recomputes the day of the week. Fields that are not a time of the calendar are
    /// taken as 1 January 1601. A sum outside the calendar leaves the time unchanged.
    void AddMilliseconds(LONGLONG milliseconds);
    /// Adds as AddMilliseconds does.
    WSystemTimeEx& operator+=(LONGLONG milliseconds);
    /// Subtracts: AddMilliseconds of the negative.
    WSystemTimeEx& operator-=(LONGLONG milliseconds);
    /// Returns the sum by the rules of AddMilliseconds.
    SYSTEMTIME operator+(LONGLONG milliseconds) const;
    /// Returns the difference by the rules of AddMilliseconds.
    SYSTEMTIME operator-(LONGLONG milliseconds) const;
    /// Adds after truncation to whole milliseconds: 0.9 adds nothing. NaN adds nothing; a value beyond the
    /// range of LONGLONG leaves the time unchanged. The three operators below convert alike.
    WSystemTimeEx& operator+=(double milliseconds);
    /// Subtracts after truncation to whole milliseconds.
    WSystemTimeEx& operator-=(double milliseconds);
    /// Returns the sum after truncation to whole milliseconds.
    SYSTEMTIME operator+(double milliseconds) const;
    /// Returns the difference after truncation to whole milliseconds.
    SYSTEMTIME operator-(double milliseconds) const;
    /// Converts any other integer type to LONGLONG and adds it.
    template <std::integral Integer>
    WSystemTimeEx& operator+=(Integer milliseconds) {
        return *this += static_cast<LONGLONG>(milliseconds);
    }
    /// Converts any other integer type to LONGLONG and subtracts it.
    template <std::integral Integer>
    WSystemTimeEx& operator-=(Integer milliseconds) {
        return *this -= static_cast<LONGLONG>(milliseconds);
    }
    /// Converts any other integer type to LONGLONG and returns the sum.
    template <std::integral Integer>
    SYSTEMTIME operator+(Integer milliseconds) const {
        return *this + static_cast<LONGLONG>(milliseconds);
    }
    /// Converts any other integer type to LONGLONG and returns the difference.
    template <std::integral Integer>
    SYSTEMTIME operator-(Integer milliseconds) const {
        return *this - static_cast<LONGLONG>(milliseconds);
    }
    /// Returns the whole milliseconds from `other` to this time, negative if `other` is later.
    LONGLONG operator-(const WSystemTimeEx& other) const;
    /// Returns true if at least this many milliseconds have passed since this time. Reads the system clock
    /// (UTC), so a change of the clock changes the result.
    bool HasElapsed(LONGLONG milliseconds) const;
    /// Copies the given time, or takes the current UTC time if `time` is null.
    void Update(const SYSTEMTIME* time);
    /// Stores the current UTC time in `time`.
    static void SetToCurrentTime(SYSTEMTIME& time);
    /// Returns the seconds from `b` to `a`, negative if `b` is later. An argument that is not a time of the
    /// calendar is taken as zero ticks; the system's error text goes to the debug output.
    static double DifferenceInFractionalSeconds(const SYSTEMTIME& a, const SYSTEMTIME& b);

    /// Returns true if all eight fields are equal, including the day of the week.
    bool operator==(const WSystemTimeEx& other) const;
    /// Returns true if any of the eight fields differs.
    bool operator!=(const WSystemTimeEx& other) const { return !(*this == other); }
    /// Returns true if this time is earlier or its milliseconds field is smaller: 12:00:01.100 is `<`
    /// 12:00:00.200. This is not a strict weak order, so do not sort by it; kept for compatibility.
    bool operator<(const WSystemTimeEx& other) const;
    /// Returns true if this time is not earlier, its milliseconds field is not smaller and the fields differ.
    /// This is not the mirror image of `<`; kept for compatibility.
    bool operator>(const WSystemTimeEx& other) const;
    /// Returns 0 if all fields are equal, -1 if this time is `<` the other, otherwise 1.
    int Compare(const WSystemTimeEx& other) const;
    /// Returns 0 if all fields are equal, -1 if this time is `<` the other, otherwise 1.
    int Compare(const SYSTEMTIME& other) const;

    /// Converts the fields and sets the milliseconds to 0. A `tm_wday` outside 0 to 6 is replaced by
    /// CalcDayOfWeek.
    static void Copy(SYSTEMTIME& to, const std::tm& from);
    /// Converts the fields, sets `tm_isdst` to -1 and leaves `tm_yday` unchanged. A day of the week above 6
    /// is replaced by CalcDayOfWeek of the `tm` values (year less 1900, month from 0), which is not the
    /// calendar's day; kept for agreement with stored results.
    static void Copy(std::tm& to, const SYSTEMTIME& from);
    /// Returns the Gregorian day of the week, 0 (Sunday) to 6, for a month of 1 to 12 (Sakamoto's method). A
    /// month outside that range is calculated with the table entry of January.
    static int CalcDayOfWeek(int year, int month, int day);

    std::wstring AsString() const;          ///< Returns "03/05/2021 01:02:03.004": month, day, year.
    std::wstring AsStringLocalTime() const; ///< Returns the same text in the process's time zone.
    std::wstring AsStringFileName() const;  ///< Returns "03052021_010203004", which sorts by month first.
    /// Returns the text of a `wcsftime` format with the names of the C locale; empty if it is longer than 99
    /// characters. An empty format gives weekday, month, day, year and a 12-hour clock. There the
    /// milliseconds follow if they are not 0 or if `showZeroMilliseconds` is true. The zone is the process's,
    /// although the time may be UTC. Returns "invalid" for a year before 1900, a month outside 1 to 12 or an
    /// hour above 23.
    std::wstring AsStringEx(const std::wstring& format, bool showZeroMilliseconds) const;
    /// Returns AsStringEx of the time in the process's time zone.
    std::wstring AsStringLocalTimeEx(const std::wstring& format, bool showZeroMilliseconds) const;

private:
    SYSTEMTIME m_time{};
};

} // namespace bss

#endif
