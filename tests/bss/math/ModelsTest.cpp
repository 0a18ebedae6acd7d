// What the golden grid does not show: guards, limits and failures.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/EveryFunction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

using Values = std::vector<double>;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Values DerivativesAt(bss::WFunction& function, double x) {
    Values derivatives;
    function.ComputeDerivatives(x, derivatives);
    return derivatives;
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

TEST(Models, GaussianEndsAtTwentyFive) {
    bss::WGaussianFunction function;
    function.SetCoefficients({1.0, 0.0, 1.0, 0.25, 1.0});
    // exp(-25 * 25) is 3.7e-272, which would show in the derivatives.
    const double cut = 25.0 * 0.60056120439;
    ASSERT_EQ(cut / 0.60056120439, 25.0);
    EXPECT_GT(DerivativesAt(function, std::nextafter(cut, 0.0))[0], 0.0);
    EXPECT_EQ(DerivativesAt(function, cut), (Values{0.0, 0.0, 0.0, 1.0, cut}));
    EXPECT_EQ(function.Evaluate(-20.0), 0.25 - 20.0);
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

    bss::WSimpleExponentialDecayFunction simple;
    simple.SetCoefficients({0.25, 3.0, 0.0});
    EXPECT_EQ(simple.Evaluate(1.0), 0.25);
    EXPECT_TRUE(std::isnan(simple.Evaluate(0.0)));
}

TEST(Models, GaussianCumulantsBranchesMeetAtTenAndPartBelowMinusTen) {
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

TEST(Models, GaussianCumulantsOfZeroWidthAndOfNaN) {
    bss::WGaussianCumulantsFunction function;
    EXPECT_EQ(function.ExpTimesErfc(1.0, 1.0, 0.0), 0.0);
    function.SetCoefficients({0.25, 1.0, 1.5, 0.0});
    EXPECT_EQ(function.GetFirstCumulant(), 2.25);
    EXPECT_EQ(function.GetSecondCumulant(), 0.0);
    EXPECT_EQ(function.Evaluate(1.0), 0.25);
    EXPECT_EQ(DerivativesAt(function, 1.0)[0], 1.0);
    function.SetCoefficients({0.0, 1.0, kNaN, 1.0});
    EXPECT_TRUE(std::isnan(function.Evaluate(1.0)));
    EXPECT_TRUE(std::isnan(DerivativesAt(function, 1.0)[2]));
}

TEST(Models, BroadeningOfAZeroCoefficientThrowsAndOtherCountsAreIgnored) {
    bss::WBroadeningFunction function;
    for (const Values& coefficients : {Values{0.0, 1.0}, Values{1.0, -0.0}}) {
        function.SetCoefficients(coefficients);
        EXPECT_THROW(function.Evaluate(1.0), bss::WNEDivideByZero);
        EXPECT_THROW(DerivativesAt(function, 1.0), bss::WNEDivideByZero);
    }
    function.SetCoefficients({1.0, 2.0});
    function.SetCoefficients({1.0, 2.0, 3.0});
    function.SetCoefficients({});
    EXPECT_EQ(function.GetCoefficients(), (Values{1.0, 2.0}));
}

TEST(Models, DitherStagesDoubleInWidth) {
    const bss::WTriangleDitherFitFunction function(0.5, 3.0);
    struct Row {
        double x;
        int stage;
    };
    // t = (round(2 x) - 1) / 3; halves round away from zero, and below t = 0.5 the stage is negative.
    for (const Row& row :
         {Row{-kInfinity, 0}, Row{0.49, 0}, Row{0.5, 0}, Row{0.74, 0}, Row{0.75, -1}, Row{1.0, -1},
          Row{1.25, 0}, Row{2.49, 1}, Row{4.5, 2}, Row{8.5, 3}, Row{1e299, 993}}) {
        EXPECT_EQ(function.whatStage(row.x), row.stage) << row.x;
    }
    EXPECT_EQ(function.stageWidth(2), 2.0);
    EXPECT_EQ(function.stageWidth(-1), 0.25);
    EXPECT_EQ(function.stageWidth(std::numeric_limits<int>::max()), kInfinity);
    EXPECT_EQ(bss::WTriangleDitherFitFunction(0.5, 0.0).whatStage(3.0), std::numeric_limits<int>::max());
}

TEST(Models, DitherReadingThatIsNotFiniteRaisesTheRoundingError) {
    bss::WTriangleDitherFitFunction function(0.5, 4.0);
    for (const double x : {kInfinity, kNaN}) {
        EXPECT_THROW(DerivativesAt(function, x), std::runtime_error);
        try {
            function.Evaluate(x);
            ADD_FAILURE() << "no error at " << x;
        } catch (const std::runtime_error& error) {
            EXPECT_TRUE(std::string(error.what()).starts_with("Error in function boost::math::round<double>"))
                << error.what();
        }
    }
}

} // namespace
