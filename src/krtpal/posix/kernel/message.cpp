#include "krtpal/message.h"

#include "krtpal/error.h"
#include "krtpal/posix/kernel/wait.h"
#include "krtpal/process.h"
#include "krtpal/time.h"

#include <algorithm>
#include <climits>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace krtpal {

namespace {

constexpr std::size_t kMostMessages = 10'000;
constexpr DWORD kPostBits = QS_POSTMESSAGE | QS_ALLPOSTMESSAGE;

// The messages of one thread. Any thread posts; only the thread itself takes and waits.
class MessageQueue {
public:
    explicit MessageQueue(DWORD thread) : m_thread(thread) {}

    DWORD Thread() const { return m_thread; }

    bool Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_messages.size() >= kMostMessages) {
                return false;
            }
            m_messages.push_back(
                {window, message, wParam, lParam, static_cast<DWORD>(GetTickCount64()), {0, 0}});
            m_unseen = kPostBits;
            m_changes.fetch_add(1, std::memory_order_release);
        }
        posix::WakeWaiters(m_changes, INT_MAX, false);
        return true;
    }

    // Wakes nobody: only the thread itself calls it, so it does not wait.
    void PostQuit(int exitCode) {
        const std::lock_guard lock(m_mutex);
        m_quits = true;
        m_exitCode = exitCode;
        m_unseen = kPostBits;
        m_changes.fetch_add(1, std::memory_order_release);
    }

    template <typename Filter>
    bool Take(Filter passes, bool passesAll, bool remove, MSG* message) {
        const std::lock_guard lock(m_mutex);
        m_unseen &= passesAll ? 0 : ~QS_POSTMESSAGE;
        const auto found = std::find_if(m_messages.begin(), m_messages.end(), passes);
        if (found != m_messages.end()) {
            *message = *found;
            if (remove) {
                m_messages.erase(found);
            }
            return true;
        }
        if (!m_quits) {
            return false;
        }
        *message = {
            nullptr, WM_QUIT, static_cast<WPARAM>(m_exitCode), 0, static_cast<DWORD>(GetTickCount64()),
            {0, 0}};
        m_quits = !remove;
        return true;
    }

    void DropMessagesOf(HWND window) {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_messages, [&](const MSG& message) { return message.hwnd == window; });
    }

    // Kinds of messages that were posted since the last look, and that are in the queue.
    DWORD Unseen() const {
        const std::lock_guard lock(m_mutex);
        return m_unseen;
    }
    DWORD Present() const {
        const std::lock_guard lock(m_mutex);
        return m_messages.empty() && !m_quits ? 0 : kPostBits;
    }
    const posix::FutexWord& Changes() const { return m_changes; }

private:
    const DWORD m_thread;
    mutable std::mutex m_mutex;
    std::deque<MSG> m_messages;
    DWORD m_unseen = 0;
    bool m_quits = false;
    int m_exitCode = 0;
    posix::FutexWord m_changes{0};
};

struct WindowClass {
    std::wstring name;
    WNDPROC procedure;
    std::size_t windows = 0;
    ATOM atom = 0;
};

struct Receiver {
    WindowClass* windowClass;
    WNDPROC procedure;
    std::shared_ptr<MessageQueue> queue;
};

// All queues, classes and receivers of the process.
struct Registry {
    std::mutex mutex;
    std::map<DWORD, std::shared_ptr<MessageQueue>> queues;
    std::map<std::wstring, WindowClass> classes;
    std::map<HWND, Receiver> receivers;
    std::uintptr_t lastWindow = 0x10000;
    ATOM lastAtom = 0xC000;
};

// Never destroyed: threads can end after static objects.
Registry& Messages() {
    static auto* const registry = new Registry;
    return *registry;
}

// The queue of a thread. It ends with the thread, as do the thread's receivers.
class OwnQueue {
public:
    OwnQueue() : m_queue(std::make_shared<MessageQueue>(GetCurrentThreadId())) {
        const std::lock_guard lock(Messages().mutex);
        Messages().queues[m_queue->Thread()] = m_queue;
    }
    OwnQueue(const OwnQueue&) = delete;
    OwnQueue& operator=(const OwnQueue&) = delete;
    ~OwnQueue() {
        const std::lock_guard lock(Messages().mutex);
        Messages().queues.erase(m_queue->Thread());
        std::erase_if(Messages().receivers, [this](const auto& entry) {
            const bool ends = entry.second.queue == m_queue;
            entry.second.windowClass->windows -= ends ? 1 : 0;
            return ends;
        });
    }
    MessageQueue& Queue() const { return *m_queue; }
    const std::shared_ptr<MessageQueue>& Share() const { return m_queue; }

