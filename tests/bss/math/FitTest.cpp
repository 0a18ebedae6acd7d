// Both fits on small problems; NistTest.cpp has the certified ones.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/FormulaFunction.h"
#include "bss/math/WLinearLeastSquaresFit.h"
#include "bss/math/WNonLinearLeastSquaresFit.h"
#include "bss/math/model/WGaussianFunction.h"
#include "bss/math/model/WPolynomialFunction.h"
#include "support/DebugOutput.h"
#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Values = std::vector<double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A function under a fit, with data: of the line through these, 0.5 + 1.1 x, the residuals are -0.1, 0.3,
// -0.3 and 0.1; from 0 + x they are 0.4, 0.9, 0.4 and 0.9.
template <class Fit, class Function>
struct FitOfData {
    explicit FitOfData(Function f) : function(std::move(f)) {
        fit.SetFunction(&function);
        fit.SetX(x);
        fit.SetY(y);
    }
    int Perform() {
        sigma.empty() ? fit.ClearSigY() : fit.SetSigY(sigma);
        fit.InitializeFit();
        return fit.PerformFit();
    }
    void Hold(std::initializer_list<long> indices) {
        for (const long index : indices) {
            fit.SetCoefficientFixed(index, true);
        }
    }

    Function function;
    Values x = {0, 1, 2, 3};
    Values y = {0.4, 1.9, 2.4, 3.9};
    Values sigma;
    Fit fit;
};

struct PolynomialFit : FitOfData<bss::WLinearLeastSquaresFit, bss::WPolynomialFunction> {
    explicit PolynomialFit(const Values& coefficients) : FitOfData({}) {
        function.SetCoefficients(coefficients);
        fit.SetFunction(&function);
    }
};

// Opens the protected operations to the tests.
class OpenFit : public bss::WNonLinearLeastSquaresFit {
public:
    using WNonLinearLeastSquaresFit::GammaLambdaTest;
    using WNonLinearLeastSquaresFit::GaussJ;
    using WNonLinearLeastSquaresFit::m_bTrace;
    using WNonLinearLeastSquaresFit::m_dEpsilon;
    using WNonLinearLeastSquaresFit::m_dGamma;
    using WNonLinearLeastSquaresFit::m_dLambda;
};

double Line(const Values& b, double x, double* d) {
    d[0] = 1.0;
    d[1] = x;
    return b[0] + b[1] * x;
}

// Wrong derivatives: each step makes it worse, however small it is.
double Backwards(const Values& b, double, double* d) {
    d[0] = b[0] > 0.0 ? 1.0 : -1.0;
    return b[0] - 10.0;
}

struct FormulaFit : FitOfData<OpenFit, FormulaFunction> {
    explicit FormulaFit(Values start = {0.0, 1.0}, FormulaFunction::Formula formula = Line)
        : FitOfData({std::move(start), std::move(formula)}) {}
    bool Fails() {
        try {
            Perform();
        } catch (bss::WNEFitFailed& failure) {
            return failure.AsString(true) == L"Fit failed in module Nonlinear least squares fit.\n";
        }
        return false;
    }
    // Of the start: with all coefficients held, nothing else is left.
    double ChiSquaredOfStart() {
        Hold({0, 1});
        EXPECT_EQ(0, Perform());
        return fit.GetChiSquared();
    }
};

template <class Problem>
void ExpectThrowWithoutFunctionOrWholeData(Problem&& problem) {
    auto& fit = problem.fit;
    const Values two = {1, 2};
    fit.SetY(two);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    fit.SetY(problem.y);
    fit.SetSigY(two);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    fit.ClearSigY();
    EXPECT_EQ(0, fit.PerformFit()) << "InitializeFit was left out";
    fit.SetFunction(nullptr);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    EXPECT_EQ(0U, fit.GetNumberOfCoefficients());
    EXPECT_EQ(0.0, fit.GetCoefficient(0));
    EXPECT_EQ(0.0, fit.GetCovariance(0, 0));
}

