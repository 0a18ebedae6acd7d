#include "bss/math/WNonLinearLeastSquaresFit.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/FormulaFunction.h"
#include "bss/math/model/WGaussianFunction.h"
#include "support/DebugOutput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Values = std::vector<double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Opens the protected operations to the tests.
class OpenFit : public bss::WNonLinearLeastSquaresFit {
public:
    using WNonLinearLeastSquaresFit::WNonLinearLeastSquaresFit;

    using WNonLinearLeastSquaresFit::GammaEpsilonTest;
    using WNonLinearLeastSquaresFit::GammaLambdaTest;
    using WNonLinearLeastSquaresFit::GaussJ;
    using WNonLinearLeastSquaresFit::m_adStep;
    using WNonLinearLeastSquaresFit::m_bTrace;
    using WNonLinearLeastSquaresFit::m_dGamma;
    using WNonLinearLeastSquaresFit::m_dLambda;
};

double Line(const Values& b, double x, double* d) {
    if (d != nullptr) {
        d[0] = 1.0;
        d[1] = x;
    }
    return b[0] + b[1] * x;
}

// A formula under a fit, with data: of the line through these, 0.5 + 1.1 x, the residuals are -0.1, 0.3, -0.3
// and 0.1; from 0 + x they are 0.4, 0.9, 0.4 and 0.9.
struct FormulaFit {
    explicit FormulaFit(Values start = {0.0, 1.0}, FormulaFunction::Formula formula = Line)
        : function(std::move(start), std::move(formula)) {
        fit.SetFunction(&function);
        fit.SetX(x);
        fit.SetY(y);
    }
    int Perform() {
        fit.InitializeFit();
        return fit.PerformFit();
    }
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
        fit.SetCoefficientFixed(0, true);
        fit.SetCoefficientFixed(1, true);
        EXPECT_EQ(0, Perform());
        return fit.GetChiSquared();
    }

    FormulaFunction function;
    Values x = {0, 1, 2, 3};
    Values y = {0.4, 1.9, 2.4, 3.9};
    OpenFit fit;
};

TEST(NonLinearFit, StatisticsFollowTheirFormulasAtAWeightOfHundred) {
    FormulaFit problem;
    ASSERT_EQ(0, problem.Perform());
    const bss::WNonLinearLeastSquaresFit& fit = problem.fit;
    EXPECT_NEAR(0.5, problem.function.GetCoefficient(0), 1e-7);
    EXPECT_NEAR(1.1, problem.function.GetCoefficient(1), 1e-7);
    EXPECT_NEAR(2000.0, fit.GetChiSquared(), 1e-9);
    EXPECT_NEAR(1000.0, fit.GetReducedChiSquared(), 1e-9);
    EXPECT_NEAR(std::sqrt(2000.0 / (2 * 400.0)), fit.GetStdError(), 1e-12);
    EXPECT_NEAR(1.0 - 0.2 / 6.25, fit.GetRSquared(), 1e-12);
    EXPECT_NEAR(1.0 - 3.0 * 0.2 / (2.0 * 6.25), fit.GetAdjustedRSquared(), 1e-12);
    EXPECT_NEAR(0.7e-4, fit.GetCovariance(0, 0), 1e-15);
    EXPECT_EQ(fit.GetChiSquared(), problem.function.GetChiSquared());
    EXPECT_EQ(1000.0, std::round(problem.function.GetChiSquaredFactor()));
    EXPECT_EQ(fit.GetCovariance(0, 1), problem.function.GetCovarianceMatrix()[1][0]);

    FormulaFit exact;
    exact.x = {0, 1};
    exact.y = {1.0, 3.0};
    ASSERT_EQ(0, exact.Perform());
    EXPECT_EQ(0.0, exact.fit.GetAdjustedRSquared()) << "no degrees of freedom";
    EXPECT_EQ(0.0, exact.fit.GetReducedChiSquared());
    EXPECT_EQ(0.0, exact.fit.GetStdError());
    EXPECT_NEAR(1.0, exact.fit.GetRSquared(), 1e-9);
}

