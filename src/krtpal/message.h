// Message queues of threads, receivers of messages, and waits that messages end.
//
//     WNDCLASSEXW kind{};
//     kind.cbSize = sizeof(kind);
//     kind.lpfnWndProc = &Receive;                  // LRESULT CALLBACK Receive(HWND, UINT, WPARAM, LPARAM)
//     kind.lpszClassName = L"Receiver";
//     kind.hInstance = bss::GetBSSHandle();
//     RegisterClassExW(&kind);
//     HWND receiver = CreateWindowExW(0, L"Receiver", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
//                                     kind.hInstance, nullptr);
//     PostMessageW(receiver, WM_APP, 1, 2);         // from any thread of the process
//
//     MSG message;                                  // in the receiver's own thread:
//     while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
//         DispatchMessageW(&message);               // calls Receive
//     }
//
// A thread's queue is created by the thread's first call of this header and ends with the thread. It holds at
// most 10,000 messages.
//
// On Linux a receiver is not a window: only message-only receivers (parent HWND_MESSAGE) exist, and messages
// stay inside the process. There is no input, no timer, no sent message and no drawing.
//
// Threads: any thread may post to any receiver or thread of the process. A receiver belongs to the thread
// that created it; only that thread dispatches to it and destroys it. A receiver ends with its thread,
// without messages to its procedure.

#ifndef KRTPAL_MESSAGE_H
#define KRTPAL_MESSAGE_H

#include "krtpal/export.h"
#include "krtpal/sync.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Handles of receivers and of parts of windows, which are accepted and ignored.
struct HWND__;
using HWND = HWND__*;
struct HMENU__;
using HMENU = HMENU__*;
struct HICON__;
using HICON = HICON__*;
using HCURSOR = HICON__*;
struct HBRUSH__;
using HBRUSH = HBRUSH__*;
/// Number of a registered class, not 0.
using ATOM = WORD;
/// Parameters and result of a message, with the width of a pointer.
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
/// Receives the messages of a class.
using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

/// A position on the screen.
struct POINT {
    LONG x;
    LONG y;
};

/// A message of a queue.
struct MSG {
    HWND hwnd; ///< null for a message of the thread
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time; ///< lower 32 bits of GetTickCount64 when the message was posted
    POINT pt;   ///< always 0
};

/// A class of receivers. Only cbSize, lpfnWndProc and lpszClassName are used; the other members are ignored.
struct WNDCLASSEXW {
    UINT cbSize; ///< sizeof(WNDCLASSEXW)
    UINT style;
    WNDPROC lpfnWndProc; ///< not null
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName; ///< not empty; case-sensitive
    HICON hIconSm;
};

/// Messages. Those below WM_USER belong to the system, those from WM_APP up to the application.
inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;

/// Flags of PeekMessageW. PM_NOYIELD has no effect.
inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;
inline constexpr UINT PM_NOYIELD = 2;

/// Kinds of messages in a wake mask. Posted messages and WM_QUIT count as QS_POSTMESSAGE and
/// QS_ALLPOSTMESSAGE; no other kind occurs on Linux.
inline constexpr DWORD QS_KEY = 0x0001;
inline constexpr DWORD QS_MOUSEMOVE = 0x0002;
inline constexpr DWORD QS_MOUSEBUTTON = 0x0004;
inline constexpr DWORD QS_POSTMESSAGE = 0x0008;
inline constexpr DWORD QS_TIMER = 0x0010;
inline constexpr DWORD QS_PAINT = 0x0020;
inline constexpr DWORD QS_SENDMESSAGE = 0x0040;
inline constexpr DWORD QS_HOTKEY = 0x0080;
inline constexpr DWORD QS_ALLPOSTMESSAGE = 0x0100;
inline constexpr DWORD QS_RAWINPUT = 0x0400;
inline constexpr DWORD QS_ALLEVENTS = 0x04BF;
inline constexpr DWORD QS_ALLINPUT = 0x04FF;

/// Flags of MsgWaitForMultipleObjectsEx. MWMO_ALERTABLE fails with ERROR_NOT_SUPPORTED.
inline constexpr DWORD MWMO_WAITALL = 0x0001;
inline constexpr DWORD MWMO_ALERTABLE = 0x0002;
/// Messages that PeekMessageW has seen and left in the queue end the wait, too.
inline constexpr DWORD MWMO_INPUTAVAILABLE = 0x0004;

/// The parent of all receivers.
inline const HWND HWND_MESSAGE = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-3));

/// Returns the number of a new class of receivers, which lasts until UnregisterClassW or the end of the
/// process.
/// Fails with 0 and ERROR_CLASS_ALREADY_EXISTS if the name is taken, ERROR_INVALID_PARAMETER for null,
/// another cbSize, a null procedure or an empty name. Unlike Windows, CreateWindowExW does not take the
/// number in place of the name.
KRTPAL_API ATOM WINAPI RegisterClassExW(const WNDCLASSEXW* windowClass);
/// Returns TRUE and removes a class. The instance is ignored.
/// Fails with ERROR_CLASS_DOES_NOT_EXIST, or ERROR_CLASS_HAS_WINDOWS while receivers of the class exist.
KRTPAL_API BOOL WINAPI UnregisterClassW(LPCWSTR className, HINSTANCE instance);
/// Returns a new receiver of the calling thread, which the thread destroys by DestroyWindow. Its procedure
/// gets WM_NCCREATE and WM_CREATE, both with parameters 0; the result FALSE of the former or -1 of the latter
/// destroys the receiver, and null is returned.
/// REQUIRES: the parent is HWND_MESSAGE. Styles, title, position, menu, instance and parameter are ignored.
/// Fails with null and ERROR_CANNOT_FIND_WND_CLASS, or ERROR_NOT_SUPPORTED for another parent. Unlike
/// Windows, lParam of the two messages is null.
KRTPAL_API HWND WINAPI CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style,
                                       int x, int y, int width, int height, HWND parent, HMENU menu,
                                       HINSTANCE instance, LPVOID parameter);
