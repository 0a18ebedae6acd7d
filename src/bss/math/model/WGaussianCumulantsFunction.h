// WGaussianCumulantsFunction: the decay of a correlogram for a Gaussian distribution of decay rates that is
// truncated at rate 0,
//
//     y = c0 + c1 h(x)^2
//     h(x) = exp(S^2 x^2 / 2 - L x) erfc((x S - L / S) / sqrt 2) / erfc(-L / (S sqrt 2))
//
// with the lag time x, the baseline c0, the amplitude c1, the center L = c2^2 of the distribution and its
// width S = c3^2 (standard deviation), both in units of 1/x. The squares keep L and S from becoming negative
// in a fit. Coefficients are named "A0" to "A3". h is the Laplace transform of the truncated distribution.
//
//     bss::WGaussianCumulantsFunction decay;
//     decay.SetCoefficients({0.0, 0.8, 30.0, 10.0});
//     ... a fit works on &decay ...
//     double mean = decay.GetFirstCumulant();
//     double variance = decay.GetSecondCumulant();
//
// After a fit, the first and the second cumulant (mean and variance) of the truncated distribution are
// available, with factors that convert the errors of L and S into theirs.
//
// The derivatives are the true ones. A NaN argument of erfc gives NaN.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WGAUSSIANCUMULANTSFUNCTION_H
#define BSS_MATH_MODEL_WGAUSSIANCUMULANTSFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// The decay of a truncated Gaussian distribution of rates, with four coefficients.
class KRTBSS_API WGaussianCumulantsFunction : public WFunction {
public:
    /// Sets the type, four coefficients of 0.0 and a covariance of 4 by 4 zeros.
    WGaussianCumulantsFunction();
    /// Copies as WFunction does.
    WGaussianCumulantsFunction(const WGaussianCumulantsFunction& other);
    /// Copies as WFunction does.
    WGaussianCumulantsFunction& operator=(const WGaussianCumulantsFunction& other);
    /// Destroys the function.
    ~WGaussianCumulantsFunction() override;

    /// Also offers the form with an error bar.
    using WFunction::Evaluate;
    /// Returns the value at x. A width S of exactly 0.0 is replaced by 1e-200 in the formulas. Throws
    /// std::overflow_error if erfc overflows.
    double Evaluate(double x) override;
    /// See WFunction::clone.
    WFunction* clone() const override;
    /// See WFunction::GetCoefficientName.
    std::wstring GetCoefficientName(long index) const override;
    /// Stores the true derivatives. Throws as Evaluate does.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

    /// Returns exp(S^2 t^2 / 2 - L t) erfc(z) with z = (t S - L / S) / sqrt 2; 0.0 if S is exactly 0.0.
    ///
    /// For |z| above 10, where the product would overflow, four terms of the asymptotic series of erfc are
    /// used (Abramowitz and Stegun 7.1.23). The series is valid for z above 10. Below -10 erfc tends to 2 and
    /// the series does not: the result is small where the true value is near 2 exp(S^2 t^2 / 2 - L t). This
    /// affects narrow distributions (L above 14.1 S); kept for agreement with stored results.
    double ExpTimesErfc(double t, double L, double S) const;

    /// Returns L, the center of the distribution of rates before truncation.
    double GetLambda0() const;
    /// Returns S, the standard deviation of the distribution before truncation.
    double GetSigma() const;

    // The operations below do not check for S = 0 unless they say so: they return the result of the
    // floating-point operations. All throw std::overflow_error if erfc overflows.

    /// Returns exp(-L^2 / (2 S^2)).
    double GetExpVal() const;
    /// Returns erfc(-L / (S sqrt 2)), twice the share of the distribution above rate 0.
    double GetErfVal() const;
    /// Returns the mean of the truncated distribution; L if S is exactly 0.0.
    double GetFirstCumulant() const;
    /// Returns the variance of the truncated distribution; 0.0 if S is exactly 0.0. The form deviates from
    /// the textbook's (kept for agreement with stored results).
    double GetSecondCumulant() const;
    /// Returns the factor of error propagation from L to the first cumulant. It has sqrt 2 / pi where the
    /// derivative has sqrt(2 / pi) (kept for agreement with stored results).
    double GetErrorFCLambda0() const;
    /// Returns the factor of error propagation from S to the first cumulant.
    double GetErrorFCSigma() const;
    /// Returns the factor of error propagation from L to the second cumulant.
    double GetErrorSCLambda0() const;
    /// Returns the factor of error propagation from S to the second cumulant. It mixes exp(-L^2 / S^2) with
    /// exp(-L^2 / (2 S^2)) (kept for agreement with stored results).
    double GetErrorSCSigma() const;
    /// Returns the error of the first cumulant for given errors of L and S, the sum of the absolute
    /// contributions.
    double GetErrorFirstCumulant(double errorLambda0, double errorSigma) const;
    /// Returns the error of the second cumulant for given errors of L and S, the sum of the absolute
    /// contributions.
    double GetErrorSecondCumulant(double errorLambda0, double errorSigma) const;

protected:
    /// Sets etGaussianCumulants.
    void SetFunctionType() override;
};

} // namespace bss

#endif
