// Waits on several objects, and their time-outs.

#include "Support.h"

#include "support/Blocked.h"
#include "support/Expect.h"
#include "support/Wine.h"

#include <chrono>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

TEST(Waits, BadArgumentsFail) {
    std::vector<Handle> owners;
    std::vector<HANDLE> handles;
    for (int i = 0; i < 65; ++i) {
        owners.push_back(AutoEvent(i == 63));
        handles.push_back(owners.back());
    }
    const auto fails = [&](DWORD count, BOOL all) {
        return WaitForMultipleObjects(count, handles.data(), all, 0) != WAIT_FAILED;
    };
    for (const BOOL all : {FALSE, TRUE}) {
        EXPECT_FAILS(fails(0, all), ERROR_INVALID_PARAMETER);
        EXPECT_FAILS(fails(65, all), ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(WaitForMultipleObjects(64, handles.data(), FALSE, 0), WAIT_OBJECT_0 + 63);
    EXPECT_EQ(WaitForMultipleObjects(64, handles.data(), TRUE, 0), WAIT_TIMEOUT);

    SetEvent(handles[0]);
    handles[2] = handles[0];
    if (!RunsUnderWine()) { // which takes one object twice
        EXPECT_FAILS(fails(3, TRUE), ERROR_INVALID_PARAMETER);
    }
    owners[1].Close();
    EXPECT_FAILS(fails(2, FALSE), ERROR_INVALID_HANDLE);
    EXPECT_FAILS(fails(2, TRUE), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Poll(handles[0]), WAIT_OBJECT_0); // a failed wait takes nothing
}

TEST(Waits, ForAnyTakesTheFirstInOrderAndOnlyThatOne) {
    const Handle a = AutoEvent();
    const Handle b = AutoEvent(true);
    const Handle c = Semaphore(1, 1);
    const HANDLE handles[] = {a, b, c};
    EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, 0), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, kLongMs), WAIT_OBJECT_0 + 2);
    EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, kShortMs), WAIT_TIMEOUT);
    {
        Blocked waiter(
            [&] { EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, INFINITE), WAIT_OBJECT_0 + 1); });
        SetEvent(b);
    }
    // Nothing of that wait is left on the others.
    SetEvent(a);
    EXPECT_EQ(Poll(a), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseSemaphore(c, 1, nullptr));
    EXPECT_EQ(Poll(c), WAIT_OBJECT_0);
}

TEST(Waits, TwoSignalsInARowReleaseTwoWhateverTheyWaitFor) {
    const Handle first = AutoEvent();
    const Handle second = AutoEvent();
    const HANDLE both[] = {first, second};
    {
        const auto wait = [&] {
            EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, kLongMs), WAIT_OBJECT_0 + 1);
        };
        const Blocked one(wait);
        const Blocked two(wait);
        SetEvent(second);
        SetEvent(second);
        EXPECT_TRUE(one.EndsSoon() && two.EndsSoon());
    }
    EXPECT_EQ(Poll(second), WAIT_TIMEOUT);
    for (int i = 0; i < 3; ++i) {
        // The second signal can wake the thread that the first has released already; it is to be passed on.
        const Blocked forAny(
            [&] { EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, kLongMs), WAIT_OBJECT_0); });
        const Blocked forSecond([&] { EXPECT_EQ(WaitForSingleObject(second, kLongMs), WAIT_OBJECT_0); });
        SetEvent(first);
        SetEvent(second);
        ASSERT_TRUE(forAny.EndsSoon() && forSecond.EndsSoon());
    }
}

TEST(Waits, ForAllTakeNothingBeforeTheyCanTakeEverything) {
    const Handle event = AutoEvent(true);
    const Handle mutex = Mutex();
    const Handle semaphore = Semaphore(0, 2);
    const HANDLE handles[] = {event, mutex, semaphore};
    EXPECT_EQ(WaitForMultipleObjects(3, handles, TRUE, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForMultipleObjects(3, handles, TRUE, kShortMs), WAIT_TIMEOUT);
    EXPECT_EQ(Poll(event), WAIT_OBJECT_0);
    {
        const Blocked waiter([&] {
            EXPECT_EQ(WaitForMultipleObjects(3, handles, TRUE, kLongMs), WAIT_OBJECT_0);
            EXPECT_TRUE(ReleaseMutex(mutex));
        });
        SetEvent(event);
        Sleep(kShortMs);
        EXPECT_EQ(Poll(event), WAIT_OBJECT_0); // still there for others
        EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, nullptr));
        Sleep(kShortMs);
        EXPECT_EQ(Poll(semaphore), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, nullptr));
        SetEvent(event);
    }
    EXPECT_EQ(Poll(event), WAIT_TIMEOUT);
    EXPECT_EQ(Poll(semaphore), WAIT_OBJECT_0); // one of two was taken
    EXPECT_EQ(Poll(semaphore), WAIT_TIMEOUT);
    EXPECT_EQ(Poll(mutex), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(Waits, SignalReachesItsWaiterPastOneThatWaitsForMore) {
    // Whoever waits for all came first, and can't take what the other one waits for.
    const Handle event = AutoEvent();
    const Handle never = AutoEvent();
    const HANDLE both[] = {event, never};
    const Blocked forAll([&] { EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, kLongMs), WAIT_OBJECT_0); });
    const Blocked forOne([&] { EXPECT_EQ(WaitForSingleObject(event, kLongMs), WAIT_OBJECT_0); });
    SetEvent(event);
    EXPECT_TRUE(forOne.EndsSoon());
    SetEvent(event);
    SetEvent(never);
}

TEST(Waits, TwoForAllInOppositeOrderDoNotBlockEachOther) {
    const Handle a = Mutex();
    const Handle b = Mutex();
    const HANDLE forward[] = {a, b};
    const HANDLE backward[] = {b, a};
    int counter = 0;
    const auto work = [&](const HANDLE* handles) {
        for (int i = 0; i < 300; ++i) {
            ASSERT_EQ(WaitForMultipleObjects(2, handles, TRUE, kLongMs), WAIT_OBJECT_0);
            ++counter;
            ASSERT_TRUE(ReleaseMutex(a) && ReleaseMutex(b));
        }
    };
    std::thread first(work, forward);
    work(backward);
    first.join();
    EXPECT_EQ(counter, 600);
}

TEST(Waits, EndAtTheirTimeNeitherBeforeNorNever) {
    const Handle never = AutoEvent();
    const Handle mutex = Mutex(true);
    const HANDLE two[] = {never, mutex};
    std::thread([&] {
        for (const DWORD timeoutMs : {0U, 1U, 150U}) {
            const auto start = Clock::now();
            EXPECT_EQ(WaitForSingleObject(never, timeoutMs), WAIT_TIMEOUT);
            EXPECT_EQ(WaitForSingleObject(mutex, timeoutMs), WAIT_TIMEOUT);
            EXPECT_EQ(WaitForMultipleObjects(2, two, FALSE, timeoutMs), WAIT_TIMEOUT);
            EXPECT_EQ(WaitForMultipleObjects(2, two, TRUE, timeoutMs), WAIT_TIMEOUT);
            // The system's ticks are up to 16 ms, and a wait may end within one.
            EXPECT_GE(MillisecondsSince(start) + 4 * 16.0, 4.0 * timeoutMs);
            EXPECT_LT(MillisecondsSince(start), 4.0 * timeoutMs + kLongMs);
        }
    }).join();
    EXPECT_TRUE(ReleaseMutex(mutex));
}

} // namespace
