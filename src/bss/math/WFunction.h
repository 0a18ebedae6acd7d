// WFunction: the one-variable model y = f(x; c0, c1, ...) that the fits of the library work on.
//
// A function owns its coefficients, which a fit reads and rewrites in place. It also stores the results of a
// fit: covariance matrix, chi-squared and chi-squared factor. A fitted function therefore evaluates to a
// value with its error bar:
//
//     bss::WGaussianFunction peak;
//     peak.SetCoefficients({1.0, 0.0, 2.0, 0.0, 0.0});  // starting values
//     ... a fit works on &peak ...
//     double y = 0.0;
//     double sigma = 0.0;
//     peak.Evaluate(0.5, y, sigma);                     // y with its standard error
//
// A model of one's own derives from WFunction, sizes m_Coefficients in its constructor and implements
// Evaluate, ComputeDerivatives, clone, GetCoefficientName (WFunction::GetCoefficientName gives "A0", "A1",
// ...) and SetFunctionType. A model that is linear in its coefficients derives from WLinearFunction instead.
//
// Functions have no serialized form. An application that stores a fit stores the type number and the
// coefficients, and restores the function by WFunctionFactory and SetCoefficients.
//
// Threads: no locks. One object, one thread at a time, evaluation included; distinct objects are independent.

#ifndef BSS_MATH_WFUNCTION_H
#define BSS_MATH_WFUNCTION_H

#include "bss/Export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bss {

/// Abstract model with one variable and a vector of coefficients.
class KRTBSS_API WFunction {
public:
    /// The stored type number of each class. The numbers are fixed.
    enum etype : std::int32_t {
        etUndefined = 0,               ///< WLinearFunction and WTriangleDitherFitFunction.
        etPolynomial = 1,              ///< WPolynomialFunction.
        etGaussian = 2,                ///< WGaussianFunction.
        etExponential = 3,             ///< WExponentialFunction.
        etExponentialPolynomial = 4,   ///< WExponentialPolynomialFunction.
        etBroadening = 5,              ///< WBroadeningFunction.
        etExponentialDecay = 6,        ///< WExponentialDecayFunction.
        etFermiDirac = 7,              ///< WFermiDiracFunction.
        etCumulants = 8,               ///< WCumulantsFunction.
        etGaussianCumulants = 9,       ///< WGaussianCumulantsFunction.
        etSimpleExponentialDecay = 10, ///< WSimpleExponentialDecayFunction.
        etSine = 11                    ///< WSineFunction.
    };

    /// Sets type 0, no coefficients, an empty covariance, chi-squared 0.0 and chi-squared factor 1.0.
    WFunction();
    /// Copies type, coefficients, covariance, chi-squared and factor. Throws std::bad_alloc if memory is
    /// short.
    WFunction(const WFunction& other);
    /// Copies by Assign. Throws std::bad_alloc if memory is short.
    WFunction& operator=(const WFunction& other);
    /// Destroys the function. REQUIRES: no fit uses it afterwards.
    virtual ~WFunction();

    /// Does nothing. The non-linear fit calls it when it rejects a step; a model that caches values derived
    /// from its coefficients overrides it and discards them.
    virtual void ResetData();

    /// Copies the vector, whatever its length. Covariance and chi-squared are unchanged, so an error bar
    /// computed afterwards still uses the old matrix. The classes of this library take a coefficient that a
    /// shorter vector lacks as 0.0.
    virtual void SetCoefficients(const std::vector<double>& coefficients);

    /// Returns the value at x. Not const: some models write scratch data or replace a zero coefficient.
    virtual double Evaluate(double x) = 0;

    /// Stores the value at x in `y` and its standard error in `sigma`,
    ///     sigma = sqrt(factor * sum over i, j of (d[j] * d[i]) * C[i][j])
    /// with the derivatives d, the covariance C and the chi-squared factor (propagation of error: Bevington,
    /// "Data Reduction and Error Analysis for the Physical Sciences"). sigma is exactly 0.0 if the sum is not
    /// above 0.0 or if there are no coefficients. A missing covariance cell is taken as 0.0: the matrix is
    /// empty before a fit, and smaller than n by n after a linear fit with held coefficients. Throws what
    /// Evaluate(double) and ComputeDerivatives throw.
    virtual void Evaluate(double x, double& y, double& sigma);

    /// Returns a copy on the heap, which the caller owns; null if memory is short.
    virtual WFunction* clone() const = 0;

    /// Returns the name of a coefficient, empty for an index outside the vector. The body of this class gives
    /// "A" followed by the index in decimal.
    virtual std::wstring GetCoefficientName(long index) const = 0;

    /// Stores one partial derivative per coefficient in `derivatives`, in coefficient order. Reuses the
    /// vector's memory and allocates nothing if its capacity suffices. The non-linear fit uses exactly these
    /// numbers. Some models deviate from the true derivatives for agreement with stored results; those
    /// classes say so.
    virtual void ComputeDerivatives(double x, std::vector<double>& derivatives) = 0;

    /// Returns the type number of the class.
    etype GetFunctionType() const { return m_eType; }
    /// Returns the number of coefficients.
    unsigned GetNumberOfCoefficients() const { return static_cast<unsigned>(m_Coefficients.size()); }

    /// Returns a coefficient, 0.0 for an index outside the vector.
    double GetCoefficient(long index) const;
    /// Sets a coefficient; does nothing for an index outside the vector.
    void SetCoefficient(long index, double value);
    /// Returns all coefficients.
    const std::vector<double>& GetCoefficients() const { return m_Coefficients; }
    /// Returns the function's own vector, through which a fit writes; valid while the function exists.
    std::vector<double>* GetCoefficientsVectorPtr() { return &m_Coefficients; }

    /// Returns the covariance, rows by columns in coefficient order; empty if none has been set.
    const std::vector<std::vector<double>>& GetCovarianceMatrix() const { return m_Covariance; }
    /// Copies the covariance unchecked, rows by columns in coefficient order.
    void SetCovarianceMatrix(const std::vector<std::vector<double>>& covariance);

    /// Returns the chi-squared of the last SetChiSquared, 0.0 before it.
    double GetChiSquared() const { return m_dChiSquared; }
    /// Returns the factor by which an error bar scales the covariance. It is at least 1.0, so it never
    /// shrinks an error bar.
    double GetChiSquaredFactor() const { return m_dChiSquaredFactor; }
    /// Stores chiSquared, and as factor the larger of 1.0 and chiSquared / (points - number of coefficients).
    /// The factor is 1.0 if the two counts are equal. The difference is an unsigned 32-bit number (kept for
    /// compatibility): with fewer points than coefficients it wraps to about 4.29e9, and the factor is 1.0
    /// unless chiSquared is larger still.
    void SetChiSquared(double chiSquared, long points);

protected:
    /// Sets m_eType to the type number of the class.
    virtual void SetFunctionType() = 0;

    /// Copies type, coefficients, covariance, chi-squared and factor.
    void Assign(const WFunction& other);

    etype m_eType = etUndefined;                   ///< Type number of the class.
    std::vector<double> m_Coefficients;            ///< The coefficients c0, c1, ...
    std::vector<std::vector<double>> m_Covariance; ///< Covariance of the coefficients, may be empty.
    double m_dChiSquared = 0.0;                    ///< Chi-squared of the last fit.
    double m_dChiSquaredFactor = 1.0;              ///< Scale of the covariance in an error bar.
};

} // namespace bss

#endif
