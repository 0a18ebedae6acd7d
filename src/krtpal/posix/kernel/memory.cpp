#include "krtpal/memory.h"

#include "krtpal/error.h"

#include <cstdlib>

namespace krtpal {

namespace {

char g_heap;

} // namespace

HLOCAL LocalAlloc(UINT flags, SIZE_T bytes) {
    if ((flags & ~LMEM_ZEROINIT) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    // A block of 0 bytes has an address of its own too.
    const SIZE_T size = bytes == 0 ? 1 : bytes;
    void* const memory = (flags & LMEM_ZEROINIT) != 0 ? std::calloc(1, size) : std::malloc(size);
    if (memory == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    return memory;
}

HLOCAL LocalFree(HLOCAL memory) {
    std::free(memory);
    return nullptr;
}

HANDLE GetProcessHeap() {
    return &g_heap;
}

LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    return heap == &g_heap && flags == 0 ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
}

BOOL HeapFree(HANDLE heap, DWORD flags, LPVOID memory) {
    if (heap != &g_heap || flags != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::free(memory);
    return TRUE;
}

} // namespace krtpal
