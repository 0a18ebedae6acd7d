#include "bss/thread/WCriticalSection.h"
#include "bss/thread/WEvent.h"
#include "bss/thread/WSingleLock.h"

#include "krtpal/error.h"
#include "krtpal/message.h"
#include "krtpal/process.h"
#include "support/Blocked.h"
#include "support/Expect.h"

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace bss::sync;

constexpr unsigned long longMs = 60'000;

/// An object that counts what is asked of it and answers as it is told.
class Recorder : public WSyncObject {
public:
    Recorder() : WSyncObject(L"recorder") {}
    bool Lock(unsigned long timeoutMs) override {
        lastTimeout = timeoutMs;
        return ++locks, answer;
    }
    bool LockEx(unsigned long, unsigned long) override { return ++locks, answer; }
    bool Unlock(long, long*) override { return ++unlocks, answer; }
    bool Unlock() override { return ++unlocks, answer; }

    int locks = 0;
    int unlocks = 0;
    unsigned long lastTimeout = 0;
    bool answer = true;
};

TEST(SyncObject, WithoutHandleNothingIsHadAndUnlockDoesNothing) {
    Recorder bare;
    EXPECT_EQ(static_cast<void*>(bare), nullptr);
    EXPECT_FALSE(bare.WSyncObject::Lock(0) || bare.WSyncObject::LockEx(0, QS_ALLINPUT));
    EXPECT_TRUE(bare.WSyncObject::Unlock(3, nullptr));
}

TEST(SyncObject, KernelObjectsLockAndUnlock) {
    WEvent event;
    EXPECT_TRUE(event.Unlock() && event.Unlock(1, nullptr)); // no effect
    EXPECT_FALSE(event.Lock(0));
    EXPECT_TRUE(event.SetEvent() && event.Lock(0));
    EXPECT_FALSE(event.Lock(0));
    EXPECT_TRUE(event.SetEvent() && event.ResetEvent());
    EXPECT_FALSE(event.Lock(0));
    EXPECT_TRUE(event.SetEvent() && event.PulseEvent());
    EXPECT_FALSE(event.Lock(0));
    WEvent manual(true, true);
    EXPECT_TRUE(manual.Lock(0) && manual.Lock(0));

    WMutex mutex(true);
    EXPECT_TRUE(mutex.Lock(0) && mutex.Unlock() && mutex.Unlock());
    EXPECT_FALSE(mutex.Unlock());
    std::thread([&] { EXPECT_TRUE(mutex.Lock(0)); }).join();
    EXPECT_FALSE(mutex.Lock(0)); // abandoned: owned, but reported as false
    EXPECT_TRUE(mutex.Unlock());

    WSemaphore binary; // free at first
    EXPECT_TRUE(binary.Lock(0));
    EXPECT_FALSE(binary.Lock(0));
    EXPECT_TRUE(binary.Unlock());
    EXPECT_FALSE(binary.Unlock());
    WSemaphore many(1, 5);
    long previous = -1;
    EXPECT_FALSE(many.Unlock(5, &previous));
    EXPECT_EQ(previous, -1);
    EXPECT_TRUE(many.Unlock(4, &previous));
    EXPECT_EQ(previous, 1);
    if (std::numeric_limits<long>::max() > 0x7FFFFFFFL) {
        EXPECT_TRUE(many.Lock(0));
        EXPECT_FAILS(many.Unlock(static_cast<long>(0x100000001LL), nullptr), // not cut to 1
                     ERROR_INVALID_PARAMETER);
    }
}

TEST(SyncObject, EveryTimeOutFrom32BitsOfOnesUpIsForEver) {
    constexpr auto most = std::numeric_limits<unsigned long>::max();
    const unsigned long beyond = most > 0xFFFFFFFFUL ? 0xFFFFFFFFUL + 1 : most; // 2^32, where it exists
    for (const unsigned long timeout : {0xFFFFFFFFUL, beyond, most}) {
        WEvent one;
        WEvent another;
        WSyncObject* objects[] = {&one};
        WMultiLock lock(objects, 1, false);
        Blocked waiter([&] { EXPECT_EQ(lock.Lock(timeout, true, 0), WAIT_OBJECT_0); });
        Blocked other([&] { EXPECT_TRUE(another.Lock(timeout)); });
        EXPECT_FALSE(waiter.HasEnded() || other.HasEnded()) << timeout;
        one.SetEvent();
        another.SetEvent();
        EXPECT_TRUE(waiter.EndsSoon() && other.EndsSoon());
    }
}

