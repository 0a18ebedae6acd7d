#include "bss/math/model/WTriangleDitherFitFunction.h"

#include "bss/math/private/FunctionSupport.h"
#include "bss/math/private/SpecialFunctions.h"

#include <cmath>
#include <limits>

namespace bss {

namespace {

using detail::kPiSquared;

constexpr std::size_t kTriangleDitherFitCoefficients = 3;

// 2 pi k and 2 pi k^5 of the harmonic k. The order of summation, 3, 1, 5, ..., is kept for agreement with
// stored results.
struct Harmonic {
    double frequency;
    double weight;
};
constexpr std::array<Harmonic, 7> kHarmonics{{
    {18.84955592153876, 1526.8140296446395},
    {6.283185307179586, 6.283185307179586},
    {31.41592653589793, 19634.954084936206},
    {43.982297150257104, 105601.4954577673},
    {56.548667764616276, 371015.80920364737},
    {69.11503837897544, 1011913.2769065795},
    {81.68140899333463, 2332902.72225863},
}};

double IntegralSum(double from, double to, double f) {
    double sum = 0.0;
    for (const Harmonic& k : kHarmonics) {
        const double omega = k.frequency * f;
        sum += (std::sin(omega * to) - std::sin(omega * from)) / (k.weight * f);
    }
    return sum;
}

double PartnerSum(double from, double to, double f) {
    double sum = 0.0;
    for (const Harmonic& k : kHarmonics) {
        const double omega = k.frequency * f;
        sum += (std::cos(omega * to) * to - std::cos(omega * from) * from) * k.frequency / (k.weight * f);
    }
    return sum;
}

constexpr double kInverseLn2 = 1.0 / detail::kLn2;

} // namespace

WTriangleDitherFitFunction::WTriangleDitherFitFunction(double baseInterval, double stageLength)
    : m_dStageLength(stageLength), m_dBaseInterval(baseInterval) {
    m_Coefficients.assign(kTriangleDitherFitCoefficients, 0.0);
    WTriangleDitherFitFunction::SetFunctionType();
}
WTriangleDitherFitFunction::WTriangleDitherFitFunction(const WTriangleDitherFitFunction& other) = default;
WTriangleDitherFitFunction::~WTriangleDitherFitFunction() = default;

double WTriangleDitherFitFunction::Evaluate(double x) {
    const detail::Coefficients<kTriangleDitherFitCoefficients> c(m_Coefficients);
    const double W = stageWidth(whatStage(x));
    const double h = W * 0.5;
    const double A = c[1] * c[1];
    const double D = A - 3.0;
    const double I = IntegralSum(x - h, x + h, c[2]);
    return ((I * (A * 32.0 / kPiSquared) + h * c[0] + h) * (-6.0 / D)) / W;
}

void WTriangleDitherFitFunction::Evaluate(double x, double& y, double& sigma) {
    y = Evaluate(x);
    std::vector<double> derivatives;
    ComputeDerivatives(x, derivatives);
    sigma = detail::ErrorBar(*this, derivatives);
}

WTriangleDitherFitFunction* WTriangleDitherFitFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WTriangleDitherFitFunction::GetCoefficientName(long index) const {
    switch (index) {
    case 0:
        return L"offset";
    case 1:
        return L"amplitude";
    case 2:
        return L"bin width";
    default:
        return std::wstring();
    }
}

void WTriangleDitherFitFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<kTriangleDitherFitCoefficients> c(m_Coefficients);
    const double W = stageWidth(whatStage(x));
    const double h = W * 0.5;
    const double A = c[1] * c[1];
    const double D = A - 3.0;
    const double I = IntegralSum(x - h, x + h, c[2]);
    const double J = PartnerSum(x - h, x + h, c[2]);
    derivatives.clear();
    derivatives.push_back(((h * -6.0) / D) / W);
    derivatives.push_back(((h * c[0] + h + I * (A * 32.0 / kPiSquared)) * (c[1] * 12.0 / (D * D)) -
                           (c[1] * 384.0 / (D * kPiSquared)) * I) /
                          W);
    derivatives.push_back(((J - I / c[2]) * (A * -192.0 / (D * kPiSquared))) / W);
}

int WTriangleDitherFitFunction::whatStage(double x) const {
    if (x < m_dBaseInterval) {
        return 0;
    }
    const double t = (detail::Round(x / m_dBaseInterval) - 1.0) / m_dStageLength;
    if (!(t > 0.0)) {
        return 0;
    }
    const double stage = std::floor(std::log(t) * kInverseLn2 + 1.0);
    // Every finite t gives a stage of at most 1025.
    return stage < std::numeric_limits<int>::max() ? static_cast<int>(stage)
                                                   : std::numeric_limits<int>::max();
}

double WTriangleDitherFitFunction::stageWidth(int stage) const {
    return m_dBaseInterval * std::ldexp(1.0, stage);
}

void WTriangleDitherFitFunction::SetFunctionType() {
    m_eType = etUndefined;
}

} // namespace bss