TEST(LeastSquaresFit, ThrowsWithoutFunctionOrWholeData) {
    ExpectThrowWithoutFunctionOrWholeData(PolynomialFit({0.0, 0.0}));
    ExpectThrowWithoutFunctionOrWholeData(FormulaFit());
    bss::WGaussianFunction peak;
    PolynomialFit linear({0.0});
    linear.fit.SetFunction(&peak);
    EXPECT_THROW(linear.Perform(), bss::WNEFitFailed) << "not a linear function";
}

// The linear fit's weights are 1, those of the other without sigmas 100.
template <class Problem>
void ExpectStatisticsOfTheLine(Problem&& problem, double weight, double tolerance) {
    ASSERT_EQ(0, problem.Perform());
    const bss::WLeastSquaresFit& fit = problem.fit;
    const double square = weight * weight;
    EXPECT_NEAR(0.5, problem.function.GetCoefficient(0), tolerance);
    EXPECT_NEAR(1.1, fit.GetCoefficient(1), tolerance);
    EXPECT_NEAR(0.2, fit.GetChiSquared() / square, 1e-13);
    EXPECT_NEAR(0.1, fit.GetReducedChiSquared() / square, 1e-13);
    EXPECT_NEAR(std::sqrt(0.1 * square / (weight == 1.0 ? 1.0 : 4.0 * weight)), fit.GetStdError(), 1e-12);
    EXPECT_NEAR(1.0 - 0.2 / 6.25, fit.GetRSquared(), 1e-12);
    EXPECT_NEAR(1.0 - 3.0 * 0.2 / (2.0 * 6.25), fit.GetAdjustedRSquared(), 1e-12);
    EXPECT_NEAR(0.7, fit.GetCovariance(0, 0) * square, 1e-12);
    EXPECT_NEAR(-0.3, fit.GetCovariance(1, 0) * square, 1e-12);
    EXPECT_EQ(fit.GetChiSquared(), problem.function.GetChiSquared());
    EXPECT_EQ(std::max(1.0, fit.GetReducedChiSquared()), problem.function.GetChiSquaredFactor());
    EXPECT_EQ(fit.GetCovariance(0, 1), problem.function.GetCovarianceMatrix()[1][0]);
}

TEST(LeastSquaresFit, StatisticsFollowTheirFormulas) {
    ExpectStatisticsOfTheLine(PolynomialFit({0.0, 0.0}), 1.0, 1e-14);
    ExpectStatisticsOfTheLine(FormulaFit(), 100.0, 1e-7);
}

