// WSimpleExponentialDecayFunction: a single exponential decay on an offset,
//
//     y = c0 + c1 exp(-x / c2)
//
// with the offset c0 ("A0"), the amplitude c1 ("A1") and the time constant c2 ("A2", in units of x).
//
//     bss::WSimpleExponentialDecayFunction decay;
//     decay.SetCoefficients({0.1, 2.0, 5.0});
//     double y = decay.Evaluate(3.0);
//
// A time constant of 0.0 is not replaced: the result is that of the floating-point division. The derivatives
// are the true ones.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WSIMPLEEXPONENTIALDECAYFUNCTION_H
#define BSS_MATH_MODEL_WSIMPLEEXPONENTIALDECAYFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// An exponential decay with three coefficients.
class KRTBSS_API WSimpleExponentialDecayFunction : public WFunction {
public:
    /// Sets the type, three coefficients of 0.0 and a covariance of 3 by 3 zeros.
    WSimpleExponentialDecayFunction();
    /// Copies as WFunction does.
    WSimpleExponentialDecayFunction(const WSimpleExponentialDecayFunction& other);
    /// Copies as WFunction does.
    WSimpleExponentialDecayFunction& operator=(const WSimpleExponentialDecayFunction& other);
    /// Destroys the function.
    ~WSimpleExponentialDecayFunction() override;

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
    /// Sets etSimpleExponentialDecay.
    void SetFunctionType() override;
};

} // namespace bss

#endif
