#include "support/AllocationCounter.h"

#ifndef _WIN32

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> g_allocations = 0;

} // namespace

long CountAllocations() {
    return g_allocations;
}

[[gnu::noinline]] void* operator new(std::size_t size) {
    ++g_allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

#endif
