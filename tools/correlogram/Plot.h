// The picture of an analysis.

#ifndef TOOLS_CORRELOGRAM_PLOT_H
#define TOOLS_CORRELOGRAM_PLOT_H

#include "Analysis.h"

#include <string>

namespace correlogram {

// A whole SVG document: the points over a logarithmic lag axis, fitted ones dark and others pale, the curves
// of the fits that converged, below them the residuals (in standard deviations where these were read), and a
// legend with each radius.
std::string DrawPlot(const Analysis& analysis);

} // namespace correlogram

#endif
