// Paths in the form of the system.

#ifndef KRTPAL_POSIX_IO_PATHBYTES_H
#define KRTPAL_POSIX_IO_PATHBYTES_H

#include "krtpal/types.h"

#include <string>

namespace krtpal::posix {

/// Returns the path in UTF-8, or an empty string if it has no such form.
std::string PathBytes(LPCWSTR path);

} // namespace krtpal::posix

#endif
