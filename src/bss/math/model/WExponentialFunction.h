// WExponentialFunction: despite its name a Gaussian peak normalised to unit area,
//
//     y = c0 sqrt(K / pi) (2 / c2) exp(-K u^2) + c3,   u = 2 (x - c1) / c2,   K = ln 2
//
// with the area c0, the center c1, the full width at half height c2 and the offset c3, named "A0" to "A3".
//
//     bss::WExponentialFunction peak;
//     peak.SetCoefficients({10.0, 4.0, 0.5, 0.0});
//     double y = peak.Evaluate(4.1);
//
// Several derivatives deviate from the true ones (kept for agreement with stored results):
//   * d[1] divides by c2 once and has the factor 4, where the derivative has c2 squared and 8;
//   * the second term of d[2] has the exponent -2 K (x - c1)^2 / c2, not that of the peak;
//   * d[3] is 0.0 although y depends on c3 with slope one, so a fit does not change the offset.
//
// A width of exactly 0.0 gives 0.0, without the offset, and derivatives of 0.0.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WEXPONENTIALFUNCTION_H
#define BSS_MATH_MODEL_WEXPONENTIALFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// A Gaussian peak of given area with four coefficients.
class KRTBSS_API WExponentialFunction : public WFunction {
public:
    /// Sets the type, four coefficients of 0.0 and a covariance of 4 by 4 zeros.
    WExponentialFunction();
    /// Copies as WFunction does.
    WExponentialFunction(const WExponentialFunction& other);
    /// Copies as WFunction does.
    WExponentialFunction& operator=(const WExponentialFunction& other);
    /// Destroys the function.
    ~WExponentialFunction() override;

    /// Also offers the form with an error bar.
    using WFunction::Evaluate;
    /// See WFunction::Evaluate.
    double Evaluate(double x) override;
    /// See WFunction::clone.
    WFunction* clone() const override;
    /// See WFunction::GetCoefficientName.
    std::wstring GetCoefficientName(long index) const override;
    /// See WFunction::ComputeDerivatives.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    /// Sets etExponential.
    void SetFunctionType() override;
};

} // namespace bss

#endif
