// Events, mutexes and semaphores by themselves.

#include "Support.h"

#include "krtpal/process.h"
#include "support/Wine.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

/// Threads that wait on an object, each for one result.
class Waiters {
public:
    Waiters(HANDLE object, int count) {
        for (int i = 0; i < count; ++i) {
            m_threads.emplace_back([this, object] {
                ++m_started;
                if (WaitForSingleObject(object, kLongMs) == WAIT_OBJECT_0) {
                    ++released;
                }
                ++m_ended;
            });
        }
        while (m_started < count) {
            Sleep(1);
        }
        Sleep(kSettleMs);
    }
    ~Waiters() { Join(); }
    void Join() {
        for (std::thread& thread : m_threads) {
            thread.join();
        }
        m_threads.clear();
    }
    /// True when so many came out, and nobody else soon after.
    bool ExactlyComeOut(int count) {
        for (DWORD waited = 0; released < count && waited < kLongMs; ++waited) {
            Sleep(1);
        }
        Sleep(kShortMs);
        return released == count;
    }

    std::atomic<int> released{0};

private:
    std::atomic<int> m_started{0};
    std::atomic<int> m_ended{0};
    std::vector<std::thread> m_threads;
};

TEST(Handles, WrongOnesAreRefusedByEveryCall) {
    Handle closed = AutoEvent();
    const HANDLE stale = closed;
    closed.Close();
    const HANDLE wrong[] = {nullptr, stale, reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x123454))};
    for (const HANDLE handle : wrong) {
        const auto refused = [](BOOL result) {
            return result == FALSE && GetLastError() == ERROR_INVALID_HANDLE;
        };
        EXPECT_TRUE(refused(SetEvent(handle)));
        EXPECT_TRUE(refused(ResetEvent(handle)));
        EXPECT_TRUE(refused(PulseEvent(handle)));
        EXPECT_TRUE(refused(ReleaseMutex(handle)));
        EXPECT_TRUE(refused(ReleaseSemaphore(handle, 1, nullptr)));
        EXPECT_TRUE(refused(CloseHandle(handle)));
        EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_FAILED);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
    // Objects of another kind
    const Handle event = AutoEvent();
    const Handle mutex = Mutex();
    EXPECT_FALSE(ReleaseMutex(event));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(ReleaseSemaphore(event, 1, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(SetEvent(mutex));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(Handles, ManyAtOnceAndNumbersOfClosedOnesAreNotMistaken) {
    std::vector<Handle> events;
    for (int i = 0; i < 2000; ++i) {
        events.push_back(AutoEvent(i % 2 == 0));
        ASSERT_NE(static_cast<HANDLE>(events.back()), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    }
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(Poll(events[static_cast<std::size_t>(i)]), i % 2 == 0 ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
    }
}

TEST(Events, AutoResetLetsOneGoAndManualResetAll) {
    const Handle automatic = AutoEvent(true);
    EXPECT_EQ(Poll(automatic), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(automatic), WAIT_TIMEOUT);
    SetEvent(automatic);
    SetEvent(automatic); // counts once while nobody waits
    EXPECT_EQ(Poll(automatic), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(automatic), WAIT_TIMEOUT);
    SetEvent(automatic);
    ResetEvent(automatic);
    EXPECT_EQ(Poll(automatic), WAIT_TIMEOUT);
    {
        Waiters waiters(automatic, 3);
        SetEvent(automatic);
        EXPECT_TRUE(waiters.ExactlyComeOut(1));
        // Two in a row, before the first has run, still let two go.
        SetEvent(automatic);
        SetEvent(automatic);
        EXPECT_TRUE(waiters.ExactlyComeOut(3));
    }
    EXPECT_EQ(Poll(automatic), WAIT_TIMEOUT);

    const Handle manual = ManualEvent();
    {
        Waiters waiters(manual, 3);
        SetEvent(manual);
        ResetEvent(manual); // those who waited go all the same
        EXPECT_TRUE(waiters.ExactlyComeOut(3));
    }
    EXPECT_EQ(Poll(manual), WAIT_TIMEOUT);
    SetEvent(manual);
    EXPECT_EQ(Poll(manual), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(manual), WAIT_OBJECT_0);
}

TEST(Events, SignalGoesToTheThreadThatWaitedNotToALaterPoll) {
    const Handle event = AutoEvent();
    for (int i = 0; i < 5; ++i) {
        Waiters waiters(event, 1);
        SetEvent(event);
        EXPECT_EQ(Poll(event), WAIT_TIMEOUT);
        EXPECT_TRUE(waiters.ExactlyComeOut(1));
    }
}

TEST(Events, PulseReachesThoseWhoWaitAndIsForgotten) {
    for (const bool manual : {false, true}) {
        const Handle event = manual ? ManualEvent(true) : AutoEvent(true);
        EXPECT_TRUE(PulseEvent(event));
        EXPECT_EQ(Poll(event), WAIT_TIMEOUT);
        Waiters waiters(event, 2);
        EXPECT_TRUE(PulseEvent(event));
        EXPECT_TRUE(waiters.ExactlyComeOut(manual ? 2 : 1)) << manual;
        EXPECT_EQ(Poll(event), WAIT_TIMEOUT);
        PulseEvent(event);
        waiters.Join();
        EXPECT_EQ(waiters.released, 2);
    }
}

TEST(Mutexes, BelongToOneThreadAsOftenAsItTookThem) {
    const Handle mutex = Mutex(true);
    EXPECT_EQ(Poll(mutex), WAIT_OBJECT_0);
    std::thread([&] {
        EXPECT_EQ(WaitForSingleObject(mutex, kShortMs), WAIT_TIMEOUT);
        EXPECT_FALSE(ReleaseMutex(mutex));
        EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    }).join();
    EXPECT_TRUE(ReleaseMutex(mutex));
    std::thread([&] { EXPECT_EQ(Poll(mutex), WAIT_TIMEOUT); }).join();
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_FALSE(ReleaseMutex(mutex));
    EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    std::thread([&] {
        EXPECT_EQ(Poll(mutex), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex));
    }).join();
}

TEST(Mutexes, ThreadThatEndsAbandonsThem) {
    const Handle first = Mutex();
    const Handle second = Mutex();
    const Handle event = AutoEvent();
    const HANDLE both[] = {event, first};
    const HANDLE all[] = {first, second};
    const auto abandon = [](HANDLE mutex) {
        std::thread([mutex] {
            EXPECT_EQ(Poll(mutex), WAIT_OBJECT_0);
            EXPECT_EQ(Poll(mutex), WAIT_OBJECT_0); // twice: the end of the thread undoes both
        }).join();
    };
    abandon(first);
    EXPECT_EQ(Poll(first), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(first)); // it is owned, and whole again
    EXPECT_EQ(Poll(first), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(first));

    abandon(first);
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, kLongMs), WAIT_ABANDONED_0 + 1);
    EXPECT_TRUE(ReleaseMutex(first));

    abandon(second);
    EXPECT_EQ(WaitForMultipleObjects(2, all, TRUE, kLongMs) & ~1U, WAIT_ABANDONED_0);
    EXPECT_TRUE(ReleaseMutex(first));
    EXPECT_TRUE(ReleaseMutex(second));

    // One that is waited for while its owner ends
    std::atomic<bool> taken{false};
    std::thread owner([&] {
        EXPECT_EQ(Poll(first), WAIT_OBJECT_0);
        taken = true;
        Sleep(kSettleMs);
    });
    while (!taken) {
        Sleep(1);
    }
    EXPECT_EQ(WaitForSingleObject(first, kLongMs), WAIT_ABANDONED);
    owner.join();
    EXPECT_TRUE(ReleaseMutex(first));
}

