// ConsoleBufferFor: the buffer through which a log writes to a wide stream.

#ifndef KRTPAL_COMMON_CONSOLEBUFFER_H
#define KRTPAL_COMMON_CONSOLEBUFFER_H

#include <ostream>

namespace bss {

/// The stream's own buffer, unless that is one of the C++ library's buffers on standard output or standard
/// error: those stop for good at the first character that the process's locale has no form for ("C" has ASCII
/// alone). Instead of them a buffer of ours, which lives for ever, writes the text whole to the same place.
std::wstreambuf* ConsoleBufferFor(const std::wostream& stream);

} // namespace bss

#endif
