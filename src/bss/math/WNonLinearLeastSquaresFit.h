// WNonLinearLeastSquaresFit: fits any WFunction by a damped Gauss-Newton (Marquardt) iteration.
//
// The normal equations are scaled to correlation form and their diagonal raised by 1 + lambda (Marquardt, J.
// Soc. Indust. Appl. Math. 11 (1963) 431). The angle gamma, in degrees, between a step and the gradient takes
// part in the decisions. Limits of a coefficient are a penalty on the merit value, not a projection.
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
//   result           when                                                    PerformFit   coefficients
//   eEpsilon         a step that did not worsen the fit is below epsilon     0            the last trial
//   eGammaLambda     such a step is at 90 degrees or more, lambda >= 1       0            the last trial
//   eGammaEpsilon    a worsening step was halved until below epsilon         0            the last trial
//   eFailed          iteration limit, or lambda above 1000 on a rejection    throws       the last trial
//
// Weights. A sigma above 1e-100 gives a residual the factor w = 1 / sigma, anything else 1.0. Then a w of
// about 1.0 (within 1e-6) becomes 100.0, on purpose: data without sigmas have a chi-squared 10,000 times the
// sum of squared residuals, and a covariance 10,000 times smaller.
//
// What is not a number ends in failure, never in a result: a chi-squared that is NaN or infinite rejects its
// step, and so does passing a test on derivatives, residuals or sigmas that are.
//
// The model is evaluated once per point and trial, and differentiated once per point and accepted iteration:
// the residuals of the accepted trial serve the next normal equations. So a model has to give the same value
// for the same x and coefficients. Nothing is allocated per point or iteration.
//
// Threads: as WLeastSquaresFit.h says.

#ifndef BSS_MATH_WNONLINEARLEASTSQUARESFIT_H
#define BSS_MATH_WNONLINEARLEASTSQUARESFIT_H

#include "bss/math/WLeastSquaresFit.h"

#include <string>

namespace bss {

class KRTBSS_API WNonLinearLeastSquaresFit : public WLeastSquaresFit {
public:
    // 5e-05: the default tolerance of a step relative to its coefficient.
    static const double EPSILON;

    enum efitresult : std::int32_t { eFailed = 0, eGammaLambda = 1, eGammaEpsilon = 2, eEpsilon = 3 };

    // No function, at most 500 iterations. An epsilon that no step can be below (0.0 or less, NaN) ends the
    // fit by the other tests or by failure.
    explicit WNonLinearLeastSquaresFit(double epsilon = EPSILON);
    // Base, lambda, gamma, epsilon, sum of weights, degrees of freedom and the two iteration counts. Limits
    // are not copied, on purpose; they and all work vectors start empty.
    WNonLinearLeastSquaresFit(const WNonLinearLeastSquaresFit& other);
    WNonLinearLeastSquaresFit& operator=(const WNonLinearLeastSquaresFit& other);
    ~WNonLinearLeastSquaresFit() override;

    // Not null. Drops limits and held flags; limits start as 0.0 to 1.0, out of use.
    void SetFunction(WFunction* function) override;
    // Takes the function's coefficients as starting values, sets lambda to 0.001 and the counts to 0. Limits
    // stay.
    void InitializeFit() override;
    // 0: function and fit hold the result. Otherwise throws WNEFitFailed: "Nonlinear least squares fit" if
    // the iteration fails, another text without function, x or y, or if y or sigma is shorter than x. A
    // second call continues from the coefficients last accepted, with the lambda left by the first. If the
    // normal equations are singular at the solution, the covariance is what the elimination left.
    int PerformFit() override;

    // Text forms for tracing: "[ 1.0000e+00, ...]" with numbers of width 14, the vector's with chi-squared
    // behind, the matrix's row by row.
    virtual std::wstring GenerateMatrixString(const matrix& values);
    virtual std::wstring GenerateVectorString(const std::vector<double>& values);

    // Has effect between InitializeFit and PerformFit.
    void SetLambda(double lambda) { m_dLambda = lambda; }
    // 0 lets every fit fail.
    void SetMaxIterations(unsigned count) { m_nMaxIterations = count; }
    unsigned MaxIterations() const { return m_nMaxIterations; }
    // The accepted iterations of the last fit; rejected trials and the passing one are not counted.
    unsigned Iterations() const { return m_nIterations; }

    // Limits multiply chi-squared by up to 2001 where a coefficient is outside them, and GetChiSquared shows
    // it. The width of a limit is 5 % of its value, so a limit of exactly 0.0 is a hard step, and NaN on it.
    // An index outside does nothing.
    void SetValueLimits(unsigned index, double lower, double upper);
    void UseValueLimits(unsigned index, bool use);
    void GetValueLimits(unsigned index, double& lower, double& upper);

protected:
    efitresult Fit();

    // A, which is the covariance field, and beta at the present coefficients.
    void ComputeAMatrix();
    void ScaleAMatrix();
    // The step for the present lambda; a singular matrix is used as the elimination leaves it.
    void SolveAMatrix();
    void ComputeGamma();
    // The inverse of A at the present coefficients, with zero rows and columns for held ones.
    void ComputeCovarianceMatrix();

    bool EpsilonTest();
    // Halves the step until it improves on previousChi (false), or until it is below epsilon or nothing is
    // left of it (true).
    bool GammaEpsilonTest(double previousChi);
    bool GammaLambdaTest();

    // The penalised chi-squared at the present coefficients, and in plain the unweighted sum. 1e80 as soon as
    // a residual is above 1e80.
    double SumOfSquares(double& plain) const;
    double SumOfWeights() const;
    // The weighted sum of squares about the weighted mean of y, and in plainTotal the plain one about the
    // plain mean.
    double TotalSumOfSquares(double& sumOfWeights, double& plainTotal) const;
    // 1.0 or 1 / sigma, before the rule of 100.
    double Weight(unsigned index) const;
    double SafeSQRT(double value);

    // Off at load, set by nothing in the library: more of a fit's course goes to the debug output.
    static bool m_bTrace;

    double m_dLambda = 0.001;
    double m_dGamma = 0.0;
    double m_dEpsilon;
    double m_dSumOfWeights = 0.0;
    std::int32_t m_nDegreesOfFreedom = 0;
    std::uint32_t m_nIterations = 0;
    std::uint32_t m_nMaxIterations = 500;
    std::vector<std::int32_t> m_anFixed;
    std::vector<double> m_adSaved;
    std::vector<bool> m_abLimits;
    std::vector<double> m_adLower;
    std::vector<double> m_adUpper;
    std::vector<double> m_adStep;
    std::vector<double> m_adBeta;
    std::vector<double> m_adScale;

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

    // What the last complete SumOfSquares found, and the coefficients it belongs to.
    mutable double m_dPlainSum = 0.0;
    mutable double m_dPenalisedSum = 0.0;
    mutable std::vector<double> m_adResiduals;
    mutable std::vector<double> m_adResidualCoefficients;
    mutable bool m_bResidualsComplete = false;
    // The weights after the rule of 100; kept while m_bWeightsKept, computed at each use otherwise.
    mutable std::vector<double> m_adWeights;
    mutable bool m_bWeightsKept = false;
    mutable bool m_bWeightsAreNumbers = true;
    bool m_bNormalEquationsFinite = false;
    std::vector<double> m_adDerivatives;
    std::vector<double> m_adBlock;  // weighted derivatives of some points
    std::vector<double> m_adNormal; // A's upper triangle while it is summed, row by row
    matrix m_Work;
    matrix m_NoColumns;
};

} // namespace bss

#endif
