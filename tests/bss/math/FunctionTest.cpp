#include "bss/math/EveryFunction.h"
#include "bss/math/WFunctionFactory.h"
#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Values = std::vector<double>;
using Matrix = std::vector<Values>;

double ErrorBarAt(bss::WFunction& function, double x) {
    double y = 0.0;
    double sigma = -1.0;
    function.Evaluate(x, y, sigma);
    EXPECT_EQ(y, function.Evaluate(x));
    return sigma;
}

TEST(WFunction, FactoryMakesTypesOneToSixAndStopsThere) {
    for (int type = -1; type <= 12; ++type) {
        const std::unique_ptr<bss::WFunction> function(
            bss::WFunctionFactory::GetFunction(static_cast<bss::WFunction::etype>(type)));
        ASSERT_EQ(function != nullptr, type >= 1 && type <= 6) << type;
        EXPECT_TRUE(!function || function->GetFunctionType() == type);
    }
}

TEST(WFunction, ObjectsHaveTheirFactsAndClonesCarryEverythingAndShareNothing) {
    for (const FunctionFacts& facts : EveryFunction()) {
        SCOPED_TRACE(facts.name);
        bss::WFunction& function = *facts.function;
        const auto count = static_cast<long>(facts.names.size());
        EXPECT_EQ(function.GetFunctionType(), facts.type);
        EXPECT_EQ(function.GetCoefficients(), Values(facts.names.size(), 0.0));
        for (long i = -1; i <= count; ++i) {
            const bool isInside = i >= 0 && i < count;
            EXPECT_EQ(function.GetCoefficientName(i),
                      isInside ? facts.names[static_cast<std::size_t>(i)] : std::wstring());
            function.SetCoefficient(i, 9.0);
            EXPECT_EQ(function.GetCoefficient(i), isInside ? 9.0 : 0.0);
        }
        const std::size_t n = facts.covarianceOfZeros ? facts.names.size() : 0;
        EXPECT_EQ(function.GetCovarianceMatrix(), Matrix(n, Values(n, 0.0)));
        EXPECT_EQ(function.GetChiSquared(), 0.0);
        EXPECT_EQ(function.GetChiSquaredFactor(), 1.0);

        const Values values(function.GetNumberOfCoefficients(), 1.5);
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
}

TEST(WFunction, CloneThatFindsNoMemoryIsNull) {
    SKIP_WITHOUT_FAILING_ALLOCATION();
    for (const FunctionFacts& facts : EveryFunction()) {
        FailAllocation(1);
        EXPECT_EQ(facts.function->clone(), nullptr) << facts.name;
    }
    FailAllocation(1);
    EXPECT_EQ(bss::WFunctionFactory::GetFunction(bss::WFunction::etGaussian), nullptr);
}

TEST(WFunction, ChiSquaredFactorIsChiSquaredByDegreesOfFreedomAndNeverBelowOne) {
    bss::WSimpleExponentialDecayFunction function;
    struct Row {
        double chiSquared, factor;
        long points;
    };
    // Two points are one fewer than the coefficients: the difference wraps to 4294967295.
    for (const Row& row : {Row{5.0, 1.0, 3}, Row{5.0, 5.0, 4}, Row{0.5, 1.0, 4}, Row{5.0, 1.0, 2},
                           Row{4294967295.0 * 3.0, 3.0, 2}, Row{4294967294.0 * 2.0, 2.0, 1}}) {
        function.SetChiSquared(row.chiSquared, row.points);
        EXPECT_EQ(function.GetChiSquaredFactor(), row.factor) << row.chiSquared << ' ' << row.points;
    }
    function.SetChiSquared(NAN, 4);
    EXPECT_TRUE(std::isnan(function.GetChiSquaredFactor()));
}

TEST(WFunction, ErrorBarPropagatesTheCovarianceOfWhichMissingCellsCountAsZero) {
    for (const FunctionFacts& facts : EveryFunction()) {
        SCOPED_TRACE(facts.name);
        bss::WFunction& function = *facts.function;
        const std::size_t n = std::max<std::size_t>(function.GetNumberOfCoefficients(), 2);
        function.SetCoefficients(Values(n, 0.75));
        EXPECT_EQ(ErrorBarAt(function, 1.25), 0.0);
        Values d;
        function.ComputeDerivatives(1.25, d);
        ASSERT_GE(d.size(), 2U);
        function.SetChiSquared(9.0 * 4.0, static_cast<long>(n) + 4);
        const double first = d[0] * d[0] * 2.0;
        function.SetCovarianceMatrix({{2.0, 0.5}, {0.5, 3.0}});
        EXPECT_DOUBLE_EQ(ErrorBarAt(function, 1.25),
                         std::sqrt(9.0 * (first + 2.0 * (d[0] * d[1] * 0.5) + d[1] * d[1] * 3.0)));
        function.SetCovarianceMatrix({{2.0}});
        EXPECT_DOUBLE_EQ(ErrorBarAt(function, 1.25), std::sqrt(9.0 * first));
        function.SetCovarianceMatrix({{-1.0}});
        EXPECT_EQ(ErrorBarAt(function, 1.25), 0.0);
    }
}

// A vector of any length may be set. What is missing counts as 0.0, nothing outside is read, and what is too
// much has a derivative of 0.0.
TEST(WFunction, CoefficientsOfAnotherNumberAreTaken) {
    for (const FunctionFacts& facts : EveryFunction()) {
        if (facts.type == bss::WFunction::etBroadening) {
            continue; // takes two or nothing
        }
        SCOPED_TRACE(facts.name);
        bss::WFunction& function = *facts.function;
        const std::size_t n = facts.names.empty() ? 1 : facts.names.size();
        Values padded(n, 0.0);
        padded[0] = 0.5;
        function.SetCoefficients(padded);
        const double expected = function.Evaluate(2.0);
        Values d;
        function.SetCoefficients({0.5});
        function.ComputeDerivatives(2.0, d);
        EXPECT_FALSE(d.empty());
        const double actual = function.Evaluate(2.0);
        EXPECT_TRUE(actual == expected || (std::isnan(actual) && std::isnan(expected)));
        function.SetCoefficients({});
        function.Evaluate(2.0);
        function.ComputeDerivatives(2.0, d);
        function.SetCoefficients(Values(7, 0.75));
        d.assign(7, 123.0);
        function.ComputeDerivatives(2.0, d);
        d.erase(d.begin(), d.begin() + static_cast<long>(facts.names.empty() ? 7 : n));
        EXPECT_EQ(d, Values(d.size(), 0.0));
    }
}

TEST(WLinearFunction, BasisCountSizesCoefficientsAndCovariance) {
    bss::WPolynomialFunction function;
    EXPECT_EQ(function.Evaluate(2.0), 0.0);
    function.SetNumberOfBasisFunctions(3);
    EXPECT_EQ(function.GetCoefficients(), Values(3, 0.0));
    EXPECT_EQ(function.GetCovarianceMatrix(), Matrix(3, Values(3, 0.0)));
    EXPECT_EQ(function.GetCoefficientName(2), L"A2");
    function.SetCoefficients({1.0, 2.0});
    EXPECT_EQ(function.Evaluate(4.0), 9.0);
    Values basis;
    function.GetBasisFunctions(basis);
    EXPECT_EQ(basis, (Values{1.0, 4.0}));

    // Extending keeps the old covariance cells and touches no coefficient.
    function.SetCovarianceMatrix({{1.0, 2.0}, {3.0, 4.0}});
    function.ExtendBasisFunctionsToCount(3);
    EXPECT_EQ(function.GetCovarianceMatrix(), (Matrix{{1.0, 2.0, 0.0}, {3.0, 4.0, 0.0}, {0.0, 0.0, 0.0}}));
    function.GetBasisFunctions(basis);
    EXPECT_EQ(basis, (Values{1.0, 4.0, 0.0}));
    EXPECT_EQ(function.GetCoefficients(), (Values{1.0, 2.0}));
    function.ExtendBasisFunctionsToCount(1);
    function.ExtendBasisFunctionsToCount(-1);
    EXPECT_EQ(function.GetCovarianceMatrix(), Matrix{{1.0}});

    for (const long n : {0L, -5L}) {
        function.SetNumberOfBasisFunctions(n);
        EXPECT_TRUE(function.GetCoefficients().empty());
        EXPECT_TRUE(function.GetCovarianceMatrix().empty());
        EXPECT_EQ(ErrorBarAt(function, 2.0), 0.0);
    }
}

} // namespace
