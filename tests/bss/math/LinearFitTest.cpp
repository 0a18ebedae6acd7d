#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/WLinearLeastSquaresFit.h"
#include "bss/math/model/WGaussianFunction.h"
#include "bss/math/model/WPolynomialFunction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

using Values = std::vector<double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A polynomial under a fit; Perform as a caller does it.
struct PolynomialFit {
    explicit PolynomialFit(const Values& coefficients) {
        function.SetCoefficients(coefficients);
        fit.SetFunction(&function);
    }
    int Perform(Values xs, Values ys, Values sigmas = {}) {
        x = std::move(xs);
        y = std::move(ys);
        sigma = std::move(sigmas);
        fit.SetX(x);
        fit.SetY(y);
        sigma.empty() ? fit.ClearSigY() : fit.SetSigY(sigma);
        fit.InitializeFit();
        return fit.PerformFit();
    }

    Values x;
    Values y;
    Values sigma;
    bss::WPolynomialFunction function;
    bss::WLinearLeastSquaresFit fit;
};

TEST(LinearFit, StatisticsFollowTheirFormulas) {
    // The line through these is 0.5 + 1.1 x, the residuals -0.1, 0.3, -0.3, 0.1.
    PolynomialFit line({0.0, 0.0});
    ASSERT_EQ(0, line.Perform({0, 1, 2, 3}, {0.4, 1.9, 2.4, 3.9}));
    EXPECT_NEAR(0.5, line.function.GetCoefficient(0), 1e-14);
    EXPECT_NEAR(1.1, line.fit.GetCoefficient(1), 1e-14);
    EXPECT_NEAR(0.2, line.fit.GetChiSquared(), 1e-14);
    EXPECT_NEAR(0.1, line.fit.GetReducedChiSquared(), 1e-14);
    EXPECT_NEAR(std::sqrt(0.1), line.fit.GetStdError(), 1e-14);
    EXPECT_NEAR(1.0 - 0.2 / 6.25, line.fit.GetRSquared(), 1e-14);
    EXPECT_NEAR(1.0 - 3.0 * 0.2 / (2.0 * 6.25), line.fit.GetAdjustedRSquared(), 1e-14);
    EXPECT_NEAR(-0.3, line.fit.GetCovariance(1, 0), 1e-14);
    EXPECT_EQ(line.fit.GetChiSquared(), line.function.GetChiSquared());
    EXPECT_EQ(line.fit.GetCovariance(1, 1), line.function.GetCovarianceMatrix()[1][1]);

    // A copy refers to the same function and owns its covariance.
    line.fit.SetCoefficientFixed(1, true);
    const bss::WLinearLeastSquaresFit copy(line.fit);
    line.fit.InitializeFit();
    EXPECT_TRUE(copy.GetCoefficientFixed(1));
    EXPECT_NEAR(-0.3, copy.GetCovariance(1, 0), 1e-14);
    EXPECT_EQ(0.0, line.fit.GetCovariance(1, 0));
}

TEST(LinearFit, SigmasWeighThePointsAndZeroCountsOneOutsideTheMean) {
    PolynomialFit constant({0.0});
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
}

TEST(LinearFit, WithoutDegreesOfFreedomOrVariationRSquaredIsOne) {
    PolynomialFit exact({0.0, 0.0});
    ASSERT_EQ(0, exact.Perform({0, 1}, {1.0, 3.0}));
    EXPECT_EQ(0.0, exact.fit.GetReducedChiSquared());
    EXPECT_EQ(0.0, exact.fit.GetStdError());
    EXPECT_EQ(1.0, exact.fit.GetAdjustedRSquared());
    EXPECT_EQ(1.0, exact.function.GetChiSquaredFactor());
    PolynomialFit constant({0.0});
    ASSERT_EQ(0, constant.Perform({0, 1, 2}, {5.0, 5.0, 5.0}));
    EXPECT_EQ(1.0, constant.fit.GetRSquared());
    EXPECT_EQ(1.0, constant.fit.GetAdjustedRSquared());
}

