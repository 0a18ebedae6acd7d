// WNonLinearLeastSquaresFit: fits any WFunction by a damped Gauss-Newton iteration (Marquardt).
//
// The normal equations are scaled to correlation form and their diagonal is multiplied by 1 + lambda
// (Marquardt, J. Soc. Indust. Appl. Math. 11 (1963) 431). The angle gamma, in degrees, between a step and the
// gradient is part of the tests. Limits of a coefficient are a penalty on the merit value, not a projection.
//
//     bss::WGaussianFunction peak;
//     peak.SetCoefficients({90.0, 21.0, 4.0, 0.0, 0.0});   // starting values, before InitializeFit
//     bss::WNonLinearLeastSquaresFit fit;
//     fit.SetFunction(&peak);
//     fit.SetX(x);
//     fit.SetY(y);
//     fit.SetCoefficientFixed(4, true);                    // optional
//     fit.InitializeFit();
//     try {
//         fit.PerformFit();
//         peak.Evaluate(20.0, value, error);
//     } catch (bss::WNEFitFailed& failure) { ... }
//
// How the iteration ends (docs/nonlinear-fit.md has each test as an inequality):
//
//   result           when                                                      PerformFit   coefficients
//   eEpsilon         a step that did not worsen the fit is below epsilon       returns 0    the last trial
//   eGammaLambda     such a step is at 90 degrees or more, with lambda >= 1    returns 0    the last trial
//   eGammaEpsilon    a worsening step was halved until it was below epsilon    returns 0    the last trial
//   eFailed          iteration limit, or lambda above 1000 after a rejection   throws       the last trial
//
// Weights: a sigma above 1e-100 gives a residual the factor w = 1 / sigma, any other sigma and no sigmas
// give 1.0. A w of 1.0 (within 1e-6) is then replaced by 100.0 (kept for compatibility): data without sigmas
// have a chi-squared 10,000 times the sum of squared residuals, and a covariance 10,000 times smaller. The
// sum of weights in GetStdError is the sum of w.
//
// Non-finite numbers: a trial whose chi-squared is NaN or infinite is rejected. So is a trial that passes a
// test with a derivative or step that is not finite, a residual above 1e80 or a NaN sigma. Such a fit fails.
//
// Cost: one evaluation of the model per point and trial, one differentiation per point and accepted
// iteration. The residuals of the accepted trial are reused in the next normal equations, so a model must
// return the same value for the same x and coefficients. Nothing is allocated per point or iteration.
//
// Threads: see WLeastSquaresFit.h.

#ifndef BSS_MATH_WNONLINEARLEASTSQUARESFIT_H
#define BSS_MATH_WNONLINEARLEASTSQUARESFIT_H

#include "bss/math/WLeastSquaresFit.h"

#include <string>

namespace bss {

/// Non-linear least-squares fit.
class KRTBSS_API WNonLinearLeastSquaresFit : public WLeastSquaresFit {
public:
    /// 5e-05, the default tolerance of a step relative to its coefficient.
    static const double EPSILON;

    /// How an iteration ended; the table in the head comment has the conditions.
    enum efitresult : std::int32_t {
        eFailed = 0,       ///< No convergence.
        eGammaLambda = 1,  ///< The gamma-lambda test passed.
        eGammaEpsilon = 2, ///< The gamma-epsilon test passed.
        eEpsilon = 3       ///< The epsilon test passed.
    };

    /// Sets the tolerance, no function and at most 500 iterations. With an epsilon that no step can be below
    /// (0.0, negative or NaN) only the other tests or failure end the fit.
    explicit WNonLinearLeastSquaresFit(double epsilon = EPSILON);
    /// Copies the base, lambda, gamma, epsilon, sum of weights, degrees of freedom and both iteration counts.
    /// The limits are not copied (kept for compatibility); they and all work vectors are empty.
    WNonLinearLeastSquaresFit(const WNonLinearLeastSquaresFit& other);
    /// Copies the same members as the copy constructor and empties the others.
    WNonLinearLeastSquaresFit& operator=(const WNonLinearLeastSquaresFit& other);
    /// Destroys the fit; function and data are borrowed.
    ~WNonLinearLeastSquaresFit() override;

