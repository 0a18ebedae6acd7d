// WBroadeningFunction: a peak with instrumental broadening and a mixing tail,
//
//     y = exp((a^2 - 2 b x) / (2 b^2)) (1 - erfc(z)) / (4 b),   z = (a^2 - (b ln 2 + x) b) / (b a sqrt 2)
//
// with a = c0, the "instrumental term", and b = c1, the "mixing term", both in units of x.
//
//     bss::WBroadeningFunction peak;
//     peak.SetCoefficients({0.2, 1.5});
//     double y = peak.Evaluate(0.7);
//
// The derivatives deviate from the true ones (kept for agreement with stored results): where y has b ln 2,
// d[0] has a ln 2, and the terms that come from erfc have other signs and factors.
//
// The covariance is empty until a fit or SetCovarianceMatrix fills it; an error bar before that is 0.0.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WBROADENINGFUNCTION_H
#define BSS_MATH_MODEL_WBROADENINGFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// A broadened peak with two coefficients.
class KRTBSS_API WBroadeningFunction : public WFunction {
public:
    /// Sets the type and two coefficients of 0.0, with which Evaluate throws.
    WBroadeningFunction();
    /// Copies as WFunction does.
    WBroadeningFunction(const WBroadeningFunction& other);
    /// Copies as WFunction does.
    WBroadeningFunction& operator=(const WBroadeningFunction& other);
    /// Destroys the function.
    ~WBroadeningFunction() override;

    /// Copies exactly two coefficients; a vector of another length is ignored.
    void SetCoefficients(const std::vector<double>& coefficients) override;

    /// Also offers the form with an error bar.
    using WFunction::Evaluate;
    /// Returns the value at x. Throws WNEDivideByZero if a coefficient is exactly 0.0 and std::overflow_error
    /// if erfc overflows.
    double Evaluate(double x) override;
    /// See WFunction::clone.
    WFunction* clone() const override;
    /// See WFunction::GetCoefficientName. The names are "instrumental term" and "mixing term".
    std::wstring GetCoefficientName(long index) const override;
    /// Stores two derivatives, see above. Throws as Evaluate does.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    /// Sets etBroadening.
    void SetFunctionType() override;
};

} // namespace bss

#endif
