#include "bss/math/model/WGaussianCumulantsFunction.h"

#include "bss/math/private/FunctionSupport.h"
#include "bss/math/private/SpecialFunctions.h"

#include <cmath>

namespace bss {

namespace {

using detail::kPi;
using detail::kPiSquared;
using detail::kSqrt2;
using detail::kSqrtPi;

constexpr std::size_t kGaussianCumulantsCoefficients = 4;
constexpr double kPiToThreeHalves = 5.568327996831708;
constexpr double kTwoSqrt2 = 2.8284271247461903;
constexpr double kSqrtTwoOverPi = 0.7978845608028654;
constexpr double kTwoOverPi = 0.6366197723675814;
constexpr double kTwoOverSqrtPi = 1.1283791670955126;
// Differs from -kSqrt2 by one unit in the last place; kept for agreement with stored results.
constexpr double kMinusSqrt2OfCumulants = -1.414213562373095;
constexpr double kWidthForZero = 1e-200;
constexpr double kAsymptoticFrom = 10.0;

// Common terms of the cumulants: q = L / (S sqrt 2), E = exp(-q^2), e = erfc(-q), r = E / e, R = L / S.
struct ErrorTerms {
    double q;
    double E;
    double e;
    double r;
    double R;
};

ErrorTerms TermsOf(double L, double S) {
    const double q = L / (S * kSqrt2);
    const double E = std::exp(-(q * q));
    const double e = detail::Erfc(-q);
    return {q, E, e, E / e, L / S};
}

double GuardedWidth(double S) {
    return S == 0.0 ? kWidthForZero : S;
}

} // namespace

WGaussianCumulantsFunction::WGaussianCumulantsFunction() {
    m_Coefficients.assign(kGaussianCumulantsCoefficients, 0.0);
    m_Covariance.assign(kGaussianCumulantsCoefficients, m_Coefficients);
    WGaussianCumulantsFunction::SetFunctionType();
}
WGaussianCumulantsFunction::WGaussianCumulantsFunction(const WGaussianCumulantsFunction& other) = default;
WGaussianCumulantsFunction&
WGaussianCumulantsFunction::operator=(const WGaussianCumulantsFunction& other) = default;
WGaussianCumulantsFunction::~WGaussianCumulantsFunction() = default;

double WGaussianCumulantsFunction::Evaluate(double x) {
    const detail::Coefficients<kGaussianCumulantsCoefficients> c(m_Coefficients);
    const double L = c[2] * c[2];
    const double S = GuardedWidth(c[3] * c[3]);
    const double e0 = detail::Erfc(-L / (S * kSqrt2));
    const double h = ExpTimesErfc(x, L, S) * (1.0 / e0);
    return h * h * c[1] + c[0];
}

WFunction* WGaussianCumulantsFunction::clone() const {
    return detail::CloneOrNull(*this);
}

std::wstring WGaussianCumulantsFunction::GetCoefficientName(long index) const {
    return WFunction::GetCoefficientName(index);
}

void WGaussianCumulantsFunction::ComputeDerivatives(double x, std::vector<double>& derivatives) {
    const detail::Coefficients<kGaussianCumulantsCoefficients> c(m_Coefficients);
    const double L = c[2] * c[2];
    const double S = GuardedWidth(c[3] * c[3]);
    const double e0 = detail::Erfc(-L / (S * kSqrt2));
    const double P = ExpTimesErfc(x, L, S);
    const double i = 1.0 / e0;
    const double G = std::exp(L * L * -0.5 / (S * S)) * kSqrtTwoOverPi;
    const double g = i * P;
    const double w = 1.0 - g;
    const double V = P * (i * i) * c[1];
    detail::StoreDerivatives<kGaussianCumulantsCoefficients>(
        derivatives, m_Coefficients.size(),
        {1.0, g * g, (w * G / S - P * x) * (4.0 * c[2] * V),
         (x * x * S * P - (w * L / (S * S) + x) * G) * (4.0 * c[3] * V)});
}

double WGaussianCumulantsFunction::ExpTimesErfc(double t, double L, double S) const {
    if (S == 0.0) {
        return 0.0;
    }
    const double z = (t * S - L / S) / kSqrt2;
    if (std::fabs(z) > kAsymptoticFrom) {
        const double u = 1.0 / (z * kSqrt2);
        const double u3 = u * u * u;
        const double series = (u3 * (u * u) * 3.0 + (u - u3)) - u3 * u * u3 * 15.0;
        return std::exp(L * L * -0.5 / (S * S)) * kSqrtTwoOverPi * series;
    }
    return std::exp(t * t * (S * S * 0.5) - t * L) * detail::Erfc(z);
}

double WGaussianCumulantsFunction::GetLambda0() const {
    return GetCoefficient(2) * GetCoefficient(2);
}

double WGaussianCumulantsFunction::GetSigma() const {
    return GetCoefficient(3) * GetCoefficient(3);
}

double WGaussianCumulantsFunction::GetExpVal() const {
    return TermsOf(GetLambda0(), GetSigma()).E;
}

double WGaussianCumulantsFunction::GetErfVal() const {
    return TermsOf(GetLambda0(), GetSigma()).e;
}

double WGaussianCumulantsFunction::GetFirstCumulant() const {
    const double L = GetLambda0();
    const double S = GetSigma();
    if (S == 0.0) {
        return L;
    }
    return std::exp(L * L * -0.5 / (S * S)) * (kSqrtTwoOverPi * S) /
               detail::Erfc(L / (S * kMinusSqrt2OfCumulants)) +
           L;
}

double WGaussianCumulantsFunction::GetSecondCumulant() const {
    const double L = GetLambda0();
    const double S = GetSigma();
    if (S == 0.0) {
        return 0.0;
    }
    const double k1 = GetFirstCumulant();
    const double e1 = detail::Erfc(L / (S * kMinusSqrt2OfCumulants));
    constexpr double kP = kTwoOverSqrtPi;
    return (L * L - k1 * k1) + ((1.0 - kP) / e1 + kP) * (S * S);
}

double WGaussianCumulantsFunction::GetErrorFCLambda0() const {
    const ErrorTerms t = TermsOf(GetLambda0(), GetSigma());
    return 1.0 - (kSqrt2 / kPi * t.r + t.R) * (kSqrtTwoOverPi * t.r);
}

double WGaussianCumulantsFunction::GetErrorFCSigma() const {
    const ErrorTerms t = TermsOf(GetLambda0(), GetSigma());
    return (kSqrtTwoOverPi * t.R * t.r + (t.R * t.R + 1.0)) * (kSqrtTwoOverPi * t.r);
}

double WGaussianCumulantsFunction::GetErrorSCLambda0() const {
    const double L = GetLambda0();
    const double S = GetSigma();
    const ErrorTerms t = TermsOf(L, S);
    const double A = L * kTwoSqrt2 / (S * kSqrtPi);
    const double B = t.E * kSqrtPi + 1.0;
    return ((1.0 - kTwoOverPi) - A * B - t.R * t.R * (2.0 * kSqrtPi * t.e) + t.E * 4.0 / (t.e * kPi)) *
           (kSqrt2 * S * t.E * (1.0 / kPi) * (1.0 / (t.e * t.e)));
}

double WGaussianCumulantsFunction::GetErrorSCSigma() const {
    const double S = GetSigma();
    const ErrorTerms t = TermsOf(GetLambda0(), S);
    constexpr double kM = 1.0 - kTwoOverPi;
    const double Z = std::exp(-(t.R * t.R));
    const double T1 = std::exp(t.q * t.q) * t.e * (t.e * kTwoOverSqrtPi + kM) + 2.0 * t.e * t.E / kPi;
    const double T2 = Z * kTwoSqrt2 / (t.e * kPiSquared) + (kSqrt2 / (2.0 * kPi) * kM + t.e * kSqrtTwoOverPi);
    const double V = T1 - T2 * t.R + 2.0 * (t.R * t.R) * t.E * (kSqrtPi + 1.0) / kPiToThreeHalves -
                     t.R * t.R * t.R * kTwoSqrt2 * t.e / kSqrtPi;
    return V * (2.0 * S * t.E / (t.e * t.e));
}

double WGaussianCumulantsFunction::GetErrorFirstCumulant(double errorLambda0, double errorSigma) const {
    return std::fabs(GetErrorFCSigma()) * errorSigma + std::fabs(GetErrorFCLambda0()) * errorLambda0;
}

double WGaussianCumulantsFunction::GetErrorSecondCumulant(double errorLambda0, double errorSigma) const {
    return std::fabs(GetErrorSCSigma()) * errorSigma + std::fabs(GetErrorSCLambda0()) * errorLambda0;
}

void WGaussianCumulantsFunction::SetFunctionType() {
    m_eType = etGaussianCumulants;
}

} // namespace bss