TEST(NonLinearFit, SigmaWeighsByItsReciprocalAndAboutOneCountsHundred) {
    const std::pair<double, double> rows[] = {
        {1.0, 100.0},  {0.5, 2.0},   {2.0, 0.5},      {1.0 + 1e-7, 100.0},
        {-3.0, 100.0}, {0.0, 100.0}, {1e-100, 100.0}, {1.00001, 1.0 / 1.00001}};
    for (const auto& [sigma, weight] : rows) {
        FormulaFit problem;
        const Values sigmas(4, sigma);
        problem.fit.SetSigY(sigmas);
        const double chi = 1.94 * weight * weight;
        EXPECT_NEAR(chi, problem.ChiSquaredOfStart(), 1e-12 * chi) << sigma;
        EXPECT_NEAR(std::sqrt(chi / (4.0 * 4.0 * weight)), problem.fit.GetStdError(), 1e-9) << sigma;
    }
}

TEST(NonLinearFit, LimitsMultiplyChiSquared) {
    struct Row {
        const char* what;
        double slope;
        double lower;
        double upper;
        double factor;
    };
    const double below = 1.0 - 1.0 / (std::exp((0.5 - 1.0) / 0.025) + 1.0);
    const double above = 1.0 - 1.0 / (std::exp((1.0 - 2.0) / 0.1) + 1.0);
    const Row rows[] = {
        {"inside", 1.0, 0.5, 2.0, 1.0 + 1000.0 * (below + above)},
        {"below", 1.0, 5.0, 6.0, 1001.0},
        {"above", 1.0, 0.1, 0.5, 1001.0},
        {"inside negative limits", -1.0, -2.0, -0.5, 1.0 + 1000.0 * (below + above)},
        {"at a negative limit", -1.0, -2.0, -1.0, 501.0},
    };
    for (const Row& row : rows) {
        FormulaFit problem({0.0, row.slope});
        const double free = problem.ChiSquaredOfStart();
        problem.fit.SetValueLimits(1, row.lower, row.upper);
        problem.fit.SetValueLimits(2, 1.0, 2.0); // none such
        EXPECT_NEAR(row.factor, problem.ChiSquaredOfStart() / free, 0.1) << row.what;
        problem.fit.UseValueLimits(1, false);
        EXPECT_EQ(free, problem.ChiSquaredOfStart()) << row.what;
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
    problem.fit.SetCoefficientFixed(1, true);
    ASSERT_EQ(0, problem.Perform());
    EXPECT_EQ(1.0, problem.function.GetCoefficient(1));
    EXPECT_NEAR(0.65, problem.function.GetCoefficient(0), 1e-6);
    // Residuals of 0.25: three degrees of freedom.
    EXPECT_NEAR(10000.0 * 0.25 / 3.0, problem.fit.GetReducedChiSquared(), 1e-6);
    EXPECT_NEAR(std::sqrt(2500.0 / (3.0 * 400.0)), problem.fit.GetStdError(), 1e-9);
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

TEST(NonLinearFit, DebugOutputHasTheReportOfAFailureAndIfTracedTheTestThatPassed) {
    const std::wstring report = L"============= Non-Linear Least-Squares Fit ==================\n"
                                L"Number of data points:           4\n"
                                L"Number of parameters:            2\n"
                                L"Number of independent variables: 1\n";
    const std::wstring failure = report + L"WNonLinearLeastSquaresFit::PerformFit:  Failed to fit\n";
    // Wrong derivatives: the step goes uphill by the gradient's account, yet chi-squared rises.
    const auto backwards = [](const Values& b, double, double* d) {
        if (d != nullptr) {
            d[0] = b[0] > 0.0 ? 1.0 : -1.0;
        }
        return b[0] - 10.0;
    };
    struct Row {
        FormulaFunction::Formula formula;
        unsigned maxIterations;
        bool isTraced;
        std::wstring output;
    };
    const Row rows[] = {
        {Line, 500, false, L""},
        {Line, 500, true, report + L"..... Epsilon Test Passed.\n"},
        {backwards, 500, true, report + L"!!!!! Gamma-Epsilon Test Passed.\n"},
        {Line, 0, true, report + L"!!!!! Fit Forced Off.\n" + failure},
        {Line, 0, false, failure},
    };
    for (const Row& row : rows) {
        FormulaFit problem({-1.0, 1.0}, row.formula);
        problem.fit.SetCoefficientFixed(1, true);
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
    EXPECT_EQ(L"[]", fit.GenerateMatrixString({}));
}

TEST(NonLinearFit, SecondFitContinuesWithCoefficientsAndLambdaDownToItsFloor) {
    FormulaFit problem({5.0, 5.0});
    problem.fit.SetMaxIterations(1);
    EXPECT_TRUE(problem.Fails());
    EXPECT_EQ(1U, problem.fit.Iterations());
    EXPECT_NEAR(0.0001, problem.fit.m_dLambda, 1e-15);
    const double afterOne = problem.fit.GetChiSquared();
    problem.fit.SetMaxIterations(500);
    ASSERT_EQ(0, problem.fit.PerformFit());
    EXPECT_LT(problem.fit.GetChiSquared(), afterOne);
    for (int i = 0; i < 20; ++i) {
        problem.function.SetCoefficients({5.0, 5.0});
        problem.y[0] += 1.0;
        problem.fit.PerformFit();
    }
    EXPECT_NEAR(1e-9, problem.fit.m_dLambda, 1e-15);
}

TEST(NonLinearFit, RejectedStepsRaiseLambdaAndResetTheFunction) {
    // The model is a number only near the start: every step leaves the region.
    FormulaFit problem({1.0}, [](const Values& b, double, double* d) {
        if (d != nullptr) {
            d[0] = 1e-8;
        }
        return b[0] == 1.0 ? 1.0 : kNaN;
    });
    problem.x = {0, 1};
    problem.y = {2.0, 3.0};
    EXPECT_TRUE(problem.Fails());
    // 0.001 passes 1000 with the seventh factor of ten.
    EXPECT_EQ(7, problem.function.resets);
    EXPECT_EQ(0U, problem.fit.Iterations());
    EXPECT_EQ(50000.0, problem.fit.GetChiSquared()) << "that of the start";
    EXPECT_TRUE(problem.function.GetCovarianceMatrix().empty());
}

TEST(NonLinearFit, WhatIsNotANumberEndsInFailure) {
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        for (const bool held : {false, true}) {
            FormulaFit inY;
            inY.y[1] = bad;
            inY.fit.SetCoefficientFixed(0, held);
            inY.fit.SetCoefficientFixed(1, held);
            EXPECT_TRUE(inY.Fails()) << "y " << bad;
        }
        FormulaFit inX;
        inX.x[2] = bad;
        EXPECT_TRUE(inX.Fails()) << "x " << bad;
        FormulaFit inStart({0.0, bad});
        EXPECT_TRUE(inStart.Fails()) << "start " << bad;

        // A derivative that is not a number makes a step of 0.0, which passes the epsilon test.
        FormulaFit derivative({0.0, 1.0}, [bad](const Values& b, double x, double* d) {
            const double y = Line(b, x, d);
            if (d != nullptr && x == 2.0) {
                d[1] = bad;
            }
            return y;
        });
        EXPECT_TRUE(derivative.Fails()) << "derivative " << bad;
        EXPECT_TRUE(derivative.function.GetCovarianceMatrix().empty());
        // Of a held coefficient it does not matter.
        derivative.function.SetCoefficients({0.0, 1.0});
        derivative.fit.SetCoefficientFixed(1, true);
        EXPECT_EQ(0, derivative.Perform());
    }
    FormulaFit sigma;
    const Values hurt = {2.0, kNaN, 2.0, 2.0};
    sigma.fit.SetSigY(hurt);
    EXPECT_TRUE(sigma.Fails());
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
        FormulaFit problem;
        OpenFit fit(epsilon);
        fit.SetFunction(&problem.function);
        fit.SetX(problem.x);
        fit.SetY(problem.y);
        fit.InitializeFit();
        for (const Values& step : {Values{1e300, -1.0}, Values{kNaN, kInfinity}}) {
            fit.m_adStep = step;
            EXPECT_TRUE(fit.GammaEpsilonTest(kNaN)) << epsilon;
        }
    }
    // A lambda that ten times itself does not raise.
    for (const double lambda : {0.0, -1.0, kNaN, kInfinity}) {
        FormulaFit problem;
        problem.y[0] = kNaN;
        problem.fit.InitializeFit();
        problem.fit.SetLambda(lambda);
        EXPECT_THROW(problem.fit.PerformFit(), bss::WNEFitFailed) << lambda;
    }
}

TEST(NonLinearFit, DependentCoefficientsAreFitted) {
    // Only the sum of the two is determined: the damped equations still have a solution.
    FormulaFit problem({0.0, 0.0}, [](const Values& b, double, double* d) {
        if (d != nullptr) {
            d[0] = 1.0;
            d[1] = 1.0;
        }
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
    problem.fit.SetCoefficientFixed(0, true);
    OpenFit copy(problem.fit);
    double lower = -1.0;
    double upper = -1.0;
    copy.GetValueLimits(1, lower, upper);
    EXPECT_EQ(-1.0, lower);
    EXPECT_EQ(77U, copy.MaxIterations());
    EXPECT_TRUE(copy.GetCoefficientFixed(0));
    EXPECT_EQ(0, copy.PerformFit()) << "without InitializeFit";
    EXPECT_LT(problem.function.GetCoefficient(1), 2.0) << "no limit";
    copy.SetValueLimits(1, 2.0, 3.0);
    copy.GetValueLimits(1, lower, upper);
    EXPECT_EQ(2.0, lower);
    copy = problem.fit;
    copy.GetValueLimits(1, lower = -1.0, upper);
    EXPECT_EQ(-1.0, lower);
}

TEST(NonLinearFit, ThrowsWithoutFunctionOrWholeData) {
    FormulaFit problem;
    bss::WNonLinearLeastSquaresFit& fit = problem.fit;
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
}

// The Gaussian rewrites a width of 0.0 while it is evaluated: the fit goes the way it goes from that width.
TEST(NonLinearFit, WidthThatTheModelMendsCountsAsIfItHadBeenSet) {
    const Values x = {0, 1, 2, 3, 4, 5, 6};
    const Values y = {0.1, 0.2, 0.1, 0.3, 0.2, 0.1, 0.2};
    Values results[2];
    for (const int mended : {0, 1}) {
        bss::WGaussianFunction peak;
        peak.SetCoefficients({1.0, 3.0, mended == 0 ? 1e-100 : 0.0, 0.0, 0.0});
        bss::WNonLinearLeastSquaresFit fit;
        fit.SetFunction(&peak);
        fit.SetX(x);
        fit.SetY(y);
        fit.SetCoefficientFixed(1, true);
        fit.SetCoefficientFixed(2, true);
        fit.InitializeFit();
        ASSERT_EQ(0, fit.PerformFit());
        results[mended] = {peak.GetCoefficient(0), peak.GetCoefficient(3), fit.GetChiSquared()};
    }
    EXPECT_EQ(results[0], results[1]);
}

TEST(NonLinearFit, GammaLambdaTestTakesBothLimitsIn) {
    struct Row {
        double gamma;
        double lambda;
        bool passes;
    };
    OpenFit fit;
    for (const Row& row : {Row{90.0, 1.0, true}, Row{180.0, 1000.0, true}, Row{89.9, 1.0, false},
                           Row{90.0, 0.9, false}, Row{kNaN, 1.0, false}}) {
        fit.m_dGamma = row.gamma;
        fit.m_dLambda = row.lambda;
        EXPECT_EQ(row.passes, fit.GammaLambdaTest()) << row.gamma << ' ' << row.lambda;
    }
}

TEST(GaussJ, InvertsAndSolvesWithFullPivoting) {
    const OpenFit fit;
    OpenFit::matrix a = {{0.0, 2.0, 1.0}, {1.0, -2.0, -3.0}, {-1.0, 1.0, 2.0}};
    OpenFit::matrix b = {{-8.0, 1.0}, {0.0, 0.0}, {3.0, 0.0}};
    OpenFit::matrix again = a;
    Values column = {-8.0, 0.0, 3.0};
    EXPECT_EQ(0, fit.GaussJ(a, 3, b, 2));
    EXPECT_EQ(0, fit.GaussJ(again, 3, column));
    const OpenFit::matrix inverse = {{-1.0, -3.0, -4.0}, {1.0, 1.0, 1.0}, {-1.0, -2.0, -2.0}};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            EXPECT_NEAR(inverse[i][j], a[i][j], 1e-14);
        }
        EXPECT_NEAR(inverse[i][0], b[i][1], 1e-14);
        EXPECT_EQ(column[i], b[i][0]);
    }
    EXPECT_EQ(a, again);
    OpenFit::matrix hurt = {{kNaN, kNaN}, {kNaN, kNaN}};
    EXPECT_EQ(2, fit.GaussJ(hurt, 2, column));
}

} // namespace
