#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/FormulaFunction.h"
#include "bss/math/WNonLinearLeastSquaresFit.h"
#include "bss/math/model/WGaussianFunction.h"
#include "support/DebugOutput.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

// Opens the protected operations to the tests.
class OpenFit : public bss::WNonLinearLeastSquaresFit {
public:
    using WNonLinearLeastSquaresFit::WNonLinearLeastSquaresFit;

    using WNonLinearLeastSquaresFit::ComputeAMatrix;
    using WNonLinearLeastSquaresFit::ComputeGamma;
    using WNonLinearLeastSquaresFit::Fit;
    using WNonLinearLeastSquaresFit::GammaEpsilonTest;
    using WNonLinearLeastSquaresFit::GammaLambdaTest;
    using WNonLinearLeastSquaresFit::GaussJ;
    using WNonLinearLeastSquaresFit::m_adBeta;
    using WNonLinearLeastSquaresFit::m_adStep;
    using WNonLinearLeastSquaresFit::m_bTrace;
    using WNonLinearLeastSquaresFit::m_dGamma;
    using WNonLinearLeastSquaresFit::m_dLambda;
    using WNonLinearLeastSquaresFit::m_nDegreesOfFreedom;
    using WNonLinearLeastSquaresFit::ScaleAMatrix;
    using WNonLinearLeastSquaresFit::SolveAMatrix;
    using WNonLinearLeastSquaresFit::SumOfSquares;
    using WNonLinearLeastSquaresFit::SumOfWeights;
    using WNonLinearLeastSquaresFit::TotalSumOfSquares;
    using WNonLinearLeastSquaresFit::Weight;
};

double line(const std::vector<double>& b, double x, double* d) {
    if (d != nullptr) {
        d[0] = 1.0;
        d[1] = x;
    }
    return b[0] + b[1] * x;
}

double decay(const std::vector<double>& b, double x, double* d) {
    const double e = std::exp(-b[1] * x);
    if (d != nullptr) {
        d[0] = e;
        d[1] = -b[0] * x * e;
    }
    return b[0] * e;
}

// A formula under a fit, with data.
struct FormulaFit {
    FormulaFit(std::vector<double> start, FormulaFunction::Formula formula, std::vector<double> xs,
               std::vector<double> ys)
        : function(std::move(start), std::move(formula)), x(std::move(xs)), y(std::move(ys)) {
        fit.SetFunction(&function);
        fit.SetX(x);
        fit.SetY(y);
    }
    int Perform() {
        fit.InitializeFit();
        return fit.PerformFit();
    }
    std::wstring Failure() {
        try {
            Perform();
        } catch (bss::WNEFitFailed& failure) {
            return failure.AsString(true);
        }
        return L"no failure";
    }

    FormulaFunction function;
    std::vector<double> x;
    std::vector<double> y;
    OpenFit fit;
};

FormulaFit lineFit() {
    return {{0.0, 1.0}, line, {0, 1, 2, 3}, {0.4, 1.9, 2.4, 3.9}};
}

bool failed(FormulaFit& problem) {
    return problem.Failure() == L"Fit failed in module Nonlinear least squares fit.\n";
}

TEST(NonLinearFit, StatisticsFollowTheirFormulasAtAWeightOfHundred) {
    FormulaFit problem = lineFit();
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
    EXPECT_EQ(2, problem.fit.m_nDegreesOfFreedom);
    EXPECT_EQ(fit.GetChiSquared(), problem.function.GetChiSquared());
    EXPECT_EQ(1000.0, std::round(problem.function.GetChiSquaredFactor()));
    EXPECT_EQ(fit.GetCovariance(0, 1), problem.function.GetCovarianceMatrix()[1][0]);
}

TEST(NonLinearFit, WithoutDegreesOfFreedomAdjustedRSquaredIsZero) {
    FormulaFit problem({0.0, 0.0}, line, {0, 1}, {1.0, 3.0});
    ASSERT_EQ(0, problem.Perform());
    EXPECT_EQ(0.0, problem.fit.GetAdjustedRSquared());
    EXPECT_EQ(0.0, problem.fit.GetReducedChiSquared());
    EXPECT_EQ(0.0, problem.fit.GetStdError());
    EXPECT_NEAR(1.0, problem.fit.GetRSquared(), 1e-9);
    EXPECT_EQ(1.0, problem.function.GetChiSquaredFactor());
}

