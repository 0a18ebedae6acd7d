// The result as text: the table for people, JSON for programs.

#ifndef TOOLS_CORRELOGRAM_REPORT_H
#define TOOLS_CORRELOGRAM_REPORT_H

#include "Analysis.h"

#include <string>

namespace correlogram {

// One table, a column a fit, in ASCII, each line ended by a line feed. A dash stands where a fit has no such
// value.
std::string TableReport(const Analysis& analysis);

// One object with the members "file", "points" (the number of fitted ones) and "fits", which
// docs/correlogram.md lists. Numbers have 8 significant digits; null stands where a fit has no such value.
std::string JsonReport(const Analysis& analysis);

// What --verbose tells: range, baseline, unit of time, scattering vector, and where each fit started.
std::string VerboseReport(const Analysis& analysis);

} // namespace correlogram

#endif
