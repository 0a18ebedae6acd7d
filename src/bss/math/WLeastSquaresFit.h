// WLeastSquaresFit: what the linear and the non-linear least-squares fit have in common.
//
// A fit refers to the caller's data and function and owns neither. Every fit is driven in this order:
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
//         line.Evaluate(1.0, value, error); // the function holds the result, with its error bar
//     }
//
//   WLinearLeastSquaresFit      WLinearFunction and below: one pass, no starting values
//   WNonLinearLeastSquaresFit   any WFunction: iterates from the function's coefficients
//
// Threads: no locks. A fit, its function and its data serve one thread at a time; while PerformFit runs, data
// and coefficients must not change elsewhere.

#ifndef BSS_MATH_WLEASTSQUARESFIT_H
#define BSS_MATH_WLEASTSQUARESFIT_H

#include "bss/Export.h"

#include <cstdint>
#include <vector>

namespace bss {

class WFunction;

class KRTBSS_API WLeastSquaresFit {
public:
    // Row vectors.
    using matrix = std::vector<std::vector<double>>;

    // Copies the pointers, so that both fits refer to the same function and data, and the values of the rest.
    WLeastSquaresFit(const WLeastSquaresFit& other);
    WLeastSquaresFit& operator=(const WLeastSquaresFit& other);
    virtual ~WLeastSquaresFit();

    // Takes the function under fit, which must outlive the fit; null leaves the fit without one. Releases all
    // coefficients and sets the covariance to n by n zeros.
    virtual void SetFunction(WFunction* function);
    // Sets the statistics to 0.0 and the covariance to n by n zeros.
    virtual void InitializeFit() = 0;
    // 0 if the fit succeeded; the derived class says what else.
    virtual int PerformFit() = 0;

    // The data of the fit, borrowed: the vectors must outlive it. As many points are fitted as x has values.
    // y and sigma must have at least as many, otherwise PerformFit throws.
    void SetX(const std::vector<double>& x) { m_pX = &x; }
    void SetY(const std::vector<double>& y) { m_pY = &y; }
    // Standard deviations of y, in y's unit. The derived class says how they become weights.
    void SetSigY(const std::vector<double>& sigma) { m_pSigY = &sigma; }
    void ClearSigY() { m_pSigY = nullptr; }

    WFunction* GetFunction() const { return m_pFunction; }
    // 0 without a function.
    unsigned GetNumberOfCoefficients() const;
    // The function's own coefficients; an index outside gives 0.0 or does nothing.
    double GetCoefficient(long index) const;
    void SetCoefficient(long index, double value);
    // Whether the fit holds a coefficient at its value; an index outside gives false or does nothing.
    bool GetCoefficientFixed(long index) const;
    void SetCoefficientFixed(long index, bool fixed);

    // A cell of the fit's covariance, before any scaling; a cell that the matrix lacks counts as 0.0.
    double GetCovariance(long row, long column) const;

    double GetChiSquared() const { return m_dChiSquared; }
    // Chi-squared over the degrees of freedom.
    double GetReducedChiSquared() const { return m_dReducedChiSquared; }
    // The standard error of a point of unit weight, in y's unit.
    double GetStdError() const { return m_dStdError; }
    // Unweighted, about the weighted mean in a linear fit and about the plain mean in a non-linear one.
    double GetRSquared() const { return m_dRSquared; }
    // Weighted. Without degrees of freedom it is 1.0 after a linear fit and 0.0 after a non-linear one.
    double GetAdjustedRSquared() const { return m_dAdjustedRSquared; }

protected:
    WLeastSquaresFit();

    // Gauss-Jordan elimination in place with full pivoting (e.g. Press et al., "Numerical Recipes", section
    // 2.1). On success, result 0, the n by n upper left corner of a holds the inverse and b the solution. A
    // pivot of at most 1e-31 gives result 2 and leaves both as they stand. Rows are swapped as vectors, so a
    // row longer than n moves whole.
    int GaussJ(matrix& a, unsigned n, std::vector<double>& b) const;
    // The same for m right-hand columns.
    int GaussJ(matrix& a, unsigned n, matrix& b, unsigned m) const;

    // The mean of y weighted by 1 / sigma squared, points of sigma 0.0 left out, and 0.0 if none is left. It
    // is the plain mean if sigma is null or not as long as y, and 0.0 without points.
    static double WeightedMean(const std::vector<double>& y, const std::vector<double>* sigma);

    // The points that can be read: as many as x has, or y if that is shorter.
    std::size_t GetNumberOfPoints() const;
    // Whether x and y are set, and y and, if set, sigma are as long as x.
    bool HasWholeData() const;
    // Two more conditions of a result: a fit never succeeds with something that is not a number.
    static bool IsFinite(const std::vector<double>& values);
    static bool IsFinite(const matrix& values);

    double m_dChiSquared = 0.0;
    double m_dReducedChiSquared = 0.0;
    double m_dStdError = 0.0;
    double m_dRSquared = 0.0;
    double m_dAdjustedRSquared = 0.0;
    std::vector<bool> m_abFixed;
    WFunction* m_pFunction = nullptr;
    std::vector<double>* m_pCoefficients = nullptr;
    const std::vector<double>* m_pX = nullptr;
    const std::vector<double>* m_pY = nullptr;
    const std::vector<double>* m_pSigY = nullptr;
    matrix m_Covariance;

private:
    // GaussJ's memory, kept so that an iteration allocates nothing.
    mutable std::vector<std::int32_t> m_aPivotCount;
    mutable std::vector<std::int32_t> m_aPivotRow;
    mutable std::vector<std::int32_t> m_aPivotColumn;
};

} // namespace bss

#endif
