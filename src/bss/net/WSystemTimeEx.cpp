#include "bss/net/WSystemTimeEx.h"

#include "krtpal/debug.h"
#include "krtpal/error.h"
#include "krtpal/memory.h"

#include <array>
#include <cstring>
#include <cwchar>
#include <limits>

namespace bss {

const long WSystemTimeEx::CONV_MSEC_TO_TICKS = 10000;
const long WSystemTimeEx::CONV_SEC_TO_TICKS = 10000000;
const double WSystemTimeEx::CONV_SEC_TO_USEC = 1000000.0;
const double WSystemTimeEx::CONV_USEC_TO_SEC = 0.000001;
const double WSystemTimeEx::CONV_SEC_TO_MIN = 60.0;

namespace {

constexpr int kYearOfTm = 1900;

LONGLONG Ticks(const FILETIME& time) {
    return static_cast<LONGLONG>((static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
}

FILETIME FileTimeOf(LONGLONG ticks) {
    const auto bits = static_cast<ULONGLONG>(ticks);
    return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};
}

// Returns zero ticks if the fields are not a time of the calendar.
FILETIME FileTimeOf(const SYSTEMTIME& time) {
    FILETIME result{};
    SystemTimeToFileTime(&time, &result);
    return result;
}

LONGLONG WholeMilliseconds(double milliseconds) {
    constexpr double kLimit = 9223372036854775808.0;
    if (milliseconds >= kLimit) {
        return std::numeric_limits<LONGLONG>::max();
    }
    if (milliseconds < -kLimit) {
        return std::numeric_limits<LONGLONG>::min();
    }
    return milliseconds == milliseconds ? static_cast<LONGLONG>(milliseconds) : 0;
}

LONGLONG Negated(LONGLONG value) {
    return static_cast<LONGLONG>(0 - static_cast<ULONGLONG>(value));
}

bool SameFields(const SYSTEMTIME& a, const SYSTEMTIME& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool Earlier(const SYSTEMTIME& a, const SYSTEMTIME& b) {
    const FILETIME ticksOfA = FileTimeOf(a);
    const FILETIME ticksOfB = FileTimeOf(b);
    return CompareFileTime(&ticksOfA, &ticksOfB) == -1;
}

SYSTEMTIME LocalTime(const SYSTEMTIME& utc) {
    SYSTEMTIME local{};
    SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    return local;
}

// REQUIRES: `format` takes seven unsigned numbers: month, day, year, hour, minute, second, milliseconds.
std::wstring SevenFields(const wchar_t* format, const SYSTEMTIME& t) {
    wchar_t text[64];
    const int length =
        std::swprintf(text, std::size(text), format, unsigned{t.wMonth}, unsigned{t.wDay}, unsigned{t.wYear},
                      unsigned{t.wHour}, unsigned{t.wMinute}, unsigned{t.wSecond}, unsigned{t.wMilliseconds});
    return {text, static_cast<std::size_t>(length)};
}

std::wstring DateAndTime(const SYSTEMTIME& t) {
    return SevenFields(L"%02u/%02u/%04u %02u:%02u:%02u.%03u", t);
}

std::wstring ByFormat(const wchar_t* format, const std::tm& time) {
    std::array<wchar_t, 100> text{};
    // wcsftime leaves the buffer undefined if the text and its terminator do not fit.
    const std::size_t length = std::wcsftime(text.data(), text.size(), format, &time);
    return length < text.size() ? std::wstring(text.data(), length) : std::wstring();
}

std::wstring Milliseconds(unsigned milliseconds) {
    wchar_t text[16];
    std::swprintf(text, std::size(text), L"%03u", milliseconds);
    return text;
}

// Returns the system's text of an error, followed by its number.
std::wstring ErrorText(DWORD error) {
    wchar_t number[32];
    std::swprintf(number, std::size(number), L" (0x%X)", static_cast<unsigned>(error));
    wchar_t* text = nullptr;
    constexpr DWORD kUserDefaultLanguage = 1024;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        error, kUserDefaultLanguage, reinterpret_cast<LPWSTR>(&text), 0, nullptr);
    if (length == 0) {
        return std::wstring(L"Unknown error") + number;
    }
    std::wstring message(text, length);
    LocalFree(text);
    return message + number;
}

FILETIME FileTimeOrDebugText(const SYSTEMTIME& time) {
    FILETIME result{};
    if (SystemTimeToFileTime(&time, &result) == 0) {
        OutputDebugStringW(ErrorText(GetLastError()).c_str());
    }
    return result;
}

} // namespace

WSystemTimeEx::WSystemTimeEx() {
    GetSystemTime(&m_time);
}

WSystemTimeEx::WSystemTimeEx(const SYSTEMTIME& time) : m_time(time) {}

WSystemTimeEx::WSystemTimeEx(const FILETIME& time) {
    FileTimeToSystemTime(&time, &m_time);
}

WSystemTimeEx::WSystemTimeEx(const double& date) {
    VariantTimeToSystemTime(date, &m_time);
}

WSystemTimeEx::WSystemTimeEx(const std::tm& time) {
    Copy(m_time, time);
}

WSystemTimeEx::WSystemTimeEx(const LONGLONG& seconds, unsigned short milliseconds) {
    std::tm time{};
    if (_gmtime64_s(&time, &seconds) == 0) {
        Copy(m_time, time);
        m_time.wMilliseconds = milliseconds;
    }
}

WSystemTimeEx::~WSystemTimeEx() = default;

WSystemTimeEx& WSystemTimeEx::operator=(const SYSTEMTIME& time) {
    m_time = time;
    return *this;
}

WSystemTimeEx& WSystemTimeEx::operator=(const std::tm& time) {
    Copy(m_time, time);
    return *this;
}

WSystemTimeEx::operator FILETIME() const {
    return FileTimeOf(m_time);
}

WSystemTimeEx::operator LONGLONG() const {
    return Ticks(FileTimeOf(m_time));
}

WSystemTimeEx::operator double() const {
    SYSTEMTIME time = m_time;
    double date = 0.0;
    return SystemTimeToVariantTime(&time, &date) != 0 ? date : 0.0;
}

WSystemTimeEx::operator std::tm() const {
    std::tm time{};
    Copy(time, m_time);
    return time;
}

SYSTEMTIME WSystemTimeEx::GetLocalTime() const {
    return LocalTime(m_time);
}

void WSystemTimeEx::AddMilliseconds(LONGLONG milliseconds) {
    constexpr LONGLONG kMostMilliseconds = std::numeric_limits<LONGLONG>::max() / 10000 / 2;
    if (milliseconds > kMostMilliseconds || milliseconds < -kMostMilliseconds) {
        return; // outside the calendar; the limit keeps the product below from overflowing
    }
    const FILETIME sum = FileTimeOf(Ticks(FileTimeOf(m_time)) + milliseconds * CONV_MSEC_TO_TICKS);
    FileTimeToSystemTime(&sum, &m_time);
}

WSystemTimeEx& WSystemTimeEx::operator+=(LONGLONG milliseconds) {
    AddMilliseconds(milliseconds);
    return *this;
}

WSystemTimeEx& WSystemTimeEx::operator-=(LONGLONG milliseconds) {
    AddMilliseconds(Negated(milliseconds));
    return *this;
}

SYSTEMTIME WSystemTimeEx::operator+(LONGLONG milliseconds) const {
    WSystemTimeEx result(*this);
    return result += milliseconds;
}

SYSTEMTIME WSystemTimeEx::operator-(LONGLONG milliseconds) const {
    WSystemTimeEx result(*this);
    return result -= milliseconds;
}

WSystemTimeEx& WSystemTimeEx::operator+=(double milliseconds) {
    return *this += WholeMilliseconds(milliseconds);
}

WSystemTimeEx& WSystemTimeEx::operator-=(double milliseconds) {
    return *this -= WholeMilliseconds(milliseconds);
}

SYSTEMTIME WSystemTimeEx::operator+(double milliseconds) const {
    return *this + WholeMilliseconds(milliseconds);
}

SYSTEMTIME WSystemTimeEx::operator-(double milliseconds) const {
    return *this - WholeMilliseconds(milliseconds);
}

LONGLONG WSystemTimeEx::operator-(const WSystemTimeEx& other) const {
    const LONGLONG ticks = static_cast<LONGLONG>(*this) - static_cast<LONGLONG>(other);
    return ticks / CONV_MSEC_TO_TICKS;
}

bool WSystemTimeEx::HasElapsed(LONGLONG milliseconds) const {
    return WSystemTimeEx() - *this >= milliseconds;
}

void WSystemTimeEx::Update(const SYSTEMTIME* time) {
    if (time != nullptr) {
        m_time = *time;
    } else {
        GetSystemTime(&m_time);
    }
}

void WSystemTimeEx::SetToCurrentTime(SYSTEMTIME& time) {
    GetSystemTime(&time);
}

double WSystemTimeEx::DifferenceInFractionalSeconds(const SYSTEMTIME& a, const SYSTEMTIME& b) {
    const LONGLONG ticks = Ticks(FileTimeOrDebugText(a)) - Ticks(FileTimeOrDebugText(b));
    return static_cast<double>(ticks) / 10000000.0;
}

bool WSystemTimeEx::operator==(const WSystemTimeEx& other) const {
    return SameFields(m_time, other.m_time);
}

bool WSystemTimeEx::operator<(const WSystemTimeEx& other) const {
    return Earlier(m_time, other.m_time) || m_time.wMilliseconds < other.m_time.wMilliseconds;
}

bool WSystemTimeEx::operator>(const WSystemTimeEx& other) const {
    return !Earlier(m_time, other.m_time) && m_time.wMilliseconds >= other.m_time.wMilliseconds &&
           !SameFields(m_time, other.m_time);
}

int WSystemTimeEx::Compare(const WSystemTimeEx& other) const {
    return Compare(other.m_time);
}

int WSystemTimeEx::Compare(const SYSTEMTIME& other) const {
    if (SameFields(m_time, other)) {
        return 0;
    }
    return Earlier(m_time, other) || m_time.wMilliseconds < other.wMilliseconds ? -1 : 1;
}

void WSystemTimeEx::Copy(SYSTEMTIME& to, const std::tm& from) {
    to.wYear = static_cast<WORD>(from.tm_year + kYearOfTm);
    to.wMonth = static_cast<WORD>(from.tm_mon + 1);
    to.wDay = static_cast<WORD>(from.tm_mday);
    to.wHour = static_cast<WORD>(from.tm_hour);
    to.wMinute = static_cast<WORD>(from.tm_min);
    to.wSecond = static_cast<WORD>(from.tm_sec);
    to.wMilliseconds = 0;
    const bool known = from.tm_wday >= 0 && from.tm_wday <= 6;
    to.wDayOfWeek = static_cast<WORD>(known ? from.tm_wday : CalcDayOfWeek(to.wYear, to.wMonth, to.wDay));
}

void WSystemTimeEx::Copy(std::tm& to, const SYSTEMTIME& from) {
    to.tm_year = from.wYear - kYearOfTm;
    to.tm_mon = from.wMonth - 1;
    to.tm_mday = from.wDay;
    to.tm_hour = from.wHour;
    to.tm_min = from.wMinute;
    to.tm_sec = from.wSecond;
    to.tm_isdst = -1;
    to.tm_wday = from.wDayOfWeek <= 6 ? from.wDayOfWeek : CalcDayOfWeek(to.tm_year, to.tm_mon, to.tm_mday);
}

int WSystemTimeEx::CalcDayOfWeek(int year, int month, int day) {
    static constexpr std::array<int, 12> kMonthTerms{0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    const bool inTable = month >= 1 && month <= 12;
    const int monthTerm = kMonthTerms[inTable ? static_cast<std::size_t>(month - 1) : 0];
    // long long, so that no sum of the arguments overflows.
    const long long y = month < 3 ? static_cast<long long>(year) - 1 : year;
    const long long days = y + y / 4 - y / 100 + y / 400 + monthTerm + day;
    return static_cast<int>((days % 7 + 7) % 7);
}

std::wstring WSystemTimeEx::AsString() const {
    return DateAndTime(m_time);
}

std::wstring WSystemTimeEx::AsStringLocalTime() const {
    return DateAndTime(LocalTime(m_time));
}

std::wstring WSystemTimeEx::AsStringFileName() const {
    return SevenFields(L"%02u%02u%04u_%02u%02u%02u%03u", m_time);
}

std::wstring WSystemTimeEx::AsStringEx(const std::wstring& format, bool showZeroMilliseconds) const {
    const std::tm time = *this;
    if (m_time.wYear < kYearOfTm || time.tm_mon < 0 || time.tm_mon > 11 || time.tm_hour >= 24) {
        return L"invalid";
    }
    if (!format.empty()) {
        return ByFormat(format.c_str(), time);
    }
    std::wstring text = ByFormat(L"%A %B %d, %Y %I:%M:%S", time);
    if (m_time.wMilliseconds != 0 || showZeroMilliseconds) {
        text += L'.' + Milliseconds(m_time.wMilliseconds);
    }
    return text + L' ' + ByFormat(L"%p %z", time);
}

std::wstring WSystemTimeEx::AsStringLocalTimeEx(const std::wstring& format, bool showZeroMilliseconds) const {
    return WSystemTimeEx(LocalTime(m_time)).AsStringEx(format, showZeroMilliseconds);
}

} // namespace bss