TEST(SyncObject, FailureToMakeOneThrows) {
    const std::wstring name = L"krtbss-thread-test-" + std::to_wstring(GetCurrentProcessId());
    const std::wstring second = name + L"-e";
    const auto expect = [](const char* text, auto make) {
        try {
            make();
            ADD_FAILURE() << text;
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), text);
        }
    };
    const WMutex mutex(false, name.c_str());
    const WEvent event(false, false, second.c_str());
    expect("Critical Error: failed to create Event.", [&] { WEvent(false, false, name.c_str()); });
    expect("Critical Error: failed to create Semaphore.", [&] { WSemaphore(1, 1, name.c_str()); });
    expect("Critical Error: failed to create Semaphore.", [] { WSemaphore(2, 1); });
    expect("Critical Error: failed to create Mutex.", [&] { WMutex(false, second.c_str()); });
}

LRESULT CALLBACK Count(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_APP) {
        ++*reinterpret_cast<int*>(lParam);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST(SyncObject, WaitWithMessagesDispatchesThemAndEndsAtQuit) {
    WNDCLASSEXW kind{};
    kind.cbSize = sizeof(kind);
    kind.lpfnWndProc = &Count;
    kind.lpszClassName = L"krtbss lock test";
    ASSERT_NE(RegisterClassExW(&kind), 0);
    const HWND window =
        CreateWindowExW(0, kind.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    int count = 0;
    const auto argument = reinterpret_cast<LPARAM>(&count);
    WEvent event;

    PostMessageW(window, WM_APP, 0, argument);
    EXPECT_FALSE(event.LockEx(50, QS_ALLINPUT));
    EXPECT_EQ(count, 1);
    std::thread other([&] {
        for (int i = 0; i < 3; ++i) {
            Sleep(20);
            PostMessageW(window, WM_APP, 0, argument);
        }
        event.SetEvent();
    });
    EXPECT_TRUE(event.LockEx(longMs, QS_ALLINPUT));
    other.join();
    EXPECT_FALSE(event.LockEx(0, QS_ALLINPUT)); // dispatches the rest
    EXPECT_EQ(count, 4);

    PostQuitMessage(0);
    EXPECT_TRUE(event.LockEx(longMs, QS_ALLINPUT)); // the object is not signalled
    EXPECT_FALSE(event.LockEx(0, QS_ALLINPUT));     // and the message is gone

    WMutex mutex;
    std::thread([&] { EXPECT_TRUE(mutex.LockEx(0, QS_ALLINPUT)); }).join();
    EXPECT_FALSE(mutex.LockEx(longMs, QS_ALLINPUT)); // abandoned
    EXPECT_TRUE(mutex.Unlock());
    DestroyWindow(window);
    UnregisterClassW(kind.lpszClassName, nullptr);
}

TEST(CriticalSection, WaitsWhateverTheTimeOut) {
    WCriticalSection section;
    EXPECT_EQ(static_cast<void*>(static_cast<const WSyncObject&>(section)), nullptr);
    EXPECT_NE(static_cast<_RTL_CRITICAL_SECTION*>(section), nullptr);
    EXPECT_TRUE(section.Lock() && section.Lock(0) && section.LockEx(0, 0)); // again by the owner
    for (const bool ex : {false, true}) {
        Blocked waiter([&] {
            EXPECT_TRUE(ex ? section.LockEx(0, 0) : section.Lock(0));
            EXPECT_TRUE(section.Unlock());
        });
        EXPECT_FALSE(waiter.HasEnded());
        while (static_cast<_RTL_CRITICAL_SECTION*>(section)->RecursionCount > 1) {
            section.Unlock();
        }
        section.Unlock();
        EXPECT_TRUE(waiter.EndsSoon());
        section.Lock();
    }
    section.Unlock();
}

TEST(SingleLock, HoldsForItsScopeAndTouchesNothingItDoesNotHold) {
    Recorder object;
    {
        WSingleLock lock(&object, true);
        EXPECT_TRUE(lock.IsLocked());
        EXPECT_EQ(object.lastTimeout, 0xFFFFFFFFUL);
    }
    EXPECT_EQ(object.unlocks, 1);
    {
        WSingleLock lock(&object, false);
        EXPECT_EQ(object.locks, 1);
        EXPECT_TRUE(lock.Unlock() && lock.Unlock(1, nullptr));
        EXPECT_EQ(object.unlocks, 1);
        EXPECT_TRUE(lock.Lock(7));
        object.answer = false;
        EXPECT_FALSE(lock.Unlock());
        EXPECT_TRUE(lock.IsLocked());
        EXPECT_FALSE(lock.Unlock(2, nullptr));
        EXPECT_TRUE(lock.IsLocked());
        EXPECT_FALSE(lock.LockEx(1, 2)); // the result stands over the earlier one
        EXPECT_FALSE(lock.IsLocked());
    }
    EXPECT_EQ(object.unlocks, 3);
}

TEST(MultiLock, HoldsWhatItTook) {
    for (const unsigned count : {1U, 8U, 9U}) { // with arrays of its own and on the heap
        std::vector<std::unique_ptr<WSemaphore>> semaphores;
        std::vector<WSyncObject*> objects;
        for (unsigned i = 0; i < count; ++i) {
            semaphores.push_back(std::make_unique<WSemaphore>(0, 2));
            objects.push_back(semaphores.back().get());
        }
        WSemaphore& first = *semaphores.front();
        WSemaphore& last = *semaphores.back();
        {
            WMultiLock lock(objects.data(), count, false);
            EXPECT_EQ(lock.Lock(0, true, 0), WAIT_TIMEOUT);
            EXPECT_FALSE(lock.Unlock(1, nullptr)); // nothing is held
            last.Unlock();
            EXPECT_EQ(lock.Lock(longMs, false, 0), WAIT_OBJECT_0 + count - 1);
            for (unsigned i = 0; i < count; ++i) {
                EXPECT_EQ(lock.IsLocked(i), i == count - 1);
            }
            EXPECT_TRUE(lock.Unlock());
            EXPECT_FALSE(lock.IsLocked(count - 1));
            EXPECT_TRUE(last.Lock(0)); // given back once
            EXPECT_FALSE(last.Lock(0));
            for (const auto& semaphore : semaphores) {
                semaphore->Unlock();
            }
        }
        {
            WMultiLock lock(objects.data(), count, true);
            EXPECT_TRUE(lock.IsLocked(0) && lock.IsLocked(count - 1));
            EXPECT_FALSE(first.Lock(0));
            long previous = -1;
            EXPECT_TRUE(lock.Unlock(3, &previous)); // too many: still held, yet a semaphore was met
            EXPECT_TRUE(lock.IsLocked(0));
            EXPECT_TRUE(lock.Unlock(2, &previous));
            EXPECT_EQ(previous, 0);
            EXPECT_FALSE(lock.IsLocked(0));
            EXPECT_TRUE(first.Lock(0));
        }
        EXPECT_TRUE(first.Lock(0));
        EXPECT_FALSE(first.Lock(0)); // the end of the holder gave nothing back twice
    }
}

TEST(MultiLock, GivesUnitsToSemaphoresOnlyAndWaitsForMessages) {
    WMutex mutex;
    WSemaphore semaphore(1, 3);
    WSyncObject* objects[] = {&mutex, &semaphore};
    {
        WMultiLock lock(objects, 2, true);
        EXPECT_TRUE(lock.Unlock(2, nullptr));
        EXPECT_TRUE(lock.IsLocked(0));
        EXPECT_FALSE(lock.IsLocked(1));
        EXPECT_FALSE(lock.Unlock(1, nullptr)); // the mutex is no semaphore
        std::thread([&] { EXPECT_FALSE(mutex.Lock(0)); }).join();
    }
    std::thread([&] { EXPECT_TRUE(mutex.Lock(0) && mutex.Unlock()); }).join();

    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // makes the queue
    PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
    WEvent never;
    WSyncObject* one[] = {&never, &never, &never, &never, &never, &never, &never, &never};
    WMultiLock waiting(one, 8, false);
    EXPECT_EQ(waiting.Lock(longMs, false, QS_ALLINPUT), WAIT_OBJECT_0 + 8); // no object, but input
    EXPECT_FALSE(waiting.IsLocked(0) || waiting.IsLocked(7));
    WMultiLock single(one, 1, false);
    EXPECT_EQ(single.Lock(0, true, QS_ALLINPUT), WAIT_TIMEOUT); // needs the object and input
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
    never.SetEvent();
    EXPECT_EQ(waiting.Lock(0, false, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(waiting.Unlock());
    WMultiLock none(nullptr, 0, false);
    EXPECT_TRUE(none.Unlock());
}

} // namespace
