// WLeastSquaresFit: common base of the linear and the non-linear least-squares fit.
//
// A fit refers to the caller's data and function and owns neither. Every fit is called in this order:
//
//     bss::WPolynomialFunction line;
//     line.SetNumberOfBasisFunctions(2);
//     bss::WLinearLeastSquaresFit fit;
//     fit.SetFunction(&line);               // before SetCoefficientFixed: it resets the flags
//     fit.SetX(x);
//     fit.SetY(y);
//     fit.SetSigY(sigma);                   // optional: standard deviations of y
//     fit.InitializeFit();
//     if (fit.PerformFit() == 0) {
//         double r2 = fit.GetRSquared();
//         line.Evaluate(1.0, value, error); // the function stores the result, with its error bar
//     }
//
//   WLinearLeastSquaresFit      WLinearFunction and derived classes: one pass, no starting values
//   WNonLinearLeastSquaresFit   any WFunction: iterates from the function's coefficients
//
// Threads: no locks. A fit, its function and its data serve one thread at a time. Data and coefficients must
// not change elsewhere during PerformFit.

#ifndef BSS_MATH_WLEASTSQUARESFIT_H
#define BSS_MATH_WLEASTSQUARESFIT_H

#include "bss/Export.h"

#include <cstdint>
#include <vector>

namespace bss {

class WFunction;

/// Data, held coefficients and statistics of a fit.
class KRTBSS_API WLeastSquaresFit {
public:
    /// A matrix as a vector of rows.
    using matrix = std::vector<std::vector<double>>;

    /// Copies the pointers and the values: both fits refer to the same function and data.
    WLeastSquaresFit(const WLeastSquaresFit& other);
    /// Copies the pointers and the values: both fits refer to the same function and data.
    WLeastSquaresFit& operator=(const WLeastSquaresFit& other);
    /// Destroys the fit; function and data are borrowed.
    virtual ~WLeastSquaresFit();

    /// Sets the function to fit, which is borrowed; null leaves the fit without one. Clears all flags of held
    /// coefficients and sets the covariance to n by n zeros.
    /// REQUIRES: the function outlives its use by the fit.
    virtual void SetFunction(WFunction* function);
    /// Sets the statistics to 0.0 and the covariance to n by n zeros. Pure, with a body for derived classes.
    virtual void InitializeFit() = 0;
    /// Returns 0 if the fit succeeded. The derived class documents other results and exceptions.
    virtual int PerformFit() = 0;

    /// Sets the abscissae, which are borrowed. The fit uses as many points as x has values.
    /// REQUIRES: the vector outlives its use by the fit; so do those of SetY and SetSigY.
    void SetX(const std::vector<double>& x) { m_pX = &x; }
    /// Sets the ordinates, which are borrowed. PerformFit throws if they are fewer than the abscissae.
    void SetY(const std::vector<double>& y) { m_pY = &y; }
    /// Sets the standard deviations of y in y's unit, which are borrowed. The derived class defines the
    /// weights. PerformFit throws if they are fewer than the abscissae.
    void SetSigY(const std::vector<double>& sigma) { m_pSigY = &sigma; }
    /// Removes the standard deviations.
    void ClearSigY() { m_pSigY = nullptr; }

    /// Returns the function, null if none is set.
    WFunction* GetFunction() const { return m_pFunction; }
    /// Returns the function's number of coefficients, 0 without a function.
    unsigned GetNumberOfCoefficients() const;
    /// Returns a coefficient of the function, 0.0 for an index out of range.
    double GetCoefficient(long index) const;
    /// Sets a coefficient of the function; does nothing for an index out of range.
    void SetCoefficient(long index, double value);
    /// Returns true if the fit holds the coefficient at its value; false for an index out of range.
    bool GetCoefficientFixed(long index) const;
    /// Holds or releases a coefficient; does nothing for an index out of range.
    void SetCoefficientFixed(long index, bool fixed);

    /// Returns a cell of the fit's covariance before any scaling, 0.0 for a missing cell.
    double GetCovariance(long row, long column) const;