TEST(LinearFit, SigmasWeighThePointsAndZeroCountsOneOutsideTheMean) {
    PolynomialFit constant({0.0});
    // Weights 1/4 and, for sigma 0.0, 1; the mean of the statistics leaves the second point out.
    constant.x = {0, 1};
    constant.y = {1.0, 2.0};
    constant.sigma = {2.0, 0.0};
    ASSERT_EQ(0, constant.Perform());
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

TEST(LeastSquaresFit, WithoutDegreesOfFreedomOrVariationStatisticsStayAtTheirLimits) {
    PolynomialFit linear({0.0, 0.0});
    FormulaFit nonLinear;
    linear.x = nonLinear.x = {0, 1};
    ASSERT_EQ(0, linear.Perform() + nonLinear.Perform());
    EXPECT_EQ(0.0, linear.fit.GetReducedChiSquared() + nonLinear.fit.GetReducedChiSquared());
    EXPECT_EQ(0.0, linear.fit.GetStdError() + nonLinear.fit.GetStdError());
    EXPECT_EQ(1.0, linear.fit.GetAdjustedRSquared());
    EXPECT_EQ(0.0, nonLinear.fit.GetAdjustedRSquared());
    PolynomialFit constant({0.0});
    constant.y = Values(4, 5.0);
    ASSERT_EQ(0, constant.Perform());
    EXPECT_EQ(1.0, constant.fit.GetRSquared());
    EXPECT_EQ(1.0, constant.fit.GetAdjustedRSquared());
}

TEST(LinearFit, HeldCoefficientsMoveToTheDataAndLeaveAShortCovariance) {
    PolynomialFit parabola({0.0, 2.0, 0.0});
    parabola.Hold({1, 3}); // there is no coefficient 3
    parabola.x = {-1, 0, 1, 2, 3};
    parabola.y = {0, 1, 4, 9, 16};
    ASSERT_EQ(0, parabola.Perform());
    EXPECT_NEAR(1.0, parabola.function.GetCoefficient(0), 1e-14);
    EXPECT_EQ(2.0, parabola.function.GetCoefficient(1));
    EXPECT_NEAR(1.0, parabola.function.GetCoefficient(2), 1e-14);

    // Rows of the free coefficients 0 and 2 with two cells, then the untouched zeros.
    const auto& covariance = parabola.function.GetCovarianceMatrix();
    ASSERT_EQ(3U, covariance.size());
    EXPECT_TRUE(covariance[0].size() == 2 && covariance[1].size() == 2);
    EXPECT_EQ(Values({0.0, 0.0, 0.0}), covariance[2]);
    EXPECT_NE(0.0, parabola.fit.GetCovariance(1, 1));
    EXPECT_EQ(0.0, parabola.fit.GetCovariance(0, 2));

    // A copy refers to the same function and owns its covariance.
    const bss::WLinearLeastSquaresFit copy(parabola.fit);
    EXPECT_TRUE(copy.GetCoefficientFixed(1));
    EXPECT_NE(0.0, copy.GetCovariance(1, 1));

    // A flag set after InitializeFit waits for the next one.
    parabola.fit.SetCoefficientFixed(1, false);
    ASSERT_EQ(0, parabola.fit.PerformFit());
    EXPECT_EQ(2.0, parabola.function.GetCoefficient(1));
}

TEST(LinearFit, FailureGivesOneAndChangesNothing) {
    struct Row {
        Values x, y, sigma;
        bool isHeld; // nothing is solved for then, so only the statistics show the fault
    };
    const Values good{1, 2, 3, 4};
    std::vector<Row> rows{
        {{3, 3, 3}, {1, 2, 3}, {}, false},                          // singular
        {{}, {}, {}, false},                                        // likewise
        {{1e-17, 2e-17, 3e-17}, {1, 2, 3}, {1e4, 1e4, 1e4}, false}, // next to it
        {good, {1e200, -1e200, -1e200, 1e200}, {}, false},          // finite sums, infinite chi-squared
        {good, good, {1, kNaN, 1, 1}, false}};
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        const Values hurt{1, 2, bad, 4};
        rows.insert(rows.end(), {{hurt, good, {}, false}, {good, hurt, {}, false}, {good, hurt, {}, true}});
    }
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.x) + testing::PrintToString(row.y));
        PolynomialFit line({7.0, 8.0});
        line.x = row.x;
        line.y = row.y;
        line.sigma = row.sigma;
        line.fit.SetCoefficientFixed(0, row.isHeld);
        line.fit.SetCoefficientFixed(1, row.isHeld);
        EXPECT_EQ(1, line.Perform());
        EXPECT_EQ(Values({7.0, 8.0}), line.function.GetCoefficients());
        EXPECT_EQ(0.0, line.fit.GetChiSquared());
        EXPECT_EQ(0.0, line.fit.GetRSquared());
    }
}

TEST(NonLinearFit, SigmaWeighsByItsReciprocalAndAboutOneCountsHundred) {
    using Pair = std::pair<double, double>;
    for (const auto& [sigma, weight] :
         {Pair(1.0, 100.0), Pair(0.5, 2.0), Pair(2.0, 0.5), Pair(1.0 + 1e-7, 100.0), Pair(-3.0, 100.0),
          Pair(0.0, 100.0), Pair(1e-100, 100.0), Pair(1.00001, 1.0 / 1.00001)}) {
        FormulaFit problem;
        problem.sigma.assign(4, sigma);
        const double chi = 1.94 * weight * weight;
        EXPECT_NEAR(chi, problem.ChiSquaredOfStart(), 1e-12 * chi) << sigma;
        EXPECT_NEAR(std::sqrt(chi / (4.0 * 4.0 * weight)), problem.fit.GetStdError(), 1e-9) << sigma;
    }
}

