#include "bss/math/model/WSimpleExponentialDecayFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>

namespace bss {

namespace {

constexpr std::size_t kSimpleExponentialDecayCoefficients = 3;

} // namespace

WSimpleExponentialDecayFunction::WSimpleExponentialDecayFunction() {
    m_Coefficients.assign(kSimpleExponentialDecayCoefficients, 0.0);
    m_Covariance.assign(kSimpleExponentialDecayCoefficients, m_Coefficients);
    WSimpleExponentialDecayFunction::SetFunctionType();
}
WSimpleExponentialDecayFunction::WSimpleExponentialDecayFunction(
    const WSimpleExponentialDecayFunction& other) = default;
WSimpleExponentialDecayFunction&
WSimpleExponentialDecayFunction::operator=(const WSimpleExponentialDecayFunction& other) = default;
WSimpleExponentialDecayFunction::~WSimpleExponentialDecayFunction() = default;

double WSimpleExponentialDecayFunction::Evaluate(double x) {
    const detail::Coefficients<kSimpleExponentialDecayCoefficients> c(m_Coefficients);
    return std::exp(-(x / c[2])) * c[1] + c[0];
}

WFunction* WSimpleExponentialDecayFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WSimpleExponentialDecayFunction::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void WSimpleExponentialDecayFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<kSimpleExponentialDecayCoefficients> c(m_Coefficients);
    const double e = std::exp(-(x / c[2]));
    detail::StoreDerivatives<kSimpleExponentialDecayCoefficients>(derivatives, m_Coefficients.size(),
                                                                  {1.0, e, c[1] * x * e / (c[2] * c[2])});
}

void WSimpleExponentialDecayFunction::SetFunctionType() {
    m_eType = etSimpleExponentialDecay;
}

} // namespace bss
