// The command line.

#ifndef TOOLS_CORRELOGRAM_OPTIONS_H
#define TOOLS_CORRELOGRAM_OPTIONS_H

#include <string>
#include <vector>

namespace correlogram {

// How the curve was measured. The defaults are those of water at 293.15 K in the light of a helium-neon
// laser.
struct Conditions {
    double wavelength = 632.8e-9;   // of the light in vacuum, metres
    double angle = 90.0;            // of scattering, degrees
    double temperature = 293.15;    // kelvin
    double viscosity = 1.0016e-3;   // of the solvent, pascal seconds
    double refractiveIndex = 1.332; // of the solvent
};

struct Options {
    std::string file;       // measured curve; all paths are UTF-8, as given
    std::string sigmaFile;  // empty: every point has the same weight
    std::string plotFile;   // empty: no plot
    std::string storeFile;  // database file; empty: none
    std::string dataSource; // in its place: a named data source, with the user's name
    std::string user;
    bool list = false; // of what is stored; no curve is read
    long show = 0;     // number of the stored analysis to print; 0: none, a curve is read
    Conditions conditions;
    double firstLag = 0.0; // seconds; 0 means from the first point on
    bool json = false;
    bool verbose = false;
    bool help = false; // nothing else is checked then

    bool HasStore() const { return !storeFile.empty() || !dataSource.empty(); }
    bool ReadsStore() const { return list || show != 0; }
};

// Reads the arguments behind the program's name. An option's value follows as next argument or behind '='.
// Throws tools::Failure for an unknown option, a missing or impossible value, no file or several, and for
// options that do not go together.
Options ParseOptions(const std::vector<std::string>& arguments);

// What --help prints, defaults and units included.
std::string HelpText();

} // namespace correlogram

#endif
