// The picture of an analysis, and how it gets to the disk.

#ifndef TOOLS_CORRELOGRAM_PLOT_H
#define TOOLS_CORRELOGRAM_PLOT_H

#include "Analysis.h"

#include <string>

namespace correlogram {

// A whole SVG document: the points over a logarithmic lag axis, fitted ones dark and others pale, the curves
// of the fits that converged, below them the residuals (in standard deviations where these were read), and a
// legend with each radius.
std::string DrawPlot(const Analysis& analysis);

// Writes the bytes to a file of another name in the same folder and renames it when it is whole: the file of
// that name is the old one or the new one, never a part. Throws InputError if that fails; nothing is left
// behind then.
void SaveWhole(const std::string& file, const std::string& bytes);

} // namespace correlogram

#endif
