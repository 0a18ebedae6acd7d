// Text for a developer's debugger.
//
//     OutputDebugStringW(L"cannot open the file\n");
//
// On Linux the text goes nowhere unless the environment variable KRTBSS_DEBUG_OUTPUT says where: "stderr", or
// the name of a file, to which it is appended as UTF-8. No line end is added. The last error stays as it is.
//
// Threads: may be called from any thread; the texts of two calls do not mix.

#ifndef KRTPAL_DEBUG_H
#define KRTPAL_DEBUG_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Null is ignored.
KRTPAL_API void WINAPI OutputDebugStringW(LPCWSTR text);
/// Narrow text is UTF-8.
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
