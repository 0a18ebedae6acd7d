// The texts of the Win32 error numbers that this layer sets.

#ifndef PLATFORM_POSIX_SYSTEMTEXT_H
#define PLATFORM_POSIX_SYSTEMTEXT_H

#include "platform/types.h"

namespace platform::posix {

/// Without a line end; inserts stand in it as %1. Null for a number without a text.
const wchar_t* FindSystemText(DWORD error);

} // namespace platform::posix

#endif