TEST(LinearFit, HeldCoefficientsMoveToTheDataAndLeaveAShortCovariance) {
    PolynomialFit parabola({0.0, 2.0, 0.0});
    parabola.fit.SetCoefficientFixed(1, true);
    parabola.fit.SetCoefficientFixed(3, true); // none such
    ASSERT_EQ(0, parabola.Perform({-1, 0, 1, 2, 3}, {0, 1, 4, 9, 16}));
    EXPECT_NEAR(1.0, parabola.function.GetCoefficient(0), 1e-14);
    EXPECT_EQ(2.0, parabola.function.GetCoefficient(1));
    EXPECT_NEAR(1.0, parabola.function.GetCoefficient(2), 1e-14);

    // Rows of the free coefficients 0 and 2 with two cells, then the untouched zeros.
    const auto& covariance = parabola.function.GetCovarianceMatrix();
    ASSERT_EQ(3U, covariance.size());
    EXPECT_EQ(2U, covariance[0].size());
    EXPECT_EQ(2U, covariance[1].size());
    EXPECT_EQ(Values({0.0, 0.0, 0.0}), covariance[2]);
    EXPECT_NE(0.0, parabola.fit.GetCovariance(1, 1));
    EXPECT_EQ(0.0, parabola.fit.GetCovariance(0, 2));

    // A flag set after InitializeFit waits for the next one.
    parabola.fit.SetCoefficientFixed(1, false);
    ASSERT_EQ(0, parabola.fit.PerformFit());
    EXPECT_EQ(2.0, parabola.function.GetCoefficient(1));
}

TEST(LinearFit, FailureGivesOneAndChangesNothing) {
    struct Row {
        const char* what;
        Values x;
        Values y;
        Values sigma;
        bool isHeld; // nothing is solved for then, so only the statistics show the fault
    };
    std::vector<Row> rows = {
        {"singular", {3, 3, 3}, {1, 2, 3}, {}, false},
        {"no data", {}, {}, {}, false},
        {"next to singular", {1e-17, 2e-17, 3e-17}, {1, 2, 3}, {1e4, 1e4, 1e4}, false},
        {"infinite chi-squared over finite sums", {1, 2, 3, 4}, {1e200, -1e200, -1e200, 1e200}, {}, false},
        {"sigma NaN", {1, 2, 3, 4}, {1, 2, 3, 4}, {1, kNaN, 1, 1}, false},
    };
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        rows.push_back({"x not finite", {1, 2, bad, 4}, {1, 2, 3, 4}, {}, false});
        rows.push_back({"y not finite", {1, 2, 3, 4}, {1, 2, bad, 4}, {}, false});
        rows.push_back({"y not finite, held", {1, 2, 3, 4}, {1, 2, bad, 4}, {}, true});
    }
    for (const Row& row : rows) {
        PolynomialFit line({7.0, 8.0});
        line.fit.SetCoefficientFixed(0, row.isHeld);
        line.fit.SetCoefficientFixed(1, row.isHeld);
        EXPECT_EQ(1, line.Perform(row.x, row.y, row.sigma)) << row.what;
        EXPECT_EQ(Values({7.0, 8.0}), line.function.GetCoefficients()) << row.what;
        EXPECT_EQ(0.0, line.fit.GetChiSquared()) << row.what;
        EXPECT_EQ(0.0, line.fit.GetRSquared()) << row.what;
    }
}

TEST(LinearFit, ThrowsWithoutALinearFunctionOrWholeData) {
    const Values three = {1, 2, 3};
    const Values two = {1, 2};
    bss::WLinearLeastSquaresFit fit;
    fit.SetX(three);
    fit.SetY(three);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    bss::WGaussianFunction peak;
    fit.SetFunction(&peak);
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

} // namespace
