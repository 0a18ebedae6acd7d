#include "fit/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#ifdef _WIN32
#include <windows.h>

#include <stdexcept>
#endif

namespace {

std::atomic<long> allocations = 0;

} // namespace

#ifdef _WIN32

// A program can't replace the operator new of a DLL. But the DLL calls it through its import table, where
// every call can be led through here.
namespace {

void* countedNew(std::size_t size) {
    ++allocations;
    return ::operator new(size);
}

void leadNewThroughHere() {
    auto* base = reinterpret_cast<unsigned char*>(GetModuleHandleW(L"krtbssU.dll"));
    const char* const name = sizeof(void*) == 8 ? "_Znwy" : "_Znwj";
    if (base == nullptr) {
        throw std::runtime_error("krtbssU.dll is not loaded");
    }
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* module = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
    for (; module->Name != 0; ++module) {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + module->OriginalFirstThunk);
        auto* calls = reinterpret_cast<IMAGE_THUNK_DATA*>(base + module->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++calls) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                continue;
            }
            const auto* entry = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(entry->Name), name) == 0) {
                DWORD protection = 0;
                VirtualProtect(calls, sizeof(*calls), PAGE_READWRITE, &protection);
                calls->u1.Function = reinterpret_cast<ULONG_PTR>(&countedNew);
                VirtualProtect(calls, sizeof(*calls), protection, &protection);
                return;
            }
        }
    }
    throw std::runtime_error("krtbssU.dll imports no operator new");
}

} // namespace

long countAllocations() {
    static const bool isLed = (leadNewThroughHere(), true);
    static_cast<void>(isLed);
    return allocations;
}

#else

long countAllocations() {
    return allocations;
}

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

#endif
