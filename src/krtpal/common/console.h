// Text to the standard streams, and the buffer through which a log writes to one of them.
//
//     krtpal::WriteConsoleText(STD_ERROR_HANDLE, L"r\u00FCckw\u00E4rts\n");
//
// The functions are the same on both systems. They do not use the locale of the process, which in its
// default, "C", has no character outside ASCII.
//
// Threads: all calls may be used from any thread. Texts of concurrent calls can be interleaved: nothing is
// locked.

#ifndef KRTPAL_COMMON_CONSOLE_H
#define KRTPAL_COMMON_CONSOLE_H

#include "krtpal/console.h"
#include "krtpal/export.h"

#include <ostream>
#include <string_view>

namespace krtpal {

/// Returns true after all of the text has been written: by WriteConsoleW to a console, as UTF-8 to a pipe or
/// file. No line end is added or converted.
/// REQUIRES: `stream` is STD_OUTPUT_HANDLE or STD_ERROR_HANDLE.
/// Fails with false and ERROR_INVALID_PARAMETER for another stream, ERROR_INVALID_HANDLE if the stream is
/// closed, ERROR_WRITE_FAULT if the system writes nothing, otherwise with the code of WriteFile or
/// WriteConsoleW. Part of the text may then have been written.
KRTPAL_API bool WriteConsoleText(DWORD stream, std::wstring_view text);

/// Returns a buffer that writes to the same place as the stream. For a stream with one of the C++ library's
/// buffers on standard output or standard error it is a buffer of this library, which is never destroyed,
/// collects text until it is flushed, and writes it by WriteConsoleText. For every other stream it is the
/// stream's own buffer, which belongs to the stream.
/// The C++ library's buffers fail, for all later text too, at the first character that the locale of the
/// process can't express.
std::wstreambuf* ConsoleBufferFor(const std::wostream& stream);

} // namespace krtpal

#endif
