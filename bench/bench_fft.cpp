// Measures a complex Fourier transform in place, from 2^10 to 2^20 elements, against FFTW (plans by estimate
// and by measurement), the radix-2 transform of the GNU Scientific Library and KissFFT. KissFFT is the
// distribution's and has single precision, that is half the data. Also measures a convolution against the
// same steps with FFTW.
//
// All peers include the scaling by 1/sqrt(N) of the library's transform, with a precomputed factor. The
// program first compares all results and fails if they differ.
//
//     bench_fft [--benchmark_... options]

#include "bss/math/WConvolution.h"
#include "bss/math/WFFT.h"
#include "bss/math/model/WGaussianFunction.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <gsl/gsl_fft_complex.h>
#include <kissfft/kiss_fft.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Complex = std::complex<double>;
using Signal = std::vector<Complex>;

struct PlanEnd {
    void operator()(fftw_plan plan) const { fftw_destroy_plan(plan); }
};
using Plan = std::unique_ptr<std::remove_pointer_t<fftw_plan>, PlanEnd>;

fftw_complex* Raw(Signal& signal) {
    return reinterpret_cast<fftw_complex*>(signal.data());
}

Plan MakePlan(Signal& scratch, int sign, unsigned flags) {
    return Plan(fftw_plan_dft_1d(static_cast<int>(scratch.size()), Raw(scratch), Raw(scratch), sign, flags));
}

void Scale(Signal& signal, double factor) {
    for (Complex& value : signal) {
        value *= factor;
    }
}

Signal MakeSignal(std::size_t length) {
    std::mt19937_64 generator(1);
    std::normal_distribution<double> normal;
    Signal signal(length);
    for (Complex& value : signal) {
        const double re = normal(generator);
        value = {re, normal(generator)};
    }
    return signal;
}

// One implementation of the transform, prepared for data of one length.
using Transform = std::function<void(Signal&)>;
struct Contestant {
    std::string name;
    Transform transform;
    double tolerance; // relative
};

std::vector<Contestant> Contestants(std::size_t length) {
    const double factor = 1.0 / std::sqrt(static_cast<double>(length));
    std::vector<Contestant> all;
    all.push_back({"krtbss", [fft = std::make_shared<bss::WFFT>()](Signal& a) { fft->ComplexFFT(a); }, 0.0});
    Signal scratch(length);
    for (const auto& [name, flags] :
         {std::pair("FFTW estimate", FFTW_ESTIMATE), std::pair("FFTW measure", FFTW_MEASURE)}) {
        const std::shared_ptr<Plan> plan =
            std::make_shared<Plan>(MakePlan(scratch, FFTW_FORWARD, flags | FFTW_UNALIGNED));
        all.push_back({name,
                       [plan, factor](Signal& a) {
                           fftw_execute_dft(plan->get(), Raw(a), Raw(a));
                           Scale(a, factor);
                       },
                       1e-9});
    }
    all.push_back({"GSL radix 2",
                   [factor](Signal& a) {
                       gsl_fft_complex_radix2_forward(reinterpret_cast<double*>(a.data()), 1, a.size());
                       Scale(a, factor);
                   },
                   1e-9});
    return all;
}

// KissFFT transforms from one array to another, in single precision.
struct Kiss {
    explicit Kiss(std::size_t length)
        : plan(kiss_fft_alloc(static_cast<int>(length), 0, nullptr, nullptr), &std::free), from(length),
          to(length), factor(1.0F / std::sqrt(static_cast<float>(length))) {
        const Signal signal = MakeSignal(length);
        for (std::size_t i = 0; i < length; ++i) {
            from[i] = {static_cast<float>(signal[i].real()), static_cast<float>(signal[i].imag())};
        }
    }
    void Run() {
        kiss_fft(plan.get(), from.data(), to.data());
        for (kiss_fft_cpx& value : to) {
            value.r *= factor;
            value.i *= factor;
        }
    }
    std::unique_ptr<std::remove_pointer_t<kiss_fft_cfg>, decltype(&std::free)> plan;
    std::vector<kiss_fft_cpx> from;
    std::vector<kiss_fft_cpx> to;
    float factor;
};

void Check(const std::string& name, const Signal& actual, const Signal& expected, double tolerance) {
    double largest = 0.0;
    double farthest = 0.0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        largest = std::max(largest, std::abs(expected[i]));
        farthest = std::max(farthest, std::abs(actual[i] - expected[i]));
    }
    if (!(farthest <= tolerance * largest)) {
        throw std::runtime_error(name + " gives other numbers");
    }
}

void Register(const std::string& name, std::function<void()> run) {
    benchmark::RegisterBenchmark(name.c_str(), [run = std::move(run)](benchmark::State& state) {
        for (auto step : state) {
            static_cast<void>(step);
            run();
            benchmark::ClobberMemory();
        }
    });
}