TEST(NonLinearFit, LimitsMultiplyChiSquared) {
    struct Row {
        double slope, lower, upper, factor;
    };
    const double inside =
        1.0 + 1000.0 * (2.0 - 1.0 / (std::exp(-0.5 / 0.025) + 1.0) - 1.0 / (std::exp(-1.0 / 0.1) + 1.0));
    for (const Row& row : {Row{1.0, 0.5, 2.0, inside}, Row{1.0, 5.0, 6.0, 1001.0}, Row{1.0, 0.1, 0.5, 1001.0},
                           Row{-1.0, -2.0, -0.5, inside}, Row{-1.0, -2.0, -1.0, 501.0}}) {
        FormulaFit problem({0.0, row.slope});
        const double free = problem.ChiSquaredOfStart();
        problem.fit.SetValueLimits(1, row.lower, row.upper);
        problem.fit.SetValueLimits(2, 1.0, 2.0); // none such
        EXPECT_NEAR(row.factor, problem.ChiSquaredOfStart() / free, 0.1) << row.lower << ' ' << row.upper;
        problem.fit.UseValueLimits(1, false);
        EXPECT_EQ(free, problem.ChiSquaredOfStart());
    }
    // Free, the slope is 1.1: chi-squared shows the penalty that a limit of 1.0 leaves.
    FormulaFit limited({0.0, 0.8});
    limited.fit.SetValueLimits(1, 0.5, 1.0);
    ASSERT_EQ(0, limited.Perform());
    EXPECT_LT(limited.function.GetCoefficient(1), 0.85);
    EXPECT_GT(limited.fit.GetChiSquared(), 2000.0);
    // A limit of 0.0 has no width: met exactly it is 0 / 0.
    FormulaFit zero({0.0, 0.0});
    zero.fit.SetValueLimits(1, 0.0, 2.0);
    EXPECT_TRUE(zero.Fails());
}

TEST(NonLinearFit, HeldCoefficientsStayAndHaveNoCovariance) {
    FormulaFit problem;
    problem.Hold({1});
    ASSERT_EQ(0, problem.Perform());
    EXPECT_EQ(1.0, problem.function.GetCoefficient(1));
    EXPECT_NEAR(0.65, problem.function.GetCoefficient(0), 1e-6);
    // Residuals of 0.25: three degrees of freedom.
    EXPECT_NEAR(2500.0 / 3.0, problem.fit.GetReducedChiSquared(), 1e-6);
    EXPECT_NEAR(1.0 / (4 * 10000.0), problem.fit.GetCovariance(0, 0), 1e-18);
    for (const auto& [row, column] : {std::pair(0L, 1L), std::pair(1L, 0L), std::pair(1L, 1L)}) {
        EXPECT_EQ(0.0, problem.fit.GetCovariance(row, column));
    }
    problem.ChiSquaredOfStart();
    EXPECT_EQ(0U, problem.fit.Iterations());
    EXPECT_EQ(0.0, problem.fit.GetCovariance(0, 0));
}

TEST(NonLinearFit, EvaluatesOncePerTrialAndDifferentiatesOncePerIteration) {
    FormulaFit problem;
    ASSERT_EQ(0, problem.Perform());
    const long passes = problem.fit.Iterations() + 1L;
    EXPECT_EQ(0, problem.function.resets);
    EXPECT_EQ(4 * (passes + 1), problem.function.evaluations) << "the start and each trial";
    EXPECT_EQ(4 * (passes + 1), problem.function.differentiations) << "each pass and the covariance";

    // From the solution, the one trial changes nothing, and is no reason to halve its step.
    FormulaFit solved;
    solved.y = solved.x;
    ASSERT_EQ(0, solved.Perform());
    EXPECT_EQ(Values({0.0, 1.0}), solved.function.GetCoefficients());
    EXPECT_EQ(0U, solved.fit.Iterations());
    EXPECT_EQ(8, solved.function.evaluations);
}

