// The system's texts of error numbers.
//
//     throw ... L"cannot convert the time: " + krtpal::SystemText(error) + L" (" +
//         std::to_wstring(error) + L")"
//
// Threads: may be called from any thread.

#ifndef KRTPAL_COMMON_ERROR_H
#define KRTPAL_COMMON_ERROR_H

#include "krtpal/error.h"
#include "krtpal/export.h"

#include <string>

namespace krtpal {

/// Returns the system's text of an error number, without trailing line ends and blanks, or "Unknown error"
/// for a number without a text. Inserts of the text remain as %1. The last error is unchanged.
KRTPAL_API std::wstring SystemText(DWORD error);

} // namespace krtpal

#endif
