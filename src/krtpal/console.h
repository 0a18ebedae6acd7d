// The standard streams and the console.
//
//     DWORD mode = 0;
//     const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
//     const bool isTerminal = GetConsoleMode(output, &mode) != FALSE;
//
// To write text, use WriteConsoleText of krtpal/common/console.h: it serves consoles, pipes and files alike.
//
// On Linux a console is a terminal. A write to a pipe whose reader has closed it raises SIGPIPE as usual; if
// the process ignores that signal, the write fails with ERROR_BROKEN_PIPE.
//
// Threads: all calls may be used from any thread. Concurrent writes to one stream are not serialised.

#ifndef KRTPAL_CONSOLE_H
#define KRTPAL_CONSOLE_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Streams of GetStdHandle.
inline constexpr DWORD STD_INPUT_HANDLE = static_cast<DWORD>(-10);
inline constexpr DWORD STD_OUTPUT_HANDLE = static_cast<DWORD>(-11);
inline constexpr DWORD STD_ERROR_HANDLE = static_cast<DWORD>(-12);

/// Modes of an input console: signals from keys (ISIG), whole lines (ICANON), echo (ECHO).
inline constexpr DWORD ENABLE_PROCESSED_INPUT = 0x0001;
inline constexpr DWORD ENABLE_LINE_INPUT = 0x0002;
inline constexpr DWORD ENABLE_ECHO_INPUT = 0x0004;
/// Modes of an output console. On Linux both are always set.
inline constexpr DWORD ENABLE_PROCESSED_OUTPUT = 0x0001;
inline constexpr DWORD ENABLE_WRAP_AT_EOL_OUTPUT = 0x0002;

/// Parameter type of WriteFile. Asynchronous writes are not supported, so the type has no definition.
struct OVERLAPPED;

/// Returns the handle of a standard stream. It is not owned, is valid until the process ends and must not be
/// closed. Returns null, with the last error unchanged, if the stream is closed.
/// Fails with INVALID_HANDLE_VALUE and ERROR_INVALID_HANDLE for another number.
KRTPAL_API HANDLE WINAPI GetStdHandle(DWORD stream);
/// Returns TRUE after all bytes have been written: it continues after interruptions and short writes, and
/// waits while a non-blocking stream is full. `*written` is the number of bytes written, also on failure.
/// REQUIRES: a handle of GetStdHandle, a `written` that is not null, `overlapped` null.
/// Fails with ERROR_INVALID_HANDLE for another handle, ERROR_NOT_SUPPORTED if `overlapped` is not null,
/// ERROR_INVALID_PARAMETER if `written` is null or `data` is null with bytes to write, otherwise with the
/// code of errno (ERROR_BROKEN_PIPE, ERROR_DISK_FULL, ERROR_IO_DEVICE).
/// Unlike Windows, it writes to the standard streams only.
KRTPAL_API BOOL WINAPI WriteFile(HANDLE stream, LPCVOID data, DWORD bytes, DWORD* written,
                                 OVERLAPPED* overlapped);
/// Returns TRUE and sets `*mode` if the stream is a terminal. Input has the terminal's own settings, output
/// has both output modes.
/// Fails with ERROR_INVALID_HANDLE if the stream is not a terminal, ERROR_INVALID_PARAMETER if `mode` is
/// null.
KRTPAL_API BOOL WINAPI GetConsoleMode(HANDLE stream, DWORD* mode);
/// Returns TRUE after all of the text has been written, as UTF-8, to a terminal. `length` and `*written`
/// count wchar_t; `written` may be null and is 0 on failure, even if part of the text was written.
/// REQUIRES: `reserved` is null.
/// Fails with ERROR_INVALID_HANDLE if the stream is not a terminal, ERROR_INVALID_PARAMETER if `reserved` is
/// not null or `text` is null with characters to write, otherwise with the code of errno.
KRTPAL_API BOOL WINAPI WriteConsoleW(HANDLE stream, const void* text, DWORD length, DWORD* written,
                                     LPVOID reserved);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::STD_INPUT_HANDLE, krtpal::STD_OUTPUT_HANDLE, krtpal::STD_ERROR_HANDLE,                     \
        krtpal::ENABLE_PROCESSED_INPUT, krtpal::ENABLE_LINE_INPUT, krtpal::ENABLE_ECHO_INPUT,                \
        krtpal::ENABLE_PROCESSED_OUTPUT, krtpal::ENABLE_WRAP_AT_EOL_OUTPUT, krtpal::GetStdHandle,            \
        krtpal::WriteFile, krtpal::GetConsoleMode, krtpal::WriteConsoleW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
