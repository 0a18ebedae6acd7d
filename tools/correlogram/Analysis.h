// From a measured curve to the size of the particles: the range that is fitted, the three fits and what
// follows from them.
//
//     Curve curve = ReadCurve("sample.csv");
//     Analysis analysis = Analyse(curve, Conditions{}, 3e-7);
//     for (const FitResult& fit : analysis.fits) { ... fit.radius->value ... }
//
// Conventions, formulas and the propagation of errors are explained in docs/correlogram.md. Every call works
// on its own data; calls from several threads do not meet.

#ifndef TOOLS_CORRELOGRAM_ANALYSIS_H
#define TOOLS_CORRELOGRAM_ANALYSIS_H

#include "Curve.h"
#include "Options.h"
#include "TextFormat.h"

#include "bss/exception/WNestedException.h"
#include "bss/math/WFunction.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace correlogram {

struct Coefficient {
    std::string name;    // as the function calls it: "A0"
    std::string meaning; // with its unit: "time constant (s)"
    double start;        // where the fit started
    Measured fitted;
};

struct FitResult {
    std::string name;     // "exponential", "cumulants", "gaussian-cumulants"
    std::string stopTest; // "gamma-lambda", "gamma-epsilon", "epsilon"; "forced-off" for a fit that failed
    unsigned iterations = 0;

    // Empty, zero or nothing when the fit failed.
    std::vector<Coefficient> coefficients;
    double chiSquared = 0.0;
    double reducedChiSquared = 0.0;
    double rSquared = 0.0;
    std::optional<Measured> decayRate;        // 1/s
    std::optional<Measured> polydispersity;   // nothing for the exponential, which has none
    std::optional<Measured> diffusion;        // m^2/s
    std::optional<Measured> radius;           // m
    std::unique_ptr<bss::WFunction> function; // over the lag in seconds
    std::string note;                         // what else a reader should know of this fit; may be empty

    std::unique_ptr<bss::WNestedException> failure; // the chain that ended the fit; null after success

    bool HasConverged() const { return failure == nullptr; }
};

struct Analysis {
    Curve curve;
    Conditions conditions;
    std::size_t first = 0; // index of the first fitted point
    std::size_t count = 0; // number of fitted points
    double baseline = 0.0;
    double intercept = 0.0; // above the baseline
    double decayTime = 0.0; // lag at which the signal has fallen to 1/e, s; the unit of time during the fits
    double scatteringVector = 0.0; // 1/m
    std::vector<FitResult> fits;   // always three, in the order of the table

    bool HasConverged() const;
};

// Does everything. A failing fit is told in its FitResult and does not keep the others from running.
// Throws tools::Failure where the curve has too few points or does not decay.
Analysis Analyse(Curve curve, const Conditions& conditions, double firstLag);

} // namespace correlogram

#endif
