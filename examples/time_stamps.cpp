// Time stamps: made from fields, moved, subtracted, and written as text.

#include "bss/net/WSystemTimeEx.h"

#include <cstdio>
#include <ctime>
#include <string>

namespace {

bss::WSystemTimeEx At(int year, int month, int day, int hour, int minute, int second) {
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_wday = -1; // to be computed
    return fields;
}

} // namespace

int main() {
    const bss::WSystemTimeEx start = At(2024, 2, 28, 23, 59, 58);
    bss::WSystemTimeEx end = start;
    end += 24 * 3600 * 1000 + 2500; // milliseconds: over midnight of the leap day
    std::printf("start %ls\nend   %ls\n", start.AsString().c_str(), end.AsString().c_str());
    std::printf("as the name of a file: %ls\n", end.AsStringFileName().c_str());
    std::printf("by a format: %ls\n", end.AsStringEx(L"%Y-%m-%d %H:%M:%S, %A", false).c_str());

    const bss::WSystemTimeEx moment = end - 500; // a SYSTEMTIME, of which there is no difference
    std::printf("lasted %lld ms, less half a second %.3f s\n", static_cast<long long>(end - start),
                bss::WSystemTimeEx::DifferenceInFractionalSeconds(moment, start));

    // Other systems count days since 30 December 1899, or seconds since 1970.
    std::printf("as a date of OLE %.6f\n", static_cast<double>(end));
    const bss::WSystemTimeEx epoch(0LL, 0);
    std::printf("the epoch %ls, day of the week %d\n", epoch.AsString().c_str(), epoch.GetDayOfWeek());

    const bss::WSystemTimeEx now; // UTC
    std::printf("an hour has passed since the start: %s\n", start.HasElapsed(3'600'000) ? "yes" : "no");
    std::printf("and since now: %s\n", now.HasElapsed(3'600'000) ? "yes" : "no");
}
