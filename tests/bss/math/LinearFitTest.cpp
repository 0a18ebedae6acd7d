#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/FormulaFunction.h"
#include "bss/math/NistProblem.h"
#include "bss/math/WLinearLeastSquaresFit.h"
#include "bss/math/model/WGaussianFunction.h"
#include "bss/math/model/WPolynomialFunction.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

// A polynomial under a fit; Perform as a caller does it.
struct PolynomialFit {
    explicit PolynomialFit(long coefficients) {
        function.SetNumberOfBasisFunctions(coefficients);
        fit.SetFunction(&function);
    }
    int Perform(std::vector<double> xs, std::vector<double> ys, std::vector<double> sigmas = {}) {
        x = std::move(xs);
        y = std::move(ys);
        sigma = std::move(sigmas);
        fit.SetX(x);
        fit.SetY(y);
        fit.ClearSigY();
        if (!sigma.empty()) {
            fit.SetSigY(sigma);
        }
        fit.InitializeFit();
        return fit.PerformFit();
    }

    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> sigma;
    bss::WPolynomialFunction function;
    bss::WLinearLeastSquaresFit fit;
};

TEST(LinearFit, StatisticsFollowTheirFormulas) {
    // The line through these is 0.5 + 1.1 x, the residuals -0.1, 0.3, -0.3, 0.1.
    PolynomialFit line(2);
    ASSERT_EQ(0, line.Perform({0, 1, 2, 3}, {0.4, 1.9, 2.4, 3.9}));
    EXPECT_NEAR(0.5, line.function.GetCoefficient(0), 1e-14);
    EXPECT_NEAR(1.1, line.fit.GetCoefficient(1), 1e-14);
    EXPECT_NEAR(0.2, line.fit.GetChiSquared(), 1e-14);
    EXPECT_NEAR(0.1, line.fit.GetReducedChiSquared(), 1e-14);
    EXPECT_NEAR(std::sqrt(0.1), line.fit.GetStdError(), 1e-14);
    EXPECT_NEAR(1.0 - 0.2 / 6.25, line.fit.GetRSquared(), 1e-14);
    EXPECT_NEAR(1.0 - 3.0 * 0.2 / (2.0 * 6.25), line.fit.GetAdjustedRSquared(), 1e-14);
    EXPECT_NEAR(0.7, line.fit.GetCovariance(0, 0), 1e-14);
    EXPECT_NEAR(-0.3, line.fit.GetCovariance(1, 0), 1e-14);
    EXPECT_EQ(line.fit.GetChiSquared(), line.function.GetChiSquared());
    EXPECT_EQ(line.fit.GetCovariance(1, 1), line.function.GetCovarianceMatrix()[1][1]);
}

TEST(LinearFit, SigmasWeighThePointsAndZeroCountsOneOutsideTheMean) {
    PolynomialFit constant(1);
    // Weights 1/4 and, for sigma 0.0, 1; the mean of the statistics leaves the second point out.
    ASSERT_EQ(0, constant.Perform({0, 1}, {1.0, 2.0}, {2.0, 0.0}));
    EXPECT_NEAR((0.25 * 1.0 + 2.0) / 1.25, constant.function.GetCoefficient(0), 1e-15);
    const double first = 1.0 - 1.8;
    const double second = 2.0 - 1.8;
    const double chi = first * first / 4.0 + second * second;
    EXPECT_NEAR(chi, constant.fit.GetChiSquared(), 1e-15);
    EXPECT_NEAR(std::sqrt(chi / 0.25), constant.fit.GetStdError(), 1e-15);
    // About the weighted mean of 1.0: totals 0 + 1, plain and weighted.
    EXPECT_NEAR(1.0 - (first * first + second * second) / 1.0, constant.fit.GetRSquared(), 1e-15);
    EXPECT_NEAR(1.0 - (chi / 0.25) / (1.0 / 0.25), constant.fit.GetAdjustedRSquared(), 1e-15);
    ASSERT_EQ(0, constant.Perform({0, 1}, {1.0, 2.0}));
    EXPECT_EQ(1.5, constant.function.GetCoefficient(0));
}

TEST(LinearFit, WithoutDegreesOfFreedomOrVariationRSquaredIsOne) {
    PolynomialFit exact(2);
    ASSERT_EQ(0, exact.Perform({0, 1}, {1.0, 3.0}));
    EXPECT_EQ(0.0, exact.fit.GetReducedChiSquared());
    EXPECT_EQ(0.0, exact.fit.GetStdError());
    EXPECT_EQ(1.0, exact.fit.GetAdjustedRSquared());
    EXPECT_EQ(1.0, exact.function.GetChiSquaredFactor());

    PolynomialFit constant(1);
    ASSERT_EQ(0, constant.Perform({0, 1, 2}, {5.0, 5.0, 5.0}));
    EXPECT_EQ(1.0, constant.fit.GetRSquared());
    EXPECT_EQ(1.0, constant.fit.GetAdjustedRSquared());
}

