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

/// From the definition: the sum over the samples, each at its distance, around the padded circle.
Values Direct(const Values& data, bss::WFunction& kernel, double dx) {
    std::size_t padded = 1;
    while (padded < data.size()) {
        padded *= 2;
    }
    Values weights(padded);
    double total = 0.0;
    for (std::size_t i = 0; i < padded / 2; ++i) {
        weights[i] = kernel.Evaluate(static_cast<double>(i) * dx);
        weights[padded - 1 - i] = kernel.Evaluate(-static_cast<double>(i + 1) * dx);
        total += weights[i] + weights[padded - 1 - i];
        const double threshold = 0.001 * kernel.Evaluate(0.0);
        if (weights[i] < threshold && weights[padded - 1 - i] < threshold) {
            break;
        }
    }
    const double mean = std::accumulate(data.begin(), data.end(), 0.0) / static_cast<double>(data.size());
    Values result(data.size(), mean);
    for (std::size_t i = 0; i < data.size(); ++i) {
        for (std::size_t j = 0; j < data.size(); ++j) {
            result[i] += weights[(i + padded - j) % padded] / total * (data[j] - mean);
        }
    }
    return result;
}

double Gauss(double x) {
    return std::exp(-x * x);
}

TEST(Convolution, IsTheWeightedSumAroundTheCircle) {
    struct Case {
        const char* what;
        std::function<double(double)> kernel;
        double dx;
    };
    const Case cases[] = {
        {"even", Gauss, 0.3},
        {"one-sided", [](double x) { return x < 0.0 ? 0.0 : std::exp(-x); }, 0.25},
        {"wider than the data", Gauss, 0.001},
        {"sign changes", [](double x) { return std::cos(3.0 * x) * Gauss(0.3 * x); }, 0.1},
    };
    for (const Case& row : cases) {
        for (const std::size_t length : {2U, 3U, 64U, 100U}) {
            FormulaFunction kernel(row.kernel);
            Values data = MakeData(length);
            const Values expected = Direct(data, kernel, row.dx);
            bss::WConvolution().Convolve(data, &kernel, row.dx);
            ASSERT_EQ(data.size(), length);
            for (std::size_t i = 0; i < length; ++i) {
                EXPECT_NEAR(data[i], expected[i], 1e-12) << row.what << ' ' << length << ' ' << i;
            }
        }
    }
}

TEST(Convolution, KernelIsAskedUpToTheFirstPairOfSmallValuesOnly) {
    struct Case {
        const char* what;
        std::function<double(double)> kernel;
        std::size_t length;
        long calls;
    };
    // One call for the threshold, then two a pair; the pair that is too small is the last.
    const Case cases[] = {
        {"no data", Gauss, 0, 0},
        {"one value: no pair", Gauss, 1, 1},
        {"Gauss at 0, 1, 2, 3 and -1, -2, -3, -4", Gauss, 1000, 1 + 2 * 4},
        {"never small: half of 1024 pairs", [](double) { return 1.0; }, 1000, 1 + 1024},
        {"never small: 1024 is not padded", [](double) { return 1.0; }, 1024, 1 + 1024},
    };
    for (const Case& row : cases) {
        FormulaFunction kernel(row.kernel);
        Values data = MakeData(row.length);
        bss::WConvolution().Convolve(data, &kernel, 1.0);
        EXPECT_EQ(kernel.evaluations, row.calls) << row.what;
    }
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
