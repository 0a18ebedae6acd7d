#include "support/DebugOutput.h"
#include "krtpal/debug.h"
#include "krtpal/error.h"

#include <gtest/gtest.h>
#include <sstream>
#include <thread>
#include <vector>

TEST(DebugOutput, BothFormsAreCaughtInOrder) {
    DebugOutput output;
    SetLastError(7);
    OutputDebugStringW(L"wide \u00FC\n");
    OutputDebugStringA("narrow\n");
    OutputDebugStringW(L"");
    EXPECT_EQ(GetLastError(), 7U);
    EXPECT_EQ(output.Text(), L"wide \u00FC\nnarrow\n");
}

TEST(DebugOutput, TextsOfSeveralThreadsStayWhole) {
    DebugOutput output;
    const std::wstring line = std::wstring(200, L'x') + L"\n";
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&line] {
            for (int k = 0; k < 50; ++k) {
                OutputDebugStringW(line.c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::wistringstream text(output.Text());
    std::wstring got;
    int count = 0;
    for (; std::getline(text, got); ++count) {
        ASSERT_EQ(got + L"\n", line);
    }
    EXPECT_EQ(count, 200);
}

#ifndef _WIN32
TEST(DebugOutput, GoesNowhereWithoutTheVariableOrWithABadName) {
    const char* const before = std::getenv("KRTBSS_DEBUG_OUTPUT");
    const std::string kept = before == nullptr ? "" : before;
    testing::internal::CaptureStderr();
    unsetenv("KRTBSS_DEBUG_OUTPUT");
    OutputDebugStringW(L"lost");
    OutputDebugStringW(nullptr);
    setenv("KRTBSS_DEBUG_OUTPUT", "/nonexistent/file", 1);
    OutputDebugStringW(L"lost");
    setenv("KRTBSS_DEBUG_OUTPUT", "stderr", 1);
    OutputDebugStringW(L"seen");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "seen");
    if (before == nullptr) {
        unsetenv("KRTBSS_DEBUG_OUTPUT");
    } else {
        setenv("KRTBSS_DEBUG_OUTPUT", kept.c_str(), 1);
    }
}
#else
TEST(DebugOutput, GoesNowhereWithoutTheVariableOrWithABadName) {
    GTEST_SKIP() << "a debugger takes the output, no variable";
}
#endif