    /// Sets the function to fit, which is borrowed. Resets the flags of held coefficients and sets the limits
    /// to 0.0 and 1.0, not in use. Null leaves the fit without a function.
    void SetFunction(WFunction* function) override;
    /// Takes the function's coefficients as starting values; sets lambda to 0.001, and the statistics and the
    /// count of iterations to 0. The limits are unchanged.
    void InitializeFit() override;
    /// Returns 0 on success: coefficients, covariance, chi-squared and statistics are then set. If the normal
    /// equations are singular at the solution, the covariance has no meaning. A second call without
    /// InitializeFit continues from the last accepted coefficients and the last lambda. Throws WNEFitFailed
    /// with the text "Nonlinear least squares fit" if the iteration fails; the function then has the
    /// coefficients of the last trial, and its covariance and chi-squared are unchanged. Throws WNEFitFailed
    /// with another text without a function, x or y, or if y or sigma is shorter than x. Exceptions of the
    /// model pass through.
    int PerformFit() override;

    /// Returns the matrix as text for tracing: "[" and the rows, each as "[ 1.0000e+00, ...]" with numbers of
    /// width 14, separated by blanks, and "]".
    virtual std::wstring GenerateMatrixString(const matrix& values);
    /// Returns the vector as text for tracing: "[ 1.0000e+00, ...]" with numbers of width 14, followed by the
    /// fit's chi-squared.
    virtual std::wstring GenerateVectorString(const std::vector<double>& values);

    /// Sets the damping parameter. REQUIRES: called after InitializeFit, which resets it, and before
    /// PerformFit.
    void SetLambda(double lambda) { m_dLambda = lambda; }
    /// Sets the maximum number of accepted iterations. With 0, PerformFit throws.
    void SetMaxIterations(unsigned count) { m_nMaxIterations = count; }
    /// Returns the maximum number of accepted iterations, 500 by default.
    unsigned MaxIterations() const { return m_nMaxIterations; }
    /// Returns the number of accepted iterations of the last fit. Rejected trials and the trial that passed a
    /// test are not counted.
    unsigned Iterations() const { return m_nIterations; }

    /// Sets the limits of a coefficient and enables them; does nothing for an index out of range. A
    /// coefficient outside its limits multiplies chi-squared by up to 2001, and GetChiSquared shows the
    /// product. The penalty rises over 5 % of the limit's value: at a limit of exactly 0.0 it is a step, and
    /// NaN on the step itself.
    void SetValueLimits(unsigned index, double lower, double upper);
    /// Enables or disables the limits of a coefficient; does nothing for an index out of range.
    void UseValueLimits(unsigned index, bool use);
    /// Stores the limits of a coefficient, enabled or not, in `lower` and `upper`; leaves both unchanged for
    /// an index out of range and in a copied fit without limits.
    void GetValueLimits(unsigned index, double& lower, double& upper);

protected:
    /// Returns how the iteration ended. REQUIRES: function and data are set and the work vectors have the
    /// size of the function, as PerformFit ensures.
    efitresult Fit();

    /// Computes the normal matrix A, in the covariance field, and beta at the current coefficients. Held
    /// coefficients have zero rows and columns with 1.0 on the diagonal.
    void ComputeAMatrix();
    /// Scales A to correlation form, with 1.0 on the diagonal, and stores the scale of each coefficient.
    void ScaleAMatrix();
    /// Computes the step for the current lambda. If the raised matrix is singular, the step follows from the
    /// partly eliminated matrix.
    void SolveAMatrix();
    /// Computes gamma, the angle in degrees between the step and the gradient in units of the scale; 0.0 if
    /// either is negligible.
    void ComputeGamma();
    /// Sets the covariance to the inverse of A at the current coefficients, with zero rows and columns for
    /// held ones.
    void ComputeCovarianceMatrix();

