#include "bss/math/WConvolution.h"

#include "bss/math/WFunction.h"

#include <cmath>
#include <complex>
#include <numeric>

namespace bss {

namespace {

using Complex = std::complex<double>;

std::size_t PaddedLength(std::size_t length) {
    std::size_t padded = 1;
    while (padded < length) {
        padded *= 2;
    }
    return padded;
}

// Samples the kernel in wrapped order: x = 0, dx, ... from the front, -dx, -2 dx, ... from the back, up to
// the first pair below a thousandth of the value at 0. Returns the sum of the samples divided by the root of
// the length.
double SampleKernel(WFunction* kernel, double dx, std::vector<Complex>& samples) {
    const std::size_t length = samples.size();
    const double threshold = kernel->Evaluate(0.0) * 0.001;
    const double root = std::sqrt(static_cast<double>(length));
    double sum = 0.0;
    for (std::size_t i = 0; i < length / 2; ++i) {
        const double x = static_cast<double>(i);
        const double right = kernel->Evaluate(x * dx);
        const double left = kernel->Evaluate((-1.0 - x) * dx);
        samples[i] = right;
        samples[length - i - 1] = left;
        sum += (right + left) / root;
        if (right < threshold && left < threshold) {
            break;
        }
    }
    return sum;
}

// Computes a = k a per element, without the handling of infinities in the complex operator*.
void MultiplyEach(std::vector<Complex>& a, const std::vector<Complex>& k) {
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = {k[i].real() * a[i].real() - k[i].imag() * a[i].imag(),
                k[i].real() * a[i].imag() + k[i].imag() * a[i].real()};
    }
}

} // namespace

WConvolution::WConvolution() = default;
WConvolution::WConvolution(const WConvolution&) = default;
WConvolution& WConvolution::operator=(const WConvolution&) = default;
WConvolution::~WConvolution() = default;

void WConvolution::Convolve(std::vector<double>& data, WFunction* kernel, double dx) {
    if (data.empty()) {
        return;
    }
    const std::size_t length = data.size();
    const std::size_t padded = PaddedLength(length);
    const double mean = std::accumulate(data.begin(), data.end(), 0.0) / static_cast<double>(length);

    std::vector<Complex> signal(padded);
    for (std::size_t i = 0; i < length; ++i) {
        signal[i] = data[i] - mean;
    }
    std::vector<Complex> samples(padded);
    const double sum = SampleKernel(kernel, dx, samples);
    if (sum != 0.0) {
        for (Complex& sample : samples) {
            sample = sample.real() / sum;
        }
    }

    m_fft.ComplexFFT2(signal, samples);
    MultiplyEach(signal, samples);
    m_fft.InverseComplexFFT(signal);
    for (std::size_t i = 0; i < length; ++i) {
        data[i] = signal[i].real() + mean;
    }
}

} // namespace bss
