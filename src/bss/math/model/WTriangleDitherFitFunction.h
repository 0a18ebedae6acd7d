// WTriangleDitherFitFunction: a staged, bin-averaged response to a triangle-wave dither.
//
// Each x belongs to a stage, and each stage averages over a bin twice as wide as that of the preceding stage.
// The triangle wave is the sum of its odd harmonics 1, 3, ..., 13.
//
//     bss::WTriangleDitherFitFunction dither(1e-6, 8.0);  // base interval, stage length
//     dither.SetCoefficients({0.0, 0.1, 2.0});
//     double y = dither.Evaluate(5e-6);
//
// | coefficient | name        |
// |-------------|-------------|
// | 0           | "offset"    |
// | 1           | "amplitude" |
// | 2           | "bin width" |
//
// The base interval is in units of x, the stage length in base intervals; the caller assigns their physical
// meaning. An amplitude whose square is 3.0 and a bin width of 0.0 divide by zero, without a guard. The type
// number is 0. The covariance is empty until a fit or SetCovarianceMatrix fills it; an error bar before that
// is 0.0.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WTRIANGLEDITHERFITFUNCTION_H
#define BSS_MATH_MODEL_WTRIANGLEDITHERFITFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// A staged dither response with three coefficients.
class KRTBSS_API WTriangleDitherFitFunction : public WFunction {
public:
    /// Sets the base interval, in units of x, the stage length, in base intervals, and three coefficients of
    /// 0.0.
    WTriangleDitherFitFunction(double baseInterval, double stageLength);
    /// Copies as WFunction does, and the base interval and the stage length.
    WTriangleDitherFitFunction(const WTriangleDitherFitFunction& other);
    /// Destroys the function.
    ~WTriangleDitherFitFunction() override;

    /// Returns the value at x. Throws boost::math::rounding_error (a std::runtime_error) for an x that is not
    /// finite and not below the base interval; so do the operations below that depend on x.
    double Evaluate(double x) override;
    /// See WFunction::Evaluate.
    void Evaluate(double x, double& y, double& sigma) override;
    /// See WFunction::clone.
    WTriangleDitherFitFunction* clone() const override;
    /// See WFunction::GetCoefficientName. The names are in the table above.
    std::wstring GetCoefficientName(long index) const override;
    /// Stores three derivatives, whatever the number of coefficients.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

    /// Returns the stage of x. It is 0 below the base interval b. From there it is floor(log2(t) + 1) with
    /// t = (round(x / b) - 1) / stage length, and 0 for t not above 0. A t below 0.5 gives a negative stage,
    /// whose bin is narrower than the base interval (kept for compatibility). An infinite t (stage length 0)
    /// gives the largest int.
    int whatStage(double x) const;
    /// Returns the width of a stage's bin in units of x: the base interval times 2 to the power `stage`.
    double stageWidth(int stage) const;

protected:
    /// Sets etUndefined.
    void SetFunctionType() override;

private:
    /// Does nothing: interval and length are fixed at construction.
    WTriangleDitherFitFunction& operator=(const WTriangleDitherFitFunction& other);

    double m_dStageLength;
    double m_dBaseInterval;
};

} // namespace bss

#endif
