#include "bss/math/EveryFunction.h"
#include "bss/math/WFunctionFactory.h"
#include "bss/math/model/WGaussianFunction.h"
#include "bss/math/model/WPolynomialFunction.h"
#include "bss/math/model/WSimpleExponentialDecayFunction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

using Matrix = std::vector<std::vector<double>>;

double ErrorBarAt(bss::WFunction& function, double x) {
    double y = 0.0;
    double sigma = -1.0;
    function.Evaluate(x, y, sigma);
    EXPECT_EQ(y, function.Evaluate(x));
    return sigma;
}

TEST(WFunction, FactoryMakesTypesOneToSixAndStopsThere) {
    const std::vector<std::size_t> counts{0, 5, 4, 0, 2, 4};
    for (int type = 1; type <= 6; ++type) {
        const std::unique_ptr<bss::WFunction> function(
            bss::WFunctionFactory::GetFunction(static_cast<bss::WFunction::etype>(type)));
        ASSERT_TRUE(function) << type;
        EXPECT_EQ(function->GetFunctionType(), type);
        EXPECT_EQ(function->GetCoefficients(),
                  std::vector<double>(counts[static_cast<std::size_t>(type) - 1], 0.0));
    }
    for (const int type : {-1, 0, 7, 8, 9, 10, 11, 12}) {
        EXPECT_EQ(bss::WFunctionFactory::GetFunction(static_cast<bss::WFunction::etype>(type)), nullptr)
            << type;
    }
}

TEST(WFunction, NewObjectsHaveTheirTypeCountNamesAndCovariance) {
    for (const FunctionFacts& facts : EveryFunction()) {
        SCOPED_TRACE(testing::Message()
                     << "type " << facts.type << ", " << facts.names.size() << " coefficients");
        bss::WFunction& function = *facts.function;
        EXPECT_EQ(function.GetFunctionType(), facts.type);
        EXPECT_EQ(function.GetCoefficients(), std::vector<double>(facts.names.size(), 0.0));
        for (std::size_t i = 0; i < facts.names.size(); ++i) {
            EXPECT_EQ(function.GetCoefficientName(static_cast<long>(i)), facts.names[i]);
        }
        EXPECT_EQ(function.GetCoefficientName(-1), L"");
        EXPECT_EQ(function.GetCoefficientName(static_cast<long>(facts.names.size())), L"");
        const std::size_t n = facts.covarianceOfZeros ? facts.names.size() : 0;
        EXPECT_EQ(function.GetCovarianceMatrix(), Matrix(n, std::vector<double>(n, 0.0)));
        EXPECT_EQ(function.GetChiSquared(), 0.0);
        EXPECT_EQ(function.GetChiSquaredFactor(), 1.0);
    }
}

TEST(WFunction, CloneAndAssignmentCarryEverythingAndShareNothing) {
    for (const FunctionFacts& facts : EveryFunction()) {
        bss::WFunction& function = *facts.function;
        const std::vector<double> values(function.GetNumberOfCoefficients(), 1.5);
        function.SetCoefficients(values);
        function.SetCovarianceMatrix({{1.0, 2.0}, {3.0, 4.0}});
        function.SetChiSquared(70.0, static_cast<long>(values.size()) + 7);
        const std::unique_ptr<bss::WFunction> copy(function.clone());
        ASSERT_TRUE(copy);
        EXPECT_EQ(typeid(*copy), typeid(function));
        EXPECT_EQ(copy->GetFunctionType(), facts.type);
        EXPECT_EQ(copy->Evaluate(2.0), function.Evaluate(2.0));
        EXPECT_EQ(copy->GetCovarianceMatrix(), function.GetCovarianceMatrix());
        EXPECT_EQ(copy->GetChiSquared(), 70.0);
        EXPECT_EQ(copy->GetChiSquaredFactor(), 10.0);
        copy->SetCoefficient(0, -3.0);
        EXPECT_EQ(function.GetCoefficients(), values);
    }
    bss::WPolynomialFunction line;
    line.SetCoefficients({1.0, 2.0});
    bss::WPolynomialFunction other;
    other = line;
    EXPECT_EQ(other.Evaluate(3.0), 7.0);
    bss::WFunction& itself = other;
    other = static_cast<bss::WPolynomialFunction&>(itself);
    EXPECT_EQ(other.Evaluate(3.0), 7.0);
}

