// WExponentialPolynomialFunction: y = exp(c0 + c1 x + c2 x^2 + ...), with as many terms as it is told.
//
// Not linear in its coefficients, although it stands below WLinearFunction: use the non-linear fit. Without
// coefficients it evaluates to 1.0 with an error bar of 0.0. Coefficients are named "A0", "A1", ... Threads:
// one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WEXPONENTIALPOLYNOMIALFUNCTION_H
#define BSS_MATH_MODEL_WEXPONENTIALPOLYNOMIALFUNCTION_H

#include "bss/math/model/WPolynomialFunction.h"

namespace bss {

class KRTBSS_API WExponentialPolynomialFunction : public WPolynomialFunction {
public:
    WExponentialPolynomialFunction();
    WExponentialPolynomialFunction(const WExponentialPolynomialFunction& other);
    WExponentialPolynomialFunction& operator=(const WExponentialPolynomialFunction& other);
    ~WExponentialPolynomialFunction() override;

    double Evaluate(double x) override;
    /// As that of WFunction, with the derivatives of ComputeDerivatives.
    void Evaluate(double x, double& y, double& sigma) override;
    WFunction* clone() const override;
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    void SetFunctionType() override;
};

} // namespace bss

#endif
