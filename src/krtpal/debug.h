// Text for a developer's debugger.
//
//     OutputDebugStringW(L"cannot open the file\n");
//
// On Windows the text goes to the attached debugger. On Linux the environment variable KRTBSS_DEBUG_OUTPUT
// selects the destination; it is read at each call:
//
//     not set or empty    the text is dropped
//     stderr              the text is written to standard error
//     anything else       the text is appended to the file of that name, created with mode 0644
//
// The text is written as UTF-8. No line end is added. Write failures are ignored. The last error is
// unchanged.
//
// Threads: may be called from any thread, also from static destructors. The text of one call is not
// interleaved with that of another call in the same process.

#ifndef KRTPAL_DEBUG_H
#define KRTPAL_DEBUG_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Writes wide text. Null is ignored.
KRTPAL_API void WINAPI OutputDebugStringW(LPCWSTR text);
/// Writes narrow text, unchanged: UTF-8 on Linux, the current code page on Windows. Null is ignored.
KRTPAL_API void WINAPI OutputDebugStringA(LPCSTR text);

} // namespace krtpal

#define KRTPAL_NAMES using krtpal::OutputDebugStringW, krtpal::OutputDebugStringA
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
