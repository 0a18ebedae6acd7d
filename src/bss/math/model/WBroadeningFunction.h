// WBroadeningFunction: the shape of a peak that an instrument broadens and mixing tails,
//
//     y = exp((a^2 - 2 b x) / (2 b^2)) (1 - erfc(z)) / (4 b),   z = (a^2 - (b ln 2 + x) b) / (b a sqrt 2)
//
// with a = c0, the "instrumental term", and b = c1, the "mixing term". Both are in units of x.
//
// The derivatives are on purpose not the true ones: where y has b ln 2, that of d[0] has a ln 2, and the
// terms that come from erfc carry other signs and factors. Fits are steered by these numbers and agree with
// stored results.
//
// The covariance stays empty until a fit or SetCovarianceMatrix fills it; an error bar before that is 0.0.
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WBROADENINGFUNCTION_H
#define BSS_MATH_MODEL_WBROADENINGFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WBroadeningFunction : public WFunction {
public:
    WBroadeningFunction();
    WBroadeningFunction(const WBroadeningFunction& other);
    WBroadeningFunction& operator=(const WBroadeningFunction& other);
    ~WBroadeningFunction() override;

    /// Takes exactly two coefficients; a vector of another length is ignored.
    void SetCoefficients(const std::vector<double>& coefficients) override;

    using WFunction::Evaluate;
    /// Throws WNEDivideByZero if a coefficient is exactly 0.0 (so for a new object), std::overflow_error if
    /// erfc overflows.
    double Evaluate(double x) override;
    WFunction* clone() const override;
    std::wstring GetCoefficientName(long index) const override;
    /// Always two entries. Throws as Evaluate does.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    void SetFunctionType() override;
};

} // namespace bss

#endif
