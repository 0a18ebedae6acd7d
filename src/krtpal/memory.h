// Local memory and memory of the process's heap.
//
//     wchar_t* text = nullptr;
//     FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | ..., reinterpret_cast<LPWSTR>(&text), 0, nullptr);
//     LocalFree(text);
//
// Memory of LocalAlloc is released by LocalFree, memory of HeapAlloc by HeapFree. On Linux both come from
// malloc.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_MEMORY_H
#define KRTPAL_MEMORY_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Memory of LocalAlloc: on Linux, and for LMEM_FIXED on Windows, its address.
using HLOCAL = void*;

/// Flags of LocalAlloc. Movable memory does not exist here.
inline constexpr UINT LMEM_FIXED = 0x0000;
inline constexpr UINT LMEM_ZEROINIT = 0x0040;
inline constexpr UINT LPTR = 0x0040;

/// Returns fixed memory, zeroed with LMEM_ZEROINIT, aligned for every type. The caller owns it and releases
/// it by LocalFree. A size of 0 returns an address too.
/// Fails with null and ERROR_INVALID_PARAMETER for a flag other than LMEM_ZEROINIT, ERROR_NOT_ENOUGH_MEMORY
/// if there is no memory.
KRTPAL_API HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T bytes);
/// Releases memory of LocalAlloc or of FormatMessageW. Returns null; null memory is ignored.
/// REQUIRES: the memory was not released before. Unlike Windows, an invalid address is not detected.
KRTPAL_API HLOCAL WINAPI LocalFree(HLOCAL memory);

/// Returns the handle of the process's heap, the only heap. The handle is not owned and must not be closed.
KRTPAL_API HANDLE WINAPI GetProcessHeap();
/// Returns uninitialised memory, which the caller owns and releases by HeapFree. A size of 0 returns an
/// address too.
/// REQUIRES: the handle of GetProcessHeap and no flags.
/// Fails with null for another heap, any flag, or if there is no memory; as on Windows, the last error is
/// unchanged.
KRTPAL_API LPVOID WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes);
/// Returns TRUE and releases memory of HeapAlloc. Null memory is ignored.
/// Fails with FALSE and ERROR_INVALID_PARAMETER for another heap or any flag; the memory is then unchanged.
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