TEST(NonLinearFit, AllocatesNothingPerPointOrIteration) {
    SKIP_WITHOUT_FAILING_ALLOCATION();
    const auto allocations = [](int points, double start) {
        bss::WGaussianFunction peak;
        peak.SetCoefficients({3.0, 2.5, 1.0, 0.5, 0.1});
        FitOfData<bss::WNonLinearLeastSquaresFit, bss::WGaussianFunction> problem(peak);
        problem.x.clear();
        problem.y.clear();
        for (int i = 0; i < points; ++i) {
            problem.x.push_back(5.0 * i / points);
            problem.y.push_back(peak.Evaluate(problem.x.back()));
        }
        problem.function.SetCoefficient(2, start);
        const long before = CountAllocations();
        EXPECT_EQ(0, problem.Perform());
        return CountAllocations() - before;
    };
    const long few = allocations(200, 1.001);
    EXPECT_GT(few, 0) << "the counter sees the library";
    EXPECT_EQ(few, allocations(200, 1.2));
    EXPECT_EQ(few, allocations(5000, 1.2));
}

TEST(NonLinearFit, DebugOutputHasTheReportOfAFailureAndIfTracedTheTestThatPassed) {
    const std::wstring report = L"============= Non-Linear Least-Squares Fit ==================\n"
                                L"Number of data points:           4\n"
                                L"Number of parameters:            2\n"
                                L"Number of independent variables: 1\n";
    const std::wstring failure = report + L"WNonLinearLeastSquaresFit::PerformFit:  Failed to fit\n";
    struct Row {
        FormulaFunction::Formula formula;
        unsigned maxIterations;
        bool isTraced;
        std::wstring output;
    };
    for (const Row& row : {Row{Line, 500, false, L""}, Row{Line, 0, false, failure},
                           Row{Line, 500, true, report + L"..... Epsilon Test Passed.\n"},
                           Row{Backwards, 500, true, report + L"!!!!! Gamma-Epsilon Test Passed.\n"},
                           Row{Line, 0, true, report + L"!!!!! Fit Forced Off.\n" + failure}}) {
        FormulaFit problem({-1.0, 1.0}, row.formula);
        problem.Hold({1});
        problem.fit.SetMaxIterations(row.maxIterations);
        OpenFit::m_bTrace = row.isTraced;
        DebugOutput output;
        EXPECT_EQ(row.maxIterations == 0, problem.Fails());
        OpenFit::m_bTrace = false;
        EXPECT_EQ(row.output, output.Text());
        EXPECT_TRUE(row.maxIterations > 0 || problem.function.differentiations == 0);
    }
    OpenFit fit;
    EXPECT_EQ(L"[    1.0000e+00,    -2.5000e-03,    1.2346e+100], Chi\u00B2=0.0000e+00",
              fit.GenerateVectorString({1.0, -0.0025, 1.23456e100}));
    EXPECT_EQ(L"[[    1.0000e+00,     2.0000e+00] [    3.0000e+00,     4.0000e+00]]",
              fit.GenerateMatrixString({{1.0, 2.0}, {3.0, 4.0}}));
}

TEST(NonLinearFit, SecondFitContinuesWithCoefficientsAndLambdaDownToItsFloor) {
    FormulaFit problem({5.0, 5.0});
    problem.fit.SetMaxIterations(1);
    EXPECT_TRUE(problem.Fails());
    EXPECT_EQ(1U, problem.fit.Iterations());
    EXPECT_NEAR(0.0001, problem.fit.m_dLambda, 1e-15);
    const double afterOne = problem.fit.GetChiSquared();
    problem.fit.SetMaxIterations(500);
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(0, problem.fit.PerformFit());
        EXPECT_LT(problem.fit.GetChiSquared(), afterOne);
        problem.y[0] += 1e-3; // so that the next has something to do
    }
    EXPECT_NEAR(1e-9, problem.fit.m_dLambda, 1e-15);
}