    static OwnQueue& Mine() {
        thread_local OwnQueue queue;
        return queue;
    }

private:
    std::shared_ptr<MessageQueue> m_queue;
};

// Returns the procedure of a receiver of the calling thread, or null and the last error.
WNDPROC FindProcedure(HWND window) {
    const std::lock_guard lock(Messages().mutex);
    const auto found = Messages().receivers.find(window);
    if (found == Messages().receivers.end()) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    if (found->second.queue->Thread() != GetCurrentThreadId()) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return found->second.procedure;
}

template <typename Result>
Result Fail(DWORD error, Result result) {
    SetLastError(error);
    return result;
}

// The messages of a thread as input of a wait.
class MessageInput final : public posix::InputSource {
public:
    MessageInput(const MessageQueue& queue, DWORD wakeMask, bool old)
        : m_queue(queue), m_wakeMask(wakeMask), m_old(old) {}
    const posix::FutexWord& Word() const override { return m_queue.Changes(); }
    bool HasArrived() const override {
        return ((m_queue.Unseen() | (m_old ? m_queue.Present() : 0)) & m_wakeMask) != 0;
    }

private:
    const MessageQueue& m_queue;
    DWORD m_wakeMask;
    bool m_old;
};

} // namespace

ATOM RegisterClassExW(const WNDCLASSEXW* windowClass) {
    if (windowClass == nullptr || windowClass->cbSize != sizeof(WNDCLASSEXW) ||
        windowClass->lpfnWndProc == nullptr || windowClass->lpszClassName == nullptr ||
        *windowClass->lpszClassName == L'\0') {
        return Fail(ERROR_INVALID_PARAMETER, ATOM{0});
    }
    Registry& registry = Messages();
    const std::lock_guard lock(registry.mutex);
    const std::wstring name = windowClass->lpszClassName;
    const auto [entry, added] =
        registry.classes.try_emplace(name, WindowClass{name, windowClass->lpfnWndProc});
    if (!added) {
        return Fail(ERROR_CLASS_ALREADY_EXISTS, ATOM{0});
    }
    entry->second.atom = ++registry.lastAtom;
    return entry->second.atom;
}

BOOL UnregisterClassW(LPCWSTR className, HINSTANCE /*instance*/) {
    Registry& registry = Messages();
    const std::lock_guard lock(registry.mutex);
    const auto found = className == nullptr ? registry.classes.end() : registry.classes.find(className);
    if (found == registry.classes.end()) {
        return Fail(ERROR_CLASS_DOES_NOT_EXIST, FALSE);
    }
    if (found->second.windows != 0) {
        return Fail(ERROR_CLASS_HAS_WINDOWS, FALSE);
    }
    registry.classes.erase(found);
    return TRUE;
}

HWND CreateWindowExW(DWORD /*extendedStyle*/, LPCWSTR className, LPCWSTR /*title*/, DWORD /*style*/,
                     int /*x*/, int /*y*/, int /*width*/, int /*height*/, HWND parent, HMENU /*menu*/,
                     HINSTANCE /*instance*/, LPVOID /*parameter*/) {
    if (parent != HWND_MESSAGE) {
        return Fail<HWND>(ERROR_NOT_SUPPORTED, nullptr);
    }
    OwnQueue& own = OwnQueue::Mine();
    Registry& registry = Messages();
    HWND window = nullptr;
    WNDPROC procedure = nullptr;
    {
        const std::lock_guard lock(registry.mutex);
        const auto found = className == nullptr ? registry.classes.end() : registry.classes.find(className);
        if (found == registry.classes.end()) {
            return Fail<HWND>(ERROR_CANNOT_FIND_WND_CLASS, nullptr);
        }
        registry.lastWindow += 2;
        window = reinterpret_cast<HWND>(registry.lastWindow);
        procedure = found->second.procedure;
        registry.receivers.emplace(window, Receiver{&found->second, procedure, own.Share()});
        ++found->second.windows;
    }
    if (procedure(window, WM_NCCREATE, 0, 0) == FALSE || procedure(window, WM_CREATE, 0, 0) == -1) {
        DestroyWindow(window);
        return nullptr;
    }
    return window;
}

