// Values and derivatives against tests/data/math_golden.txt, which make_golden.py writes from its own writing
// of the formulas and with its own bounds. Rows of pure arithmetic have the bound 0 and agree in every bit,
// on every target.

#include "bss/math/EveryFunction.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <set>
#include <sstream>

namespace {

using Values = std::vector<double>;

double ReadNumber(std::string text) {
    const bool negative = text.starts_with('-');
    const std::size_t sign = negative ? 1 : 0;
    const bool hex = text.compare(sign, 2, "0x") == 0;
    const char* first = text.data() + sign + (hex ? 2 : 0);
    const char* last = text.data() + text.size();
    double value = 0.0;
    const auto [end, error] =
        std::from_chars(first, last, value, hex ? std::chars_format::hex : std::chars_format::general);
    EXPECT_TRUE(error == std::errc() && end == last) << text;
    return negative ? -value : value;
}

Values ReadNumbers(const std::string& text) {
    Values values;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        values.push_back(ReadNumber(word));
    }
    return values;
}

Values ValueAndDerivatives(bss::WFunction& function, double x) {
    Values derivatives;
    function.ComputeDerivatives(x, derivatives);
    derivatives.insert(derivatives.begin(), function.Evaluate(x));
    return derivatives;
}

Values CumulantResults(const Values& coefficients, double x) {
    bss::WGaussianCumulantsFunction f;
    f.SetCoefficients(coefficients);
    return {f.GetExpVal(),
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

Values ResultsOf(const std::string& model, const Values& coefficients, double x) {
    if (model == "gaussian_cumulants_results") {
        return CumulantResults(coefficients, x);
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

TEST(GoldenValues, FunctionsAndDerivativesAgreeWithinTheFilesBounds) {
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
        std::vector<std::string> columns;
        std::istringstream parts(line);
        for (std::string column; std::getline(parts, column, '|');) {
            columns.push_back(column);
        }
        ASSERT_EQ(columns.size(), 4u);
        const std::string model = columns[0].substr(0, columns[0].find(' '));
        const Values actual = ResultsOf(model, ReadNumbers(columns[1]), ReadNumbers(columns[2]).at(0));
        models.insert(model);

        std::istringstream cells(columns[3]);
        std::size_t i = 0;
        for (std::string cell; cells >> cell; ++i) {
            ASSERT_LT(i, actual.size());
            const std::size_t tilde = cell.find('~');
            const double expected = ReadNumber(cell.substr(0, tilde));
            const double bound = ReadNumber(cell.substr(tilde + 1));
            if (bound == 0.0) {
                EXPECT_EQ(std::bit_cast<std::uint64_t>(actual[i]), std::bit_cast<std::uint64_t>(expected))
                    << "column " << i << ": " << std::hexfloat << actual[i] << " is not " << expected;
                ++exact;
            } else {
                EXPECT_LE(std::fabs(actual[i] - expected), bound) << "column " << i;
                ++bounded;
            }
        }
        EXPECT_EQ(i, actual.size());
    }
    EXPECT_EQ(models.size(), EveryFunction().size() + 1);
    EXPECT_GT(exact, 300);
    EXPECT_GT(bounded, 800);
}

} // namespace
