// WLinearFunction: a model that is linear in its coefficients, the sum of c[i] * b[i](x) over basis functions
// b.
//
// A derived class implements BasisFunctionEvaluation, which fills m_BasisFunctions with the values of the
// basis functions at x, beside clone and SetFunctionType. WLinearLeastSquaresFit solves for the coefficients
// in one pass.
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
// Threads: every evaluation writes the basis values, so even reading is not safe from two threads on one
// object.

#ifndef BSS_MATH_MODEL_WLINEARFUNCTION_H
#define BSS_MATH_MODEL_WLINEARFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WLinearFunction : public WFunction {
public:
    WLinearFunction(const WLinearFunction& other);
    WLinearFunction& operator=(const WLinearFunction& other);
    ~WLinearFunction() override;

    /// Also sets the number of basis functions to the new length.
    void SetCoefficients(const std::vector<double>& coefficients) override;

    /// The sum of c[i] * b[i] over the coefficients, from the first on; 0.0 without coefficients.
    double Evaluate(double x) override;
    /// As that of WFunction, with the basis values standing for the derivatives.
    void Evaluate(double x, double& y, double& sigma) override;

    std::wstring GetCoefficientName(long index) const override;

    /// The basis values at x, one per coefficient, 0.0 where there is no basis function.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

    /// Sets the number of basis functions to n, with n coefficients of 0.0 and a covariance of n by n zeros;
    /// n below 1 leaves all three empty. Throws std::length_error for more than 32 bits count; std::bad_alloc
    /// changes nothing.
    virtual void SetNumberOfBasisFunctions(long n);

    /// Resizes the basis values to n and the covariance to n by n; what is new is 0.0, what is there stays.
    /// Coefficients and the number of basis functions are not touched. A negative n does nothing.
    virtual void ExtendBasisFunctionsToCount(long n);

    /// Leaves the values of the basis functions at x in m_BasisFunctions.
    virtual void BasisFunctionEvaluation(double x) = 0;

    /// Copies out the values of the last BasisFunctionEvaluation.
    virtual void GetBasisFunctions(std::vector<double>& values);

protected:
    /// No coefficients until told; the type stays 0.
    WLinearFunction();

    std::int32_t m_nBasisFunctions = 0;
    std::vector<double> m_BasisFunctions;
};

} // namespace bss

#endif
