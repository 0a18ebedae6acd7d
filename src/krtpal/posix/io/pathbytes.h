// Paths as the system takes them.

#ifndef KRTPAL_POSIX_IO_PATHBYTES_H
#define KRTPAL_POSIX_IO_PATHBYTES_H

#include "krtpal/types.h"

#include <string>

namespace krtpal::posix {

/// The bytes of a path in UTF-8; empty for a path that has no such form.
std::string PathBytes(LPCWSTR path);

} // namespace krtpal::posix

#endif
