// Evaluation and fits allocate their work space once: neither points nor iterations add to it.

#include "bss/math/EveryFunction.h"
#include "bss/math/WLinearLeastSquaresFit.h"
#include "bss/math/WNonLinearLeastSquaresFit.h"
#include "bss/math/model/WCumulantsFunction.h"
#include "bss/math/model/WGaussianFunction.h"
#include "bss/math/model/WPolynomialFunction.h"
#include "support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

struct Count {
    long allocations;
    unsigned iterations;
};

std::vector<double> sampled(bss::WFunction& function, const std::vector<double>& x) {
    std::vector<double> y;
    for (std::size_t i = 0; i < x.size(); ++i) {
        y.push_back(function.Evaluate(x[i]) + (i % 3 == 0 ? 0.02 : -0.01));
    }
    return y;
}

std::vector<double> equidistant(std::size_t points, double last) {
    std::vector<double> x;
    for (std::size_t i = 0; i < points; ++i) {
        x.push_back(last * static_cast<double>(i) / static_cast<double>(points));
    }
    return x;
}

// Fits data of the function's coefficients from those coefficients times a factor.
Count countOfFit(bss::WFunction& function, double last, std::size_t points, double factor) {
    const std::vector<double> x = equidistant(points, last);
    const std::vector<double> y = sampled(function, x);
    for (long i = 0; i < static_cast<long>(function.GetNumberOfCoefficients()); ++i) {
        function.SetCoefficient(i, function.GetCoefficient(i) * factor);
    }
    bss::WNonLinearLeastSquaresFit fit;
    fit.SetFunction(&function);
    fit.SetX(x);
    fit.SetY(y);
    fit.InitializeFit();
    const long before = CountAllocations();
    EXPECT_EQ(0, fit.PerformFit());
    return {CountAllocations() - before, fit.Iterations()};
}

Count countOfGaussianFit(std::size_t points, double factor) {
    bss::WGaussianFunction function;
    function.SetCoefficients({3.0, 5.0, 2.0, 0.5, 0.1});
    return countOfFit(function, 10.0, points, factor);
}

Count countOfCumulantsFit(std::size_t points, double factor) {
    bss::WCumulantsFunction function;
    function.SetCoefficients({0.1, 1.0, 0.7, 0.05});
    return countOfFit(function, 5.0, points, factor);
}

TEST(Allocation, NonLinearFitAllocatesNothingPerPointOrIteration) {
    SKIP_WITHOUT_ALLOCATION_COUNTER();
    for (const auto& count : {countOfGaussianFit, countOfCumulantsFit}) {
        const Count near = count(200, 1.001);
        const Count far = count(200, 1.2);
        const Count large = count(10000, 1.2);
        EXPECT_GT(near.allocations, 0) << "the counter sees the library";
        EXPECT_LT(near.iterations, far.iterations);
        EXPECT_EQ(near.allocations, far.allocations);
        EXPECT_EQ(near.allocations, large.allocations);
        EXPECT_LT(large.allocations, 60);
    }
}

TEST(Allocation, LinearFitAllocatesNothingPerPoint) {
    SKIP_WITHOUT_ALLOCATION_COUNTER();
    long counts[2] = {};
    for (const std::size_t points : {200, 10000}) {
        bss::WPolynomialFunction parabola;
        parabola.SetNumberOfBasisFunctions(3);
        parabola.SetCoefficients({1.0, 2.0, 3.0});
        const std::vector<double> x = equidistant(points, 1.0);
        const std::vector<double> y = sampled(parabola, x);
        bss::WLinearLeastSquaresFit fit;
        fit.SetFunction(&parabola);
        fit.SetX(x);
        fit.SetY(y);
        fit.InitializeFit();
        const long before = CountAllocations();
        EXPECT_EQ(0, fit.PerformFit());
        counts[points == 200 ? 0 : 1] = CountAllocations() - before;
    }
    EXPECT_GT(counts[0], 0);
    EXPECT_EQ(counts[0], counts[1]);
}

TEST(Allocation, EvaluationAndDerivativesReuseTheirMemory) {
    SKIP_WITHOUT_ALLOCATION_COUNTER();
    const std::vector<FunctionFacts> all = EveryFunction();
    for (const FunctionFacts& facts : all) {
        bss::WFunction& function = *facts.function;
        function.SetCoefficients(std::vector<double>(std::max<std::size_t>(facts.names.size(), 2), 0.75));
        std::vector<double> derivatives;
        function.ComputeDerivatives(1.0, derivatives);
        const long before = CountAllocations();
        double sum = 0.0;
        for (int i = 0; i < 1000; ++i) {
            sum += function.Evaluate(1e-3 * i);
            function.ComputeDerivatives(1e-3 * i, derivatives);
            sum += derivatives[0];
        }
        EXPECT_EQ(CountAllocations(), before) << "type " << facts.type;
        EXPECT_NE(sum, 0.0);
    }
    const long before = CountAllocations();
    EXPECT_FALSE(std::vector<double>(100, 1.0).empty());
    EXPECT_EQ(CountAllocations(), before + 1) << "the count itself";
}

} // namespace