    /// Returns true if each |step| / (|coefficient| + 0.001) is below epsilon.
    bool EpsilonTest();
    /// Halves the step until chi-squared is below `previousChi`, and returns false. Returns true if
    /// EpsilonTest passes first or if nothing of the step is left.
    bool GammaEpsilonTest(double previousChi);
    /// Returns true if gamma is at least 90 degrees and lambda at least 1.
    bool GammaLambdaTest();

    /// Returns chi-squared with the penalty of the limits at the current coefficients, and stores the
    /// unweighted sum of squared residuals in `plain`. Returns 1e80 at the first residual above 1e80 in
    /// magnitude.
    double SumOfSquares(double& plain) const;
    /// Returns the sum of w over all y.
    double SumOfWeights() const;
    /// Returns the sum of (w (y - weighted mean))^2. Stores the sum of w in `sumOfWeights` and the sum of (y
    /// - plain mean)^2 in `plainTotal`. Returns 1e80 at the first deviation above 1e80 in magnitude.
    double TotalSumOfSquares(double& sumOfWeights, double& plainTotal) const;
    /// Returns 1 / sigma of a point, 1.0 without a sigma above 1e-100; 1.0 is not yet replaced by 100.0.
    double Weight(unsigned index) const;
    /// Returns the square root, 0.0 for a negative value.
    double SafeSQRT(double value);

    /// Writes more of a fit's course to the debug output. False at load; the library does not set it.
    static bool m_bTrace;

    double m_dLambda = 0.001;             ///< Damping parameter.
    double m_dGamma = 0.0;                ///< Angle of the last step in degrees.
    double m_dEpsilon;                    ///< Relative tolerance of a step.
    double m_dSumOfWeights = 0.0;         ///< Sum of w over all y.
    std::int32_t m_nDegreesOfFreedom = 0; ///< Points less free coefficients.
    std::uint32_t m_nIterations = 0;      ///< Accepted iterations of the last fit.
    std::uint32_t m_nMaxIterations = 500; ///< Maximum of accepted iterations.
    std::vector<std::int32_t> m_anFixed;  ///< Indices of the held coefficients.
    std::vector<double> m_adSaved;        ///< The accepted coefficients.
    std::vector<bool> m_abLimits;         ///< One flag per coefficient, true if its limits are in use.
    std::vector<double> m_adLower;        ///< Lower limits.
    std::vector<double> m_adUpper;        ///< Upper limits.
    std::vector<double> m_adStep;         ///< The current step.
    std::vector<double> m_adBeta;         ///< Gradient side of the normal equations.
    std::vector<double> m_adScale;        ///< Square roots of A's diagonal.

private:
    class WeightsOfOneFit;

    double LimitsPenaltyFunction(double value, double lower, double upper) const;
    double PenaltyOfAllLimits() const;
    void PrepareWorkSpace();
    void SumNormalEquations();
    void TryStep();
    bool IsTrialUsable(double previousChi, efitresult& passed);
    bool IsResultTrustworthy(double previousChi) const;
    void RejectTrial(double previousChi);
    void ComputeStatistics();
    void Report() const;
    [[noreturn]] void Fail() const;

    const std::vector<double>& PointWeights() const;
    void ComputePointWeights() const;
    bool HasResidualsOfCoefficients() const;

    /// Results of the last complete SumOfSquares, and its coefficients.
    mutable double m_dPlainSum = 0.0;
    mutable double m_dPenalisedSum = 0.0;
    mutable std::vector<double> m_adResiduals;
    mutable std::vector<double> m_adResidualCoefficients;
    mutable bool m_bResidualsComplete = false;
    /// The weights w, with 1.0 replaced by 100.0. Cached while m_bWeightsKept, otherwise computed at each
    /// use.
    mutable std::vector<double> m_adWeights;
    mutable bool m_bWeightsKept = false;
    mutable bool m_bWeightsAreNumbers = true;
    bool m_bNormalEquationsFinite = false;
    std::vector<double> m_adDerivatives;
    std::vector<double> m_adBlock;  // weighted derivatives of some points
    std::vector<double> m_adNormal; // upper triangle of A during summation, in rows
    matrix m_Work;
    matrix m_NoColumns;
};

} // namespace bss

#endif
