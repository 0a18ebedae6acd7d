#include "bss/math/model/WExponentialFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>
#include <numbers>

namespace bss {

namespace {

constexpr std::size_t cCoefficients = 4;
constexpr double cLn2 = std::numbers::ln2;
constexpr double cPi = 3.141592653589793;

} // namespace

WExponentialFunction::WExponentialFunction() {
    m_Coefficients.assign(cCoefficients, 0.0);
    m_Covariance.assign(cCoefficients, m_Coefficients);
    WExponentialFunction::SetFunctionType();
}
WExponentialFunction::WExponentialFunction(const WExponentialFunction& other) = default;
WExponentialFunction& WExponentialFunction::operator=(const WExponentialFunction& other) = default;
WExponentialFunction::~WExponentialFunction() = default;

double WExponentialFunction::Evaluate(double x) {
    const detail::Coefficients<cCoefficients> c(m_Coefficients);
    if (c[2] == 0.0) {
        return 0.0;
    }
    const double u = ((x - c[1]) + (x - c[1])) / c[2];
    return std::pow(cLn2 / cPi, 0.5) * (2.0 / c[2] * c[0]) * std::exp(u * u * -1.0 * cLn2) + c[3];
}

WFunction* WExponentialFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WExponentialFunction::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void WExponentialFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<cCoefficients> c(m_Coefficients);
    if (c[2] == 0.0) {
        derivatives.assign(m_Coefficients.size(), 0.0);
        return;
    }
    const double t = x - c[1];
    const double s = std::sqrt(cLn2 / cPi);
    const double u = (t + t) / c[2];
    const double byArea = std::exp(u * u * -1.0 * cLn2) * (2.0 / c[2] * s);
    const double byCenter = byArea * c[0] * cLn2 * 4.0 * t / c[2];
    const double byWidth = (byArea * c[0] * 8.0 * (t * t) * cLn2) / (c[2] * c[2] * c[2]) -
                           std::exp(t * t * -2.0 * cLn2 / c[2]) * ((c[0] + c[0]) * s / (c[2] * c[2]));
    detail::StoreDerivatives<cCoefficients>(derivatives, m_Coefficients.size(),
                                            {byArea, byCenter, byWidth, 0.0});
}

void WExponentialFunction::SetFunctionType() {
    m_eType = etExponential;
}

} // namespace bss
