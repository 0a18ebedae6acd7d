// The decay that a narrow Gaussian distribution of decay rates gives, with a width that is tied to its
// centre.
//
// The arithmetic of the Gaussian cumulants changes its form, and with it its value, where centre / width
// passes 10 sqrt(2): narrower distributions (polydispersity below 0.005) are out of its reach, and a fit to a
// sample of particles of one size runs against that limit and ends there anywhere. This is the model for such
// a sample: baseline, amplitude and root of the centre, at a width just inside the limit.

#ifndef TOOLS_CORRELOGRAM_NARROWGAUSSIAN_H
#define TOOLS_CORRELOGRAM_NARROWGAUSSIAN_H

#include "bss/math/WFunction.h"
#include "bss/math/model/WGaussianCumulantsFunction.h"

namespace correlogram {

class NarrowGaussian : public bss::WFunction {
public:
    // Centre / width. The polydispersity is the inverse of its square, 0.006.
    static constexpr double kCentreOverWidth = 13.0;
    // Where the form of the arithmetic changes.
    static constexpr double kLimit = 14.142135623730951;

    NarrowGaussian();

    double Evaluate(double x) override;
    using WFunction::Evaluate;
    WFunction* clone() const override;
    std::wstring GetCoefficientName(long index) const override;
    void ComputeDerivatives(double x, std::vector<double>& derivatives) override;

protected:
    void SetFunctionType() override;

private:
    void PassCoefficients();

    bss::WGaussianCumulantsFunction m_Gaussian;
    std::vector<double> m_afDerivatives;
};

} // namespace correlogram

#endif