/// Returns TRUE and ends a receiver of the calling thread. Its procedure gets WM_DESTROY and WM_NCDESTROY;
/// its messages in the queue are dropped.
/// Fails with ERROR_INVALID_WINDOW_HANDLE, or ERROR_ACCESS_DENIED for a receiver of another thread.
KRTPAL_API BOOL WINAPI DestroyWindow(HWND window);
/// Returns whether the receiver exists. The last error is unchanged.
KRTPAL_API BOOL WINAPI IsWindow(HWND window);
/// Default of a procedure. Returns TRUE for WM_NCCREATE and 0 for all other messages.
KRTPAL_API LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Returns TRUE and appends a message to the queue of the receiver's thread, or of the calling thread if
/// `window` is null. Does not wait.
/// Fails with ERROR_INVALID_WINDOW_HANDLE, or ERROR_NOT_ENOUGH_QUOTA if the queue is full.
KRTPAL_API BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// Returns TRUE and appends a message without receiver to the queue of a thread.
/// Fails with ERROR_INVALID_THREAD_ID if the thread has no queue or belongs to another process,
/// ERROR_NOT_ENOUGH_QUOTA if the queue is full.
KRTPAL_API BOOL WINAPI PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam);
/// Requests WM_QUIT with this code in wParam for the calling thread. It is returned when PeekMessageW finds
/// no other message that passes its filter.
KRTPAL_API void WINAPI PostQuitMessage(int exitCode);
/// Returns TRUE and stores the first message that passes the filter, in the order of posting; with PM_REMOVE
/// it leaves the queue. Returns FALSE if there is none. Does not wait.
/// The filter is a receiver (null: every message of the thread; -1: messages without receiver) and a range of
/// numbers (0 to 0: all). WM_QUIT of PostQuitMessage passes every filter.
/// Fails with ERROR_INVALID_FLAGS for other flags, ERROR_INVALID_WINDOW_HANDLE if the receiver does not
/// exist.
KRTPAL_API BOOL WINAPI PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT remove);
/// Calls the procedure of the message's receiver and returns its result, 0 for a message without receiver.
/// Fails with 0 and ERROR_INVALID_WINDOW_HANDLE if the receiver has ended, ERROR_ACCESS_DENIED if it belongs
/// to another thread.
KRTPAL_API LRESULT WINAPI DispatchMessageW(const MSG* message);

/// Waits for 0 to 63 objects as WaitForMultipleObjects does, and for messages. Returns WAIT_OBJECT_0 +
/// `count` if messages of the kinds in `wakeMask` arrived after the last PeekMessageW that could see them. In
/// a wait for all, messages have to arrive as well.
/// Fails with WAIT_FAILED and ERROR_INVALID_PARAMETER for more objects or a null array with a count,
/// ERROR_INVALID_HANDLE for another handle than that of an event, mutex or semaphore.
KRTPAL_API DWORD WINAPI MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll,
                                                  DWORD timeoutMs, DWORD wakeMask);
/// As MsgWaitForMultipleObjects, with MWMO_WAITALL and MWMO_INPUTAVAILABLE as flags.
/// Fails with ERROR_NOT_SUPPORTED for MWMO_ALERTABLE, ERROR_INVALID_PARAMETER for unknown flags.
KRTPAL_API DWORD WINAPI MsgWaitForMultipleObjectsEx(DWORD count, const HANDLE* handles, DWORD timeoutMs,
                                                    DWORD wakeMask, DWORD flags);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::HWND, krtpal::HMENU, krtpal::HICON, krtpal::HCURSOR, krtpal::HBRUSH, krtpal::ATOM,         \
        krtpal::WPARAM, krtpal::LPARAM, krtpal::LRESULT, krtpal::WNDPROC, krtpal::POINT, krtpal::MSG,        \
        krtpal::WNDCLASSEXW, krtpal::WM_NULL, krtpal::WM_CREATE, krtpal::WM_DESTROY, krtpal::WM_QUIT,        \
        krtpal::WM_NCCREATE, krtpal::WM_NCDESTROY, krtpal::WM_USER, krtpal::WM_APP, krtpal::PM_NOREMOVE,     \
        krtpal::PM_REMOVE, krtpal::PM_NOYIELD, krtpal::QS_KEY, krtpal::QS_MOUSEMOVE, krtpal::QS_MOUSEBUTTON, \
        krtpal::QS_POSTMESSAGE, krtpal::QS_TIMER, krtpal::QS_PAINT, krtpal::QS_SENDMESSAGE,                  \
        krtpal::QS_HOTKEY, krtpal::QS_ALLPOSTMESSAGE, krtpal::QS_RAWINPUT, krtpal::QS_ALLEVENTS,             \
        krtpal::QS_ALLINPUT, krtpal::MWMO_WAITALL, krtpal::MWMO_ALERTABLE, krtpal::MWMO_INPUTAVAILABLE,      \
        krtpal::HWND_MESSAGE, krtpal::RegisterClassExW, krtpal::UnregisterClassW, krtpal::CreateWindowExW,   \
        krtpal::DestroyWindow, krtpal::IsWindow, krtpal::DefWindowProcW, krtpal::PostMessageW,               \
        krtpal::PostThreadMessageW, krtpal::PostQuitMessage, krtpal::PeekMessageW, krtpal::DispatchMessageW, \
        krtpal::MsgWaitForMultipleObjects, krtpal::MsgWaitForMultipleObjectsEx
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
