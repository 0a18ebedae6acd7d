// Text to the standard streams, and the buffer through which a log writes to one of them.
//
//     krtpal::WriteConsoleText(STD_ERROR_HANDLE, L"r\u00FCckw\u00E4rts\n");
//
// Threads: one call's text is written whole to a pipe or file only as far as the system does so; nothing is
// locked.

#ifndef KRTPAL_COMMON_CONSOLE_H
#define KRTPAL_COMMON_CONSOLE_H

#include "krtpal/console.h"
#include "krtpal/export.h"

#include <ostream>
#include <string_view>

namespace krtpal {

/// Writes text to a standard stream: by WriteConsoleW to a console, otherwise as UTF-8. No line end is added
/// or changed. `stream` is STD_OUTPUT_HANDLE or STD_ERROR_HANDLE. False and the last error if not all of it
/// could be written.
KRTPAL_API bool WriteConsoleText(DWORD stream, std::wstring_view text);

/// The stream's own buffer, unless that is one of the C++ library's buffers on standard output or standard
/// error: those stop for good at the first character that the process's locale has no form for ("C" has ASCII
/// alone). Instead of them a buffer of ours, which lives for ever, writes the text whole to the same place.
std::wstreambuf* ConsoleBufferFor(const std::wostream& stream);

} // namespace krtpal

#endif
