// Finds the frequencies of a signal by the fast Fourier transform, and smooths noise by a convolution.

#include "bss/math/WConvolution.h"
#include "bss/math/WFFT.h"
#include "bss/math/model/WGaussianFunction.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>
#include <vector>

namespace {

constexpr std::size_t kLength = 1024; // a power of two
constexpr double kRate = 1024.0;      // samples a second

std::vector<double> Signal() {
    std::vector<double> signal;
    for (std::size_t i = 0; i < kLength; ++i) {
        const double phase = 2.0 * std::numbers::pi * static_cast<double>(i) / kRate;
        signal.push_back(2.0 * std::cos(50.0 * phase) + 0.5 * std::cos(120.0 * phase));
    }
    return signal;
}

double RootMeanSquare(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value * value;
    }
    return std::sqrt(sum / static_cast<double>(values.size()));
}

} // namespace

int main() {
    const std::vector<double> signal = Signal();
    std::vector<std::complex<double>> spectrum(signal.begin(), signal.end());
    bss::WFFT fft;
    fft.ComplexFFT(spectrum);
    for (std::size_t i = 1; i < kLength / 2; ++i) {
        const double amplitude = 2.0 * std::abs(spectrum[i]) / std::sqrt(kLength); // the transform is unitary
        if (amplitude > 0.1) {
            std::printf("%3.0f Hz: amplitude %.3f\n", static_cast<double>(i) * kRate / kLength, amplitude);
        }
    }
    fft.InverseComplexFFT(spectrum); // and back again
    double largest = 0.0;
    for (std::size_t i = 0; i < kLength; ++i) {
        largest = std::max(largest, std::abs(spectrum[i] - signal[i]));
    }
    std::printf("back again within 1e-12: %s\n", largest < 1e-12 ? "yes" : "no");

    // A kernel much wider than the periods leaves next to nothing of the signal; its height does not matter.
    std::vector<double> smooth = signal;
    bss::WGaussianFunction kernel;
    kernel.SetCoefficients({1.0, 0.0, 0.02, 0.0, 0.0}); // amplitude, centre and width (s), offset, slope
    bss::WConvolution().Convolve(smooth, &kernel, 1.0 / kRate);
    std::printf("root mean square %.3f, smoothed %.3f\n", RootMeanSquare(signal), RootMeanSquare(smooth));
}
