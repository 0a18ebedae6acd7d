#include "bss/math/WConvolution.h"

#include "Signals.h"
#include "bss/math/FormulaFunction.h"

#include <gtest/gtest.h>

#include <numeric>
#include <stdexcept>

namespace {

using Values = std::vector<double>;

Values MakeData(std::size_t length) {
    Values data;
    for (const Complex& value : MakeSignal(length, 21)) {
        data.push_back(3.0 + value.real());
    }
    return data;
}

/// From the definition: the sum over the samples, each at its distance, around the padded circle; for kernels
/// that are nowhere small.
Values Direct(const Values& data, bss::WFunction& kernel, double dx) {
    const auto length = static_cast<long>(data.size());
    long half = 1;
    while (2 * half < length) {
        half *= 2;
    }
    double total = 0.0;
    for (long i = -half; i < half; ++i) {
        total += kernel.Evaluate(static_cast<double>(i) * dx);
    }
    const double mean = std::accumulate(data.begin(), data.end(), 0.0) / static_cast<double>(length);
    Values result(data.size(), mean);
    for (long i = 0; i < length * length; ++i) {
        const long distance = i / length - i % length;
        const long around = (distance + 3 * half) % (2 * half) - half;
        const double weight = kernel.Evaluate(static_cast<double>(around) * dx) / total;
        result[static_cast<std::size_t>(i / length)] +=
            weight * (data[static_cast<std::size_t>(i % length)] - mean);
    }
    return result;
}

double Gauss(double x) {
    return std::exp(-x * x);
}

TEST(Convolution, IsTheWeightedSumAroundTheCircle) {
    FormulaFunction even([](double x) { return 1.0 / (1.0 + x * x); });
    FormulaFunction oneSided([](double x) { return x < 0.0 ? 0.0 : std::exp(-x); });
    FormulaFunction changing([](double x) { return x < 0.0 ? 1.0 : std::cos(3.0 * x); });
    for (FormulaFunction* kernel : {&even, &oneSided, &changing}) {
        for (const std::size_t length : {2U, 3U, 64U, 100U}) {
            const double dx = 0.05;
            Values data = MakeData(length);
            const Values expected = Direct(data, *kernel, dx);
            bss::WConvolution().Convolve(data, kernel, dx);
            ASSERT_EQ(data.size(), length);
            for (std::size_t i = 0; i < length; ++i) {
                EXPECT_NEAR(data[i], expected[i], 1e-12) << length << ' ' << i;
            }
        }
    }
}

TEST(Convolution, KernelIsAskedUpToTheFirstPairOfSmallValuesOnly) {
    const auto calls = [](double (*f)(double), std::size_t length) {
        FormulaFunction kernel(f);
        Values data = MakeData(length);
        bss::WConvolution().Convolve(data, &kernel, 1.0);
        return kernel.evaluations;
    };
    const auto flat = [](double) { return 1.0; };
    EXPECT_EQ(calls(Gauss, 0), 0);
    EXPECT_EQ(calls(Gauss, 1), 1) << "the threshold";
    EXPECT_EQ(calls(Gauss, 1000), 1 + 2 * 4) << "at 0, 1, 2, 3 and -1, -2, -3, -4";
    EXPECT_EQ(calls(flat, 1000), 1 + 1024);
    EXPECT_EQ(calls(flat, 1024), 1 + 1024) << "not padded";
}

TEST(Convolution, ConstantDataStayAndAKernelWithoutWeightLeavesTheMean) {
    bss::WConvolution convolution;
    FormulaFunction gauss(Gauss);
    Values constant(100, 2.5);
    convolution.Convolve(constant, &gauss, 0.1);
    EXPECT_EQ(constant, Values(100, 2.5));
    FormulaFunction nothing([](double) { return 0.0; });
    Values data = {1.0, 2.0, 6.0};
    convolution.Convolve(data, &nothing, 1.0);
    EXPECT_EQ(data, Values(3, 3.0));
    EXPECT_EQ(nothing.evaluations, 1 + 4) << "nothing is below a threshold of 0.0";
}

TEST(Convolution, FailureOfTheKernelLeavesTheData) {
    FormulaFunction failing([](double x) -> double { return x > 1.5 ? throw std::runtime_error("") : 1.0; });
    Values data = MakeData(16);
    EXPECT_THROW(bss::WConvolution().Convolve(data, &failing, 1.0), std::runtime_error);
    EXPECT_EQ(data, MakeData(16));
}

} // namespace
