// The older family.

#include "bss/thread/WSynchronizer.h"

#include "krtpal/process.h"
#include "support/Blocked.h"
#include "support/DebugOutput.h"
#include "support/Wine.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Synchronizer, EventIsSetByReleaseAndAnswersFalseWithoutAHandle) {
    bss::WEvent event;
    EXPECT_FALSE(event.Acquire(0));
    EXPECT_TRUE(event.Release());
    EXPECT_TRUE(event.Acquire(0));
    EXPECT_FALSE(event.AcquireEx(0, 0));
    EXPECT_TRUE(event.SetEvent() && event.ResetEvent());
    EXPECT_FALSE(event.Acquire(20));
    EXPECT_TRUE(event.PulseEvent());
    bss::WEvent signalled(true, false);
    EXPECT_TRUE(signalled.Acquire(0));
    EXPECT_FALSE(signalled.Acquire(0));
    bss::WEvent manual(false, true);
    EXPECT_FALSE(manual.Acquire(0));
    EXPECT_TRUE(manual.SetEvent() && manual.Acquire(0) && manual.AcquireEx(0, 0));

    const std::wstring name = L"krtbss-synchronizer-" + std::to_wstring(GetCurrentProcessId());
    const HANDLE other = CreateMutexW(nullptr, FALSE, name.c_str());
    bss::WEvent none(false, false, name.c_str());
    EXPECT_EQ(static_cast<void*>(none), nullptr);
    EXPECT_EQ(static_cast<const wchar_t*>(none), name.c_str());
    EXPECT_FALSE(none.Acquire(0) || none.AcquireEx(0, 0) || none.Release() || none.SetEvent() ||
                 none.ResetEvent() || none.PulseEvent());
    CloseHandle(other);
}

TEST(Synchronizer, FailureToCloseGoesToTheDebugger) {
    DebugOutput output;
    {
        const bss::WEvent event;
        CloseHandle(event);
    }
    const std::wstring text = output.Text();
    const std::wstring begin = L"\tWSynchronizer:\t::~WSynchronizer get last error: ";
    ASSERT_EQ(text.substr(0, begin.size()), begin);
    EXPECT_GT(text.size(), begin.size() + 1);
    EXPECT_EQ(text.back(), L'\n');
}

DWORD Owner(const bss::WCriticalSection& section) {
    return static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(section.GetOwnerThread()));
}

void EnterAndRelease(bss::WCriticalSection& section) {
    section.Enter();
    section.Release();
}

TEST(Synchronizer, CriticalSectionCountsItsEntries) {
    bss::WCriticalSection section;
    EXPECT_TRUE(section.Release()); // free: nothing happens
    EXPECT_EQ(section.GetOwnerThread(), nullptr);
    section.Enter();
    section.Enter();
    EXPECT_EQ(Owner(section), GetCurrentThreadId());
    Blocked waiter([&] { EnterAndRelease(section); });
    EXPECT_TRUE(section.Release());
    EXPECT_FALSE(waiter.HasEnded());
    EXPECT_TRUE(section.Release());
    EXPECT_TRUE(waiter.EndsSoon());
    EXPECT_EQ(section.GetOwnerThread(), nullptr);
    section.Enter(); // the end of the object leaves it
}

TEST(Synchronizer, EntriesOfAThreadAreCountedAndReleasedAtOnce) {
    bss::WCriticalSection section;
    section.SingleEnter();
    section.SingleEnter();             // once only
    EXPECT_TRUE(section.ReleaseAll()); // locked: does nothing, on purpose
    EXPECT_EQ(Owner(section), GetCurrentThreadId());
    EXPECT_TRUE(section.Release());
    EXPECT_EQ(section.GetOwnerThread(), nullptr); // one Release was enough
    section.SingleEnter();                        // the thread's entry is still there
    EXPECT_EQ(section.GetOwnerThread(), nullptr);
}

TEST(Synchronizer, SingleEnterEntersAgainAfterReleaseAndReleaseAll) {
#ifdef _WIN32
    if (!RunsUnderWine()) {
        GTEST_SKIP() << "ReleaseAll leaves the section once more than it was entered, which Windows forbids";
    }
#endif
    bss::WCriticalSection section;
    section.SingleEnter();
    EXPECT_TRUE(section.Release() && section.ReleaseAll()); // now the thread's entry is gone
    section.SingleEnter();
    EXPECT_EQ(Owner(section), GetCurrentThreadId());
    Blocked waiter([&] { EnterAndRelease(section); });
    EXPECT_FALSE(waiter.HasEnded());
    EXPECT_TRUE(section.Release());
    EXPECT_TRUE(waiter.EndsSoon());
}

} // namespace