TEST(NonLinearFit, WeightOfAboutOneCountsHundred) {
    FormulaFit problem = lineFit();
    double plain = 0.0;
    const double without = problem.fit.SumOfSquares(plain);
    EXPECT_NEAR(plain * 10000.0, without, 1e-9);

    struct {
        double sigma;
        double weight;
        double ruled;
    } const rows[] = {
        {1.0, 1.0, 100.0},  {0.5, 2.0, 2.0},   {2.0, 0.5, 0.5},      {1.0 + 1e-7, 1.0, 100.0},
        {-3.0, 1.0, 100.0}, {0.0, 1.0, 100.0}, {1e-100, 1.0, 100.0}, {1.00001, 1.0 / 1.00001, 1.0 / 1.00001}};
    for (const auto& row : rows) {
        const std::vector<double> sigma(4, row.sigma);
        problem.fit.SetSigY(sigma);
        EXPECT_NEAR(row.weight, problem.fit.Weight(2), 1e-6) << row.sigma;
        EXPECT_DOUBLE_EQ(4 * row.ruled, problem.fit.SumOfWeights()) << row.sigma;
        EXPECT_DOUBLE_EQ(without / 10000.0 * row.ruled * row.ruled, problem.fit.SumOfSquares(plain))
            << row.sigma;
        EXPECT_EQ(1.0, problem.fit.Weight(4)) << "outside";
    }
}

TEST(NonLinearFit, LimitsMultiplyChiSquared) {
    FormulaFit problem = lineFit();
    double plain = 0.0;
    const double free = problem.fit.SumOfSquares(plain);
    problem.fit.SetValueLimits(1, 0.5, 2.0); // the value is 1.0: inside
    const double below = 1.0 - 1.0 / (std::exp((0.5 - 1.0) / 0.025) + 1.0);
    const double above = 1.0 - 1.0 / (std::exp((1.0 - 2.0) / 0.1) + 1.0);
    EXPECT_DOUBLE_EQ(free * (1.0 + 1000.0 * (below + above)), problem.fit.SumOfSquares(plain));
    problem.fit.SetValueLimits(1, 5.0, 6.0);
    EXPECT_NEAR(1001.0, problem.fit.SumOfSquares(plain) / free, 1e-3);
    problem.fit.UseValueLimits(1, false);
    EXPECT_EQ(free, problem.fit.SumOfSquares(plain));
    problem.fit.UseValueLimits(1, true);

    double lower = 0.0;
    double upper = 0.0;
    problem.fit.GetValueLimits(1, lower, upper);
    EXPECT_EQ(5.0, lower);
    EXPECT_EQ(6.0, upper);
    problem.fit.SetValueLimits(2, 1.0, 2.0);
    problem.fit.UseValueLimits(2, true);
    problem.fit.GetValueLimits(2, lower, upper);
    EXPECT_EQ(5.0, lower) << "an index outside leaves both";

    // A limit of 0.0 has no width: met exactly it is 0 / 0, and the fit fails on it.
    problem.fit.SetValueLimits(1, 0.0, 2.0);
    problem.function.SetCoefficient(1, 0.0);
    EXPECT_TRUE(std::isnan(problem.fit.SumOfSquares(plain)));
    EXPECT_TRUE(failed(problem));
}

TEST(NonLinearFit, LimitKeepsACoefficientNearIt) {
    // Free, the slope is 1.1; chi-squared shows the penalty that a limit of 1.0 leaves.
    FormulaFit problem = lineFit();
    problem.function.SetCoefficients({0.0, 0.8});
    problem.fit.SetValueLimits(1, 0.5, 1.0);
    ASSERT_EQ(0, problem.Perform());
    EXPECT_LT(problem.function.GetCoefficient(1), 0.85);
    double plain = 0.0;
    EXPECT_EQ(problem.fit.GetChiSquared(), problem.fit.SumOfSquares(plain));
    EXPECT_GT(problem.fit.GetChiSquared(), plain * 10000.0);
}

