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
// A thread's queue comes into being with its first call of these. On Linux a receiver is not a window:
// message-only receivers (parent HWND_MESSAGE) are all there is, and messages stay inside the process.
//
// Threads: a receiver belongs to the thread that made it, which alone can dispatch to it and destroy it.

#ifndef KRTPAL_MESSAGE_H
#define KRTPAL_MESSAGE_H

#include "krtpal/export.h"
#include "krtpal/sync.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

struct HWND__;
using HWND = HWND__*;
struct HMENU__;
using HMENU = HMENU__*;
struct HICON__;
using HICON = HICON__*;
using HCURSOR = HICON__*;
struct HBRUSH__;
using HBRUSH = HBRUSH__*;
using ATOM = WORD;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

struct POINT {
    LONG x;
    LONG y;
};

struct MSG {
    HWND hwnd; ///< null for a message of the thread
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time; ///< milliseconds since the start of the system, when posted
    POINT pt;   ///< always 0
};

struct WNDCLASSEXW {
    UINT cbSize;
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
    HICON hIconSm;
};

inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;

inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;
inline constexpr UINT PM_NOYIELD = 2;

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

inline constexpr DWORD MWMO_WAITALL = 0x0001;
inline constexpr DWORD MWMO_ALERTABLE = 0x0002;
/// The wait is over, too, while messages are there that were seen before.
inline constexpr DWORD MWMO_INPUTAVAILABLE = 0x0004;

inline const HWND HWND_MESSAGE = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-3));

/// Needs a name and a procedure; 0 and ERROR_CLASS_ALREADY_EXISTS if the name is taken.
KRTPAL_API ATOM WINAPI RegisterClassExW(const WNDCLASSEXW* windowClass);
/// FALSE and ERROR_CLASS_HAS_WINDOWS while receivers of it exist, ERROR_CLASS_DOES_NOT_EXIST.
KRTPAL_API BOOL WINAPI UnregisterClassW(LPCWSTR className, HINSTANCE instance);
/// A receiver of the calling thread; the procedure gets WM_NCCREATE and WM_CREATE, with a null lParam. The
/// parent must be HWND_MESSAGE; title, style, place and menu count for nothing.
KRTPAL_API HWND WINAPI CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style,
                                       int x, int y, int width, int height, HWND parent, HMENU menu,
                                       HINSTANCE instance, LPVOID parameter);
/// FALSE and ERROR_ACCESS_DENIED for a receiver of another thread. The procedure gets WM_DESTROY and
/// WM_NCDESTROY; messages that wait for the receiver are dropped.
KRTPAL_API BOOL WINAPI DestroyWindow(HWND window);
KRTPAL_API BOOL WINAPI IsWindow(HWND window);
/// TRUE for WM_NCCREATE, 0 for all else.
KRTPAL_API LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// To the queue of the receiver's thread, or of the calling one for a null receiver. FALSE and
/// ERROR_INVALID_WINDOW_HANDLE, or ERROR_NOT_ENOUGH_QUOTA when 10,000 messages wait.
KRTPAL_API BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// FALSE and ERROR_INVALID_THREAD_ID for a thread without a queue.
KRTPAL_API BOOL WINAPI PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam);
/// WM_QUIT with this code, for the calling thread, when a look at its queue finds no other message.
KRTPAL_API void WINAPI PostQuitMessage(int exitCode);
/// The first message for the receiver (null: for any, and the thread's own; -1: the thread's own only) in the
/// range (0 to 0: any). WM_QUIT of PostQuitMessage passes every filter.
KRTPAL_API BOOL WINAPI PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT remove);
/// What the procedure answers; 0 for a message without receiver.
KRTPAL_API LRESULT WINAPI DispatchMessageW(const MSG* message);

/// As WaitForMultipleObjects on up to 63 objects (0 too), and `count` when messages of the kinds in
/// `wakeMask` arrived that no PeekMessageW has looked for since.
KRTPAL_API DWORD WINAPI MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll,
                                                  DWORD timeoutMs, DWORD wakeMask);
/// Flags: MWMO_WAITALL and MWMO_INPUTAVAILABLE.
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
