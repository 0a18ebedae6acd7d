// WFunction: the one-variable model y = f(x; c0, c1, ...) that every fit of the library works on.
//
// A function owns its coefficients, which a fit reads and rewrites in place, and what a finished fit leaves
// behind: the covariance matrix, the chi-squared and the chi-squared factor. So a fitted function reports a
// value with its error bar by itself:
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
// ...) and SetFunctionType. A model linear in its coefficients derives from WLinearFunction instead.
//
// Functions have no serialized form: an application that stores a fit stores the type number and the
// coefficients, and comes back through WFunctionFactory and SetCoefficients.
//
// Threads: no locks. One object serves one thread at a time, evaluation included; distinct objects are
// independent.

#ifndef BSS_MATH_WFUNCTION_H
#define BSS_MATH_WFUNCTION_H

#include "bss/Export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bss {

class KRTBSS_API WFunction {
public:
    /// The stored type number of each class. The numbers are fixed.
    enum etype : std::int32_t {
        etUndefined = 0, // WLinearFunction and WTriangleDitherFitFunction set no type of their own
        etPolynomial = 1,
        etGaussian = 2,
        etExponential = 3,
        etExponentialPolynomial = 4,
        etBroadening = 5,
        etExponentialDecay = 6,
        etFermiDirac = 7,
        etCumulants = 8,
        etGaussianCumulants = 9,
        etSimpleExponentialDecay = 10,
        etSine = 11
    };

    /// Type 0, no coefficients, empty covariance, chi-squared 0.0, chi-squared factor 1.0.
    WFunction();
    /// Memberwise: type, coefficients, covariance, chi-squared and factor.
    WFunction(const WFunction& other);
    WFunction& operator=(const WFunction& other);
    virtual ~WFunction();

    /// Called by the non-linear fit when a step is rejected. Does nothing here; a model that caches something
    /// derived from its coefficients drops it.
    virtual void ResetData();

    /// Copies the vector in, whatever its length. Covariance and chi-squared stay as they are: an error bar
    /// computed afterwards still uses the old matrix. The classes of this library take a coefficient that a
    /// shorter vector lacks as 0.0.
    virtual void SetCoefficients(const std::vector<double>& coefficients);

    /// The value at x. Not const, since some models keep scratch data or mend a coefficient.
    virtual double Evaluate(double x) = 0;

    /// The value at x and its standard error,
    ///     sigma = sqrt(factor * sum over i, j of (d[j] * d[i]) * C[i][j])
    /// with the derivatives d, the covariance C and the chi-squared factor (propagation of error, e.g.
    /// Bevington, "Data Reduction and Error Analysis for the Physical Sciences"). sigma is exactly 0.0 if the
    /// sum is not above 0.0, or if there are no coefficients. A covariance cell that does not exist counts as
    /// 0.0: the matrix is empty before a fit, and a linear fit with held coefficients leaves it smaller than
    /// n by n.
    virtual void Evaluate(double x, double& y, double& sigma);

    /// A copy on the heap, which the caller owns; null if memory ran out.
    virtual WFunction* clone() const = 0;

    /// The name of a coefficient; the empty string for an index outside. The body here is the common rule:
    /// "A" and the index in decimal.
    virtual std::wstring GetCoefficientName(long index) const = 0;

    /// Leaves in derivatives one partial derivative per coefficient, in coefficient order. The vector's
    /// memory is reused: nothing is allocated once it has the capacity. A non-linear fit steers by exactly
    /// these numbers, which in some models are on purpose not the true derivatives; those classes say so.
    virtual void ComputeDerivatives(double x, std::vector<double>& derivatives) = 0;

    etype GetFunctionType() const { return m_eType; }
    unsigned GetNumberOfCoefficients() const { return static_cast<unsigned>(m_Coefficients.size()); }

    /// 0.0 for an index below 0 or past the end.
    double GetCoefficient(long index) const;
    /// Does nothing for an index below 0 or past the end.
    void SetCoefficient(long index, double value);
    const std::vector<double>& GetCoefficients() const { return m_Coefficients; }
    /// The function's own vector, through which a fit writes; valid as long as the function lives.
    std::vector<double>* GetCoefficientsVectorPtr() { return &m_Coefficients; }

    const std::vector<std::vector<double>>& GetCovarianceMatrix() const { return m_Covariance; }
    /// Copies the matrix in, unchecked: rows by columns in coefficient order.
    void SetCovarianceMatrix(const std::vector<std::vector<double>>& covariance);

    double GetChiSquared() const { return m_dChiSquared; }
    /// What the covariance is scaled by in an error bar; never below 1.0, so that it never shrinks one.
    double GetChiSquaredFactor() const { return m_dChiSquaredFactor; }
    /// Stores chiSquared, and as factor chiSquared / (points - number of coefficients), raised to 1.0 if
    /// below; 1.0 if the two counts are equal. The difference is an unsigned 32-bit number on purpose: with
    /// fewer points than coefficients it wraps to about 4.29e9, and the factor ends at 1.0 unless chiSquared
    /// is larger still.
    void SetChiSquared(double chiSquared, long points);

protected:
    /// Writes the class's type number.
    virtual void SetFunctionType() = 0;

    void Assign(const WFunction& other);

    etype m_eType = etUndefined;
    std::vector<double> m_Coefficients;
    std::vector<std::vector<double>> m_Covariance;
    double m_dChiSquared = 0.0;
    double m_dChiSquaredFactor = 1.0;
};

} // namespace bss

#endif