TEST(NonLinearFit, HeldCoefficientsStayAndHaveNoCovariance) {
    FormulaFit problem = lineFit();
    problem.fit.SetCoefficientFixed(1, true);
    ASSERT_EQ(0, problem.Perform());
    EXPECT_EQ(1.0, problem.function.GetCoefficient(1));
    EXPECT_NEAR(0.65, problem.function.GetCoefficient(0), 1e-6);
    EXPECT_EQ(3, problem.fit.m_nDegreesOfFreedom);
    EXPECT_NEAR(1.0 / (4 * 10000.0), problem.fit.GetCovariance(0, 0), 1e-18);
    for (const auto& [row, column] : {std::pair(0L, 1L), std::pair(1L, 0L), std::pair(1L, 1L)}) {
        EXPECT_EQ(0.0, problem.fit.GetCovariance(row, column));
    }

    problem.fit.SetCoefficientFixed(0, true);
    ASSERT_EQ(0, problem.Perform());
    EXPECT_EQ(0U, problem.fit.Iterations());
    EXPECT_EQ(0.0, problem.fit.GetCovariance(0, 0));
}

TEST(NonLinearFit, StopsWithTheStatedResultOfEachTest) {
    FormulaFit epsilon = lineFit();
    epsilon.fit.InitializeFit();
    EXPECT_EQ(OpenFit::eEpsilon, epsilon.fit.Fit());

    // Wrong derivatives: the step goes uphill by the gradient's account, yet chi-squared falls.
    const auto backwards = [](const std::vector<double>& b, double, double* d) {
        if (d != nullptr) {
            d[0] = b[0] > 0.0 ? 1.0 : -1.0;
        }
        return b[0];
    };
    FormulaFit gammaEpsilon({1.0}, backwards, {0, 1}, {0.0, 0.0});
    gammaEpsilon.function.SetCoefficients({-1.0});
    gammaEpsilon.fit.InitializeFit();
    EXPECT_EQ(OpenFit::eGammaEpsilon, gammaEpsilon.fit.Fit());
    EXPECT_NEAR(-1.0, gammaEpsilon.function.GetCoefficient(0), 1e-3);

    FormulaFit none = lineFit();
    none.fit.SetMaxIterations(0);
    none.fit.InitializeFit();
    EXPECT_EQ(OpenFit::eFailed, none.fit.Fit());
    EXPECT_EQ(0, none.function.differentiations);
}

TEST(NonLinearFit, GammaIsTheAngleBetweenStepAndGradientInDegrees) {
    FormulaFit problem = lineFit();
    problem.fit.InitializeFit();
    problem.fit.ComputeAMatrix();
    problem.fit.ScaleAMatrix();
    problem.fit.SetLambda(1e12); // a step along the scaled gradient
    problem.fit.SolveAMatrix();
    problem.fit.ComputeGamma();
    EXPECT_NEAR(0.0, problem.fit.m_dGamma, 1e-4);
    for (double& step : problem.fit.m_adStep) {
        step = -step;
    }
    problem.fit.ComputeGamma();
    EXPECT_NEAR(180.0, problem.fit.m_dGamma, 1e-4);
    problem.fit.m_adStep.assign(2, 0.0);
    problem.fit.ComputeGamma();
    EXPECT_EQ(0.0, problem.fit.m_dGamma);
}

TEST(NonLinearFit, LambdaFallsByTenPerAcceptedIterationDownToItsFloor) {
    FormulaFit problem = lineFit();
    problem.fit.InitializeFit();
    EXPECT_EQ(0.001, problem.fit.m_dLambda);
    ASSERT_EQ(0, problem.fit.PerformFit());
    const auto iterations = static_cast<int>(problem.fit.Iterations());
    EXPECT_NEAR(0.001 * std::pow(10.0, -iterations), problem.fit.m_dLambda, 1e-12);
    for (int i = 0; i < 20; ++i) {
        problem.function.SetCoefficients({5.0, 5.0});
        problem.fit.PerformFit();
    }
    EXPECT_NEAR(1e-9, problem.fit.m_dLambda, 1e-15);
}

TEST(NonLinearFit, SecondFitContinuesFromTheAcceptedCoefficients) {
    FormulaFit problem({2.0, 0.5}, decay, {0, 1, 2, 3}, {5.0, 1.8, 0.7, 0.2});
    problem.fit.SetMaxIterations(1);
    EXPECT_TRUE(failed(problem));
    EXPECT_EQ(1U, problem.fit.Iterations());
    const double afterOne = problem.fit.GetChiSquared();
    problem.fit.SetMaxIterations(500);
    ASSERT_EQ(0, problem.fit.PerformFit());
    EXPECT_LT(problem.fit.GetChiSquared(), afterOne);
}

