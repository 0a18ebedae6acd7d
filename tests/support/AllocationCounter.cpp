#include "support/AllocationCounter.h"

#ifndef _WIN32

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> g_allocations = 0;
std::atomic<long> g_failing = 0;

} // namespace

long CountAllocations() {
    return g_allocations;
}

void FailAllocation(long n) {
    g_failing = n == 0 ? 0 : g_allocations + n;
}

[[gnu::noinline]] void* operator new(std::size_t size) {
    const bool fails = ++g_allocations == g_failing;
    if (void* memory = fails ? nullptr : std::malloc(size == 0 ? 1 : size)) {
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