TEST(WFunction, IndicesOutsideAreAbsorbed) {
    bss::WGaussianFunction function;
    for (const long index : {-1L, 5L, 1000L}) {
        function.SetCoefficient(index, 9.0);
        EXPECT_EQ(function.GetCoefficient(index), 0.0);
    }
    EXPECT_EQ(function.GetCoefficients(), std::vector<double>(5, 0.0));
}

TEST(WFunction, ChiSquaredFactorIsChiSquaredByDegreesOfFreedomAndNeverBelowOne) {
    bss::WSimpleExponentialDecayFunction function;
    struct Row {
        double chiSquared;
        long points;
        double factor;
    };
    // Two points are one fewer than the coefficients: the difference wraps to 4294967295.
    for (const Row& row : {Row{5.0, 3, 1.0}, Row{5.0, 4, 5.0}, Row{0.5, 4, 1.0}, Row{5.0, 2, 1.0},
                           Row{4294967295.0 * 3.0, 2, 3.0}, Row{4294967294.0 * 2.0, 1, 2.0}}) {
        function.SetChiSquared(row.chiSquared, row.points);
        EXPECT_EQ(function.GetChiSquared(), row.chiSquared);
        EXPECT_EQ(function.GetChiSquaredFactor(), row.factor) << row.chiSquared << ' ' << row.points;
    }
    function.SetChiSquared(NAN, 4);
    EXPECT_TRUE(std::isnan(function.GetChiSquaredFactor()));
}

// Each of the three writings of the error bar: the base's, that of linear functions and that of the dither
// function.
TEST(WFunction, ErrorBarPropagatesTheCovarianceOfWhichMissingCellsCountAsZero) {
    for (const FunctionFacts& facts : EveryFunction()) {
        bss::WFunction& function = *facts.function;
        const std::size_t n = std::max<std::size_t>(function.GetNumberOfCoefficients(), 2);
        std::vector<double> coefficients(n, 0.75);
        function.SetCoefficients(coefficients);
        const double x = 1.25;
        SCOPED_TRACE(testing::Message() << "type " << facts.type);
        EXPECT_EQ(ErrorBarAt(function, x), 0.0);

        std::vector<double> d;
        function.ComputeDerivatives(x, d);
        ASSERT_GE(d.size(), 2u);
        Matrix covariance(n, std::vector<double>(n, 0.0));
        covariance[0][0] = 2.0;
        covariance[0][1] = covariance[1][0] = 0.5;
        covariance[1][1] = 3.0;
        const double sum = d[0] * d[0] * 2.0 + 2.0 * (d[0] * d[1] * 0.5) + d[1] * d[1] * 3.0;
        function.SetCovarianceMatrix(covariance);
        EXPECT_DOUBLE_EQ(ErrorBarAt(function, x), std::sqrt(sum));
        function.SetChiSquared(9.0 * 4.0, static_cast<long>(n) + 4);
        EXPECT_DOUBLE_EQ(ErrorBarAt(function, x), std::sqrt(9.0 * sum));

        function.SetCovarianceMatrix({{2.0, 0.5}, {0.5, 3.0}});
        EXPECT_DOUBLE_EQ(ErrorBarAt(function, x), std::sqrt(9.0 * sum));
        function.SetCovarianceMatrix({{2.0}});
        EXPECT_DOUBLE_EQ(ErrorBarAt(function, x), std::sqrt(9.0 * (d[0] * d[0] * 2.0)));
        function.SetCovarianceMatrix({{-1.0}});
        EXPECT_EQ(ErrorBarAt(function, x), 0.0);
    }
}

