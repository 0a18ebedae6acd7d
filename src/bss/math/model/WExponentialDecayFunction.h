// WExponentialDecayFunction: an exponential decay with a time origin,
//
//     y = c0 + c1 exp(-(x - c2) / c3)
//
// with the offset c0, the amplitude c1, the time origin c2 and the time constant c3 (both in units of x),
// named "A0" to "A3".
//
//     bss::WExponentialDecayFunction decay;
//     decay.SetCoefficients({0.1, 2.0, 0.0, 5.0});
//     double y = decay.Evaluate(3.0);
//
// A time constant of exactly 0.0 is replaced by 1e-100 in the formulas; the coefficient itself is unchanged.
// The derivatives are the true ones.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WEXPONENTIALDECAYFUNCTION_H
#define BSS_MATH_MODEL_WEXPONENTIALDECAYFUNCTION_H

#include "bss/math/model/WExponentialFunction.h"

namespace bss {

/// An exponential decay with four coefficients.
class KRTBSS_API WExponentialDecayFunction : public WExponentialFunction {
public:
    /// Sets the type, four coefficients of 0.0 and a covariance of 4 by 4 zeros.
    WExponentialDecayFunction();
    /// Copies as WFunction does.
    WExponentialDecayFunction(const WExponentialDecayFunction& other);
    /// Copies as WFunction does.
    WExponentialDecayFunction& operator=(const WExponentialDecayFunction& other);
    /// Destroys the function.
    ~WExponentialDecayFunction() override;

    /// Also offers the form with an error bar.
    using WFunction::Evaluate;
    /// See WFunction::Evaluate.
    double Evaluate(double x) override;
    /// See WFunction::clone.
    WFunction* clone() const override;
    /// See WFunction::ComputeDerivatives.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    /// Sets etExponentialDecay.
    void SetFunctionType() override;
};

} // namespace bss

#endif
