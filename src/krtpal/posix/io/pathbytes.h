// Paths as the system takes them.

#ifndef PLATFORM_POSIX_PATHBYTES_H
#define PLATFORM_POSIX_PATHBYTES_H

#include "platform/types.h"

#include <string>

namespace platform::posix {

/// The bytes of a path in UTF-8; empty for a path that has no such form.
std::string PathBytes(LPCWSTR path);

} // namespace platform::posix

#endif
