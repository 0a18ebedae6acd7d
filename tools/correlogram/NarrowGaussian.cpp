#include "NarrowGaussian.h"

#include <cmath>
#include <new>

namespace correlogram {

namespace {

// The roots are tied: root of width = root of centre times this.
const double kTie = std::sqrt(1.0 / NarrowGaussian::kCentreOverWidth);

} // namespace

NarrowGaussian::NarrowGaussian() {
    NarrowGaussian::SetFunctionType();
    m_Coefficients.assign(3, 0.0);
}

void NarrowGaussian::PassCoefficients() {
    m_Gaussian.SetCoefficient(0, m_Coefficients[0]);
    m_Gaussian.SetCoefficient(1, m_Coefficients[1]);
    m_Gaussian.SetCoefficient(2, m_Coefficients[2]);
    m_Gaussian.SetCoefficient(3, m_Coefficients[2] * kTie);
}

double NarrowGaussian::Evaluate(double x) {
    PassCoefficients();
    return m_Gaussian.Evaluate(x);
}

void NarrowGaussian::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    PassCoefficients();
    m_Gaussian.ComputeDerivatives(x, m_afDerivatives);
    derivatives.assign(m_afDerivatives.begin(), m_afDerivatives.begin() + 3);
    derivatives[2] += m_afDerivatives[3] * kTie;
}

bss::WFunction* NarrowGaussian::clone() const {
    return new (std::nothrow) NarrowGaussian(*this);
}

std::wstring NarrowGaussian::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void NarrowGaussian::SetFunctionType() {
    m_eType = etUndefined;
}

} // namespace correlogram