TEST(NonLinearFit, RejectedStepsRaiseLambdaAndResetTheFunction) {
    // The model is a number only near the start: every step leaves the region.
    const auto narrow = [](const std::vector<double>& b, double, double* d) {
        if (d != nullptr) {
            d[0] = 1e-8;
        }
        return b[0] == 1.0 ? 1.0 : nan;
    };
    FormulaFit problem({1.0}, narrow, {0, 1}, {2.0, 3.0});
    EXPECT_TRUE(failed(problem));
    // 0.001 passes 1000 with the seventh factor of ten.
    EXPECT_EQ(7, problem.function.resets);
    EXPECT_EQ(0U, problem.fit.Iterations());
    EXPECT_EQ(50000.0, problem.fit.GetChiSquared()) << "that of the start";
    EXPECT_TRUE(problem.function.GetCovarianceMatrix().empty());
}

TEST(NonLinearFit, WhatIsNotANumberEndsInFailure) {
    for (const double bad : {nan, infinity, -infinity}) {
        FormulaFit inY = lineFit();
        inY.y[1] = bad;
        EXPECT_TRUE(failed(inY)) << "y " << bad;
        FormulaFit inX = lineFit();
        inX.x[2] = bad;
        EXPECT_TRUE(failed(inX)) << "x " << bad;
        FormulaFit inStart = lineFit();
        inStart.function.SetCoefficients({0.0, bad});
        EXPECT_TRUE(failed(inStart)) << "start " << bad;
        FormulaFit held = lineFit();
        held.y[1] = bad;
        held.fit.SetCoefficientFixed(0, true);
        held.fit.SetCoefficientFixed(1, true);
        EXPECT_TRUE(failed(held)) << "held, y " << bad;

        // A derivative that is not a number makes a step of 0.0, which passes the epsilon test.
        FormulaFit derivative({0.0, 1.0},
                              [bad](const std::vector<double>& b, double x, double* d) {
                                  const double y = line(b, x, d);
                                  if (d != nullptr && x == 2.0) {
                                      d[1] = bad;
                                  }
                                  return y;
                              },
                              {0, 1, 2, 3}, {0.4, 1.9, 2.4, 3.9});
        EXPECT_TRUE(failed(derivative)) << "derivative " << bad;
        EXPECT_TRUE(derivative.function.GetCovarianceMatrix().empty());
        // Of a held coefficient it does not matter.
        derivative.function.SetCoefficients({0.0, 1.0});
        derivative.fit.SetCoefficientFixed(1, true);
        EXPECT_EQ(0, derivative.Perform());
    }
    FormulaFit sigma = lineFit();
    const std::vector<double> hurt = {2.0, nan, 2.0, 2.0};
    sigma.fit.SetSigY(hurt);
    EXPECT_TRUE(failed(sigma));
}

TEST(NonLinearFit, ResidualAboveTheLargestStopsTheSum) {
    FormulaFit problem = lineFit();
    problem.y[2] = -1e81;
    double plain = 0.0;
    EXPECT_EQ(1e80, problem.fit.SumOfSquares(plain));
    EXPECT_EQ(3, problem.function.evaluations);
    EXPECT_TRUE(failed(problem));
}

TEST(NonLinearFit, NeverRunsForEver) {
    // No step is below an epsilon of 0.0: halving goes on until nothing is left.
    for (const double epsilon : {0.0, -1.0, nan}) {
        FormulaFit problem = lineFit();
        OpenFit fit(epsilon);
        fit.SetFunction(&problem.function);
        fit.SetX(problem.x);
        fit.SetY(problem.y);
        fit.InitializeFit();
        fit.m_adStep = {1e300, -1.0};
        EXPECT_TRUE(fit.GammaEpsilonTest(nan));
        EXPECT_EQ(std::vector<double>({0.0, 0.0}), std::vector<double>({fit.m_adStep[0], -fit.m_adStep[1]}));
        fit.m_adStep = {nan, infinity};
        EXPECT_TRUE(fit.GammaEpsilonTest(nan));
    }
    // A lambda that ten times itself does not raise.
    for (const double lambda : {0.0, -1.0, nan, infinity}) {
        FormulaFit problem = lineFit();
        problem.y[0] = nan;
        problem.fit.InitializeFit();
        problem.fit.SetLambda(lambda);
        EXPECT_THROW(problem.fit.PerformFit(), bss::WNEFitFailed) << lambda;
    }
}

