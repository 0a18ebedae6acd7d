// WPolynomialFunction: y = c0 + c1 x + c2 x^2 + ...
//
//     bss::WPolynomialFunction parabola;
//     parabola.SetNumberOfBasisFunctions(3);       // three coefficients of 0.0, for a fit
//     parabola.SetCoefficients({1.0, 0.0, -2.0});  // or 1 - 2 x^2
//
// Coefficients are named "A0", "A1", ... A new object has none and evaluates to 0.0. Each power is the
// preceding one times x.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WPOLYNOMIALFUNCTION_H
#define BSS_MATH_MODEL_WPOLYNOMIALFUNCTION_H

#include "bss/math/model/WLinearFunction.h"

namespace bss {

/// A polynomial of any degree.
class KRTBSS_API WPolynomialFunction : public WLinearFunction {
public:
    /// Sets the type and no coefficients.
    WPolynomialFunction();
    /// Copies as WFunction does.
    WPolynomialFunction(const WPolynomialFunction& other);
    /// Copies as WFunction does.
    WPolynomialFunction& operator=(const WPolynomialFunction& other);
    /// Destroys the function.
    ~WPolynomialFunction() override;

    /// See WFunction::clone.
    WFunction* clone() const override;
    /// Stores the powers x^0, x^1, ... in m_BasisFunctions, as many as there are basis functions.
    void BasisFunctionEvaluation(double x) override;

protected:
    /// Sets etPolynomial.
    void SetFunctionType() override;
};

} // namespace bss

#endif
