// Complete writes to a file descriptor.

#ifndef KRTPAL_POSIX_IO_WRITE_H
#define KRTPAL_POSIX_IO_WRITE_H

#include <cstddef>

namespace krtpal::posix {

/// Writes all bytes: continues after interruptions and short writes, and waits while a non-blocking
/// descriptor is full. Returns 0 or an errno value. `*done` is the number of bytes written, also on failure.
int WriteAll(int descriptor, const void* data, std::size_t bytes, std::size_t* done);

} // namespace krtpal::posix

#endif
