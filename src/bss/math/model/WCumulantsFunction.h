// WCumulantsFunction: the decay of a correlogram with a quadratic correction, the method of cumulants to
// second order (Koppel, J. Chem. Phys. 57 (1972) 4814), in the form of Frisken, Appl. Opt. 40 (2001) 4087,
// whose correction is not exponentiated,
//
//     y = c0 + c1 exp(-2 c2^2 x) (1 + c3 x^2 / 2)^2
//
// with the lag time x. Coefficients are named "A0" to "A3":
//
// | coefficient | meaning                                                                                |
// |-------------|----------------------------------------------------------------------------------------|
// | 0           | baseline                                                                               |
// | 1           | amplitude                                                                              |
// | 2           | root of the decay rate; the square keeps the rate from becoming negative in a fit      |
// | 3           | second moment of the decay rate, in units of 1/x^2                                     |
//
//     bss::WCumulantsFunction decay;
//     decay.SetCoefficients({0.0, 0.8, 30.0, 1e4});
//     double y = decay.Evaluate(1e-3);
//
// The derivatives are the true ones; x^4 is computed as the square of x^2.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WCUMULANTSFUNCTION_H
#define BSS_MATH_MODEL_WCUMULANTSFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// A cumulant decay with four coefficients.
class KRTBSS_API WCumulantsFunction : public WFunction {
public:
    /// Sets the type, four coefficients of 0.0 and a covariance of 4 by 4 zeros.
    WCumulantsFunction();
    /// Copies as WFunction does.
    WCumulantsFunction(const WCumulantsFunction& other);
    /// Copies as WFunction does.
    WCumulantsFunction& operator=(const WCumulantsFunction& other);
    /// Destroys the function.
    ~WCumulantsFunction() override;

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
    /// Sets etCumulants.
    void SetFunctionType() override;
};

} // namespace bss

#endif
