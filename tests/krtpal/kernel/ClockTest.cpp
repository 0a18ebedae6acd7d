// Waits while the date is changed.

#include "Support.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

#ifdef _WIN32

TEST(Clock, SetBackDoesNotProlongAWait) {
    GTEST_SKIP() << "the clock belongs to the system: a test can't set it for this process alone";
}

#else

#include <atomic>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<time_t> g_secondsBack{0};

} // namespace

/// Goes before the C library's, for the library under test, too.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && clock == CLOCK_REALTIME) {
        time->tv_sec -= g_secondsBack;
    }
    return static_cast<int>(result);
}

TEST(Clock, SetBackDoesNotProlongAWait) {
    const Handle never = AutoEvent();
    const Handle mutex = Mutex();
    const HANDLE all[] = {never, mutex};
    std::future<void> waits = std::async(std::launch::async, [&] {
        EXPECT_EQ(WaitForSingleObject(never, 300), WAIT_TIMEOUT);
        EXPECT_EQ(WaitForMultipleObjects(2, all, FALSE, 0), WAIT_OBJECT_0 + 1);
        EXPECT_EQ(WaitForMultipleObjects(2, all, TRUE, 300), WAIT_TIMEOUT);
        Sleep(100);
    });
    const auto before = std::chrono::system_clock::now();
    for (int i = 1; i <= 7; ++i) {
        Sleep(kSettleMs);
        g_secondsBack = i * 3600;
    }
    EXPECT_LT(std::chrono::system_clock::now(), before - std::chrono::hours(6));
    if (waits.wait_for(std::chrono::milliseconds(kLongMs)) != std::future_status::ready) {
        ADD_FAILURE() << "a wait follows the date";
        std::abort(); // its thread can't be joined
    }
    g_secondsBack = 0;
}

#endif