    /// Returns the weighted sum of squared residuals.
    double GetChiSquared() const { return m_dChiSquared; }
    /// Returns chi-squared over the degrees of freedom, 0.0 without any.
    double GetReducedChiSquared() const { return m_dReducedChiSquared; }
    /// Returns sqrt(chi-squared / (degrees of freedom * sum of weights)), 0.0 without degrees of freedom. The
    /// derived class defines the weights. For a linear fit this is in y's unit.
    double GetStdError() const { return m_dStdError; }
    /// Returns the unweighted coefficient of determination, about the weighted mean of y after a linear fit
    /// and about the plain mean after a non-linear one; 1.0 if all y equal the mean.
    double GetRSquared() const { return m_dRSquared; }
    /// Returns the weighted coefficient of determination adjusted for the degrees of freedom. Without any, it
    /// is 1.0 after a linear fit and 0.0 after a non-linear one.
    double GetAdjustedRSquared() const { return m_dAdjustedRSquared; }

protected:
    /// Constructs a fit without function and data.
    WLeastSquaresFit();

    /// Inverts the n by n upper left corner of `a` in place and replaces `b` by the solution of a x = b, by
    /// Gauss-Jordan elimination with full pivoting (Press et al., "Numerical Recipes", section 2.1). Returns
    /// 0 on success. Returns 2 for a pivot of at most 1e-31; `a` and `b` are then partly eliminated. Rows are
    /// swapped as vectors, so a row longer than n moves as a whole. REQUIRES: `a` has n rows of n cells, `b`
    /// n cells.
    int GaussJ(matrix& a, unsigned n, std::vector<double>& b) const;
    /// Does the same for m right-hand columns. REQUIRES: `b` has n rows of m cells, unless m is 0.
    int GaussJ(matrix& a, unsigned n, matrix& b, unsigned m) const;

    /// Returns the mean of y weighted by 1 / sigma squared. Points of sigma 0.0 are skipped; without any
    /// other point the result is 0.0. Returns the plain mean if `sigma` is null or not as long as y, and 0.0
    /// without points.
    static double WeightedMean(const std::vector<double>& y, const std::vector<double>* sigma);

    /// Returns the number of readable points, the smaller of the lengths of x and y; 0 if either is not set.
    std::size_t GetNumberOfPoints() const;
    /// Returns true if x and y are set, and y and, if set, sigma are at least as long as x.
    bool HasWholeData() const;
    /// Returns true if all values are finite. A fit does not succeed with other values.
    static bool IsFinite(const std::vector<double>& values);
    /// Returns true if all cells are finite. A fit does not succeed with other values.
    static bool IsFinite(const matrix& values);

    double m_dChiSquared = 0.0;                     ///< See GetChiSquared.
    double m_dReducedChiSquared = 0.0;              ///< See GetReducedChiSquared.
    double m_dStdError = 0.0;                       ///< See GetStdError.
    double m_dRSquared = 0.0;                       ///< See GetRSquared.
    double m_dAdjustedRSquared = 0.0;               ///< See GetAdjustedRSquared.
    std::vector<bool> m_abFixed;                    ///< One flag per coefficient, true if held.
    WFunction* m_pFunction = nullptr;               ///< The borrowed function.
    std::vector<double>* m_pCoefficients = nullptr; ///< The function's own coefficients.
    const std::vector<double>* m_pX = nullptr;      ///< The borrowed abscissae.
    const std::vector<double>* m_pY = nullptr;      ///< The borrowed ordinates.
    const std::vector<double>* m_pSigY = nullptr;   ///< The borrowed standard deviations, null without any.
    matrix m_Covariance;                            ///< Covariance, and work space of a fit.

private:
    /// Work space of GaussJ, cached so that an iteration allocates nothing.
    mutable std::vector<std::int32_t> m_aPivotCount;
    mutable std::vector<std::int32_t> m_aPivotRow;
    mutable std::vector<std::int32_t> m_aPivotColumn;
};

} // namespace bss

#endif
