// WSineFunction: a sine with non-negative amplitude and angular frequency,
//
//     y = c0 + c1^2 sin(c2^2 x + c3)
//
// | coefficient | name    | meaning                                                 |
// |-------------|---------|---------------------------------------------------------|
// | 0           | "A0"    | mean                                                    |
// | 1           | "A1"    | root of the amplitude                                   |
// | 2           | "omega" | root of the angular frequency, in radians per unit of x |
// | 3           | "phi"   | phase in radians                                        |
//
//     bss::WSineFunction wave;
//     wave.SetCoefficients({1.0, 2.0, 3.0, 0.0});
//     double y = wave.Evaluate(0.5);   // 1 + 4 sin(4.5)
//
// d[1] is 2 sin(c2^2 x + c3), without the factor c1 of the true derivative (kept for agreement with stored
// results). The other derivatives are the true ones.
//
// The covariance is empty until a fit or SetCovarianceMatrix fills it; an error bar before that is 0.0.
//
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WSINEFUNCTION_H
#define BSS_MATH_MODEL_WSINEFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

/// A sine with four coefficients.
class KRTBSS_API WSineFunction : public WFunction {
public:
    /// Sets the type and four coefficients of 0.0.
    WSineFunction();
    /// Copies as WFunction does.
    WSineFunction(const WSineFunction& other);
    /// Copies as WFunction does.
    WSineFunction& operator=(const WSineFunction& other);
    /// Destroys the function.
    ~WSineFunction() override;

    /// Also offers the form with an error bar.
    using WFunction::Evaluate;
    /// See WFunction::Evaluate.
    double Evaluate(double x) override;
    /// See WFunction::clone.
    WFunction* clone() const override;
    /// See WFunction::GetCoefficientName. The names are in the table above.
    std::wstring GetCoefficientName(long index) const override;
    /// Stores four derivatives, whatever the number of coefficients.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    /// Sets etSine.
    void SetFunctionType() override;
};

} // namespace bss

#endif
