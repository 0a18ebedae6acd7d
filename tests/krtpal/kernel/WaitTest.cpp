// Waits on several objects, and their time-outs.

#include "Support.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
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
    struct Case {
        const char* what;
        DWORD count;
        const HANDLE* handles;
    };
    const Case cases[] = {{"none", 0, handles.data()}, {"65", 65, handles.data()}};
    for (const Case& row : cases) {
        for (const BOOL all : {FALSE, TRUE}) {
            EXPECT_EQ(WaitForMultipleObjects(row.count, row.handles, all, 0), WAIT_FAILED) << row.what;
            EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << row.what;
        }
    }
    EXPECT_EQ(WaitForMultipleObjects(64, handles.data(), FALSE, 0), WAIT_OBJECT_0 + 63);
    EXPECT_EQ(WaitForMultipleObjects(64, handles.data(), TRUE, 0), WAIT_TIMEOUT);

    SetEvent(handles[0]);
    owners[1].Close();
    for (const BOOL all : {FALSE, TRUE}) {
        EXPECT_EQ(WaitForMultipleObjects(3, handles.data(), all, 0), WAIT_FAILED);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
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
    std::thread setter([&] {
        Sleep(kSettleMs);
        SetEvent(b);
    });
    EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
    setter.join();
    // Nothing of that wait is left on the others.
    SetEvent(a);
    EXPECT_EQ(Poll(a), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseSemaphore(c, 1, nullptr));
    EXPECT_EQ(Poll(c), WAIT_OBJECT_0);
}

TEST(Waits, TwoWaitersForAnyGetTwoSignalsInARow) {
    const Handle event = AutoEvent();
    const Handle other = AutoEvent();
    const HANDLE handles[] = {other, event};
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back(
            [&] { EXPECT_EQ(WaitForMultipleObjects(2, handles, FALSE, kLongMs), WAIT_OBJECT_0 + 1); });
    }
    Sleep(2 * kSettleMs);
    SetEvent(event);
    SetEvent(event);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Poll(event), WAIT_TIMEOUT);
}

TEST(Waits, ForAllTakeNothingBeforeTheyCanTakeEverything) {
    const Handle event = AutoEvent(true);
    const Handle mutex = Mutex();
    const Handle semaphore = Semaphore(0, 2);
    const HANDLE handles[] = {event, mutex, semaphore};
    EXPECT_EQ(WaitForMultipleObjects(3, handles, TRUE, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForMultipleObjects(3, handles, TRUE, kShortMs), WAIT_TIMEOUT);
    EXPECT_EQ(Poll(event), WAIT_OBJECT_0);

    DWORD result = WAIT_FAILED;
    std::thread waiter([&] {
        result = WaitForMultipleObjects(3, handles, TRUE, kLongMs);
        EXPECT_TRUE(ReleaseMutex(mutex));
    });
    Sleep(kSettleMs);
    SetEvent(event);
    Sleep(kShortMs);
    EXPECT_EQ(Poll(event), WAIT_OBJECT_0); // still there for others
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, nullptr));
    Sleep(kShortMs);
    EXPECT_EQ(Poll(semaphore), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, nullptr));
    SetEvent(event);
    waiter.join();
    EXPECT_EQ(result, WAIT_OBJECT_0);
    EXPECT_EQ(Poll(event), WAIT_TIMEOUT);
    EXPECT_EQ(Poll(semaphore), WAIT_OBJECT_0); // one of two was taken
    EXPECT_EQ(Poll(semaphore), WAIT_TIMEOUT);
    EXPECT_EQ(Poll(mutex), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(Waits, SignalReachesItsWaiterPastOneThatWaitsForMore) {
    // Whoever waits for all came first, and can't take what the other one waits for.
    for (int i = 0; i < 3; ++i) {
        const Handle event = AutoEvent();
        const Handle never = AutoEvent();
        const HANDLE both[] = {event, never};
        std::thread forAll([&] { EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, kLongMs), WAIT_OBJECT_0); });
        Sleep(kSettleMs);
        std::thread forOne([&] { EXPECT_EQ(WaitForSingleObject(event, kLongMs / 2), WAIT_OBJECT_0); });
        Sleep(kSettleMs);
        SetEvent(event);
        forOne.join();
        SetEvent(event);
        SetEvent(never);
        forAll.join();
    }
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
    std::thread second(work, backward);
    first.join();
    second.join();
    EXPECT_EQ(counter, 600);
}

TEST(Waits, EndAtTheirTimeNeitherBeforeNorNever) {
    const Handle never = AutoEvent();
    const Handle mutex = Mutex(true);
    const HANDLE two[] = {never, mutex};
    std::thread([&] {
        for (const DWORD timeoutMs : {0U, 1U, 40U, 250U}) {
            const auto start = Clock::now();
            EXPECT_EQ(WaitForSingleObject(never, timeoutMs), WAIT_TIMEOUT);
            EXPECT_EQ(WaitForSingleObject(mutex, timeoutMs), WAIT_TIMEOUT);
            EXPECT_EQ(WaitForMultipleObjects(2, two, FALSE, timeoutMs), WAIT_TIMEOUT);
            EXPECT_EQ(WaitForMultipleObjects(2, two, TRUE, timeoutMs), WAIT_TIMEOUT);
            // The system's ticks are up to 16 ms, and a wait may end within one.
            const double slack = 4 * 16.0;
            EXPECT_GE(MillisecondsSince(start) + slack, 4.0 * timeoutMs);
            EXPECT_LT(MillisecondsSince(start), 4.0 * timeoutMs + kLongMs);
        }
    }).join();
    std::thread setter([&] {
        Sleep(2 * kSettleMs);
        SetEvent(never);
    });
    EXPECT_EQ(WaitForSingleObject(never, INFINITE), WAIT_OBJECT_0);
    setter.join();
    EXPECT_TRUE(ReleaseMutex(mutex));
}

} // namespace
