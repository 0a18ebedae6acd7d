// Measured curves and the files they come from.

#ifndef TOOLS_CORRELOGRAM_CURVE_H
#define TOOLS_CORRELOGRAM_CURVE_H

#include <cstdint>
#include <string>
#include <vector>

namespace correlogram {

// Points in the order of the file. All vectors have one length, but sigma is empty where none was read.
struct Curve {
    std::string file;              // as given
    std::vector<double> lag;       // seconds; above zero, rising
    std::vector<double> signal;    // g2 - 1
    std::vector<double> sigma;     // standard deviation of the signal; above zero
    std::vector<std::size_t> line; // number of the point's line in the file, from 1
};

// The largest file that is read. A correlator gives some hundred points; more than this is another kind of
// file.
inline constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 24U;

// Reads lag and signal. A line holds two cells, separated by a comma, a semicolon or a tab; line 1 may be a
// heading; empty lines count but are skipped; CR LF and a byte order mark are fine. Throws tools::Failure
// naming file and line for whatever is not such a file: missing, a folder, empty, larger than kLargestFile
// (without reading it), binary, a wrong number of columns, text or a number that is not finite in a cell, a
// lag that is not above the one before, no points at all.
Curve ReadCurve(const std::string& file);

// Reads standard deviations and puts them into the curve. Throws tools::Failure as ReadCurve does, and where
// the lags are not those of the curve or a standard deviation is not above zero.
void ReadSigma(const std::string& file, Curve& curve);

} // namespace correlogram

#endif
