#include "bss/math/model/WExponentialDecayFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>

namespace bss {

namespace {

using detail::kTiny;

constexpr std::size_t kExponentialDecayCoefficients = 4;

} // namespace

WExponentialDecayFunction::WExponentialDecayFunction() {
    WExponentialDecayFunction::SetFunctionType();
}
WExponentialDecayFunction::WExponentialDecayFunction(const WExponentialDecayFunction& other) = default;
WExponentialDecayFunction&
WExponentialDecayFunction::operator=(const WExponentialDecayFunction& other) = default;
WExponentialDecayFunction::~WExponentialDecayFunction() = default;

double WExponentialDecayFunction::Evaluate(double x) {
    const detail::Coefficients<kExponentialDecayCoefficients> c(m_Coefficients);
    const double timeConstant = c[3] == 0.0 ? kTiny : c[3];
    const double z = (x - c[2]) / timeConstant;
    return std::exp(-z) * c[1] + c[0];
}

WFunction* WExponentialDecayFunction::clone() const {
    return detail::CloneOrNull(*this);
}

void WExponentialDecayFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<kExponentialDecayCoefficients> c(m_Coefficients);
    const double timeConstant = c[3] == 0.0 ? kTiny : c[3];
    const double z = (x - c[2]) / timeConstant;
    const double e = std::exp(-z);
    const double slope = c[1] / timeConstant;
    detail::StoreDerivatives<kExponentialDecayCoefficients>(derivatives, m_Coefficients.size(),
                                                            {1.0, e, e * slope, slope * z * e});
}

void WExponentialDecayFunction::SetFunctionType() {
    m_eType = etExponentialDecay;
}

} // namespace bss
