#include "support/FailingAllocation.h"
#include "Signals.h"
#include "bss/math/EveryFunction.h"
#include "bss/math/WFFT.h"
#include "bss/math/WFunctionFactory.h"

#include <gtest/gtest.h>

#include <new>

namespace {

TEST(FailingAllocation, TransformAfterAFailedOneBuildsItsTables) {
    SKIP_WITHOUT_FAILING_ALLOCATION();
    const Signal signal = MakeSignal(128, 3);
    Signal expected = signal;
    bss::WFFT().ComplexFFT(expected);
    for (long failing = 1; failing <= 5; ++failing) { // one of each table
        bss::WFFT fft;
        Signal actual = signal;
        FailAllocation(failing);
        EXPECT_THROW(fft.ComplexFFT(actual), std::bad_alloc) << failing;
        EXPECT_EQ(actual, signal);
        fft.ComplexFFT(actual);
        EXPECT_EQ(actual, expected) << failing;
    }
    FailAllocation(0);
}

TEST(FailingAllocation, FunctionThatFindsNoMemoryIsNull) {
    SKIP_WITHOUT_FAILING_ALLOCATION();
    for (const FunctionFacts& facts : EveryFunction()) {
        FailAllocation(1);
        EXPECT_EQ(facts.function->clone(), nullptr) << facts.name;
    }
    FailAllocation(1);
    EXPECT_EQ(bss::WFunctionFactory::GetFunction(bss::WFunction::etGaussian), nullptr);
}

} // namespace
