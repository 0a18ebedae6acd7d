// WSineFunction: a sine with non-negative amplitude and angular frequency,
//
//     y = c0 + c1^2 sin(c2^2 x + c3)
//
// | coefficient | name    | meaning                                               |
// |-------------|---------|-------------------------------------------------------|
// | 0           | "A0"    | mean                                                  |
// | 1           | "A1"    | root of the amplitude                                 |
// | 2           | "omega" | root of the angular frequency, in radians a unit of x |
// | 3           | "phi"   | phase in radians                                      |
//
// d[1] is 2 sin(c2^2 x + c3), on purpose without the factor c1 of the true derivative; fits are steered by it
// and agree with stored results. The others are the true ones.
//
// The covariance stays empty until a fit or SetCovarianceMatrix fills it; an error bar before that is 0.0.
// Threads: one object, one thread at a time.

#ifndef BSS_MATH_MODEL_WSINEFUNCTION_H
#define BSS_MATH_MODEL_WSINEFUNCTION_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WSineFunction : public WFunction {
public:
    WSineFunction();
    WSineFunction(const WSineFunction& other);
    WSineFunction& operator=(const WSineFunction& other);
    ~WSineFunction() override;

    using WFunction::Evaluate;
    double Evaluate(double x) override;
    WFunction* clone() const override;
    std::wstring GetCoefficientName(long index) const override;
    /// Always four entries.
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    void SetFunctionType() override;
};

} // namespace bss

#endif
