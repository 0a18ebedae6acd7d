#include "correlogram/Analysis.h"
#include "correlogram/NarrowGaussian.h"
#include "tools/correlogram/CorrelogramSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <numbers>

using namespace correlogram;
using namespace correlogram_test;

namespace {

// Stokes and Einstein, Bragg's q, written down anew.
double RadiusOf(double decayRate, const Conditions& conditions) {
    const double q = 4.0 * std::numbers::pi * conditions.refractiveIndex *
                     std::sin(0.5 * conditions.angle * std::numbers::pi / 180.0) / conditions.wavelength;
    return 1.380649e-23 * conditions.temperature * q * q /
           (6.0 * std::numbers::pi * conditions.viscosity * decayRate);
}

// A cumulant expansion with polydispersity index 0.06.
double CumulantDecay(double t) {
    return -0.002 + 0.9 * std::exp(-2000.0 * t) * std::pow(1.0 + 0.06e6 * t * t / 2.0, 2);
}

const FitResult& Fit(const Analysis& analysis, const char* name) {
    for (const FitResult& fit : analysis.fits) {
        if (fit.name == name) {
            return fit;
        }
    }
    std::abort();
}

} // namespace

// Reference: the measuring laboratory's own cumulant analysis over all angles, 63.98 +- 2.00 nm, index 0.080
// +- 0.031.
TEST(CorrelogramAnalysis, MeasuredCurvesGiveTheReferenceRadius) {
    for (const double angle : {58.0, 90.0, 122.0}) {
        const char* name = angle < 60.0 ? "058" : angle < 100.0 ? "090" : "122";
        Curve curve = ReadCurve(Source(std::string("data/correlograms/mw002_m0_avg_") + name + "deg.csv"));
        const Conditions conditions{6.328e-7, angle, 292.93654, 0.00100703, 1.332};
        const Analysis analysis = Analyse(std::move(curve), conditions, 3e-7);
        ASSERT_TRUE(analysis.HasConverged());
        const FitResult& fit = Fit(analysis, "cumulants");
        EXPECT_NEAR(fit.radius->value, 63.98e-9, 2.00e-9) << angle;
        EXPECT_NEAR(fit.polydispersity->value, 0.080, 0.031) << angle;
        EXPECT_NEAR(fit.diffusion->value, 3.463e-12, 3.463e-12 * 2.00 / 63.98 * 2.0) << angle;
        EXPECT_GT(fit.rSquared, 0.9999);
    }
}

TEST(CorrelogramAnalysis, KnownDecaysAreFoundAgain) {
    const Conditions conditions{5e-7, 60.0, 300.0, 0.002, 1.4};
    const Analysis analysis = Analyse(MakeCurve(CumulantDecay), conditions, 0.0);
    const FitResult& cumulants = Fit(analysis, "cumulants");
    EXPECT_NEAR(cumulants.decayRate->value, 1000.0, 0.01);
    EXPECT_NEAR(cumulants.polydispersity->value, 0.06, 1e-5);
    EXPECT_NEAR(cumulants.radius->value, RadiusOf(1000.0, conditions), 1e-5 * RadiusOf(1000.0, conditions));
    const double expected[] = {-0.002, 0.9, std::sqrt(1000.0), 0.06e6};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(cumulants.coefficients[i].fitted.value, expected[i], 1e-4 * std::abs(expected[i]));
        EXPECT_EQ(cumulants.coefficients[i].name, "A" + std::to_string(i));
    }
    EXPECT_NEAR(Fit(analysis, "gaussian-cumulants").decayRate->value, 1000.0, 5.0);

    const Analysis single =
        Analyse(MakeCurve([](double t) { return 0.9 * std::exp(-2000.0 * t); }), conditions, 0.0);
    const FitResult& exponential = Fit(single, "exponential");
    EXPECT_NEAR(exponential.coefficients[2].fitted.value, 5e-4, 1e-8);
    EXPECT_NEAR(exponential.decayRate->value, 1000.0, 0.01);
    EXPECT_FALSE(exponential.polydispersity.has_value());
}

// The same particles in other units of time have to end at the same dimensionless numbers.
TEST(CorrelogramAnalysis, UnitOfTimeDoesNotMatter) {
    const Analysis slow = Analyse(MakeCurve(CumulantDecay, 1e-3), {}, 0.0);
    const auto fast = [](double t) { return CumulantDecay(t * 1e4); };
    const Analysis quick = Analyse(MakeCurve(fast, 1e-3, 1, 180, 1e-11, 1e-4), {}, 0.0);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(slow.fits[i].stopTest, quick.fits[i].stopTest);
        EXPECT_EQ(slow.fits[i].iterations, quick.fits[i].iterations);
        EXPECT_NEAR(quick.fits[i].decayRate->value / slow.fits[i].decayRate->value, 1e4, 1e-3);
        EXPECT_NEAR(quick.fits[i].decayRate->error / slow.fits[i].decayRate->error, 1e4, 1e-1);
    }
}

