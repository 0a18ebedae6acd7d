#include "bss/math/model/WBroadeningFunction.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/private/FunctionSupport.h"
#include "bss/math/private/SpecialFunctions.h"

#include <cmath>

namespace bss {

namespace {

using detail::kLn2;
using detail::kSqrt2;
using detail::kSqrtPi;

constexpr std::size_t kBroadeningCoefficients = 2;
constexpr double kTwoLn2 = 1.3862943611198906;

std::array<double, kBroadeningCoefficients> NonZeroCoefficients(const std::vector<double>& coefficients) {
    const detail::Coefficients<kBroadeningCoefficients> c(coefficients);
    if (c[0] == 0.0 || c[1] == 0.0) {
        throw WNEDivideByZero();
    }
    return {c[0], c[1]};
}

// y and the two intermediate values that the derivatives use.
struct Shape {
    double z;
    double exponential;
    double y;
};

Shape ShapeAt(double x, double a, double b) {
    const double z = (a * a - (b * kLn2 + x) * b) / (b * a * kSqrt2);
    const double exponential = std::exp((a * a - 2.0 * b * x) / (2.0 * (b * b)));
    return {z, exponential, exponential * (1.0 - detail::Erfc(z)) / (b * 4.0)};
}

} // namespace

WBroadeningFunction::WBroadeningFunction() {
    m_Coefficients.assign(kBroadeningCoefficients, 0.0);
    WBroadeningFunction::SetFunctionType();
}
WBroadeningFunction::WBroadeningFunction(const WBroadeningFunction& other) = default;
WBroadeningFunction& WBroadeningFunction::operator=(const WBroadeningFunction& other) = default;
WBroadeningFunction::~WBroadeningFunction() = default;

void WBroadeningFunction::SetCoefficients(const std::vector<double>& coefficients) {
    if (coefficients.size() == kBroadeningCoefficients) {
        WFunction::SetCoefficients(coefficients);
    }
}

double WBroadeningFunction::Evaluate(double x) {
    const auto [a, b] = NonZeroCoefficients(m_Coefficients);
    return ShapeAt(x, a, b).y;
}

WFunction* WBroadeningFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WBroadeningFunction::GetCoefficientName(long index) const {
    switch (index) {
    case 0:
        return L"instrumental term";
    case 1:
        return L"mixing term";
    default:
        return std::wstring();
    }
}

void WBroadeningFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const auto [a, b] = NonZeroCoefficients(m_Coefficients);
    const auto [z, exponential, F] = ShapeAt(x, a, b);
    const double a2 = a * a;
    const double b2 = b * b;
    const double Q = std::exp(-(z * z)) * (2.0 * (1.0 / (4.0 * b))) * exponential;
    const double byInstrument =
        F * a / b2 - (1.0 - (a2 - (a * kLn2 + x) * b) / (2.0 * a2)) * (kSqrt2 / b) * Q / kSqrtPi;
    const double outer = -((b * kTwoLn2 + x) / (kSqrt2 * b * a));
    const double inner = (a2 - (b * kLn2 + x) * b) / (b * kSqrt2 * b * a);
    const double byMixing =
        (-x / b2 - (a2 - 2.0 * b * x) / (b * b * b)) * F - F / b - (outer - inner) * Q / kSqrtPi;
    derivatives.clear();
    derivatives.push_back(byInstrument);
    derivatives.push_back(byMixing);
}

void WBroadeningFunction::SetFunctionType() {
    m_eType = etBroadening;
}

} // namespace bss
