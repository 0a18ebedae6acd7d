// WGaussianCumulantsFunction: the correlogram's decay for a Gaussian distribution of decay rates that is cut
// off at rate 0,
//
//     y = c0 + c1 h(x)^2
//     h(x) = exp(S^2 x^2 / 2 - L x) erfc((x S - L / S) / sqrt 2) / erfc(-L / (S sqrt 2))
//
// with x the lag time, c0 the baseline, c1 the amplitude, L = c2^2 the distribution's center and S = c3^2 its
// width (standard deviation), both in units of 1/x. c2 and c3 are their roots, so that a fit can't make them
// negative. Coefficients are named "A0" to "A3". h is the Laplace transform of the cut-off distribution.
//
// After a fit the first and second cumulant (mean and variance) of the cut-off distribution are reported,
// with factors that turn the errors of L and S into theirs.
//
// The derivatives are the true ones. A new object has four coefficients of 0.0 and a covariance of 4 by 4
// zeros. An argument of erfc that is NaN gives NaN. Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WGAUSSIANCUMULANTSFUNCTION_H
#define BSS_MATH_MODEL_WGAUSSIANCUMULANTSFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WGaussianCumulantsFunction : public WFunction {
public:
    WGaussianCumulantsFunction();
    WGaussianCumulantsFunction(const WGaussianCumulantsFunction& other);
    WGaussianCumulantsFunction& operator=(const WGaussianCumulantsFunction& other);
    ~WGaussianCumulantsFunction() override;

    using WFunction::Evaluate;
    /// A width S of exactly 0.0 counts as 1e-200 where it divides. Throws std::overflow_error if erfc
    /// overflows.
    double Evaluate(double x) override;
    WFunction* clone() const override;
    std::wstring GetCoefficientName(long index) const override;
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

    /// exp(S^2 t^2 / 2 - L t) erfc(z) with z = (t S - L / S) / sqrt 2; 0.0 if S is exactly 0.0.
    ///
    /// For |z| above 10, where the product would overflow, four terms of the asymptotic series of erfc are
    /// used instead (Abramowitz and Stegun 7.1.23). That holds above 10; below -10 erfc tends to 2 and the
    /// series does not, so the result there is small where the true value is near 2 exp(S^2 t^2 / 2 - L t).
    /// This is meant: narrow distributions (L more than 14.1 S) give what stored results were computed with.
    double ExpTimesErfc(double t, double L, double S) const;

    /// L, the center of the distribution of rates before it is cut off.
    double GetLambda0() const;
    /// S, its width.
    double GetSigma() const;

    /// The operations below have no guard for S = 0 unless they say so: they give what the floating-point
    /// operations give.

    /// exp(-L^2 / (2 S^2))
    double GetExpVal() const;
    /// erfc(-L / (S sqrt 2)): twice the share of the distribution that is left above rate 0.
    double GetErfVal() const;
    /// The mean of the cut-off distribution; L if S is exactly 0.0.
    double GetFirstCumulant() const;
    /// Its variance, in a form that differs from the textbook's on purpose: kept for agreement with stored
    /// results. 0.0 if S is exactly 0.0.
    double GetSecondCumulant() const;
    /// Factors of error propagation from L and S to the first cumulant (FC) and the second (SC). On purpose
    /// not all the true derivatives: that of the first by L has sqrt 2 / pi where the derivative has sqrt(2 /
    /// pi), and that of the second by S mixes exp(-L^2 / S^2) with exp(-L^2 / (2 S^2)). Kept for agreement
    /// with stored results.
    double GetErrorFCLambda0() const;
    double GetErrorFCSigma() const;
    double GetErrorSCLambda0() const;
    double GetErrorSCSigma() const;
    /// The errors of the cumulants for given errors of L and S, as sums of absolute contributions.
    double GetErrorFirstCumulant(double errorLambda0, double errorSigma) const;
    double GetErrorSecondCumulant(double errorLambda0, double errorSigma) const;

protected:
    void SetFunctionType() override;
};

} // namespace bss

#endif
