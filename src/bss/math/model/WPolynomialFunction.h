// WPolynomialFunction: y = c0 + c1 x + c2 x^2 + ..., with as many terms as it is told.
//
//     bss::WPolynomialFunction parabola;
//     parabola.SetNumberOfBasisFunctions(3);      // for a fit to fill, or
//     parabola.SetCoefficients({1.0, 0.0, -2.0});  // 1 - 2 x^2
//
// Coefficients are named "A0", "A1", ...; a new object has none and evaluates to 0.0. Powers are built from
// the lowest up, each the one before times x. Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WPOLYNOMIALFUNCTION_H
#define BSS_MATH_MODEL_WPOLYNOMIALFUNCTION_H

#include "bss/math/model/WLinearFunction.h"

namespace bss {

class KRTBSS_API WPolynomialFunction : public WLinearFunction {
public:
    WPolynomialFunction();
    WPolynomialFunction(const WPolynomialFunction& other);
    WPolynomialFunction& operator=(const WPolynomialFunction& other);
    ~WPolynomialFunction() override;

    WFunction* clone() const override;
    void BasisFunctionEvaluation(double x) override;

protected:
    void SetFunctionType() override;
};

} // namespace bss

#endif