TEST(LinearFit, HeldCoefficientsMoveToTheDataAndLeaveAShortCovariance) {
    PolynomialFit parabola(3);
    parabola.function.SetCoefficients({0.0, 2.0, 0.0});
    parabola.fit.SetCoefficientFixed(1, true);
    parabola.fit.SetCoefficientFixed(3, true); // none such
    ASSERT_EQ(0, parabola.Perform({-2, -1, 0, 1, 2}, {1, 0, 1, 4, 9}));
    EXPECT_NEAR(1.0, parabola.function.GetCoefficient(0), 1e-14);
    EXPECT_EQ(2.0, parabola.function.GetCoefficient(1));
    EXPECT_NEAR(1.0, parabola.function.GetCoefficient(2), 1e-14);

    // Rows of the free coefficients 0 and 2 with two cells, then the untouched zeros.
    const auto& covariance = parabola.function.GetCovarianceMatrix();
    ASSERT_EQ(3U, covariance.size());
    EXPECT_EQ(2U, covariance[0].size());
    EXPECT_EQ(2U, covariance[1].size());
    EXPECT_EQ(std::vector<double>({0.0, 0.0, 0.0}), covariance[2]);
    EXPECT_NE(0.0, parabola.fit.GetCovariance(1, 1));
    EXPECT_EQ(0.0, parabola.fit.GetCovariance(0, 2));
    double y = 0.0;
    double sigma = -1.0;
    parabola.function.Evaluate(1.0, y, sigma);
    EXPECT_TRUE(std::isfinite(sigma));

    // A flag set after InitializeFit waits for the next one.
    parabola.fit.SetCoefficientFixed(1, false);
    ASSERT_EQ(0, parabola.fit.PerformFit());
    EXPECT_EQ(2.0, parabola.function.GetCoefficient(1));
}

TEST(LinearFit, SingularEquationsGiveOneAndChangeNothing) {
    PolynomialFit line(2);
    line.function.SetCoefficients({7.0, 8.0});
    EXPECT_EQ(1, line.Perform({3, 3, 3}, {1, 2, 3}));
    EXPECT_EQ(std::vector<double>({7.0, 8.0}), line.function.GetCoefficients());
    EXPECT_EQ(0.0, line.fit.GetChiSquared());
    EXPECT_EQ(1, line.Perform({}, {}));
}

TEST(LinearFit, WhatIsNotANumberIsNeverASuccess) {
    const std::vector<double> good = {1, 2, 3, 4};
    for (const double bad : {nan, infinity, -infinity}) {
        const std::vector<double> hurt = {1, 2, bad, 4};
        PolynomialFit line(2);
        line.function.SetCoefficients({7.0, 8.0});
        EXPECT_EQ(1, line.Perform(good, hurt));
        EXPECT_EQ(1, line.Perform(hurt, good));
        EXPECT_EQ(std::vector<double>({7.0, 8.0}), line.function.GetCoefficients());
        EXPECT_EQ(0.0, line.fit.GetRSquared());
        // With all coefficients held nothing is solved for, so only the statistics show it.
        line.fit.SetCoefficientFixed(0, true);
        line.fit.SetCoefficientFixed(1, true);
        EXPECT_EQ(1, line.Perform(good, hurt));
        EXPECT_EQ(0.0, line.fit.GetChiSquared());
    }
    PolynomialFit line(2);
    EXPECT_EQ(1, line.Perform(good, good, {1, nan, 1, 1}));
}

TEST(LinearFit, ThrowsWithoutALinearFunctionOrWholeData) {
    const std::vector<double> three = {1, 2, 3};
    const std::vector<double> two = {1, 2};
    bss::WLinearLeastSquaresFit fit;
    fit.SetX(three);
    fit.SetY(three);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    bss::WGaussianFunction peak;
    fit.SetFunction(&peak);
    fit.InitializeFit();
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    bss::WPolynomialFunction line;
    line.SetNumberOfBasisFunctions(2);
    fit.SetFunction(&line);
    EXPECT_EQ(0, fit.PerformFit()) << "InitializeFit was left out";
    fit.SetY(two);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    fit.SetY(three);
    fit.SetSigY(two);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    fit.SetFunction(nullptr);
    EXPECT_EQ(0U, fit.GetNumberOfCoefficients());
    EXPECT_EQ(0.0, fit.GetCoefficient(0));
    EXPECT_EQ(0.0, fit.GetCovariance(0, 0));
}

TEST(LinearFit, CopyRefersToTheSameFunctionAndOwnsItsCovariance) {
    PolynomialFit line(2);
    ASSERT_EQ(0, line.Perform({0, 1, 2}, {1, 3, 6}));
    line.fit.SetCoefficientFixed(1, true);
    bss::WLinearLeastSquaresFit copy(line.fit);
    const double covariance = copy.GetCovariance(0, 0);
    EXPECT_EQ(&line.function, copy.GetFunction());
    EXPECT_TRUE(copy.GetCoefficientFixed(1));
    line.fit.InitializeFit();
    EXPECT_EQ(covariance, copy.GetCovariance(0, 0));
    EXPECT_EQ(0.0, line.fit.GetCovariance(0, 0));
}

// Pure arithmetic has the same bits on every target.
TEST(LinearFit, HasTheSameBitsOnEveryTarget) {
    const nist::Problem problem = nist::read("Pontius");
    PolynomialFit parabola(3);
    ASSERT_EQ(0, parabola.Perform(problem.x, problem.y));
    const double values[] = {parabola.function.GetCoefficient(0), parabola.function.GetCoefficient(1),
                             parabola.function.GetCoefficient(2), parabola.fit.GetCovariance(2, 0),
                             parabola.fit.GetChiSquared(),        parabola.fit.GetStdError(),
                             parabola.fit.GetAdjustedRSquared()};
    const double golden[] = {0x1.6124784cc0fc7p-11, 0x1.890571e3fd83dp-21, -0x1.c785a0b3a0c93p-49,
                             0x1.b6f2845b4e432p-44, 0x1.a21eac2720802p-20, 0x1.ae49ca70ecacbp-13,
                             0x1.fffffc7830e44p-1};
    for (std::size_t i = 0; i < std::size(values); ++i) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(golden[i]), std::bit_cast<std::uint64_t>(values[i]))
            << "value " << i << " is " << std::hexfloat << values[i];
    }
}

} // namespace
