// Messages of threads and waits that they end. Some error numbers of Wine differ from those that are
// documented.

#include "Support.h"

#include "krtpal/message.h"
#include "krtpal/process.h"
#include "support/Expect.h"
#include "support/Wine.h"

#include <thread>
#include <vector>

namespace {

thread_local std::vector<UINT> t_received;

LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message >= WM_APP || message == WM_DESTROY) {
        t_received.push_back(message);
        return static_cast<LRESULT>(wParam) + lParam;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

class Messages : public testing::Test {
protected:
    Messages() {
        WNDCLASSEXW kind{};
        kind.cbSize = sizeof(kind);
        kind.lpfnWndProc = &Receive;
        kind.lpszClassName = kClass;
        EXPECT_NE(RegisterClassExW(&kind), 0);
        EXPECT_FAILS(RegisterClassExW(&kind), ERROR_CLASS_ALREADY_EXISTS);
        m_window = Make();
        t_received.clear();
    }
    ~Messages() override {
        if (IsWindow(m_window)) {
            EXPECT_FAILS(UnregisterClassW(kClass, nullptr), ERROR_CLASS_HAS_WINDOWS);
            EXPECT_TRUE(DestroyWindow(m_window));
        }
        EXPECT_TRUE(UnregisterClassW(kClass, nullptr));
    }
    static HWND Make(const wchar_t* kind = kClass) {
        return CreateWindowExW(0, kind, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    }
    static std::vector<UINT> Drain(HWND window = nullptr, UINT first = 0, UINT last = 0) {
        std::vector<UINT> all;
        MSG message;
        while (PeekMessageW(&message, window, first, last, PM_REMOVE)) {
            all.push_back(message.message);
        }
        return all;
    }
    using List = std::vector<UINT>;
    static constexpr const wchar_t* kClass = L"krtbss test receiver";
    HWND m_window = nullptr;
};

TEST_F(Messages, GoThroughTheQueueToTheReceiver) {
    ASSERT_NE(m_window, nullptr);
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE));
    std::thread([&] { EXPECT_TRUE(PostMessageW(m_window, WM_APP + 1, 7, -2)); }).join();
    EXPECT_TRUE(t_received.empty());
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE));
    ASSERT_TRUE(PeekMessageW(&message, m_window, 0, 0, PM_REMOVE));
    EXPECT_TRUE(message.hwnd == m_window && message.message == WM_APP + 1 && message.wParam == 7 &&
                message.lParam == -2);
    EXPECT_EQ(DispatchMessageW(&message), 5);
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    message.hwnd = nullptr;
    EXPECT_EQ(DispatchMessageW(&message), 0);
    EXPECT_EQ(t_received, List{WM_APP + 1});
}

TEST_F(Messages, AreLookedForByReceiverAndRangeInTheirOrder) {
    const HWND other = Make();
    const auto post = [&] {
        PostMessageW(m_window, WM_APP + 1, 0, 0);
        PostMessageW(other, WM_APP + 2, 0, 0);
        PostThreadMessageW(GetCurrentThreadId(), WM_APP + 3, 0, 0);
        PostMessageW(nullptr, WM_APP + 4, 0, 0);
        PostMessageW(m_window, WM_APP + 5, 0, 0);
    };
    post();
    EXPECT_EQ(Drain(), (List{WM_APP + 1, WM_APP + 2, WM_APP + 3, WM_APP + 4, WM_APP + 5}));
    post();
    EXPECT_EQ(Drain(m_window), (List{WM_APP + 1, WM_APP + 5}));
    EXPECT_EQ(Drain(reinterpret_cast<HWND>(LONG_PTR{-1})), (List{WM_APP + 3, WM_APP + 4}));
    EXPECT_EQ(Drain(), (List{WM_APP + 2}));
    post();
    EXPECT_EQ(Drain(nullptr, WM_APP + 2, WM_APP + 3), (List{WM_APP + 2, WM_APP + 3}));
    PostQuitMessage(3);
    PostMessageW(other, WM_APP + 6, 0, 0);
    // The end comes when nothing else is there.
    EXPECT_EQ(Drain(), (List{WM_APP + 1, WM_APP + 4, WM_APP + 5, WM_APP + 6, WM_QUIT}));
    EXPECT_EQ(Drain(), List{});
    post();
    EXPECT_TRUE(DestroyWindow(other));
    EXPECT_EQ(Drain(), (List{WM_APP + 1, WM_APP + 3, WM_APP + 4, WM_APP + 5}));
}

