// Whole writes to a file descriptor.

#ifndef KRTPAL_POSIX_IO_WRITE_H
#define KRTPAL_POSIX_IO_WRITE_H

#include <cstddef>

namespace krtpal::posix {

/// Writes all bytes: goes on after interruptions and short writes, and waits where a non-blocking descriptor
/// is full. The result is 0 or an errno value; `done` counts what went out.
int WriteAll(int descriptor, const void* data, std::size_t bytes, std::size_t* done);

} // namespace krtpal::posix

#endif
