// Events, mutexes and semaphores by themselves.

#include "Support.h"

#include "krtpal/process.h"
#include "krtpal/user.h"
#include "support/Blocked.h"
#include "support/Expect.h"
#include "support/Threads.h"
#include "support/Wine.h"

#include <algorithm>
#include <memory>
#include <set>
#include <vector>

namespace {

/// Threads that wait on an object, each for one result.
class Waiters {
public:
    Waiters(HANDLE object, int count) {
        for (int i = 0; i < count; ++i) {
            m_threads.push_back(std::make_unique<Blocked>([this, object] {
                m_released += WaitForSingleObject(object, kLongMs) == WAIT_OBJECT_0 ? 1 : 0;
            }));
        }
    }
    /// True when this many came out, and nobody else soon after.
    bool ExactlyComeOut(int count) {
        for (DWORD waited = 0; m_released < count && waited < kLongMs; ++waited) {
            Sleep(1);
        }
        Sleep(kShortMs);
        return m_released == count;
    }

private:
    std::atomic<int> m_released{0};
    std::vector<std::unique_ptr<Blocked>> m_threads;
};

TEST(Handles, WrongOnesAreRefusedByEveryCall) {
    Handle closed = AutoEvent();
    const HANDLE stale = closed;
    closed.Close();
    for (const HANDLE handle : {HANDLE{nullptr}, stale, reinterpret_cast<HANDLE>(ULONG_PTR{0x123454})}) {
        EXPECT_FAILS(SetEvent(handle), ERROR_INVALID_HANDLE);
        EXPECT_FAILS(ResetEvent(handle), ERROR_INVALID_HANDLE);
        EXPECT_FAILS(PulseEvent(handle), ERROR_INVALID_HANDLE);
        EXPECT_FAILS(ReleaseMutex(handle), ERROR_INVALID_HANDLE);
        EXPECT_FAILS(ReleaseSemaphore(handle, 1, nullptr), ERROR_INVALID_HANDLE);
        EXPECT_FAILS(CloseHandle(handle), ERROR_INVALID_HANDLE);
        EXPECT_FAILS(Poll(handle) != WAIT_FAILED, ERROR_INVALID_HANDLE);
    }
    const Handle event = AutoEvent(); // objects of another kind
    const Handle mutex = Mutex();
    EXPECT_FAILS(ReleaseMutex(event), ERROR_INVALID_HANDLE);
    EXPECT_FAILS(ReleaseSemaphore(event, 1, nullptr), ERROR_INVALID_HANDLE);
    EXPECT_FAILS(SetEvent(mutex), ERROR_INVALID_HANDLE);
}

TEST(Handles, ClosedOneIsRefusedWhenItsSlotIsUsedAgain) {
#ifdef _WIN32
    GTEST_SKIP() << "the system gives out the numbers of closed handles again";
#endif
    std::set<HANDLE> stale;
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(stale.insert(AutoEvent()).second);
    }
    std::vector<Handle> many(1000); // more than a chunk of slots
    std::ranges::generate(many, [] { return AutoEvent(true); });
    EXPECT_TRUE(std::ranges::all_of(many, [](const Handle& event) { return Poll(event) == WAIT_OBJECT_0; }));
    const Handle open = AutoEvent(true);
    for (const HANDLE handle : stale) {
        EXPECT_FAILS(ResetEvent(handle), ERROR_INVALID_HANDLE);
        EXPECT_FAILS(CloseHandle(handle), ERROR_INVALID_HANDLE);
    }
    EXPECT_EQ(Poll(open), WAIT_OBJECT_0);
}

