// The texts of the Win32 error numbers that this layer sets.

#ifndef KRTPAL_POSIX_ERROR_SYSTEMTEXT_H
#define KRTPAL_POSIX_ERROR_SYSTEMTEXT_H

#include "krtpal/types.h"

namespace krtpal::posix {

/// Without a line end; inserts stand in it as %1. Null for a number without a text.
const wchar_t* FindSystemText(DWORD error);

} // namespace krtpal::posix

#endif
