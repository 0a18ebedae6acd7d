#include "support/FailingAllocation.h"

#ifndef _WIN32

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> g_allocations = 0;
std::atomic<long> g_untilFailure = 0;

} // namespace

long CountAllocations() {
    return g_allocations;
}

void FailAllocation(long n) {
    g_untilFailure = n;
}

[[gnu::noinline]] void* operator new(std::size_t size) {
    ++g_allocations;
    const bool fails = g_untilFailure > 0 && --g_untilFailure == 0;
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