TEST(NonLinearFit, RejectedStepsRaiseLambdaAndResetTheFunction) {
    // The model is a number only at the start: every step leaves it.
    FormulaFit problem({1.0}, [](const Values& b, double, double* d) {
        d[0] = 1e-8;
        return b[0] == 1.0 ? 1.0 : kNaN;
    });
    EXPECT_TRUE(problem.Fails());
    // 0.001 passes 1000 with the seventh factor of ten.
    EXPECT_EQ(7, problem.function.resets);
    EXPECT_EQ(0U, problem.fit.Iterations());
    EXPECT_NEAR(10000.0 * (0.36 + 0.81 + 1.96 + 8.41), problem.fit.GetChiSquared(), 1e-6) << "of the start";
    EXPECT_TRUE(problem.function.GetCovarianceMatrix().empty());
}

TEST(NonLinearFit, WhatIsNotANumberEndsInFailure) {
    FormulaFit inSigma;
    inSigma.sigma = {2.0, kNaN, 2.0, 2.0};
    EXPECT_TRUE(inSigma.Fails());
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        FormulaFit inY;
        inY.y[1] = bad;
        EXPECT_TRUE(inY.Fails()) << bad;
        inY.Hold({0, 1});
        EXPECT_TRUE(inY.Fails()) << bad;
        FormulaFit inX;
        inX.x[2] = bad;
        EXPECT_TRUE(inX.Fails()) << bad;
        EXPECT_TRUE(FormulaFit({0.0, bad}).Fails()) << bad;

        // A derivative that is not a number makes a step of 0.0, which passes the epsilon test.
        FormulaFit derivative({0.0, 1.0}, [bad](const Values& b, double x, double* d) {
            const double y = Line(b, x, d);
            d[1] = x == 2.0 ? bad : x;
            return y;
        });
        EXPECT_TRUE(derivative.Fails()) << bad;
        EXPECT_TRUE(derivative.function.GetCovarianceMatrix().empty());
        // Of a held coefficient it does not matter.
        derivative.function.SetCoefficients({0.0, 1.0});
        derivative.Hold({1});
        EXPECT_EQ(0, derivative.Perform()) << bad;
    }
}

TEST(NonLinearFit, ResidualAboveTheLargestStopsTheSum) {
    FormulaFit problem;
    problem.y[2] = -1e81;
    problem.fit.SetMaxIterations(0);
    EXPECT_TRUE(problem.Fails());
    EXPECT_EQ(1e80, problem.fit.GetChiSquared());
    EXPECT_EQ(3, problem.function.evaluations);
}

TEST(NonLinearFit, NeverRunsForEver) {
    // No step is below an epsilon of 0.0: halving goes on until nothing is left.
    for (const double epsilon : {0.0, -1.0, kNaN}) {
        FormulaFit problem({-1.0}, Backwards);
        problem.fit.m_dEpsilon = epsilon;
        EXPECT_EQ(0, problem.Perform());
        EXPECT_EQ(-1.0, problem.function.GetCoefficient(0));
    }
    // A lambda that ten times itself does not raise.
    for (const double lambda : {0.0, -1.0, kNaN, kInfinity}) {
        FormulaFit problem;
        problem.y[0] = kNaN;
        EXPECT_TRUE(problem.Fails());
        problem.fit.SetLambda(lambda);
        EXPECT_THROW(problem.fit.PerformFit(), bss::WNEFitFailed) << lambda;
    }
}

