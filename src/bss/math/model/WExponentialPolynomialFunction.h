// WExponentialPolynomialFunction: y = exp(c0 + c1 x + c2 x^2 + ...).
//
//     bss::WExponentialPolynomialFunction function;
//     function.SetCoefficients({0.0, -0.5});
//     double y = function.Evaluate(2.0);   // exp(-1)
//
// Not linear in its coefficients, although it derives from WLinearFunction: use the non-linear fit. Without
// coefficients it evaluates to 1.0 with an error bar of 0.0. Coefficients are named "A0", "A1", ...
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WEXPONENTIALPOLYNOMIALFUNCTION_H
#define BSS_MATH_MODEL_WEXPONENTIALPOLYNOMIALFUNCTION_H

#include "bss/math/model/WPolynomialFunction.h"

namespace bss {

/// The exponential of a polynomial.
class KRTBSS_API WExponentialPolynomialFunction : public WPolynomialFunction {
public:
    /// Sets the type and no coefficients.
    WExponentialPolynomialFunction();
    /// Copies as WFunction does.
    WExponentialPolynomialFunction(const WExponentialPolynomialFunction& other);
    /// Copies as WFunction does.
    WExponentialPolynomialFunction& operator=(const WExponentialPolynomialFunction& other);
    /// Destroys the function.
    ~WExponentialPolynomialFunction() override;

    /// See WFunction::Evaluate.
    double Evaluate(double x) override;
    /// See WFunction::Evaluate. Uses the derivatives of ComputeDerivatives, not the basis values.
    void Evaluate(double x, double& y, double& sigma) override;
    /// See WFunction::clone.
    WFunction* clone() const override;
    /// Stores x^i y for each coefficient i.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    /// Sets etExponentialPolynomial.
    void SetFunctionType() override;
};

} // namespace bss

#endif