// Lag, baseline and 2 % of the intercept are known, so is the last lag: 10 * ln(50) / 2000 s.
TEST(CorrelogramAnalysis, RangeReachesTenTimesTheDecay) {
    const Curve curve = MakeCurve([](double t) { return 0.9 * std::exp(-2000.0 * t); });
    const Analysis analysis = Analyse(curve, {}, 3e-7);
    EXPECT_GE(curve.lag[analysis.first], 3e-7);
    EXPECT_LT(curve.lag[analysis.first - 1], 3e-7);
    const double step = curve.lag[1] / curve.lag[0];
    const double last = curve.lag[analysis.first + analysis.count - 1];
    EXPECT_GE(last * step, 10.0 * std::log(50.0) / 2000.0);
    EXPECT_LE(last, 10.0 * std::log(50.0) / 2000.0 * step * step);
}

// The standard errors have to be the scatter that repeated measurements show, with and without standard
// deviations given.
TEST(CorrelogramAnalysis, StandardErrorsAreTheScatterOfRepeatedMeasurements) {
    constexpr int kRuns = 60;
    constexpr double kNoise = 4e-3;
    for (const bool hasSigma : {false, true}) {
        double sums[3] = {};
        double squares[3] = {};
        double errors[3] = {};
        for (int run = 0; run < kRuns; ++run) {
            Curve curve = MakeCurve(CumulantDecay, kNoise, 100U + static_cast<unsigned>(run));
            if (hasSigma) {
                curve.sigma.assign(curve.lag.size(), kNoise);
            }
            const Analysis analysis = Analyse(std::move(curve), {}, 0.0);
            ASSERT_TRUE(analysis.HasConverged());
            const FitResult& fit = Fit(analysis, "cumulants");
            const Measured values[3] = {*fit.radius, *fit.polydispersity, fit.coefficients[1].fitted};
            for (int i = 0; i < 3; ++i) {
                sums[i] += values[i].value;
                squares[i] += values[i].value * values[i].value;
                errors[i] += values[i].error / kRuns;
            }
        }
        for (int i = 0; i < 3; ++i) {
            const double scatter = std::sqrt((squares[i] - sums[i] * sums[i] / kRuns) / (kRuns - 1));
            EXPECT_NEAR(errors[i] / scatter, 1.0, 0.3)
                << i << " " << hasSigma; // 3 standard errors of the scatter
        }
    }
}

// Standard deviations of 1 would be the fit's sign for "none".
TEST(CorrelogramAnalysis, StandardDeviationsOfOneCountAsOne) {
    Curve curve = MakeCurve([](double t) { return 1000.0 * CumulantDecay(t); }, 1.0);
    curve.sigma.assign(curve.lag.size(), 1.0);
    const Analysis analysis = Analyse(curve, {}, 0.0);
    EXPECT_NEAR(Fit(analysis, "cumulants").reducedChiSquared, 1.0, 0.4);
}

TEST(CorrelogramAnalysis, ParticlesOfOneSizeEndWithATiedWidth) {
    const Analysis analysis =
        Analyse(MakeCurve([](double t) { return 0.9 * std::exp(-2000.0 * t); }, 1e-3), {}, 0.0);
    const FitResult& fit = Fit(analysis, "gaussian-cumulants");
    ASSERT_TRUE(fit.HasConverged());
    EXPECT_EQ(fit.coefficients.size(), 3U);
    EXPECT_FALSE(fit.polydispersity.has_value());
    EXPECT_FALSE(fit.note.empty());
    EXPECT_GT(fit.rSquared, 0.9999);
    EXPECT_NEAR(fit.decayRate->value, 1000.0, 5.0);
}

TEST(CorrelogramAnalysis, TiedWidthHasTrueDerivatives) {
    NarrowGaussian function;
    const std::vector<double> centre{0.1, 0.8, 0.7};
    std::vector<double> derivatives;
    for (const double x : {0.01, 0.5, 2.0}) {
        function.SetCoefficients(centre);
        function.ComputeDerivatives(x, derivatives);
        ASSERT_EQ(derivatives.size(), 3U);
        for (std::size_t i = 0; i < 3; ++i) {
            std::vector<double> moved = centre;
            moved[i] += 1e-5;
            function.SetCoefficients(moved);
            const double above = function.Evaluate(x);
            moved[i] -= 2e-5;
            function.SetCoefficients(moved);
            EXPECT_NEAR(derivatives[i], (above - function.Evaluate(x)) / 2e-5, 1e-6);
        }
    }
}
