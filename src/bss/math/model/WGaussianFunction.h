// WGaussianFunction: a Gaussian peak on a sloped background,
//
//     y = c0 exp(-u^2) + c3 + c4 x,   u = (x - c1) / (c2 G),   G = 0.60056120439
//
// | coefficient | name        | meaning                                    |
// |-------------|-------------|--------------------------------------------|
// | 0           | "amplitude" | height above the background                |
// | 1           | "center"    | in units of x                              |
// | 2           | "width"     | full width at half height, in units of x   |
// | 3           | "offset"    | background at x = 0                        |
// | 4           | "slope"     | of the background                          |
//
//     bss::WGaussianFunction peak;
//     peak.SetCoefficients({1.0, 0.0, 2.0, 0.0, 0.0});
//     double y = peak.Evaluate(1.0);   // about 0.5
//
// G converts a full width at half height into the 1/e half width of a Gaussian, 1 / (2 sqrt(ln 2)); it has
// eleven digits (kept for agreement with stored results). From |u| = 25 on the peak is exactly 0.0, without
// an exponential. The derivatives are the true ones.
//
// The covariance is empty until a fit or SetCovarianceMatrix fills it; an error bar before that is 0.0.
//
// Threads: one object, one thread at a time; an evaluation may change the width.

#ifndef BSS_MATH_MODEL_WGAUSSIANFUNCTION_H
#define BSS_MATH_MODEL_WGAUSSIANFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// A Gaussian peak with five coefficients.
class KRTBSS_API WGaussianFunction : public WFunction {
public:
    /// Sets the type and five coefficients of 0.0.
    WGaussianFunction();
    /// Copies as WFunction does.
    WGaussianFunction(const WGaussianFunction& other);
    /// Copies as WFunction does.
    WGaussianFunction& operator=(const WGaussianFunction& other);
    /// Destroys the function.
    ~WGaussianFunction() override;

    /// Also offers the form with an error bar.
    using WFunction::Evaluate;
    /// Returns the value at x. Changes a width of exactly 0.0 to 1e-100 in the object; so does
    /// ComputeDerivatives.
    double Evaluate(double x) override;
    /// See WFunction::clone.
    WFunction* clone() const override;
    /// See WFunction::GetCoefficientName. The names are in the table above.
    std::wstring GetCoefficientName(long index) const override;
    /// Stores five derivatives, whatever the number of coefficients.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    /// Sets etGaussian.
    void SetFunctionType() override;
};

} // namespace bss

#endif