TEST_F(Messages, ReceiversEndInTheirOwnThread) {
    std::thread([&] { EXPECT_FAILS(DestroyWindow(m_window), ERROR_ACCESS_DENIED); }).join();
    EXPECT_TRUE(IsWindow(m_window));
    EXPECT_TRUE(DestroyWindow(m_window));
    EXPECT_EQ(t_received, List{WM_DESTROY});
    EXPECT_FALSE(IsWindow(m_window));
    MSG message;
    for (const HWND wrong : {m_window, reinterpret_cast<HWND>(LONG_PTR{0x7ff0})}) {
        EXPECT_FAILS(PostMessageW(wrong, WM_APP, 0, 0), ERROR_INVALID_WINDOW_HANDLE);
        EXPECT_FAILS(DestroyWindow(wrong),
                     RunsUnderWine() ? ERROR_ACCESS_DENIED : ERROR_INVALID_WINDOW_HANDLE);
        EXPECT_FAILS(PeekMessageW(&message, wrong, 0, 0, PM_REMOVE), ERROR_INVALID_WINDOW_HANDLE);
    }
    HWND gone = nullptr;
    std::thread([&] { gone = Make(); }).join();
    EXPECT_NE(gone, nullptr);
    EXPECT_FALSE(IsWindow(gone)); // a receiver goes with its thread
    EXPECT_FAILS(PostThreadMessageW(0x7FFFFFF0, WM_APP, 0, 0),
                 RunsUnderWine() ? ERROR_INVALID_PARAMETER : ERROR_INVALID_THREAD_ID);
    EXPECT_FAILS(Make(L"krtbss no such class"),
                 RunsUnderWine() ? ERROR_CLASS_DOES_NOT_EXIST : ERROR_CANNOT_FIND_WND_CLASS);
}

TEST_F(Messages, TenThousandWaitAtMost) {
    if (RunsUnderWine()) {
        GTEST_SKIP() << "Wine takes any number";
    }
    for (int i = 0; i < 10'000; ++i) {
        ASSERT_TRUE(PostMessageW(m_window, WM_APP, 0, 0)) << i;
    }
    EXPECT_FAILS(PostMessageW(m_window, WM_APP, 0, 0), ERROR_NOT_ENOUGH_QUOTA);
    EXPECT_EQ(Drain().size(), 10'000U);
    EXPECT_TRUE(PostMessageW(m_window, WM_APP, 0, 0));
    EXPECT_EQ(Drain(), List{WM_APP});
}

TEST_F(Messages, EndAWait) {
    const Handle event = AutoEvent();
    const HANDLE handles[] = {event};
    std::vector<HANDLE> many(64, event);
    EXPECT_FAILS(MsgWaitForMultipleObjects(64, many.data(), FALSE, 0, QS_ALLINPUT) != WAIT_FAILED,
                 ERROR_INVALID_PARAMETER);
    EXPECT_EQ(MsgWaitForMultipleObjects(1, handles, FALSE, kShortMs, QS_ALLINPUT), WAIT_TIMEOUT);
    SetEvent(event);
    EXPECT_EQ(MsgWaitForMultipleObjects(1, handles, FALSE, kLongMs, QS_ALLINPUT), WAIT_OBJECT_0);

    // From another thread, during the wait
    for (const bool byObject : {false, true}) {
        std::jthread other([&] {
            Sleep(kSettleMs);
            byObject ? SetEvent(event) : PostMessageW(m_window, WM_APP, 0, 0);
        });
        EXPECT_EQ(MsgWaitForMultipleObjects(1, handles, FALSE, kLongMs, QS_ALLINPUT),
                  WAIT_OBJECT_0 + (byObject ? 0 : 1));
        EXPECT_EQ(Drain(), byObject ? List{} : List{WM_APP});
    }
    EXPECT_EQ(MsgWaitForMultipleObjects(1, handles, FALSE, kShortMs, QS_ALLINPUT), WAIT_TIMEOUT);

    // Before the wait, not looked for yet; without any object
    PostMessageW(m_window, WM_APP, 0, 0);
    EXPECT_EQ(MsgWaitForMultipleObjects(0, nullptr, FALSE, kLongMs, QS_POSTMESSAGE), WAIT_OBJECT_0);
    // Kinds that the wait does not ask for
    EXPECT_EQ(MsgWaitForMultipleObjects(1, handles, FALSE, kShortMs, QS_TIMER | QS_PAINT), WAIT_TIMEOUT);
    // Looked for and left: no news, but there
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(MsgWaitForMultipleObjects(1, handles, FALSE, kShortMs, QS_ALLINPUT), WAIT_TIMEOUT);
    EXPECT_EQ(MsgWaitForMultipleObjectsEx(1, handles, kLongMs, QS_ALLINPUT, MWMO_INPUTAVAILABLE),
              WAIT_OBJECT_0 + 1);
    Drain();
}

TEST_F(Messages, OfManyThreadsAllArriveInTheOrderOfEach) {
    constexpr int threads = 4;
    constexpr int each = 500;
    std::vector<std::jthread> posters;
    for (WPARAM i = 0; i < threads; ++i) {
        posters.emplace_back([this, i] {
            for (int j = 0; j < each; ++j) {
                EXPECT_TRUE(PostMessageW(m_window, WM_APP, i, j));
            }
        });
    }
    LPARAM next[threads] = {};
    for (int count = 0; count < threads * each;) {
        ASSERT_EQ(MsgWaitForMultipleObjects(0, nullptr, FALSE, kLongMs, QS_ALLINPUT), WAIT_OBJECT_0) << count;
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); ++count) {
            EXPECT_EQ(message.lParam, next[message.wParam]++);
        }
    }
}

} // namespace
