// What the golden grid does not show: guards, limits, failures, and derivatives against difference quotients.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/EveryFunction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <stdexcept>

namespace {

using Values = std::vector<double>;
constexpr double cInfinity = std::numeric_limits<double>::infinity();

Values DerivativesAt(bss::WFunction& function, double x) {
    Values derivatives;
    function.ComputeDerivatives(x, derivatives);
    return derivatives;
}

// Most derivatives are those of the formula; the rest is known by name and was chosen.
TEST(Models, DerivativesAreTrueExceptTheOnesKnownNotToBe) {
    std::set<std::pair<int, std::size_t>> untrue;
    for (const FunctionFacts& facts : EveryFunction()) {
        bss::WFunction& function = *facts.function;
        Values start{0.4, 0.85, 1.1, 0.7, 0.15};
        start.resize(facts.names.empty() ? 3 : facts.names.size());
        for (const double x : {0.3, 1.7}) {
            function.SetCoefficients(start);
            const Values derivatives = DerivativesAt(function, x);
            ASSERT_EQ(derivatives.size(), start.size());
            for (std::size_t i = 0; i < start.size(); ++i) {
                const double step = 1e-5;
                function.SetCoefficient(static_cast<long>(i), start[i] + step);
                const double above = function.Evaluate(x);
                function.SetCoefficient(static_cast<long>(i), start[i] - step);
                const double below = function.Evaluate(x);
                function.SetCoefficient(static_cast<long>(i), start[i]);
                const double quotient = (above - below) / (2.0 * step);
                if (std::fabs(quotient - derivatives[i]) > 1e-7 * (1.0 + std::fabs(quotient))) {
                    untrue.insert({facts.type, i});
                }
            }
        }
    }
    const std::set<std::pair<int, std::size_t>> known{{3, 1}, {3, 2}, {3, 3}, {5, 0}, {5, 1},
                                                      {7, 0}, {7, 1}, {7, 2}, {11, 1}};
    EXPECT_EQ(untrue, known);
}

TEST(Models, GaussianOfZeroWidthWritesTheTinyOneBack) {
    bss::WGaussianFunction function;
    function.SetCoefficients({2.0, 1.0, 0.0, 0.5, 0.0});
    EXPECT_EQ(function.Evaluate(1.0), 2.5);
    EXPECT_EQ(function.GetCoefficient(2), 1e-100);
    EXPECT_EQ(function.Evaluate(1.1), 0.5);
    function.SetCoefficient(2, -0.0);
    EXPECT_EQ(DerivativesAt(function, 1.1), (Values{0.0, 0.0, 0.0, 1.0, 1.1}));
    EXPECT_EQ(function.GetCoefficient(2), 1e-100);
}

TEST(Models, GaussianIsHalfAtHalfWidthAndEndsAtTwentyFive) {
    bss::WGaussianFunction function;
    const double width = 1.0 / 0.60056120439;
    function.SetCoefficients({1.0, 0.0, width, 0.25, 1.0});
    EXPECT_NEAR(function.Evaluate(width / 2) - 0.25 - width / 2, 0.5, 1e-10);
    // exp(-25 * 25) is 3.7e-272, which would show in the derivatives.
    EXPECT_GT(DerivativesAt(function, 24.9)[0], 0.0);
    EXPECT_EQ(DerivativesAt(function, 25.1), (Values{0.0, 0.0, 0.0, 1.0, 25.1}));
    EXPECT_EQ(function.Evaluate(-26.0), 0.25 - 26.0);
}

TEST(Models, ZeroWidthsAndTimeConstantsAreTakenAsStated) {
    bss::WExponentialFunction peak;
    peak.SetCoefficients({1.0, 0.0, 0.0, 7.0});
    EXPECT_EQ(peak.Evaluate(0.0), 0.0);
    EXPECT_EQ(DerivativesAt(peak, 0.0), Values(4, 0.0));

    bss::WExponentialDecayFunction decay;
    decay.SetCoefficients({0.25, 3.0, 1.0, 0.0});
    EXPECT_EQ(decay.Evaluate(1.5), 0.25);
    EXPECT_EQ(decay.Evaluate(1.0), 3.25);
    EXPECT_EQ(decay.GetCoefficient(3), 0.0);

    bss::WFermiDiracFunction step;
    step.SetCoefficients({4.0, 1.0, 0.0});
    EXPECT_EQ(step.Evaluate(0.9), 0.0);
    EXPECT_EQ(step.Evaluate(1.0), 2.0);
    EXPECT_EQ(step.Evaluate(1.1), 4.0);
    EXPECT_EQ(step.GetCoefficient(2), 0.0);
    EXPECT_DOUBLE_EQ(DerivativesAt(step, 1.0)[0], 1.0 - 1.0 / (std::exp(1.0) + 1.0));

    bss::WSimpleExponentialDecayFunction simple;
    simple.SetCoefficients({0.25, 3.0, 0.0});
    EXPECT_EQ(simple.Evaluate(1.0), 0.25);
    EXPECT_TRUE(std::isnan(simple.Evaluate(0.0)));
}

TEST(Models, ExponentialPolynomialWithoutCoefficientsIsOneWithoutError) {
    bss::WExponentialPolynomialFunction function;
    double y = 0.0;
    double sigma = -1.0;
    function.Evaluate(3.0, y, sigma);
    EXPECT_EQ(y, 1.0);
    EXPECT_EQ(sigma, 0.0);
    EXPECT_TRUE(DerivativesAt(function, 3.0).empty());
}

// h is the mean of exp(-rate x) over the cut-off Gaussian distribution of rates, and the first cumulant its
// mean rate.
TEST(GaussianCumulants, AgreesWithTheIntegralOverTheDistribution) {
    bss::WGaussianCumulantsFunction function;
    function.SetCoefficients({0.0, 1.0, std::sqrt(1.2), std::sqrt(0.8)});
    double norm = 0.0;
    double mean = 0.0;
    double transform = 0.0;
    const double x = 0.9;
    const double width = 1e-4;
    for (int i = 0; i < 120000; ++i) {
        const double rate = (i + 0.5) * width;
        const double weight = std::exp(-(rate - 1.2) * (rate - 1.2) / (2.0 * 0.8 * 0.8));
        norm += weight;
        mean += weight * rate;
        transform += weight * std::exp(-rate * x);
    }
    EXPECT_NEAR(function.Evaluate(x), (transform / norm) * (transform / norm), 1e-8);
    EXPECT_NEAR(function.GetFirstCumulant(), mean / norm, 1e-8);
    EXPECT_DOUBLE_EQ(function.GetLambda0(), 1.2);
    EXPECT_DOUBLE_EQ(function.GetSigma(), 0.8);
}

TEST(GaussianCumulants, BranchesMeetAtTenAndPartBelowMinusTen) {
    bss::WGaussianCumulantsFunction function;
    // With S = 1 and L = 0, z is t / sqrt 2.
    const double below = function.ExpTimesErfc(14.142135, 0.0, 1.0);
    const double above = function.ExpTimesErfc(14.142136, 0.0, 1.0);
    EXPECT_NEAR(above / below, 1.0, 5e-7);
    EXPECT_LT(above, below);
    // The true value there is near 2 exp(S^2 t^2 / 2 - L t), which is 2 at t = 0; the series stays small on
    // purpose.
    EXPECT_DOUBLE_EQ(function.ExpTimesErfc(0.0, 1.41, 0.1), 2.0);
    EXPECT_LT(std::fabs(function.ExpTimesErfc(0.0, 1.42, 0.1)), 1e-40);
}

TEST(GaussianCumulants, ZeroWidthHasNoSecondCumulantAndStillEvaluates) {
    bss::WGaussianCumulantsFunction function;
    EXPECT_EQ(function.ExpTimesErfc(1.0, 1.0, 0.0), 0.0);
    function.SetCoefficients({0.25, 1.0, 1.5, 0.0});
    EXPECT_EQ(function.GetFirstCumulant(), 2.25);
    EXPECT_EQ(function.GetSecondCumulant(), 0.0);
    EXPECT_EQ(function.Evaluate(1.0), 0.25);
    EXPECT_EQ(DerivativesAt(function, 1.0)[0], 1.0);
}

TEST(GaussianCumulants, NotANumberComesOutAsSuch) {
    bss::WGaussianCumulantsFunction function;
    function.SetCoefficients({0.0, 1.0, NAN, 1.0});
    EXPECT_TRUE(std::isnan(function.Evaluate(1.0)));
    EXPECT_TRUE(std::isnan(DerivativesAt(function, 1.0)[2]));
    function.SetCoefficients({0.0, 1.0, 1.0, 1.0});
    EXPECT_TRUE(std::isnan(function.Evaluate(NAN)));
}

TEST(Broadening, ZeroCoefficientThrowsAndOtherCountsAreIgnored) {
    bss::WBroadeningFunction function;
    Values derivatives{1.0, 2.0, 3.0};
    for (const Values& coefficients : {Values{0.0, 1.0}, Values{1.0, -0.0}, Values{0.0, 0.0}}) {
        function.SetCoefficients(coefficients);
        EXPECT_THROW(function.Evaluate(1.0), bss::WNEDivideByZero);
        EXPECT_THROW(function.ComputeDerivatives(1.0, derivatives), bss::WNEDivideByZero);
    }
    EXPECT_EQ(derivatives.size(), 3u);
    function.SetCoefficients({1.0, 2.0});
    function.SetCoefficients({1.0, 2.0, 3.0});
    function.SetCoefficients({});
    EXPECT_EQ(function.GetCoefficients(), (Values{1.0, 2.0}));
}

TEST(TriangleDither, StagesDoubleInWidth) {
    const bss::WTriangleDitherFitFunction function(0.5, 3.0);
    struct Row {
        double x;
        int stage;
    };
    // t = (round(2 x) - 1) / 3; halves round away from zero, and below t = 0.5 the stage is negative.
    for (const Row& row :
         {Row{-cInfinity, 0}, Row{0.49, 0}, Row{0.5, 0}, Row{0.74, 0}, Row{0.75, -1}, Row{1.0, -1},
          Row{1.25, 0}, Row{2.49, 1}, Row{4.5, 2}, Row{8.5, 3}, Row{1e299, 993}}) {
        EXPECT_EQ(function.whatStage(row.x), row.stage) << row.x;
    }
    EXPECT_EQ(function.stageWidth(0), 0.5);
    EXPECT_EQ(function.stageWidth(2), 2.0);
    EXPECT_EQ(function.stageWidth(-1), 0.25);
    EXPECT_EQ(function.stageWidth(std::numeric_limits<int>::max()), cInfinity);
    EXPECT_EQ(function.stageWidth(std::numeric_limits<int>::min()), 0.0);

    const bss::WTriangleDitherFitFunction noLength(0.5, 0.0);
    EXPECT_EQ(noLength.whatStage(3.0), std::numeric_limits<int>::max());
    EXPECT_EQ(noLength.whatStage(0.5), 0);
}

TEST(TriangleDither, ReadingThatIsNotFiniteRaisesTheRoundingError) {
    bss::WTriangleDitherFitFunction function(0.5, 4.0);
    function.SetCoefficients({0.1, 0.2, 0.3});
    Values derivatives;
    for (const double x : {cInfinity, static_cast<double>(NAN)}) {
        EXPECT_THROW(function.ComputeDerivatives(x, derivatives), std::runtime_error);
        try {
            function.Evaluate(x);
            ADD_FAILURE() << "no error at " << x;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what())
                          .find("Error in function boost::math::round<double>(double): Value "),
                      0u)
                << error.what();
        }
    }
}

} // namespace
