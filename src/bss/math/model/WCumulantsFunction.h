// WCumulantsFunction: the correlogram's decay with a quadratic correction (method of cumulants to second
// order; Koppel, J. Chem. Phys. 57 (1972) 4814, in the form of Frisken, Appl. Opt. 40 (2001) 4087, whose
// correction is not exponentiated),
//
//     y = c0 + c1 exp(-2 c2^2 x) (1 + c3 x^2 / 2)^2
//
// with x the lag time, c0 the baseline, c1 the amplitude, c2 the root of the decay rate (its square keeps the
// rate from becoming negative in a fit) and c3 the second moment, in units of 1/x^2. Coefficients are named
// "A0" to "A3". The derivatives are the true ones; x^4 is formed as the square of x^2. A new object has four
// coefficients of 0.0 and a covariance of 4 by 4 zeros. Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WCUMULANTSFUNCTION_H
#define BSS_MATH_MODEL_WCUMULANTSFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WCumulantsFunction : public WFunction {
public:
    WCumulantsFunction();
    WCumulantsFunction(const WCumulantsFunction& other);
    WCumulantsFunction& operator=(const WCumulantsFunction& other);
    ~WCumulantsFunction() override;

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
