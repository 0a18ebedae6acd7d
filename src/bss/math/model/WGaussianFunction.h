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
// G turns a full width at half height into a Gaussian's 1/e half width, 1 / (2 sqrt(ln 2)); the eleven digits
// are meant. From |u| = 25 on the peak is exactly 0.0 and no exponential is taken. The derivatives are the
// true ones.
//
// The covariance stays empty until a fit or SetCovarianceMatrix fills it; an error bar before that is 0.0.
// Threads: one object, one thread at a time; an evaluation may rewrite the width.

#ifndef BSS_MATH_MODEL_WGAUSSIANFUNCTION_H
#define BSS_MATH_MODEL_WGAUSSIANFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WGaussianFunction : public WFunction {
public:
    WGaussianFunction();
    WGaussianFunction(const WGaussianFunction& other);
    WGaussianFunction& operator=(const WGaussianFunction& other);
    ~WGaussianFunction() override;

    using WFunction::Evaluate;
    /// A width of exactly 0.0 is replaced by 1e-100 in the object itself; ComputeDerivatives does the same.
    double Evaluate(double x) override;
    WFunction* clone() const override;
    std::wstring GetCoefficientName(long index) const override;
    /// Always five entries.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    void SetFunctionType() override;
};

} // namespace bss

#endif
