// WLinearLeastSquaresFit: a fit of a model that is linear in its coefficients, solved in one pass.
//
// It sets up the normal equations of a WLinearFunction (WPolynomialFunction or one of the application's own)
// and solves them by Gauss-Jordan elimination. Only held coefficients need starting values.
//
//     bss::WLinearLeastSquaresFit fit;
//     fit.SetFunction(&line);
//     fit.SetX(x);
//     fit.SetY(y);
//     fit.SetCoefficientFixed(0, true);        // optional, before InitializeFit
//     fit.InitializeFit();
//     const bool isSingular = fit.PerformFit() != 0;
//
// Weights: a sigma s gives a point the weight 1 / s squared; sigma 0.0 and no sigmas give 1.0. A point of
// sigma 0.0 is nevertheless left out of the weighted mean and of the sum of weights (which is 1.0 if no point
// is left).
//
// Covariance: with m free of n coefficients, rows 0 to m - 1 have m cells, for the free coefficients in
// ascending order. The remaining rows have n zeros. Cells are not moved to the declared order of the
// coefficients.
//
// Accuracy: the normal equations square the condition of the basis. A polynomial of degree 5 over 0 to 20
// retains about 7 of 16 digits; scale x if more are needed.
//
// Threads: see WLeastSquaresFit.h.

#ifndef BSS_MATH_WLINEARLEASTSQUARESFIT_H
#define BSS_MATH_WLINEARLEASTSQUARESFIT_H

#include "bss/math/WLeastSquaresFit.h"

namespace bss {

class WLinearFunction;

/// Linear least-squares fit by the normal equations.
class KRTBSS_API WLinearLeastSquaresFit : public WLeastSquaresFit {
public:
    /// Constructs a fit without function and data.
    WLinearLeastSquaresFit();
    /// Copies the pointers and the values: both fits refer to the same function and data.
    WLinearLeastSquaresFit(const WLinearLeastSquaresFit& other);
    /// Copies the pointers and the values: both fits refer to the same function and data.
    WLinearLeastSquaresFit& operator=(const WLinearLeastSquaresFit& other);
    /// Destroys the fit; function and data are borrowed.
    ~WLinearLeastSquaresFit() override;

    /// See WLeastSquaresFit::SetFunction. Accepts a function that is not a WLinearFunction, on which
    /// PerformFit throws.
    void SetFunction(WFunction* function) override;
    /// Resets statistics and covariance, and sorts the coefficients into free and held ones. A flag set later
    /// has no effect until the next call.
    void InitializeFit() override;
    /// Returns 0 on success: the function then has coefficients, covariance and chi-squared. Returns 1 if the
    /// normal equations are singular or if data or basis contain a NaN or an infinity: the function is then
    /// unchanged, the statistics are those of InitializeFit, and the fit's covariance is undefined.
    /// Throws WNEFitFailed without a WLinearFunction, without x or y, or if y or sigma is shorter than x.
    /// Calls InitializeFit if that was omitted or if the number of coefficients has changed.
    int PerformFit() override;

protected:
    /// Does nothing: moves the covariance to the declared order of the coefficients only if the index list is
    /// longer than the coefficients, which never occurs. Kept for compatibility.
    void SortCovarianceMatrix();

    WLinearFunction* m_pLinearFunction = nullptr;   ///< The function, null if it is not linear.
    std::int32_t m_nFreeCoefficients = 0;           ///< Number of coefficients that are not held.
    std::vector<std::int32_t> m_anCoefficientIndex; ///< Indices of the free, then of the held coefficients.
    std::vector<double> m_adRightHandSide; ///< Right-hand side, then solution of the normal equations.

private:
    void SumNormalEquations();
    bool SolveForFreeCoefficients();
    void ComputeStatistics();
    void EvaluateBasis(double x, std::vector<double>& basis);
};

} // namespace bss

#endif
