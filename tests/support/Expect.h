// What tests of calls with a last error, and of calls that one system alone has, write again and again.

#ifndef TESTS_SUPPORT_EXPECT_H
#define TESTS_SUPPORT_EXPECT_H

#include <gtest/gtest.h>

/// The call returns 0, FALSE or null and sets this last error.
#define EXPECT_FAILS(call, error)                                                                            \
    do {                                                                                                     \
        SetLastError(0);                                                                                     \
        EXPECT_FALSE(call);                                                                                  \
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(error)) << #call;                                       \
    } while (false)

/// Stands for a test that this system does not have.
#define SKIPPED_TEST(suite, name, reason)                                                                    \
    TEST(suite, name) {                                                                                      \
        GTEST_SKIP() << (reason);                                                                            \
    }
#define SKIPPED_TEST_F(fixture, name, reason)                                                                \
    TEST_F(fixture, name) {                                                                                  \
        GTEST_SKIP() << (reason);                                                                            \
    }

#endif
