// WSimpleExponentialDecayFunction: a single exponential decay on an offset,
//
//     y = c0 + c1 exp(-x / c2)
//
// with the offset c0 ("A0"), the amplitude c1 ("A1") and the time constant c2 ("A2", in units of x). No
// guard: a time constant of 0.0 gives what the floating-point division gives. The derivatives are the true
// ones. A new object has three coefficients of 0.0 and a covariance of 3 by 3 zeros. Threads: one object, one
// thread at a time.

#ifndef BSS_MATH_MODEL_WSIMPLEEXPONENTIALDECAYFUNCTION_H
#define BSS_MATH_MODEL_WSIMPLEEXPONENTIALDECAYFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WSimpleExponentialDecayFunction : public WFunction {
public:
    WSimpleExponentialDecayFunction();
    WSimpleExponentialDecayFunction(const WSimpleExponentialDecayFunction& other);
    WSimpleExponentialDecayFunction& operator=(const WSimpleExponentialDecayFunction& other);
    ~WSimpleExponentialDecayFunction() override;

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
