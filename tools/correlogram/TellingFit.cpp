#include "TellingFit.h"

#include "bss/math/WFunction.h"

namespace correlogram {

int TellingFit::PerformFit() {
    static const char* const kNames[] = {"forced-off", "gamma-lambda", "gamma-epsilon", "epsilon"};
    const std::vector<double> start = GetFunction()->GetCoefficients();
    m_sStopTest = kNames[0];
    m_sStopTest = kNames[static_cast<unsigned>(Fit())];
    GetFunction()->SetCoefficients(start);
    InitializeFit();
    return WNonLinearLeastSquaresFit::PerformFit();
}

} // namespace correlogram