// A vector of any length may be set; what is missing counts as 0.0, and nothing outside is read.
TEST(WFunction, CoefficientsThatAShorterVectorLacksCountAsZero) {
    for (const FunctionFacts& facts : EveryFunction()) {
        if (facts.type == bss::WFunction::etBroadening) {
            continue; // takes two or nothing
        }
        bss::WFunction& function = *facts.function;
        const std::unique_ptr<bss::WFunction> padded(function.clone());
        std::vector<double> full{0.5};
        full.resize(std::max<std::size_t>(facts.names.size(), 1), 0.0);
        padded->SetCoefficients(full);
        function.SetCoefficients({0.5});
        const double expected = padded->Evaluate(2.0);
        const double actual = function.Evaluate(2.0);
        EXPECT_TRUE(actual == expected || (std::isnan(actual) && std::isnan(expected)))
            << "type " << facts.type;
        std::vector<double> d;
        function.ComputeDerivatives(2.0, d);
        EXPECT_FALSE(d.empty());
        function.SetCoefficients({});
        function.Evaluate(2.0);
        function.ComputeDerivatives(2.0, d);
    }
}

TEST(WLinearFunction, BasisCountSizesCoefficientsAndCovariance) {
    bss::WPolynomialFunction function;
    EXPECT_EQ(function.Evaluate(2.0), 0.0);
    function.SetNumberOfBasisFunctions(3);
    EXPECT_EQ(function.GetCoefficients(), std::vector<double>(3, 0.0));
    EXPECT_EQ(function.GetCovarianceMatrix(), Matrix(3, std::vector<double>(3, 0.0)));
    EXPECT_EQ(function.GetCoefficientName(2), L"A2");
    function.BasisFunctionEvaluation(4.0);
    std::vector<double> basis;
    function.GetBasisFunctions(basis);
    EXPECT_EQ(basis, (std::vector<double>{1.0, 4.0, 16.0}));

    function.SetCoefficients({1.0, 2.0});
    function.BasisFunctionEvaluation(4.0);
    function.GetBasisFunctions(basis);
    EXPECT_EQ(basis, (std::vector<double>{1.0, 4.0}));

    for (const long n : {0L, -5L}) {
        function.SetNumberOfBasisFunctions(n);
        EXPECT_TRUE(function.GetCoefficients().empty());
        EXPECT_TRUE(function.GetCovarianceMatrix().empty());
        EXPECT_EQ(function.Evaluate(2.0), 0.0);
        EXPECT_EQ(ErrorBarAt(function, 2.0), 0.0);
    }
}

TEST(WLinearFunction, ExtendingKeepsOldCovarianceCellsAndTouchesNoCoefficient) {
    bss::WPolynomialFunction function;
    function.SetCoefficients({7.0, 8.0});
    function.SetCovarianceMatrix({{1.0, 2.0}, {3.0, 4.0}});
    function.BasisFunctionEvaluation(5.0);
    function.ExtendBasisFunctionsToCount(3);
    EXPECT_EQ(function.GetCovarianceMatrix(), (Matrix{{1.0, 2.0, 0.0}, {3.0, 4.0, 0.0}, {0.0, 0.0, 0.0}}));
    std::vector<double> basis;
    function.GetBasisFunctions(basis);
    EXPECT_EQ(basis, (std::vector<double>{1.0, 5.0, 0.0}));
    EXPECT_EQ(function.GetCoefficients(), (std::vector<double>{7.0, 8.0}));
    function.ExtendBasisFunctionsToCount(1);
    EXPECT_EQ(function.GetCovarianceMatrix(), Matrix{{1.0}});
    function.ExtendBasisFunctionsToCount(-1);
    EXPECT_EQ(function.GetCovarianceMatrix(), Matrix{{1.0}});
}

} // namespace
