// WExponentialDecayFunction: an exponential decay with a time origin,
//
//     y = c0 + c1 exp(-(x - c2) / c3)
//
// with the offset c0, the amplitude c1, the time origin c2 and the time constant c3, named "A0" to "A3". A
// time constant of exactly 0.0 is taken as 1e-100 in the formulas; the coefficient itself is not rewritten.
// The derivatives are the true ones. A new object has four coefficients of 0.0 and a covariance of 4 by 4
// zeros. Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WEXPONENTIALDECAYFUNCTION_H
#define BSS_MATH_MODEL_WEXPONENTIALDECAYFUNCTION_H

#include "bss/math/model/WExponentialFunction.h"

namespace bss {

class KRTBSS_API WExponentialDecayFunction : public WExponentialFunction {
public:
    WExponentialDecayFunction();
    WExponentialDecayFunction(const WExponentialDecayFunction& other);
    WExponentialDecayFunction& operator=(const WExponentialDecayFunction& other);
    ~WExponentialDecayFunction() override;

    using WFunction::Evaluate;
    double Evaluate(double x) override;
    WFunction* clone() const override;
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    void SetFunctionType() override;
};

} // namespace bss

#endif
