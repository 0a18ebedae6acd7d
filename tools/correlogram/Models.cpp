#include "Models.h"

#include "bss/math/model/WCumulantsFunction.h"
#include "bss/math/model/WSimpleExponentialDecayFunction.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace correlogram {

namespace {

// The roots are tied: root of width = root of centre times this.
const double kTie = std::sqrt(1.0 / NarrowGaussian::kCentreOverWidth);

double StandardError(const Matrix& covariance, std::size_t i) {
    return std::sqrt(std::max(0.0, covariance[i][i]));
}

template <class Function>
std::unique_ptr<bss::WFunction> Make() {
    return std::make_unique<Function>();
}

// The intensity correlation decays with twice the rate of the field: time constant = 1 / (2 rate).
Distribution OfExponential(const bss::WFunction& function, const Matrix& covariance) {
    const double tau = function.GetCoefficient(2);
    const double rate = 1.0 / (2.0 * tau);
    return {{rate, rate * StandardError(covariance, 2) / std::abs(tau)}, std::nullopt};
}

// Coefficient 2 is the root r of the decay rate, coefficient 3 the second moment m: rate = r^2, index p = m /
// r^4.
Distribution OfCumulants(const bss::WFunction& function, const Matrix& covariance) {
    const double root = function.GetCoefficient(2);
    const double moment = function.GetCoefficient(3);
    const double rate = root * root;
    const double byMoment = 1.0 / (rate * rate);
    const double byRoot = -4.0 * moment / (rate * rate * root);
    const double variance = byRoot * byRoot * covariance[2][2] + 2.0 * byRoot * byMoment * covariance[2][3] +
                            byMoment * byMoment * covariance[3][3];
    return {{rate, 2.0 * std::abs(root) * StandardError(covariance, 2)},
            Measured{moment * byMoment, std::sqrt(std::max(0.0, variance))}};
}

// Coefficients 2 and 3 are the roots of centre and width; the function itself knows the cumulants of the
// distribution, which is cut off at zero, and how the errors of centre and width go into them: by their
// absolute values.
Distribution OfGaussianCumulants(const bss::WFunction& function, const Matrix& covariance) {
    const auto& gaussian = dynamic_cast<const bss::WGaussianCumulantsFunction&>(function);
    const double centreError = 2.0 * std::abs(gaussian.GetCoefficient(2)) * StandardError(covariance, 2);
    const double widthError = 2.0 * std::abs(gaussian.GetCoefficient(3)) * StandardError(covariance, 3);
    const double first = gaussian.GetFirstCumulant();
    const double firstError = gaussian.GetErrorFirstCumulant(centreError, widthError);
    const double second = gaussian.GetSecondCumulant();
    const double secondError = gaussian.GetErrorSecondCumulant(centreError, widthError);
    const double index = second / (first * first);
    return {{first, firstError},
            Measured{index,
                     secondError / (first * first) + 2.0 * std::abs(index) * firstError / std::abs(first)}};
}

// Of no measurable width.
Distribution OfNarrowGaussian(const bss::WFunction& function, const Matrix& covariance) {
    const double root = function.GetCoefficient(2);
    return {{root * root, 2.0 * std::abs(root) * StandardError(covariance, 2)}, std::nullopt};
}

bool IsTooNarrow(const bss::WFunction& function) {
    const double centre = function.GetCoefficient(2) * function.GetCoefficient(2);
    const double width = function.GetCoefficient(3) * function.GetCoefficient(3);
    return centre > NarrowGaussian::kLimit * width;
}

} // namespace

NarrowGaussian::NarrowGaussian() {
    NarrowGaussian::SetFunctionType();
    m_Coefficients.assign(3, 0.0);
}

void NarrowGaussian::PassCoefficients() {
    m_Gaussian.SetCoefficient(0, m_Coefficients[0]);
    m_Gaussian.SetCoefficient(1, m_Coefficients[1]);
    m_Gaussian.SetCoefficient(2, m_Coefficients[2]);
    m_Gaussian.SetCoefficient(3, m_Coefficients[2] * kTie);
}

double NarrowGaussian::Evaluate(double x) {
    PassCoefficients();
    return m_Gaussian.Evaluate(x);
}

void NarrowGaussian::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    PassCoefficients();
    m_Gaussian.ComputeDerivatives(x, m_afDerivatives);
    derivatives.assign(m_afDerivatives.begin(), m_afDerivatives.begin() + 3);
    derivatives[2] += m_afDerivatives[3] * kTie;
}

bss::WFunction* NarrowGaussian::clone() const {
    return new (std::nothrow) NarrowGaussian(*this);
}

std::wstring NarrowGaussian::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void NarrowGaussian::SetFunctionType() {
    m_eType = etUndefined;
}

const std::array<Model, 3>& Models() {
    static const Model narrowGaussian{
        "gaussian-cumulants",
        &Make<NarrowGaussian>,
        {{"baseline", 0.0}, {"amplitude", 0.0}, {"root of centre rate (s^-1/2)", -0.5}},
        [](const Start& start) {
            return std::vector{start.baseline, start.amplitude, std::sqrt(start.decayRate)};
        },
        &OfNarrowGaussian};
    static const std::array<Model, 3> models{{
        {"exponential",
         &Make<bss::WSimpleExponentialDecayFunction>,
         {{"baseline", 0.0}, {"amplitude", 0.0}, {"time constant (s)", 1.0}},
         [](const Start& start) {
             return std::vector{start.baseline, start.amplitude, 1.0 / (2.0 * start.decayRate)};
         },
         &OfExponential},
        {"cumulants",
         &Make<bss::WCumulantsFunction>,
         {{"baseline", 0.0},
          {"amplitude", 0.0},
          {"root of decay rate (s^-1/2)", -0.5},
          {"second moment (s^-2)", -2.0}},
         [](const Start& start) {
             return std::vector{start.baseline, start.amplitude, std::sqrt(start.decayRate),
                                start.secondMoment};
         },
         &OfCumulants},
        {"gaussian-cumulants",
         &Make<bss::WGaussianCumulantsFunction>,
         {{"baseline", 0.0},
          {"amplitude", 0.0},
          {"root of centre rate (s^-1/2)", -0.5},
          {"root of width (s^-1/2)", -0.5}},
         [](const Start& start) {
             return std::vector{start.baseline, start.amplitude, std::sqrt(start.decayRate),
                                std::sqrt(std::sqrt(start.secondMoment))};
         },
         &OfGaussianCumulants,
         &IsTooNarrow,
         &narrowGaussian,
         "The distribution of decay rates is narrower than gaussian-cumulants can tell from a single rate: "
         "its width\n"
         "was not fitted, but tied to the centre at a polydispersity of 0.006."},
    }};
    return models;
}

} // namespace correlogram
