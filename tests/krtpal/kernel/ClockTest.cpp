// Waits while the date is changed.

#include "Support.h"

#include "support/Expect.h"

#include <chrono>
#include <future>

#ifdef _WIN32

SKIPPED_TEST(Clock, SetBackDoesNotProlongAWait, "a test can't set the system's clock for this process alone")

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
        EXPECT_EQ(WaitForSingleObject(never, 100), WAIT_TIMEOUT);
        EXPECT_EQ(WaitForMultipleObjects(2, all, FALSE, 0), WAIT_OBJECT_0 + 1);
        EXPECT_EQ(WaitForMultipleObjects(2, all, TRUE, 100), WAIT_TIMEOUT);
        Sleep(50);
    });
    const auto before = std::chrono::system_clock::now();
    for (int i = 1; i <= 4; ++i) {
        Sleep(kShortMs);
        g_secondsBack = i * 3600;
    }
    EXPECT_LT(std::chrono::system_clock::now(), before - std::chrono::hours(3));
    if (waits.wait_for(std::chrono::milliseconds(kLongMs)) != std::future_status::ready) {
        ADD_FAILURE() << "a wait follows the date";
        std::abort(); // its thread can't be joined
    }
    g_secondsBack = 0;
}

#endif
