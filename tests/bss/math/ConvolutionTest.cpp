#include "bss/math/WConvolution.h"

#include "Signals.h"
#include "bss/math/EveryFunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <stdexcept>

namespace {

/// A kernel that remembers how often it was asked.
class Counted : public bss::WFunction {
public:
    explicit Counted(std::function<double(double)> formula) : m_formula(std::move(formula)) {}
    using WFunction::Evaluate;
    double Evaluate(double x) override {
        ++calls;
        return m_formula(x);
    }
    bss::WFunction* clone() const override { return new Counted(*this); }
    void ComputeDerivatives(double, std::vector<double>&) override {}
    std::wstring GetCoefficientName(long) const override { return {}; }

    int calls = 0;

private:
    void SetFunctionType() override {}

    std::function<double(double)> m_formula;
};

double Mean(const std::vector<double>& data) {
    return std::accumulate(data.begin(), data.end(), 0.0) / static_cast<double>(data.size());
}

std::vector<double> MakeData(std::size_t length) {
    Noise noise(21);
    std::vector<double> data(length);
    for (double& value : data) {
        value = 3.0 + noise.Next();
    }
    return data;
}

/// From the definition: the sum over the samples, each at its distance, around the padded circle.
std::vector<double> Direct(const std::vector<double>& data, bss::WFunction& kernel, double dx) {
    std::size_t padded = 1;
    while (padded < data.size()) {
        padded *= 2;
    }
    std::vector<double> weights(padded);
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
    const double mean = Mean(data);
    std::vector<double> result(data.size(), mean);
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
            Counted kernel(row.kernel);
            std::vector<double> data = MakeData(length);
            const std::vector<double> expected = Direct(data, kernel, row.dx);
            bss::WConvolution().Convolve(data, &kernel, row.dx);
            ASSERT_EQ(data.size(), length);
            for (std::size_t i = 0; i < length; ++i) {
                EXPECT_NEAR(data[i], expected[i], 1e-12) << row.what << ' ' << length << ' ' << i;
            }
        }
    }
}

TEST(Convolution, EveryKernelClassKeepsConstantDataAndTheMeanOfACircle) {
    for (FunctionFacts& facts : EveryFunction()) {
        bss::WFunction& kernel = *facts.function;
        const std::vector<double> coefficients(std::max<std::size_t>(1, kernel.GetCoefficients().size()),
                                               1.0);
        kernel.SetCoefficients(coefficients);
        bss::WConvolution convolution;
        std::vector<double> constant(100, 2.5);
        convolution.Convolve(constant, &kernel, 0.1);
        EXPECT_EQ(constant, std::vector<double>(100, 2.5)) << facts.type;

        std::vector<double> data = MakeData(128);
        const double mean = Mean(data);
        const std::vector<double> expected = Direct(data, kernel, 0.1);
        convolution.Convolve(data, &kernel, 0.1);
        double largest = 0.0;
        double farthest = 0.0;
        for (std::size_t i = 0; i < data.size(); ++i) {
            largest = std::max(largest, std::fabs(expected[i]));
            farthest = std::max(farthest, std::fabs(data[i] - expected[i]));
        }
        EXPECT_LT(farthest, 1e-11 * largest) << facts.type;
        EXPECT_NEAR(Mean(data), mean, 1e-11 * largest) << facts.type;
    }
}

TEST(Convolution, KernelIsAskedUpToTheFirstPairOfSmallValuesOnly) {
    struct Case {
        const char* what;
        std::function<double(double)> kernel;
        std::size_t length;
        int calls;
    };
    // One call for the threshold, then two a pair; the pair that is too small is the last.
    const Case cases[] = {
        {"no data", Gauss, 0, 0},
        {"one value: no pair", Gauss, 1, 1},
        {"Gauss at 0, 1, 2, 3 and -1, -2, -3, -4", Gauss, 1000, 1 + 2 * 4},
        {"never small: half of 1024 pairs", [](double) { return 1.0; }, 1000, 1 + 1024},
        {"never small: 1024 is not padded", [](double) { return 1.0; }, 1024, 1 + 1024},
        {"zero everywhere: nothing is below 0", [](double) { return 0.0; }, 8, 1 + 8},
    };
    for (const Case& row : cases) {
        Counted kernel(row.kernel);
        std::vector<double> data = MakeData(row.length);
        bss::WConvolution().Convolve(data, &kernel, 1.0);
        EXPECT_EQ(kernel.calls, row.calls) << row.what;
    }
}

TEST(Convolution, KernelWithoutWeightLeavesTheMean) {
    Counted nothing([](double) { return 0.0; });
    std::vector<double> data = {1.0, 2.0, 6.0};
    bss::WConvolution().Convolve(data, &nothing, 1.0);
    EXPECT_EQ(data, std::vector<double>(3, 3.0));
}

TEST(Convolution, FailureOfTheKernelLeavesTheData) {
    Counted failing([](double x) -> double { return x > 1.5 ? throw std::runtime_error("no value") : 1.0; });
    std::vector<double> data = MakeData(16);
    const std::vector<double> before = data;
    bss::WConvolution convolution;
    EXPECT_THROW(convolution.Convolve(data, &failing, 1.0), std::runtime_error);
    EXPECT_EQ(data, before);
}

} // namespace
