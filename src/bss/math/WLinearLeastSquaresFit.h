// WLinearLeastSquaresFit: a fit that is linear in its coefficients, solved in one pass.
//
// It sets up the normal equations of a WLinearFunction (WPolynomialFunction or one of the application's own)
// and solves them by Gauss-Jordan elimination. No starting values are needed but those of held coefficients.
// The example stands in WLeastSquaresFit.h.
//
// A sigma s gives a point the weight 1 / s squared; sigma 0.0 and no sigmas give 1.0. A point of sigma 0.0 is
// left out of the weighted mean nonetheless.
//
// With m free of n coefficients, rows 0 to m - 1 of the covariance have m cells, for the free coefficients in
// ascending order; they are not spread to the declared order. The rows behind them are n zeros.
//
// The elimination squares the condition of the basis: a polynomial of degree 5 over 0 to 20 keeps about 7 of
// 16 digits. Scale x where more is needed.

#ifndef BSS_MATH_WLINEARLEASTSQUARESFIT_H
#define BSS_MATH_WLINEARLEASTSQUARESFIT_H

#include "bss/math/WLeastSquaresFit.h"

namespace bss {

class WLinearFunction;

class KRTBSS_API WLinearLeastSquaresFit : public WLeastSquaresFit {
public:
    WLinearLeastSquaresFit();
    WLinearLeastSquaresFit(const WLinearLeastSquaresFit& other);
    WLinearLeastSquaresFit& operator=(const WLinearLeastSquaresFit& other);
    ~WLinearLeastSquaresFit() override;

    // A function that is no WLinearFunction is taken too, but PerformFit throws on it.
    void SetFunction(WFunction* function) override;
    // Splits the coefficients into free and held ones: a flag set later counts from the next call.
    void InitializeFit() override;
    // 0: the function holds coefficients, covariance and chi-squared.
    // 1: the normal equations are singular, or data or basis bring in a NaN or an infinity. Coefficients and
    //    statistics stay as InitializeFit left them.
    // Throws WNEFitFailed without a WLinearFunction, without x or y, or if y or sigma is shorter than x.
    int PerformFit() override;

protected:
    // Would spread the covariance to the declared order of coefficients, if the index list were longer than
    // the coefficients. It never is: the order of the free coefficients stays, on purpose.
    void SortCovarianceMatrix();

    WLinearFunction* m_pLinearFunction = nullptr;
    std::int32_t m_nFreeCoefficients = 0;
    // The indices of the free coefficients, then those of the held ones, ascending both.
    std::vector<std::int32_t> m_anCoefficientIndex;
    std::vector<double> m_adRightHandSide;

private:
    void SumNormalEquations();
    bool SolveForFreeCoefficients();
    void ComputeStatistics();
    void EvaluateBasis(double x, std::vector<double>& basis);
};

} // namespace bss

#endif
