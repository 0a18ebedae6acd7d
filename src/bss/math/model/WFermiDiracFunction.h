// WFermiDiracFunction: a step that rises from 0 to c0 at c1, with the width c2,
//
//     y = c0 (1 - 1 / (exp(z) + 1)),   z = (x - c1) / c2
//
// Coefficients are named "A0" to "A2". A width of exactly 0.0 is taken as 1e-100 in the formulas and not
// written back.
//
// The derivatives take the exponential twice, with exp(exp(z)) + 1 where the true ones have exp(z) + 1. This
// is meant: fits are steered by these numbers and agree with stored results. Far above the step they become
// NaN.
//
// The covariance stays empty until a fit or SetCovarianceMatrix fills it; an error bar before that is 0.0.
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WFERMIDIRACFUNCTION_H
#define BSS_MATH_MODEL_WFERMIDIRACFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WFermiDiracFunction : public WFunction {
public:
    WFermiDiracFunction();
    WFermiDiracFunction(const WFermiDiracFunction& other);
    WFermiDiracFunction& operator=(const WFermiDiracFunction& other);
    ~WFermiDiracFunction() override;

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
