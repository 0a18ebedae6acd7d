#include "bss/math/model/WGaussianFunction.h"

#include "bss/math/private/FunctionSupport.h"

#include <cmath>

namespace bss {

namespace {

using detail::kTiny;

constexpr std::size_t kGaussianCoefficients = 5;
constexpr double kHalfWidthPerFullWidth = 0.60056120439;
constexpr double kCut = 25.0;

void MendZeroWidth(std::vector<double>& coefficients) {
    if (coefficients.size() > 2 && coefficients[2] == 0.0) {
        coefficients[2] = kTiny;
    }
}

// Returns kTiny for a zero or missing width: MendZeroWidth does not add a missing one.
double WidthOf(const detail::Coefficients<kGaussianCoefficients>& c) {
    return c[2] == 0.0 ? kTiny : c[2];
}

double Peak(double u) {
    return std::fabs(u) < kCut ? std::exp(u * -1.0 * u) : 0.0;
}

} // namespace

WGaussianFunction::WGaussianFunction() {
    m_Coefficients.assign(kGaussianCoefficients, 0.0);
    WGaussianFunction::SetFunctionType();
}
WGaussianFunction::WGaussianFunction(const WGaussianFunction& other) = default;
WGaussianFunction& WGaussianFunction::operator=(const WGaussianFunction& other) = default;
WGaussianFunction::~WGaussianFunction() = default;

double WGaussianFunction::Evaluate(double x) {
    MendZeroWidth(m_Coefficients);
    const detail::Coefficients<kGaussianCoefficients> c(m_Coefficients);
    const double width = WidthOf(c);
    const double u = (x - c[1]) / (width * kHalfWidthPerFullWidth);
    return c[0] * Peak(u) + c[3] + c[4] * x;
}

WFunction* WGaussianFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WGaussianFunction::GetCoefficientName(long index) const {
    switch (index) {
    case 0:
        return L"amplitude";
    case 1:
        return L"center";
    case 2:
        return L"width";
    case 3:
        return L"offset";
    case 4:
        return L"slope";
    default:
        return std::wstring();
    }
}

void WGaussianFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    MendZeroWidth(m_Coefficients);
    const detail::Coefficients<kGaussianCoefficients> c(m_Coefficients);
    const double width = WidthOf(c);
    const double halfWidth = width * kHalfWidthPerFullWidth;
    const double u = (x - c[1]) / halfWidth;
    const double g = Peak(u);
    const double w = 2.0 * c[0] * g * u;
    detail::StoreDerivatives<kGaussianCoefficients>(derivatives, kGaussianCoefficients,
                                                    {g, w / halfWidth, (w * u) / width, 1.0, x});
}

void WGaussianFunction::SetFunctionType() {
    m_eType = etGaussian;
}

} // namespace bss
