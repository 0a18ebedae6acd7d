#include "bss/math/model/WPolynomialFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cstddef>

namespace bss {

WPolynomialFunction::WPolynomialFunction() {
    WPolynomialFunction::SetFunctionType();
}
WPolynomialFunction::WPolynomialFunction(const WPolynomialFunction& other) = default;
WPolynomialFunction& WPolynomialFunction::operator=(const WPolynomialFunction& other) = default;
WPolynomialFunction::~WPolynomialFunction() = default;

WFunction* WPolynomialFunction::clone() const {
    return detail::CloneOrNull(*this);
}

void WPolynomialFunction::BasisFunctionEvaluation(double x) {
    m_BasisFunctions.resize(static_cast<std::size_t>(m_nBasisFunctions));
    double power = 1.0;
    for (double& value : m_BasisFunctions) {
        value = power;
        power *= x;
    }
}

void WPolynomialFunction::SetFunctionType() {
    m_eType = etPolynomial;
}

} // namespace bss
