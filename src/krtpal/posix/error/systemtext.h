// Texts of the Win32 error numbers that this layer sets.

#ifndef KRTPAL_POSIX_ERROR_SYSTEMTEXT_H
#define KRTPAL_POSIX_ERROR_SYSTEMTEXT_H

#include "krtpal/types.h"

namespace krtpal::posix {

/// Returns the text without a line end, with inserts as %1, or null for a number without a text.
const wchar_t* FindSystemText(DWORD error);

} // namespace krtpal::posix

#endif