void RegisterTransforms(int log2) {
    const std::size_t length = std::size_t{1} << log2;
    const std::string topic = "Fourier transform/2^" + std::to_string(log2) + "/";
    Signal expected;
    for (const Contestant& contestant : Contestants(length)) {
        Signal result = MakeSignal(length);
        contestant.transform(result);
        if (expected.empty()) {
            expected = result;
        }
        Check(contestant.name, result, expected, contestant.tolerance);
        // Unitary: repeated transforms do not change the magnitude of the data.
        Register(topic + contestant.name,
                 [transform = contestant.transform, data = std::make_shared<Signal>(MakeSignal(length))] {
                     transform(*data);
                 });
    }
    const auto kiss = std::make_shared<Kiss>(length);
    kiss->Run();
    Signal result(length);
    std::transform(kiss->to.begin(), kiss->to.end(), result.begin(),
                   [](const kiss_fft_cpx& value) { return Complex(value.r, value.i); });
    Check("KissFFT", result, expected, 1e-5);
    Register(topic + "KissFFT (single precision)", [kiss] { kiss->Run(); });
}

// The steps of the library's convolution, with FFTW instead of WFFT.
class FftwConvolution {
public:
    explicit FftwConvolution(std::size_t length)
        : m_signal(length), m_kernel(length),
          m_forward(MakePlan(m_signal, FFTW_FORWARD, FFTW_ESTIMATE | FFTW_UNALIGNED)),
          m_inverse(MakePlan(m_signal, FFTW_BACKWARD, FFTW_ESTIMATE | FFTW_UNALIGNED)) {}

    void Convolve(std::vector<double>& data, bss::WFunction& kernel, double dx) {
        const std::size_t length = data.size();
        double mean = 0.0;
        for (const double value : data) {
            mean += value;
        }
        mean /= static_cast<double>(length);
        for (std::size_t i = 0; i < length; ++i) {
            m_signal[i] = data[i] - mean;
        }
        std::fill(m_kernel.begin(), m_kernel.end(), 0.0);
        const double threshold = 0.001 * kernel.Evaluate(0.0);
        double sum = 0.0;
        for (std::size_t i = 0; i < length / 2; ++i) {
            const double right = kernel.Evaluate(static_cast<double>(i) * dx);
            const double left = kernel.Evaluate(-static_cast<double>(i + 1) * dx);
            m_kernel[i] = right;
            m_kernel[length - 1 - i] = left;
            sum += right + left;
            if (right < threshold && left < threshold) {
                break;
            }
        }
        fftw_execute_dft(m_forward.get(), Raw(m_signal), Raw(m_signal));
        fftw_execute_dft(m_forward.get(), Raw(m_kernel), Raw(m_kernel));
        const double factor = 1.0 / (sum * static_cast<double>(length));
        for (std::size_t i = 0; i < length; ++i) {
            const Complex a = m_signal[i];
            const Complex k = m_kernel[i] * factor;
            m_signal[i] = {a.real() * k.real() - a.imag() * k.imag(),
                           a.real() * k.imag() + a.imag() * k.real()};
        }
        fftw_execute_dft(m_inverse.get(), Raw(m_signal), Raw(m_signal));
        for (std::size_t i = 0; i < length; ++i) {
            data[i] = m_signal[i].real() + mean;
        }
    }

private:
    Signal m_signal;
    Signal m_kernel;
    Plan m_forward;
    Plan m_inverse;
};

void RegisterConvolutions(int log2) {
    const std::size_t length = std::size_t{1} << log2;
    const std::string topic = "Convolution/2^" + std::to_string(log2) + "/";
    const auto kernel = std::make_shared<bss::WGaussianFunction>();
    kernel->SetCoefficients({1.0, 0.0, 1.0, 0.0, 0.0});
    constexpr double kDx = 0.05;
    const auto ours = std::make_shared<bss::WConvolution>();
    const auto peer = std::make_shared<FftwConvolution>(length);
    std::vector<double> data(length);
    const Signal noise = MakeSignal(length);
    std::transform(noise.begin(), noise.end(), data.begin(),
                   [](const Complex& value) { return value.real(); });

    std::vector<double> a = data;
    std::vector<double> b = data;
    ours->Convolve(a, kernel.get(), kDx);
    peer->Convolve(b, *kernel, kDx);
    Check("FFTW's convolution", Signal(b.begin(), b.end()), Signal(a.begin(), a.end()), 1e-9);

    // Fresh data each time: repeated smoothing ends in subnormal numbers, which are slow.
    Register(topic + "krtbss", [=, work = std::vector<double>(length)]() mutable {
        work = data;
        ours->Convolve(work, kernel.get(), kDx);
    });
    Register(topic + "FFTW estimate", [=, work = std::vector<double>(length)]() mutable {
        work = data;
        peer->Convolve(work, *kernel, kDx);
    });
}

} // namespace

int main(int argc, char** argv) {
    try {
        for (int log2 = 10; log2 <= 20; log2 += 2) {
            RegisterTransforms(log2);
            RegisterConvolutions(log2);
        }
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
            return 2;
        }
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench_fft: %s\n", failure.what());
        return 1;
    }
}
