#include "bss/math/model/WFermiDiracFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>

namespace bss {

namespace {

using detail::kTiny;

constexpr std::size_t kFermiDiracCoefficients = 3;

} // namespace

WFermiDiracFunction::WFermiDiracFunction() {
    m_Coefficients.assign(kFermiDiracCoefficients, 0.0);
    WFermiDiracFunction::SetFunctionType();
}
WFermiDiracFunction::WFermiDiracFunction(const WFermiDiracFunction& other) = default;
WFermiDiracFunction& WFermiDiracFunction::operator=(const WFermiDiracFunction& other) = default;
WFermiDiracFunction::~WFermiDiracFunction() = default;

double WFermiDiracFunction::Evaluate(double x) {
    const detail::Coefficients<kFermiDiracCoefficients> c(m_Coefficients);
    const double width = c[2] == 0.0 ? kTiny : c[2];
    const double z = (x - c[1]) / width;
    return (1.0 - 1.0 / (std::exp(z) + 1.0)) * c[0];
}

WFunction* WFermiDiracFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WFermiDiracFunction::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void WFermiDiracFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<kFermiDiracCoefficients> c(m_Coefficients);
    const double width = c[2] == 0.0 ? kTiny : c[2];
    const double z = (x - c[1]) / width;
    const double p = std::exp(z);
    const double q = std::exp(p) + 1.0;
    const double byCenter = (c[0] / width) * -1.0 * p / (q * q);
    detail::StoreDerivatives<kFermiDiracCoefficients>(derivatives, m_Coefficients.size(),
                                                      {1.0 - 1.0 / q, byCenter, byCenter * z});
}

void WFermiDiracFunction::SetFunctionType() {
    m_eType = etFermiDirac;
}

} // namespace bss
