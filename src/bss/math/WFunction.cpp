#include "bss/math/WFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>
#include <cstddef>

namespace bss {

namespace {

bool IsIndex(long index, const std::vector<double>& coefficients) {
    return index >= 0 && static_cast<std::size_t>(index) < coefficients.size();
}

} // namespace

namespace detail {

double ErrorBar(const WFunction& function, const std::vector<double>& derivatives) {
    const std::vector<std::vector<double>>& covariance = function.GetCovarianceMatrix();
    const std::size_t count = std::min<std::size_t>(function.GetNumberOfCoefficients(), derivatives.size());
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t columns = i < covariance.size() ? covariance[i].size() : 0;
        for (std::size_t j = 0; j < count; ++j) {
            const double cell = j < columns ? covariance[i][j] : 0.0;
            sum += (derivatives[j] * derivatives[i]) * cell;
        }
    }
    return sum > 0.0 ? std::sqrt(function.GetChiSquaredFactor() * sum) : 0.0;
}

} // namespace detail

WFunction::WFunction() = default;
WFunction::WFunction(const WFunction& other) = default;
WFunction::~WFunction() = default;

WFunction& WFunction::operator=(const WFunction& other) {
    Assign(other);
    return *this;
}

void WFunction::Assign(const WFunction& other) {
    m_eType = other.m_eType;
    m_Coefficients = other.m_Coefficients;
    m_Covariance = other.m_Covariance;
    m_dChiSquared = other.m_dChiSquared;
    m_dChiSquaredFactor = other.m_dChiSquaredFactor;
}

void WFunction::ResetData() {}

void WFunction::SetCoefficients(const std::vector<double>& coefficients) {
    m_Coefficients = coefficients;
}

void WFunction::Evaluate(double x, double& y, double& sigma) {
    y = Evaluate(x);
    std::vector<double> derivatives;
    ComputeDerivatives(x, derivatives);
    sigma = detail::ErrorBar(*this, derivatives);
}

std::wstring WFunction::GetCoefficientName(long index) const {
    return IsIndex(index, m_Coefficients) ? L"A" + std::to_wstring(index) : std::wstring();
}

double WFunction::GetCoefficient(long index) const {
    return IsIndex(index, m_Coefficients) ? m_Coefficients[static_cast<std::size_t>(index)] : 0.0;
}

void WFunction::SetCoefficient(long index, double value) {
    if (IsIndex(index, m_Coefficients)) {
        m_Coefficients[static_cast<std::size_t>(index)] = value;
    }
}

void WFunction::SetCovarianceMatrix(const std::vector<std::vector<double>>& covariance) {
    m_Covariance = covariance;
}

void WFunction::SetChiSquared(double chiSquared, long points) {
    m_dChiSquared = chiSquared;
    const std::uint32_t excess = static_cast<std::uint32_t>(points) - GetNumberOfCoefficients();
    m_dChiSquaredFactor = excess == 0 ? 1.0 : chiSquared / static_cast<double>(excess);
    if (m_dChiSquaredFactor < 1.0) {
        m_dChiSquaredFactor = 1.0;
    }
}

} // namespace bss
