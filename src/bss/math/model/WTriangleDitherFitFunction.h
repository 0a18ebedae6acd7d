// WTriangleDitherFitFunction: a staged, bin-averaged response to a triangle-wave dither.
//
// A reading at x falls into a stage, and each stage averages over a bin twice as wide as the one before. The
// triangle wave is given by its seven odd harmonics 1, 3, ..., 13.
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
// The base interval is in units of x, the stage length in base intervals; what they stand for is the
// caller's. An amplitude whose square is 3.0 and a bin width of 0.0 divide by zero, without a guard. The type
// number stays 0. The covariance stays empty until a fit or SetCovarianceMatrix fills it; an error bar before
// that is 0.0. Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WTRIANGLEDITHERFITFUNCTION_H
#define BSS_MATH_MODEL_WTRIANGLEDITHERFITFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WTriangleDitherFitFunction : public WFunction {
public:
    WTriangleDitherFitFunction(double baseInterval, double stageLength);
    WTriangleDitherFitFunction(const WTriangleDitherFitFunction& other);
    ~WTriangleDitherFitFunction() override;

    /// Throws boost::math::rounding_error (a std::runtime_error) for an x that is not finite and not below
    /// the base interval; so do the others.
    double Evaluate(double x) override;
    void Evaluate(double x, double& y, double& sigma) override;
    WTriangleDitherFitFunction* clone() const override;
    std::wstring GetCoefficientName(long index) const override;
    /// Always three entries.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

    /// The stage of x: 0 below the base interval, and from there floor(log2(t) + 1) with
    /// t = (round(x / base interval) - 1) / stage length, 0 for t not above 0. A t below 0.5 gives a negative
    /// stage, on purpose: the bin is then narrower than the base interval. A t beyond all bounds (stage
    /// length 0) gives the largest int.
    int whatStage(double x) const;
    /// Base interval times 2 to the power stage.
    double stageWidth(int stage) const;

protected:
    void SetFunctionType() override;

private:
    /// The interval and the length are fixed at construction: assignment does nothing.
    WTriangleDitherFitFunction& operator=(const WTriangleDitherFitFunction& other);

    double m_dStageLength;
    double m_dBaseInterval;
};

} // namespace bss

#endif
