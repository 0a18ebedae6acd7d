// Times as texts: 2021/03/28 01:59:59.999.

#ifndef TESTS_KRTPAL_TIME_TIMETEXT_H
#define TESTS_KRTPAL_TIME_TIMETEXT_H

#include "krtpal/time.h"
#include "krtpal/unqualified.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

/// Fields may be out of their ranges. The day of the week is 0.
inline SYSTEMTIME ParseTime(const std::string& text) {
    SYSTEMTIME time{};
    EXPECT_EQ(std::sscanf(text.c_str(), "%hu/%hu/%hu %hu:%hu:%hu.%hu", &time.wYear, &time.wMonth, &time.wDay,
                          &time.wHour, &time.wMinute, &time.wSecond, &time.wMilliseconds),
              7);
    return time;
}

inline std::string TextOf(const SYSTEMTIME& time) {
    char text[60];
    std::snprintf(text, sizeof(text), "%04u/%02u/%02u %02u:%02u:%02u.%03u", time.wYear, time.wMonth,
                  time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return text;
}

#endif
