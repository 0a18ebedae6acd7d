#include "support/DebugOutput.h"
#include "krtpal/debug.h"
#include "krtpal/error.h"
#include "support/Expect.h"
#include "support/Threads.h"

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
    RunInThreads(4, [&line](int) {
        for (int i = 0; i < 50; ++i) {
            OutputDebugStringW(line.c_str());
        }
    });
    const std::wstring text = output.Text();
    ASSERT_EQ(text.size(), 200 * line.size());
    for (std::size_t at = 0; at < text.size(); at += line.size()) {
        ASSERT_EQ(text.substr(at, line.size()), line);
    }
}

#ifndef _WIN32
TEST(DebugOutput, GoesNowhereWithoutTheVariableOrWithABadName) {
    const DebugOutput removesTheVariable;
    testing::internal::CaptureStderr();
    unsetenv("KRTBSS_DEBUG_OUTPUT");
    OutputDebugStringW(L"lost");
    OutputDebugStringW(nullptr);
    setenv("KRTBSS_DEBUG_OUTPUT", "/nonexistent/file", 1);
    OutputDebugStringW(L"lost");
    setenv("KRTBSS_DEBUG_OUTPUT", "stderr", 1);
    OutputDebugStringW(L"seen");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "seen");
}
#else
SKIPPED_TEST(DebugOutput, GoesNowhereWithoutTheVariableOrWithABadName,
             "a debugger takes the output, no variable")
#endif