TEST(NonLinearFit, DependentCoefficientsAreFitted) {
    // Only the sum of the two is determined: the damped equations still have a solution.
    FormulaFit problem({0.0, 0.0}, [](const Values& b, double, double* d) {
        d[0] = d[1] = 1.0;
        return b[0] + b[1];
    });
    ASSERT_EQ(0, problem.Perform());
    EXPECT_NEAR(2.15, problem.function.GetCoefficient(0) + problem.function.GetCoefficient(1), 1e-4);
    EXPECT_TRUE(std::isfinite(problem.fit.GetCovariance(0, 0)));
}

TEST(NonLinearFit, CopyBringsDataAndFunctionButNoLimits) {
    FormulaFit problem;
    problem.fit.SetMaxIterations(77);
    problem.fit.SetValueLimits(1, 5.0, 6.0);
    problem.Hold({0});
    OpenFit copy(problem.fit);
    EXPECT_EQ(77U, copy.MaxIterations());
    EXPECT_TRUE(copy.GetCoefficientFixed(0));
    EXPECT_EQ(0, copy.PerformFit()) << "without InitializeFit";
    EXPECT_LT(problem.function.GetCoefficient(1), 2.0) << "no limit";
    double lower = -1.0;
    double upper = -1.0;
    copy.GetValueLimits(1, lower, upper);
    EXPECT_EQ(-1.0, lower);
    copy.SetValueLimits(1, 2.0, 3.0);
    copy = problem.fit;
    copy.GetValueLimits(1, lower, upper);
    EXPECT_EQ(-1.0, lower);
    problem.fit.GetValueLimits(1, lower, upper);
    EXPECT_EQ(5.0, lower);
}

// The Gaussian rewrites a width of 0.0 while it is evaluated: the fit goes the way it goes from that width.
TEST(NonLinearFit, WidthThatTheModelMendsCountsAsIfItHadBeenSet) {
    Values results[2];
    for (const int mended : {0, 1}) {
        bss::WGaussianFunction peak;
        peak.SetCoefficients({1.0, 2.0, mended == 0 ? 1e-100 : 0.0, 0.0, 0.0});
        FitOfData<bss::WNonLinearLeastSquaresFit, bss::WGaussianFunction> problem(peak);
        problem.Hold({1, 2, 4});
        ASSERT_EQ(0, problem.Perform());
        results[mended] = {problem.fit.GetCoefficient(0), problem.fit.GetCoefficient(3),
                           problem.fit.GetChiSquared()};
    }
    EXPECT_EQ(results[0], results[1]);
}

TEST(NonLinearFit, GammaLambdaTestTakesBothLimitsIn) {
    OpenFit fit;
    const auto passes = [&fit](double gamma, double lambda) {
        fit.m_dGamma = gamma;
        fit.m_dLambda = lambda;
        return fit.GammaLambdaTest();
    };
    EXPECT_TRUE(passes(90.0, 1.0) && passes(180.0, 1000.0));
    EXPECT_FALSE(passes(89.9, 1.0) || passes(90.0, 0.9) || passes(kNaN, 1.0));
}

TEST(GaussJ, InvertsAndSolvesWithFullPivoting) {
    const OpenFit fit;
    OpenFit::matrix a = {{0.0, 2.0, 1.0}, {1.0, -2.0, -3.0}, {-1.0, 1.0, 2.0}};
    OpenFit::matrix b = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    const OpenFit::matrix inverse = {{-1.0, -3.0, -4.0}, {1.0, 1.0, 1.0}, {-1.0, -2.0, -2.0}};
    EXPECT_EQ(0, fit.GaussJ(a, 3, b, 3));
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_NEAR(inverse[i / 3][i % 3], a[i / 3][i % 3], 1e-14);
        EXPECT_NEAR(inverse[i / 3][i % 3], b[i / 3][i % 3], 1e-14);
    }
    OpenFit::matrix hurt = {{kNaN, kNaN}, {kNaN, kNaN}};
    EXPECT_EQ(2, fit.GaussJ(hurt, 2, b, 0));
}

} // namespace
