// A fit of many points allocates nothing in its loop: evaluation and derivatives reuse the memory that they
// have.
//
// Allocations are counted by replacing operator new for the whole process, which on Windows does not reach
// into a DLL.

#include "math/EveryFunction.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#ifndef _WIN32

namespace {
std::atomic<long> gAllocations{0};
}

[[gnu::noinline]] void* operator new(std::size_t size) {
    ++gAllocations;
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

TEST(Allocation, EvaluationAndDerivativesReuseTheirMemory) {
    const std::vector<FunctionFacts> all = EveryFunction();
    for (const FunctionFacts& facts : all) {
        bss::WFunction& function = *facts.function;
        function.SetCoefficients(std::vector<double>(std::max<std::size_t>(facts.names.size(), 2), 0.75));
        std::vector<double> derivatives;
        function.ComputeDerivatives(1.0, derivatives);
        const long before = gAllocations;
        double sum = 0.0;
        for (int i = 0; i < 1000; ++i) {
            sum += function.Evaluate(1e-3 * i);
            function.ComputeDerivatives(1e-3 * i, derivatives);
            sum += derivatives[0];
        }
        EXPECT_EQ(gAllocations, before) << "type " << facts.type;
        EXPECT_NE(sum, 0.0);
    }
    const long before = gAllocations;
    EXPECT_FALSE(std::vector<double>(100, 1.0).empty());
    EXPECT_EQ(gAllocations, before + 1) << "the count itself";
}

#else

TEST(Allocation, EvaluationAndDerivativesReuseTheirMemory) {
    GTEST_SKIP() << "operator new of a DLL cannot be replaced from the program";
}

#endif
