#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/EveryFunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>
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

Values ReadNumbers(const std::string& text) {
    Values values;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::size_t sign = word.starts_with('-') ? 1 : 0;
        const bool isHex = word.compare(sign, 2, "0x") == 0;
        double value = kNaN;
        std::from_chars(word.data() + sign + (isHex ? 2 : 0), word.data() + word.size(), value,
                        isHex ? std::chars_format::hex : std::chars_format::general);
        values.push_back(sign == 1 ? -value : value);
    }
    return values;
}

Values ValueAndDerivatives(bss::WFunction& function, double x) {
    Values derivatives = DerivativesAt(function, x);
    derivatives.insert(derivatives.begin(), function.Evaluate(x));
    return derivatives;
}

Values ResultsOf(const std::string& model, const Values& coefficients, double x) {
    if (model == "gaussian_cumulants_results") {
        bss::WGaussianCumulantsFunction f;
        f.SetCoefficients(coefficients);
        return Values{f.GetExpVal(),
                      f.GetErfVal(),
                      f.GetFirstCumulant(),
                      f.GetSecondCumulant(),
                      f.GetErrorFCLambda0(),
                      f.GetErrorFCSigma(),
                      f.GetErrorSCLambda0(),
                      f.GetErrorSCSigma(),
                      f.GetErrorFirstCumulant(x, x / 2),
                      f.GetErrorSecondCumulant(x, x / 2)};
    }
    if (model == "triangle_dither") { // the first two are the constructor's
        bss::WTriangleDitherFitFunction function(coefficients.at(0), coefficients.at(1));
        function.SetCoefficients({coefficients.begin() + 2, coefficients.end()});
        return ValueAndDerivatives(function, x);
    }
    for (const FunctionFacts& facts : EveryFunction()) {
        if (facts.name == model) {
            facts.function->SetCoefficients(coefficients);
            return ValueAndDerivatives(*facts.function, x);
        }
    }
    return {};
}

// math_golden.txt comes from make_golden.py, with its own writing of the formulas and its own bounds. Rows of
// pure arithmetic have the bound 0 and agree in every bit, on every target.
TEST(Models, ValuesAndDerivativesAgreeWithTheGoldenOnesWithinTheirBounds) {
    std::ifstream file(KRTBSS_SOURCE_DIR "/tests/data/math_golden.txt");
    ASSERT_TRUE(file) << "cannot open tests/data/math_golden.txt";
    std::set<std::string> models;
    int exact = 0;
    int bounded = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        SCOPED_TRACE(line);
        std::istringstream parts(line);
        std::string model;
        std::string columns[3]; // coefficients, x, values with bounds
        parts >> model;
        std::getline(parts, columns[0], '|');
        for (std::string& column : columns) {
            std::getline(parts, column, '|');
        }
        const Values actual = ResultsOf(model, ReadNumbers(columns[0]), ReadNumbers(columns[1]).at(0));
        models.insert(model);
        std::replace(columns[2].begin(), columns[2].end(), '~', ' ');
        const Values cells = ReadNumbers(columns[2]);
        ASSERT_EQ(cells.size(), 2 * actual.size());
        for (std::size_t i = 0; i < actual.size(); ++i) {
            const double expected = cells[2 * i];
            const double bound = cells[2 * i + 1];
            const bool isSame =
                std::bit_cast<std::uint64_t>(actual[i]) == std::bit_cast<std::uint64_t>(expected);
            EXPECT_TRUE(isSame || (bound > 0.0 && std::fabs(actual[i] - expected) <= bound))
                << "column " << i << ": " << std::hexfloat << actual[i] << " is not " << expected;
            exact += bound == 0.0 ? 1 : 0;
            bounded += bound > 0.0 ? 1 : 0;
        }
    }
    EXPECT_EQ(models.size(), EveryFunction().size() + 1);
    EXPECT_GT(exact, 300);
    EXPECT_GT(bounded, 800);
}

TEST(Models, GaussianOfZeroWidthWritesTheTinyOneBackAndEndsAtTwentyFive) {
    bss::WGaussianFunction function;
    function.SetCoefficients({2.0, 1.0, 0.0, 0.5, 0.0});
    EXPECT_EQ(function.Evaluate(1.0), 2.5);
    EXPECT_EQ(function.GetCoefficient(2), 1e-100);
    function.SetCoefficient(2, -0.0);
    EXPECT_EQ(DerivativesAt(function, 1.1), (Values{0.0, 0.0, 0.0, 1.0, 1.1}));
    EXPECT_EQ(function.GetCoefficient(2), 1e-100);

    // exp(-25 * 25) is 3.7e-272, which would show in the derivatives.
    function.SetCoefficients({1.0, 0.0, 1.0, 0.25, 1.0});
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

TEST(Models, GaussianCumulantsBranchesMeetAtTenAndPartBelowMinusTenAndAtZeroWidth) {
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
        EXPECT_THROW(function.Evaluate(x), std::runtime_error);
    }
}

} // namespace