BOOL DestroyWindow(HWND window) {
    const WNDPROC procedure = FindProcedure(window);
    if (procedure == nullptr) {
        return FALSE;
    }
    procedure(window, WM_DESTROY, 0, 0);
    procedure(window, WM_NCDESTROY, 0, 0);
    Registry& registry = Messages();
    {
        const std::lock_guard lock(registry.mutex);
        const auto found = registry.receivers.find(window);
        if (found == registry.receivers.end()) {
            return TRUE; // the procedure has destroyed it
        }
        --found->second.windowClass->windows;
        registry.receivers.erase(found);
    }
    OwnQueue::Mine().Queue().DropMessagesOf(window);
    return TRUE;
}

BOOL IsWindow(HWND window) {
    Registry& registry = Messages();
    const std::lock_guard lock(registry.mutex);
    return registry.receivers.count(window) != 0 ? TRUE : FALSE;
}

LRESULT DefWindowProcW(HWND /*window*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
    return message == WM_NCCREATE ? TRUE : 0;
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (window == nullptr) {
        return PostThreadMessageW(OwnQueue::Mine().Queue().Thread(), message, wParam, lParam);
    }
    Registry& registry = Messages();
    // Posted under the lock: no message may follow the end of the receiver.
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.receivers.find(window);
    if (found == registry.receivers.end()) {
        return Fail(ERROR_INVALID_WINDOW_HANDLE, FALSE);
    }
    return found->second.queue->Post(window, message, wParam, lParam) ? TRUE
                                                                      : Fail(ERROR_NOT_ENOUGH_QUOTA, FALSE);
}

BOOL PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam) {
    std::shared_ptr<MessageQueue> queue;
    {
        Registry& registry = Messages();
        const std::lock_guard lock(registry.mutex);
        const auto found = registry.queues.find(threadId);
        if (found == registry.queues.end()) {
            return Fail(ERROR_INVALID_THREAD_ID, FALSE);
        }
        queue = found->second;
    }
    return queue->Post(nullptr, message, wParam, lParam) ? TRUE : Fail(ERROR_NOT_ENOUGH_QUOTA, FALSE);
}

void PostQuitMessage(int exitCode) {
    OwnQueue::Mine().Queue().PostQuit(exitCode);
}

BOOL PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT remove) {
    MessageQueue& queue = OwnQueue::Mine().Queue();
    if ((remove & ~(PM_REMOVE | PM_NOYIELD)) != 0) {
        return Fail(ERROR_INVALID_FLAGS, FALSE);
    }
    const auto threadOnly = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1));
    if (window != nullptr && window != threadOnly && IsWindow(window) == FALSE) {
        return Fail(ERROR_INVALID_WINDOW_HANDLE, FALSE);
    }
    const bool anyMessage = first == 0 && last == 0;
    const auto passes = [&](const MSG& candidate) {
        const HWND wanted = window == threadOnly ? nullptr : window;
        return (window == nullptr || candidate.hwnd == wanted) &&
               (anyMessage || (candidate.message >= first && candidate.message <= last));
    };
    return queue.Take(passes, window == nullptr && anyMessage, (remove & PM_REMOVE) != 0, message) ? TRUE
                                                                                                   : FALSE;
}

LRESULT DispatchMessageW(const MSG* message) {
    if (message->hwnd == nullptr) {
        return 0;
    }
    const WNDPROC procedure = FindProcedure(message->hwnd);
    return procedure == nullptr
               ? 0
               : procedure(message->hwnd, message->message, message->wParam, message->lParam);
}

DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll, DWORD timeoutMs,
                                DWORD wakeMask) {
    return MsgWaitForMultipleObjectsEx(count, handles, timeoutMs, wakeMask,
                                       waitAll != FALSE ? MWMO_WAITALL : 0);
}

DWORD MsgWaitForMultipleObjectsEx(DWORD count, const HANDLE* handles, DWORD timeoutMs, DWORD wakeMask,
                                  DWORD flags) {
    if (count > MAXIMUM_WAIT_OBJECTS - 1 || (count != 0 && handles == nullptr)) {
        return Fail(ERROR_INVALID_PARAMETER, WAIT_FAILED);
    }
    if ((flags & ~(MWMO_WAITALL | MWMO_INPUTAVAILABLE)) != 0) {
        return Fail((flags & MWMO_ALERTABLE) != 0 ? ERROR_NOT_SUPPORTED : ERROR_INVALID_PARAMETER,
                    WAIT_FAILED);
    }
    const MessageInput input(OwnQueue::Mine().Queue(), wakeMask, (flags & MWMO_INPUTAVAILABLE) != 0);
    return posix::WaitForHandles(handles, count, (flags & MWMO_WAITALL) != 0, timeoutMs, &input);
}

} // namespace krtpal
