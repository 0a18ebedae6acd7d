// WLinearFunction: a model that is linear in its coefficients, the sum of c[i] * b[i](x) over the basis
// functions b.
//
// A derived class implements clone, SetFunctionType and BasisFunctionEvaluation, which stores the values of
// the basis functions at x in m_BasisFunctions. WLinearLeastSquaresFit solves for the coefficients in one
// pass.
//
//     class Line : public bss::WLinearFunction {
//     public:
//         Line() { SetNumberOfBasisFunctions(2); }
//         void BasisFunctionEvaluation(double x) override { m_BasisFunctions.assign({1.0, x}); }
//         WFunction* clone() const override { return new Line(*this); }
//     protected:
//         void SetFunctionType() override {}
//     };
//
// Threads: one object, one thread at a time. Each evaluation writes the basis values, so two threads must not
// even evaluate one object.

#ifndef BSS_MATH_MODEL_WLINEARFUNCTION_H
#define BSS_MATH_MODEL_WLINEARFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// Abstract model with basis functions.
class KRTBSS_API WLinearFunction : public WFunction {
public:
    /// Copies as WFunction does, and the basis values.
    WLinearFunction(const WLinearFunction& other);
    /// Copies as WFunction does, and the basis values.
    WLinearFunction& operator=(const WLinearFunction& other);
    /// Destroys the function.
    ~WLinearFunction() override;

    /// Copies the vector and sets the number of basis functions to its length.
    void SetCoefficients(const std::vector<double>& coefficients) override;

    /// Returns the sum of c[i] * b[i] over the coefficients, in ascending order of i; 0.0 without
    /// coefficients.
    double Evaluate(double x) override;
    /// See WFunction::Evaluate. The basis values are the derivatives.
    void Evaluate(double x, double& y, double& sigma) override;

    /// See WFunction::GetCoefficientName.
    std::wstring GetCoefficientName(long index) const override;

    /// Stores the basis values at x, one per coefficient; 0.0 for a coefficient without a basis function.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

    /// Sets the number of basis functions to n, n coefficients of 0.0 and a covariance of n by n zeros; for n
    /// below 1, all three are empty. Throws std::length_error for n above 2^31 - 1 and std::bad_alloc if
    /// memory is short; the object is then unchanged.
    virtual void SetNumberOfBasisFunctions(long n);

    /// Resizes the basis values to n and the covariance to n by n. Existing cells are unchanged, new ones are
    /// 0.0. Coefficients and the number of basis functions are unchanged. A negative n does nothing.
    virtual void ExtendBasisFunctionsToCount(long n);

    /// Stores the values of the basis functions at x in m_BasisFunctions.
    virtual void BasisFunctionEvaluation(double x) = 0;

    /// Copies the values of the last BasisFunctionEvaluation to `values`.
    virtual void GetBasisFunctions(std::vector<double>& values);

protected:
    /// Sets type 0 and no coefficients.
    WLinearFunction();

    std::int32_t m_nBasisFunctions = 0;   ///< Number of basis functions.
    std::vector<double> m_BasisFunctions; ///< Values of the last BasisFunctionEvaluation.
};

} // namespace bss

#endif