TEST(NonLinearFit, DependentCoefficientsAreFittedAndGiveSomeCovariance) {
    // Only the sum of the two is determined: the damped equations still have a solution.
    FormulaFit problem({0.0, 0.0},
                       [](const std::vector<double>& b, double, double* d) {
                           if (d != nullptr) {
                               d[0] = 1.0;
                               d[1] = 1.0;
                           }
                           return b[0] + b[1];
                       },
                       {0, 1, 2}, {1.0, 2.0, 3.0});
    ASSERT_EQ(0, problem.Perform());
    EXPECT_NEAR(2.0, problem.function.GetCoefficient(0) + problem.function.GetCoefficient(1), 1e-4);
    EXPECT_TRUE(std::isfinite(problem.fit.GetCovariance(0, 0)));
}

TEST(NonLinearFit, CopyBringsDataAndFunctionButNoLimits) {
    FormulaFit problem = lineFit();
    problem.fit.SetMaxIterations(77);
    problem.fit.SetValueLimits(1, 5.0, 6.0);
    problem.fit.SetCoefficientFixed(0, true);
    OpenFit copy(problem.fit);
    EXPECT_EQ(77U, copy.MaxIterations());
    EXPECT_TRUE(copy.GetCoefficientFixed(0));
    double lower = -1.0;
    double upper = -1.0;
    copy.GetValueLimits(1, lower, upper);
    EXPECT_EQ(-1.0, lower);
    EXPECT_EQ(0, copy.PerformFit()) << "without InitializeFit";
    EXPECT_NEAR(copy.GetCoefficient(1), problem.function.GetCoefficient(1), 0.0);
    EXPECT_LT(problem.function.GetCoefficient(1), 2.0) << "no limit";
    copy.SetValueLimits(1, 2.0, 3.0);
    copy.GetValueLimits(1, lower, upper);
    EXPECT_EQ(2.0, lower);
    copy = problem.fit;
    copy.GetValueLimits(1, lower = -1.0, upper);
    EXPECT_EQ(-1.0, lower);
}

TEST(NonLinearFit, ThrowsWithoutFunctionOrWholeData) {
    const std::vector<double> three = {1, 2, 3};
    const std::vector<double> two = {1, 2};
    bss::WNonLinearLeastSquaresFit fit;
    fit.SetX(three);
    fit.SetY(three);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    FormulaFunction model({0.0, 1.0}, line);
    fit.SetFunction(&model);
    fit.SetY(two);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    fit.SetY(three);
    fit.SetSigY(two);
    EXPECT_THROW(fit.PerformFit(), bss::WNEFitFailed);
    fit.ClearSigY();
    EXPECT_EQ(0, fit.PerformFit()) << "InitializeFit was left out";
}

// The Gaussian rewrites a width of 0.0 while it is evaluated: the fit goes the way it goes from that width.
TEST(NonLinearFit, WidthThatTheModelMendsCountsAsIfItHadBeenSet) {
    const std::vector<double> x = {0, 1, 2, 3, 4, 5, 6};
    const std::vector<double> y = {0.1, 0.2, 0.1, 0.3, 0.2, 0.1, 0.2};
    std::vector<double> coefficients[2];
    double chi[2] = {};
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
        coefficients[mended] = peak.GetCoefficients();
        chi[mended] = fit.GetChiSquared();
    }
    EXPECT_EQ(chi[0], chi[1]);
    EXPECT_EQ(coefficients[0][0], coefficients[1][0]);
    EXPECT_EQ(coefficients[0][3], coefficients[1][3]);
}

