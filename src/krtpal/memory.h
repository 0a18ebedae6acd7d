// Memory of the process's heap and local memory.
//
//     wchar_t* text = nullptr;
//     FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | ..., reinterpret_cast<LPWSTR>(&text), 0, nullptr);
//     LocalFree(text);
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_MEMORY_H
#define KRTPAL_MEMORY_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Memory of LocalAlloc.
using HLOCAL = void*;

inline constexpr UINT LMEM_FIXED = 0x0000;
inline constexpr UINT LMEM_ZEROINIT = 0x0040;
inline constexpr UINT LPTR = 0x0040;

/// Fixed memory, zeroed with LMEM_ZEROINIT. Null and the last error if there is none or for another flag.
KRTPAL_API HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T bytes);
/// Null when the memory is freed; null memory is ignored.
KRTPAL_API HLOCAL WINAPI LocalFree(HLOCAL memory);

/// Returns the handle of the one heap of the process. It is not to be closed.
KRTPAL_API HANDLE WINAPI GetProcessHeap();
/// Returns memory to be freed by HeapFree. Null without memory or for any flag.
KRTPAL_API LPVOID WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes);
/// Returns FALSE and ERROR_INVALID_PARAMETER for another heap or any flag. Null memory is ignored.
KRTPAL_API BOOL WINAPI HeapFree(HANDLE heap, DWORD flags, LPVOID memory);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::HLOCAL, krtpal::LMEM_FIXED, krtpal::LMEM_ZEROINIT, krtpal::LPTR, krtpal::LocalAlloc,       \
        krtpal::LocalFree, krtpal::GetProcessHeap, krtpal::HeapAlloc, krtpal::HeapFree
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
