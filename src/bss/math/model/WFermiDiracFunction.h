// WFermiDiracFunction: a step that rises from 0 to c0 at c1, the complement of the Fermi-Dirac distribution,
//
//     y = c0 (1 - 1 / (exp(z) + 1)),   z = (x - c1) / c2
//
// with the width c2. Coefficients are named "A0" to "A2". A width of exactly 0.0 is replaced by 1e-100 in the
// formulas; the coefficient itself is unchanged.
//
//     bss::WFermiDiracFunction step;
//     step.SetCoefficients({4.0, 10.0, 0.5});
//     double y = step.Evaluate(10.0);   // 2.0
//
// The derivatives take the exponential twice (kept for agreement with stored results): they have exp(exp(z))
// + 1 where the true ones have exp(z) + 1. Far above the step they are NaN.
//
// The covariance is empty until a fit or SetCovarianceMatrix fills it; an error bar before that is 0.0.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WFERMIDIRACFUNCTION_H
#define BSS_MATH_MODEL_WFERMIDIRACFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// A step with three coefficients.
class KRTBSS_API WFermiDiracFunction : public WFunction {
public:
    /// Sets the type and three coefficients of 0.0.
    WFermiDiracFunction();
    /// Copies as WFunction does.
    WFermiDiracFunction(const WFermiDiracFunction& other);
    /// Copies as WFunction does.
    WFermiDiracFunction& operator=(const WFermiDiracFunction& other);
    /// Destroys the function.
    ~WFermiDiracFunction() override;

    /// Also offers the form with an error bar.
    using WFunction::Evaluate;
    /// See WFunction::Evaluate.
    double Evaluate(double x) override;
    /// See WFunction::clone.
    WFunction* clone() const override;
    /// See WFunction::GetCoefficientName.
    std::wstring GetCoefficientName(long index) const override;
    /// See WFunction::ComputeDerivatives.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    /// Sets etFermiDirac.
    void SetFunctionType() override;
};

} // namespace bss

#endif
