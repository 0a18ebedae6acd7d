// WExponentialFunction: despite its name a Gaussian peak normalised to unit area,
//
//     y = c0 sqrt(K / pi) (2 / c2) exp(-K u^2) + c3,   u = 2 (x - c1) / c2,   K = ln 2
//
// with the area c0, the center c1, the full width at half height c2 and the offset c3, named "A0" to "A3".
//
// Several derivatives are on purpose not the true ones; fits are steered by these numbers and agree with
// stored results:
//   * d[1] divides by c2 once and uses the factor 4, where the derivative has c2 squared and 8;
//   * the second term of d[2] has the exponent -2 K (x - c1)^2 / c2, not that of the peak;
//   * d[3] is 0.0 although y depends on c3 with slope one, so a fit leaves the offset where it started.
// A width of exactly 0.0 gives 0.0 (the offset too is dropped) and derivatives of 0.0.
//
// A new object has four coefficients of 0.0 and a covariance of 4 by 4 zeros.
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WEXPONENTIALFUNCTION_H
#define BSS_MATH_MODEL_WEXPONENTIALFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WExponentialFunction : public WFunction {
public:
    WExponentialFunction();
    WExponentialFunction(const WExponentialFunction& other);
    WExponentialFunction& operator=(const WExponentialFunction& other);
    ~WExponentialFunction() override;

    using WFunction::Evaluate;
    double Evaluate(double x) override;
    WFunction* clone() const override;
    std::wstring GetCoefficientName(long index) const override;
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    void SetFunctionType() override;
};

} // namespace bss

#endif