TEST(Semaphores, CountUpToTheirMaximum) {
    const LONG wrong[][2] = {{-1, 1}, {0, 0}, {2, 1}, {0, -1}};
    for (const auto& [count, maximum] : wrong) {
        EXPECT_EQ(CreateSemaphoreW(nullptr, count, maximum, nullptr), nullptr) << count << ' ' << maximum;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    const Handle semaphore = Semaphore(1, 3);
    LONG previous = -1;
    EXPECT_FALSE(ReleaseSemaphore(semaphore, -1, &previous));
    if (!RunsUnderWine()) { // which takes it
        EXPECT_FALSE(ReleaseSemaphore(semaphore, 0, &previous));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    EXPECT_FALSE(ReleaseSemaphore(semaphore, 3, &previous));
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
    EXPECT_FALSE(ReleaseSemaphore(semaphore, 0x7FFFFFFF, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
    EXPECT_EQ(previous, -1);
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, &previous));
    EXPECT_EQ(previous, 1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Poll(semaphore), WAIT_OBJECT_0);
    }
    EXPECT_EQ(Poll(semaphore), WAIT_TIMEOUT);

    Waiters waiters(semaphore, 5);
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 3, &previous));
    EXPECT_EQ(previous, 0);
    EXPECT_TRUE(waiters.ExactlyComeOut(3));
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 3, nullptr));
    waiters.Join();
    EXPECT_EQ(waiters.released, 5);
    EXPECT_EQ(Poll(semaphore), WAIT_OBJECT_0); // one was left
    EXPECT_EQ(Poll(semaphore), WAIT_TIMEOUT);
}

TEST(CriticalSections, BelongToOneThreadAsOftenAsItEntered) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    const auto owner = [&] { return static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(section.OwningThread)); };
    EXPECT_EQ(owner(), 0U);
    EnterCriticalSection(&section);
    EXPECT_TRUE(TryEnterCriticalSection(&section));
    EXPECT_EQ(owner(), GetCurrentThreadId());
    EXPECT_EQ(section.RecursionCount, 2);
    std::thread([&] { EXPECT_FALSE(TryEnterCriticalSection(&section)); }).join();
    LeaveCriticalSection(&section);
    std::thread([&] { EXPECT_FALSE(TryEnterCriticalSection(&section)); }).join();
    std::atomic<bool> entered{false};
    std::thread waiter([&] {
        EnterCriticalSection(&section);
        entered = true;
        EXPECT_EQ(owner(), GetCurrentThreadId());
        LeaveCriticalSection(&section);
    });
    Sleep(kSettleMs);
    EXPECT_FALSE(entered);
    LeaveCriticalSection(&section);
    waiter.join();
    EXPECT_TRUE(entered);
    EXPECT_EQ(owner(), 0U);

    int counter = 0; // no atomic: the lock has to guard it
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 5000; ++j) {
                EnterCriticalSection(&section);
                ++counter;
                LeaveCriticalSection(&section);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, 20000);
    DeleteCriticalSection(&section);
}

TEST(Threads, HaveNumbersOfTheirOwn) {
    const DWORD mine = GetCurrentThreadId();
    EXPECT_NE(mine, 0U);
    EXPECT_EQ(mine, GetCurrentThreadId());
    std::thread([&] { EXPECT_NE(GetCurrentThreadId(), mine); }).join();
}

} // namespace
