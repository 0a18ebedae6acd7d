// The system's texts of error numbers.
//
//     throw ... L"cannot convert the time: " + krtpal::SystemText(error) + L" (" + std::to_wstring(error) +
//     L")"
//
// Threads: may be called from any thread.

#ifndef KRTPAL_COMMON_ERROR_H
#define KRTPAL_COMMON_ERROR_H

#include "krtpal/error.h"
#include "krtpal/export.h"

#include <string>

namespace krtpal {

/// The system's text of an error number without line ends or blanks behind it; "Unknown error" if there is
/// none. Leaves the last error as it is.
KRTPAL_API std::wstring SystemText(DWORD error);

} // namespace krtpal

#endif
