// Evaluation, fits and transforms allocate their work space once: neither points nor iterations add to it.
// What an allocation that fails leaves behind.

#include "Signals.h"
#include "bss/math/EveryFunction.h"
#include "bss/math/WFFT.h"
#include "bss/math/WFunctionFactory.h"
#include "bss/math/WLinearLeastSquaresFit.h"
#include "bss/math/WNonLinearLeastSquaresFit.h"
#include "support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <new>

namespace {

// Of a fit to the function's own values and some noise, from its coefficients times a factor.
template <class Fit>
long AllocationsOfFit(bss::WFunction& function, std::size_t points, double factor) {
    std::vector<double> x;
    std::vector<double> y;
    for (std::size_t i = 0; i < points; ++i) {
        x.push_back(5.0 * static_cast<double>(i) / static_cast<double>(points));
        y.push_back(function.Evaluate(x[i]) + (i % 3 == 0 ? 0.02 : -0.01));
    }
    for (double& value : *function.GetCoefficientsVectorPtr()) {
        value *= factor;
    }
    Fit fit;
    fit.SetFunction(&function);
    fit.SetX(x);
    fit.SetY(y);
    fit.InitializeFit();
    const long before = CountAllocations();
    EXPECT_EQ(0, fit.PerformFit());
    return CountAllocations() - before;
}

TEST(Allocation, FitsAllocateNothingPerPointOrIteration) {
    SKIP_WITHOUT_ALLOCATION_COUNTER();
    const auto gaussian = [](std::size_t points, double factor) {
        bss::WGaussianFunction function;
        function.SetCoefficients({3.0, 2.5, 1.0, 0.5, 0.1});
        return AllocationsOfFit<bss::WNonLinearLeastSquaresFit>(function, points, factor);
    };
    const auto parabola = [](std::size_t points, double factor) {
        bss::WPolynomialFunction function;
        function.SetNumberOfBasisFunctions(3);
        return AllocationsOfFit<bss::WLinearLeastSquaresFit>(function, points, factor);
    };
    const long few = gaussian(200, 1.001);
    EXPECT_GT(few, 0) << "the counter sees the library";
    EXPECT_LT(few, 60);
    EXPECT_EQ(gaussian(200, 1.2), few);
    EXPECT_EQ(gaussian(10000, 1.2), few);
    EXPECT_GT(parabola(200, 1.0), 0);
    EXPECT_EQ(parabola(10000, 1.0), parabola(200, 1.0));
}

TEST(Allocation, EvaluationDerivativesAndTransformsReuseTheirMemory) {
    SKIP_WITHOUT_ALLOCATION_COUNTER();
    const std::vector<FunctionFacts> all = EveryFunction();
    for (const FunctionFacts& facts : all) {
        bss::WFunction& function = *facts.function;
        function.SetCoefficients(std::vector<double>(std::max<std::size_t>(facts.names.size(), 2), 0.75));
        std::vector<double> derivatives;
        function.ComputeDerivatives(1.0, derivatives);
        const long before = CountAllocations();
        for (int i = 0; i < 10; ++i) {
            function.Evaluate(0.1 * i);
            function.ComputeDerivatives(0.1 * i, derivatives);
        }
        EXPECT_EQ(CountAllocations(), before) << facts.name;
    }
    bss::WFFT fft;
    Signal a = MakeSignal(4096, 1);
    Signal b = MakeSignal(4096, 2);
    fft.ComplexFFT(a);
    const long before = CountAllocations();
    fft.InverseComplexFFT(a);
    fft.ComplexFFT2(a, b);
    EXPECT_EQ(CountAllocations(), before);
}

TEST(Allocation, TransformAfterAFailedOneBuildsItsTables) {
    SKIP_WITHOUT_ALLOCATION_COUNTER();
    const Signal signal = MakeSignal(128, 3);
    Signal expected = signal;
    bss::WFFT().ComplexFFT(expected);
    int failures = 0;
    for (bool failed = true; failed;) {
        bss::WFFT fft;
        Signal actual = signal;
        failed = false;
        FailAllocation(failures + 1);
        try {
            fft.ComplexFFT(actual);
        } catch (const std::bad_alloc&) {
            failed = true;
            ++failures;
            EXPECT_EQ(actual, signal);
            fft.ComplexFFT(actual);
        }
        FailAllocation(0);
        EXPECT_EQ(actual, expected) << failures;
    }
    EXPECT_EQ(failures, 5) << "one of each table";
}

TEST(Allocation, FunctionThatFindsNoMemoryIsNull) {
    SKIP_WITHOUT_ALLOCATION_COUNTER();
    for (const FunctionFacts& facts : EveryFunction()) {
        FailAllocation(1);
        EXPECT_EQ(facts.function->clone(), nullptr) << facts.name;
    }
    FailAllocation(1);
    EXPECT_EQ(bss::WFunctionFactory::GetFunction(bss::WFunction::etGaussian), nullptr);
}

} // namespace
