// Text to the standard streams.
//
//     krtpal::WriteConsoleText(STD_ERROR_HANDLE, L"r\u00FCckw\u00E4rts\n");
//
// Threads: one call's text is written whole to a pipe or file only as far as the system does so; nothing is
// locked.

#ifndef KRTPAL_CONSOLE_H
#define KRTPAL_CONSOLE_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#include <string_view>

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

using namespace krtpal; // NOLINT(google-build-using-namespace)
#endif

namespace krtpal {

/// Writes text to a standard stream: by WriteConsoleW to a console, otherwise as UTF-8. No line end is added
/// or changed. `stream` is STD_OUTPUT_HANDLE or STD_ERROR_HANDLE. False and the last error if not all of it
/// could be written.
KRTPAL_API bool WriteConsoleText(DWORD stream, std::wstring_view text);

} // namespace krtpal

#endif
