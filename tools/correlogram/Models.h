// The three model functions as this program uses them: where to start, what the coefficients mean, what
// follows from them.

#ifndef TOOLS_CORRELOGRAM_MODELS_H
#define TOOLS_CORRELOGRAM_MODELS_H

#include "TextFormat.h"

#include "bss/math/WFunction.h"
#include "bss/math/model/WGaussianCumulantsFunction.h"

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace correlogram {

// What a first look at the data says, in a unit of time of the caller's choice.
struct Start {
    double baseline;
    double amplitude;
    double decayRate;    // of the field correlation, above zero
    double secondMoment; // of the distribution of decay rates, above zero
};

using Matrix = std::vector<std::vector<double>>;

struct Distribution {
    Measured decayRate;                     // mean of the distribution
    std::optional<Measured> polydispersity; // second moment about the mean, divided by the mean squared
};

struct ModelCoefficient {
    const char* meaning;
    double timePower; // a coefficient in seconds is the one in another unit times that unit to this power
};

struct Model {
    const char* name;
    std::unique_ptr<bss::WFunction> (*makeFunction)();
    std::vector<ModelCoefficient> coefficients;
    std::vector<double> (*startingValues)(const Start&);
    // From the fitted function and the covariance of its coefficients (the matrix whose diagonal holds the
    // squares of their standard errors).
    Distribution (*distribution)(const bss::WFunction&, const Matrix&);
    // Whether a fit has run the function out of the range in which it can be computed. Then the other model
    // takes its place, and the note says so. All null for a function without such a limit.
    bool (*isOutOfRange)(const bss::WFunction&) = nullptr;
    const Model* replacement = nullptr;
    const char* note = "";
};

// The decay that a narrow Gaussian distribution of decay rates gives, with a width that is tied to its
// centre.
//
// The arithmetic of the Gaussian cumulants changes its form, and with it its value, where centre / width
// passes 10 sqrt(2): narrower distributions (polydispersity below 0.005) are out of its reach, and a fit to a
// sample of particles of one size runs against that limit and ends there anywhere. This is the model for such
// a sample: baseline, amplitude and root of the centre, at a width just inside the limit.
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

// Exponential, cumulants, Gaussian cumulants.
const std::array<Model, 3>& Models();

} // namespace correlogram

#endif
