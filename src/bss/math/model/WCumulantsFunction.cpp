#include "bss/math/model/WCumulantsFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>

namespace bss {

namespace {

constexpr std::size_t kCumulantsCoefficients = 4;

} // namespace

WCumulantsFunction::WCumulantsFunction() {
    m_Coefficients.assign(kCumulantsCoefficients, 0.0);
    m_Covariance.assign(kCumulantsCoefficients, m_Coefficients);
    WCumulantsFunction::SetFunctionType();
}
WCumulantsFunction::WCumulantsFunction(const WCumulantsFunction& other) = default;
WCumulantsFunction& WCumulantsFunction::operator=(const WCumulantsFunction& other) = default;
WCumulantsFunction::~WCumulantsFunction() = default;

double WCumulantsFunction::Evaluate(double x) {
    const detail::Coefficients<kCumulantsCoefficients> c(m_Coefficients);
    const double q = x * x * c[3] * 0.5 + 1.0;
    const double e = std::exp(c[2] * c[2] * -2.0 * x);
    return e * c[1] * (q * q) + c[0];
}

WFunction* WCumulantsFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WCumulantsFunction::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void WCumulantsFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<kCumulantsCoefficients> c(m_Coefficients);
    const double x2 = x * x;
    const double q = x2 * c[3] * 0.5 + 1.0;
    const double e = std::exp(c[2] * c[2] * -2.0 * x);
    const double byAmplitude = q * q * e;
    detail::StoreDerivatives<kCumulantsCoefficients>(
        derivatives, m_Coefficients.size(),
        {1.0, byAmplitude, byAmplitude * -4.0 * c[1] * c[2] * x, (x2 * x2 * c[3] * 0.5 + x2) * (e * c[1])});
}

void WCumulantsFunction::SetFunctionType() {
    m_eType = etCumulants;
}

} // namespace bss