TEST(NonLinearFit, GammaLambdaTestTakesBothLimitsIn) {
    OpenFit fit;
    for (const auto& [gamma, lambda] : {std::pair(90.0, 1.0), std::pair(180.0, 1000.0)}) {
        fit.m_dGamma = gamma;
        fit.m_dLambda = lambda;
        EXPECT_TRUE(fit.GammaLambdaTest());
    }
    for (const auto& [gamma, lambda] : {std::pair(89.9, 1.0), std::pair(90.0, 0.9), std::pair(nan, 1.0)}) {
        fit.m_dGamma = gamma;
        fit.m_dLambda = lambda;
        EXPECT_FALSE(fit.GammaLambdaTest());
    }
}

TEST(NonLinearFit, EvaluatesOncePerTrialAndDifferentiatesOncePerIteration) {
    FormulaFit problem({2.0, 0.5}, decay, {0, 1, 2, 3}, {5.0, 1.8, 0.7, 0.2});
    ASSERT_EQ(0, problem.Perform());
    const long passes = problem.fit.Iterations() + 1L;
    EXPECT_EQ(0, problem.function.resets);
    EXPECT_EQ(4 * (passes + 1), problem.function.evaluations) << "the start and each trial";
    EXPECT_EQ(4 * (passes + 1), problem.function.differentiations) << "each pass and the covariance";
}

TEST(NonLinearFit, ReportsAFailureToTheDebugOutput) {
    const std::wstring report = L"============= Non-Linear Least-Squares Fit ==================\n"
                                L"Number of data points:           4\n"
                                L"Number of parameters:            2\n"
                                L"Number of independent variables: 1\n";
    FormulaFit problem = lineFit();
    problem.fit.SetCoefficientFixed(0, true);
    problem.fit.SetMaxIterations(0);
    {
        DebugOutput output;
        EXPECT_TRUE(failed(problem));
        EXPECT_EQ(report + L"WNonLinearLeastSquaresFit::PerformFit:  Failed to fit\n", output.Text());
    }
    problem.fit.SetMaxIterations(500);
    {
        DebugOutput output;
        EXPECT_EQ(0, problem.Perform());
        EXPECT_EQ(L"", output.Text());
    }
    OpenFit::m_bTrace = true;
    {
        DebugOutput output;
        EXPECT_EQ(0, problem.Perform());
        EXPECT_EQ(report + L"..... Epsilon Test Passed.\n", output.Text());
    }
    problem.fit.SetMaxIterations(0);
    {
        DebugOutput output;
        EXPECT_TRUE(failed(problem));
        EXPECT_EQ(report + L"!!!!! Fit Forced Off.\n" + report +
                      L"WNonLinearLeastSquaresFit::PerformFit:  Failed to fit\n",
                  output.Text());
    }
    OpenFit::m_bTrace = false;
}

TEST(NonLinearFit, TracesVectorsAndMatrices) {
    FormulaFit problem = lineFit();
    EXPECT_EQ(L"[    1.0000e+00,    -2.5000e-03,    1.2346e+100], Chi\u00B2=0.0000e+00",
              problem.fit.GenerateVectorString({1.0, -0.0025, 1.23456e100}));
    EXPECT_EQ(L"[[    1.0000e+00,     2.0000e+00] [    3.0000e+00,     4.0000e+00]]",
              problem.fit.GenerateMatrixString({{1.0, 2.0}, {3.0, 4.0}}));
    EXPECT_EQ(L"[]", problem.fit.GenerateMatrixString({}));
}

TEST(GaussJ, InvertsAndSolvesWithFullPivoting) {
    const OpenFit fit;
    OpenFit::matrix a = {{0.0, 2.0, 1.0}, {1.0, -2.0, -3.0}, {-1.0, 1.0, 2.0}};
    OpenFit::matrix b = {{-8.0, 1.0}, {0.0, 0.0}, {3.0, 0.0}};
    OpenFit::matrix again = a;
    std::vector<double> column = {-8.0, 0.0, 3.0};
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

    OpenFit::matrix singular = {{1.0, 2.0}, {2.0, 4.0}};
    std::vector<double> side = {1.0, 1.0};
    EXPECT_EQ(2, fit.GaussJ(singular, 2, side));
    OpenFit::matrix small = {{1e-31}};
    EXPECT_EQ(2, fit.GaussJ(small, 1, side));
    OpenFit::matrix hurt = {{nan, nan}, {nan, nan}};
    EXPECT_EQ(2, fit.GaussJ(hurt, 2, side));
    EXPECT_EQ(0, fit.GaussJ(hurt, 0, side));
}

} // namespace
