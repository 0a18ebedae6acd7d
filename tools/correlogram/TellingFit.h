// A non-linear fit that tells which stop test ended it.

#ifndef TOOLS_CORRELOGRAM_TELLINGFIT_H
#define TOOLS_CORRELOGRAM_TELLINGFIT_H

#include "bss/math/WNonLinearLeastSquaresFit.h"

#include <string>

namespace correlogram {

// The fit keeps the name of the test to itself, but lets a derived class run the bare iteration, which
// returns it. So PerformFit runs the iteration once to learn the test, puts the starting coefficients back
// and performs the fit; the same arithmetic takes the same way. Coefficients that are held fixed and a lambda
// other than the default are not supported.
class TellingFit : public bss::WNonLinearLeastSquaresFit {
public:
    int PerformFit() override;

    // "gamma-lambda", "gamma-epsilon" or "epsilon"; "forced-off" for a fit that failed. Empty before
    // PerformFit.
    const std::string& StopTest() const { return m_sStopTest; }

private:
    std::string m_sStopTest;
};

} // namespace correlogram

#endif
