// Fits a Gaussian peak to measured points and prints each coefficient, and the curve, with error bars.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/exception/WExceptionEventLog.h"
#include "bss/math/WNonLinearLeastSquaresFit.h"
#include "bss/math/model/WGaussianFunction.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

// A peak at 5.2 on a sloping line. The noise is a fixed pattern, so that every run prints the same digits.
std::vector<double> Measure(const std::vector<double>& x) {
    std::vector<double> y;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double distance = (x[i] - 5.2) / 1.5;
        const double noise = 0.05 * std::sin(12.9898 * static_cast<double>(i * i));
        y.push_back(3.0 * std::exp(-distance * distance) + 0.5 + 0.1 * x[i] + noise);
    }
    return y;
}

void FitPeak(const std::vector<double>& x, const std::vector<double>& y) try {
    bss::WGaussianFunction peak;
    peak.SetCoefficients({1.0, 5.0, 2.0, 0.0, 0.0}); // amplitude, center, width, offset, slope
    bss::WNonLinearLeastSquaresFit fit;
    fit.SetFunction(&peak);
    fit.SetX(x);
    fit.SetY(y);
    fit.InitializeFit();
    fit.PerformFit(); // the coefficients are now in the function
    double value = 0.0, sigma = 0.0;
    peak.Evaluate(5.0, value, sigma); // with an error bar

    // Without standard deviations of the points, the scatter about the curve is the measure of the noise.
    const double noise = fit.GetReducedChiSquared();
    const char* const names[] = {"amplitude", "center", "width", "offset", "slope"};
    for (long i = 0; i < 5; ++i) {
        const double variance =
            peak.GetCovarianceMatrix()[static_cast<std::size_t>(i)][static_cast<std::size_t>(i)];
        std::printf("%-9s %7.4f +/- %.4f\n", names[i], peak.GetCoefficient(i), std::sqrt(variance * noise));
    }
    std::printf("at 5.0    %7.4f +/- %.4f\n", value, sigma);
    std::printf("R squared %.5f after %u iterations\n", fit.GetRSquared(), fit.Iterations());
} catch (const bss::WNestedException& e) {
    e.Log(bss::WExceptionEventLog::GetEventLog());
}

} // namespace

int main() {
    std::vector<double> x;
    for (int i = 0; i <= 40; ++i) {
        x.push_back(0.25 * i);
    }
    FitPeak(x, Measure(x));
    // A detector that was off: the failure goes to the log.
    FitPeak(x, std::vector<double>(x.size(), std::nan("")));
}
