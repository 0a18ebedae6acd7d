// The standard streams and the console.
//
// Text goes to a stream by krtpal/common/console.h, to a console and to a file alike.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_CONSOLE_H
#define KRTPAL_CONSOLE_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

inline constexpr DWORD STD_INPUT_HANDLE = static_cast<DWORD>(-10);
inline constexpr DWORD STD_OUTPUT_HANDLE = static_cast<DWORD>(-11);
inline constexpr DWORD STD_ERROR_HANDLE = static_cast<DWORD>(-12);

inline constexpr DWORD ENABLE_PROCESSED_INPUT = 0x0001;
inline constexpr DWORD ENABLE_LINE_INPUT = 0x0002;
inline constexpr DWORD ENABLE_ECHO_INPUT = 0x0004;
inline constexpr DWORD ENABLE_PROCESSED_OUTPUT = 0x0001;
inline constexpr DWORD ENABLE_WRAP_AT_EOL_OUTPUT = 0x0002;

/// Declared for the parameter of WriteFile, which must be null.
struct OVERLAPPED;

/// The stream's handle; it is not owned. Null if the stream is closed, INVALID_HANDLE_VALUE for another
/// number.
KRTPAL_API HANDLE WINAPI GetStdHandle(DWORD stream);
/// Writes all bytes, however often the system interrupts or shortens a write. `written` holds what went out,
/// on failure too.
KRTPAL_API BOOL WINAPI WriteFile(HANDLE stream, LPCVOID data, DWORD bytes, DWORD* written,
                                 OVERLAPPED* overlapped);
/// Fails with ERROR_INVALID_HANDLE if the stream is no terminal.
KRTPAL_API BOOL WINAPI GetConsoleMode(HANDLE stream, DWORD* mode);
/// Counts are of wchar_t. Fails with ERROR_INVALID_HANDLE if the stream is no terminal.
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
