#include "bss/math/model/WSineFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>

namespace bss {

namespace {

constexpr std::size_t kSineCoefficients = 4;

} // namespace

WSineFunction::WSineFunction() {
    m_Coefficients.assign(kSineCoefficients, 0.0);
    WSineFunction::SetFunctionType();
}
WSineFunction::WSineFunction(const WSineFunction& other) = default;
WSineFunction& WSineFunction::operator=(const WSineFunction& other) = default;
WSineFunction::~WSineFunction() = default;

double WSineFunction::Evaluate(double x) {
    const detail::Coefficients<kSineCoefficients> c(m_Coefficients);
    const double a = c[2] * c[2] * x + c[3];
    return std::sin(a) * (c[1] * c[1]) + c[0];
}

WFunction* WSineFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WSineFunction::GetCoefficientName(long index) const {
    switch (index) {
    case 0:
        return L"A0";
    case 1:
        return L"A1";
    case 2:
        return L"omega";
    case 3:
        return L"phi";
    default:
        return std::wstring();
    }
}

void WSineFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<kSineCoefficients> c(m_Coefficients);
    const double a = c[2] * c[2] * x + c[3];
    const double v = std::cos(a) * (c[1] * c[1]);
    detail::StoreDerivatives<kSineCoefficients>(derivatives, kSineCoefficients,
                                                {1.0, std::sin(a) * 2.0, (v + v) * c[2] * x, v});
}

void WSineFunction::SetFunctionType() {
    m_eType = etSine;
}

} // namespace bss
