#include "bss/math/model/WExponentialPolynomialFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>
#include <cstddef>

namespace bss {

WExponentialPolynomialFunction::WExponentialPolynomialFunction() {
    WExponentialPolynomialFunction::SetFunctionType();
}
WExponentialPolynomialFunction::WExponentialPolynomialFunction(const WExponentialPolynomialFunction& other) =
    default;
WExponentialPolynomialFunction&
WExponentialPolynomialFunction::operator=(const WExponentialPolynomialFunction& other) = default;
WExponentialPolynomialFunction::~WExponentialPolynomialFunction() = default;

double WExponentialPolynomialFunction::Evaluate(double x) {
    return std::exp(WLinearFunction::Evaluate(x));
}

void WExponentialPolynomialFunction::Evaluate(double x, double& y, double& sigma) {
    y = std::exp(WLinearFunction::Evaluate(x));
    std::vector<double> derivatives;
    ComputeDerivatives(x, derivatives);
    sigma = detail::ErrorBar(*this, derivatives);
}

WFunction* WExponentialPolynomialFunction::clone() const {
    return detail::CloneOrNull(*this);
}

void WExponentialPolynomialFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const double e = std::exp(WLinearFunction::Evaluate(x));
    derivatives.clear();
    for (const double basis : m_BasisFunctions) {
        derivatives.push_back(basis * e);
    }
    derivatives.resize(m_Coefficients.size(), 0.0);
}

void WExponentialPolynomialFunction::SetFunctionType() {
    m_eType = etExponentialPolynomial;
}

} // namespace bss