TEST(Handles, DuplicateKeepsTheObjectAndItsName) {
    const std::wstring name = OwnName(L"duplicate");
    const HANDLE process = GetCurrentProcess();
    const auto isNamed = [&] { return Handle(OpenMutexW(MUTEX_ALL_ACCESS, FALSE, name.c_str())) != nullptr; };
    Handle first = Mutex(true, name.c_str());
    const HANDLE stale = first;
    HANDLE copy = nullptr;
    ASSERT_TRUE(DuplicateHandle(process, first, process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS));
    Handle second = copy;
    EXPECT_NE(copy, stale);
    first.Close();
    EXPECT_TRUE(isNamed());
    EXPECT_TRUE(ReleaseMutex(second));
    EXPECT_FAILS(DuplicateHandle(process, stale, process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS),
                 ERROR_INVALID_HANDLE);
    EXPECT_FAILS(DuplicateHandle(process, second, second, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS),
                 ERROR_INVALID_HANDLE);
    EXPECT_FAILS(DuplicateHandle(second, second, process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS),
                 ERROR_INVALID_HANDLE);
    second.Close();
    EXPECT_FALSE(isNamed());
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
        EXPECT_TRUE(waiters.ExactlyComeOut(2));
    }
}

TEST(Mutexes, BelongToOneThreadAsOftenAsItTookThem) {
    const Handle mutex = Mutex(true);
    EXPECT_EQ(Poll(mutex), WAIT_OBJECT_0);
    std::thread([&] {
        EXPECT_EQ(WaitForSingleObject(mutex, kShortMs), WAIT_TIMEOUT);
        EXPECT_FAILS(ReleaseMutex(mutex), ERROR_NOT_OWNER);
    }).join();
    EXPECT_TRUE(ReleaseMutex(mutex));
    std::thread([&] { EXPECT_EQ(Poll(mutex), WAIT_TIMEOUT); }).join();
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_FAILS(ReleaseMutex(mutex), ERROR_NOT_OWNER);
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
    EXPECT_TRUE(ReleaseMutex(first) && ReleaseMutex(second));

    // One that is waited for while its owner ends
    const Blocked owner([&] {
        EXPECT_EQ(Poll(first), WAIT_OBJECT_0);
        Sleep(3 * kSettleMs);
    });
    EXPECT_EQ(WaitForSingleObject(first, kLongMs), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(first));
}

TEST(Semaphores, CountUpToTheirMaximum) {
    const LONG wrong[][2] = {{-1, 1}, {0, 0}, {2, 1}, {0, -1}};
    for (const auto& [count, maximum] : wrong) {
        EXPECT_FAILS(CreateSemaphoreW(nullptr, count, maximum, nullptr), ERROR_INVALID_PARAMETER);
    }
    const Handle semaphore = Semaphore(1, 3);
    LONG previous = -1;
    EXPECT_FALSE(ReleaseSemaphore(semaphore, -1, &previous));
    if (!RunsUnderWine()) { // which takes it
        EXPECT_FAILS(ReleaseSemaphore(semaphore, 0, &previous), ERROR_INVALID_PARAMETER);
    }
    EXPECT_FAILS(ReleaseSemaphore(semaphore, 3, &previous), ERROR_TOO_MANY_POSTS);
    EXPECT_FAILS(ReleaseSemaphore(semaphore, 0x7FFFFFFF, nullptr), ERROR_TOO_MANY_POSTS);
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
    EXPECT_TRUE(waiters.ExactlyComeOut(5));
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
    LeaveCriticalSection(&section);
    std::thread([&] { EXPECT_FALSE(TryEnterCriticalSection(&section)); }).join();
    LeaveCriticalSection(&section);
    EXPECT_EQ(owner(), 0U);

    int counter = 0; // no atomic: the lock has to guard it
    RunInThreads(4, [&](int) {
        for (int i = 0; i < 5000; ++i) {
            EnterCriticalSection(&section);
            EXPECT_EQ(owner(), GetCurrentThreadId());
            ++counter;
            LeaveCriticalSection(&section);
        }
    });
    EXPECT_EQ(counter, 20000);
    DeleteCriticalSection(&section);
}

} // namespace
