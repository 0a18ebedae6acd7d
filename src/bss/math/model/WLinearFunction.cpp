#include "bss/math/model/WLinearFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cstddef>
#include <limits>
#include <stdexcept>

namespace bss {

WLinearFunction::WLinearFunction() = default;
WLinearFunction::WLinearFunction(const WLinearFunction& other) = default;
WLinearFunction& WLinearFunction::operator=(const WLinearFunction& other) = default;
WLinearFunction::~WLinearFunction() = default;

void WLinearFunction::SetCoefficients(const std::vector<double>& coefficients) {
    WFunction::SetCoefficients(coefficients);
    m_nBasisFunctions = static_cast<std::int32_t>(m_Coefficients.size());
}

double WLinearFunction::Evaluate(double x) {
    BasisFunctionEvaluation(x);
    const std::size_t count = std::min(m_Coefficients.size(), m_BasisFunctions.size());
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += m_Coefficients[i] * m_BasisFunctions[i];
    }
    return sum;
}

void WLinearFunction::Evaluate(double x, double& y, double& sigma) {
    y = Evaluate(x);
    sigma = detail::ErrorBar(*this, m_BasisFunctions);
}

std::wstring WLinearFunction::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void WLinearFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    BasisFunctionEvaluation(x);
    const std::size_t count = std::min(m_Coefficients.size(), m_BasisFunctions.size());
    derivatives.assign(m_Coefficients.size(), 0.0);
    std::copy_n(m_BasisFunctions.begin(), count, derivatives.begin());
}

void WLinearFunction::SetNumberOfBasisFunctions(long n) {
    if (n > std::numeric_limits<std::int32_t>::max()) {
        throw std::length_error("WLinearFunction::SetNumberOfBasisFunctions: too many basis functions");
    }
    const std::size_t count = n < 1 ? 0 : static_cast<std::size_t>(n);
    std::vector<double> coefficients(count, 0.0);
    std::vector<std::vector<double>> covariance(count, coefficients);
    m_Coefficients.swap(coefficients);
    m_Covariance.swap(covariance);
    m_nBasisFunctions = static_cast<std::int32_t>(count);
}

void WLinearFunction::ExtendBasisFunctionsToCount(long n) {
    if (n < 0) {
        return;
    }
    const auto count = static_cast<std::size_t>(n);
    m_BasisFunctions.resize(count, 0.0);
    m_Covariance.resize(count);
    for (std::vector<double>& row : m_Covariance) {
        row.resize(count, 0.0);
    }
}

void WLinearFunction::GetBasisFunctions(std::vector<double>& values) {
    values = m_BasisFunctions;
}

} // namespace bss
