#include "bss/math/model/WExponentialFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>

namespace bss {

namespace {

using detail::kLn2;
using detail::kPi;

constexpr std::size_t kExponentialCoefficients = 4;

} // namespace

WExponentialFunction::WExponentialFunction() {
    m_Coefficients.assign(kExponentialCoefficients, 0.0);
    m_Covariance.assign(kExponentialCoefficients, m_Coefficients);
    WExponentialFunction::SetFunctionType();
}
WExponentialFunction::WExponentialFunction(const WExponentialFunction& other) = default;
WExponentialFunction& WExponentialFunction::operator=(const WExponentialFunction& other) = default;
WExponentialFunction::~WExponentialFunction() = default;

double WExponentialFunction::Evaluate(double x) {
    const detail::Coefficients<kExponentialCoefficients> c(m_Coefficients);
    if (c[2] == 0.0) {
        return 0.0;
    }
    const double u = ((x - c[1]) + (x - c[1])) / c[2];
    return std::pow(kLn2 / kPi, 0.5) * (2.0 / c[2] * c[0]) * std::exp(u * u * -1.0 * kLn2) + c[3];
}

WFunction* WExponentialFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WExponentialFunction::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void WExponentialFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<kExponentialCoefficients> c(m_Coefficients);
    if (c[2] == 0.0) {
        derivatives.assign(m_Coefficients.size(), 0.0);
        return;
    }
    const double t = x - c[1];
    const double s = std::sqrt(kLn2 / kPi);
    const double u = (t + t) / c[2];
    const double byArea = std::exp(u * u * -1.0 * kLn2) * (2.0 / c[2] * s);
    const double byCenter = byArea * c[0] * kLn2 * 4.0 * t / c[2];
    const double byWidth = (byArea * c[0] * 8.0 * (t * t) * kLn2) / (c[2] * c[2] * c[2]) -
                           std::exp(t * t * -2.0 * kLn2 / c[2]) * ((c[0] + c[0]) * s / (c[2] * c[2]));
    detail::StoreDerivatives<kExponentialCoefficients>(derivatives, m_Coefficients.size(),
                                                       {byArea, byCenter, byWidth, 0.0});
}

void WExponentialFunction::SetFunctionType() {
    m_eType = etExponential;
}

} // namespace bss
