#include "Options.h"

#include "TextFormat.h"
#include "common/CommandLine.h"
#include "common/Failure.h"

#include <cmath>

namespace correlogram {

using tools::Failure;
using tools::QuoteStart;

namespace {

// An option with a number, and the range outside which the number must be a mistake, most likely one of
// units.
struct NumberOption {
    const char* name;
    double Conditions::*member; // null for --first-lag
    double lowest;
    double highest;
    const char* unit;
};

constexpr NumberOption kNumberOptions[] = {
    {"--wavelength", &Conditions::wavelength, 1e-8, 1e-4, "metres"},
    {"--angle", &Conditions::angle, 0.1, 180.0, "degrees"},
    {"--temperature", &Conditions::temperature, 1.0, 5000.0, "kelvin"},
    {"--viscosity", &Conditions::viscosity, 1e-7, 1e3, "pascal seconds"},
    {"--refractive-index", &Conditions::refractiveIndex, 1.0, 10.0, ""},
    {"--first-lag", nullptr, 1e-12, 1e6, "seconds"},
};

double ParseValue(const NumberOption& option, const std::string& text) {
    const auto value = ParseNumber(text);
    if (!value) {
        throw Failure(std::string(option.name) + " " + QuoteStart(text) + " is not a number.");
    }
    if (!(*value >= option.lowest && *value <= option.highest)) {
        const std::string unit = *option.unit != '\0' ? std::string(" ") + option.unit : "";
        throw Failure(std::string(option.name) + " " + QuoteStart(text) + " is outside " +
                      FormatGeneral(option.lowest, 6) + " to " + FormatGeneral(option.highest, 6) + unit +
                      ".");
    }
    return *value;
}

std::string NotEmpty(const std::string& option, const std::string& path) {
    if (path.empty()) {
        throw Failure(option + " needs the name of a file.");
    }
    return path;
}

long ParseAnalysisNumber(const std::string& text) {
    const auto value = ParseNumber(text);
    constexpr double kHighest = 2147483647.0;
    if (!value || *value < 1.0 || *value > kHighest || *value != std::floor(*value)) {
        throw Failure("--show " + QuoteStart(text) + " is not the number of an analysis.");
    }
    return static_cast<long>(*value);
}

void CheckTogether(const Options& options) {
    if (!options.storeFile.empty() && !options.dataSource.empty()) {
        throw Failure("--store and --data-source exclude each other.");
    }
    if (options.ReadsStore() && !options.HasStore()) {
        throw Failure("--list and --show need --store or --data-source.");
    }
    if (!options.user.empty() && options.dataSource.empty()) {
        throw Failure("--user goes with --data-source.");
    }
    if (options.ReadsStore() && !options.file.empty()) {
        throw Failure("--list and --show take no file: " + QuoteStart(options.file) + " would not be read.");
    }
    if (options.ReadsStore() && !options.plotFile.empty()) {
        throw Failure("--list and --show draw no plot.");
    }
    if (options.file.empty() && !options.ReadsStore()) {
        throw Failure("No file is given: see correlogram --help.");
    }
}

} // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
    Options options;
    tools::CommandLine line("correlogram");
    const auto path = [&](const std::string& name, std::string& target) {
        line.AddValue(name, [name, &target](const std::string& text) { target = NotEmpty(name, text); });
    };
    path("--sigma", options.sigmaFile);
    path("--plot", options.plotFile);
    path("--store", options.storeFile);
    path("--data-source", options.dataSource);
    line.AddValue("--user", [&](const std::string& text) { options.user = text; });
    line.AddValue("--show", [&](const std::string& text) { options.show = ParseAnalysisNumber(text); });
    for (const NumberOption& option : kNumberOptions) {
        double& target = option.member != nullptr ? options.conditions.*option.member : options.firstLag;
        line.AddValue(option.name,
                      [&option, &target](const std::string& text) { target = ParseValue(option, text); });
    }
    line.AddFlag("--json", [&] { options.json = true; });
    line.AddFlag("--verbose", [&] { options.verbose = true; });
    line.AddFlag("--list", [&] { options.list = true; });
    line.AddFlag("-h,--help", [&] { options.help = true; });
    line.Parse(arguments, [&](const std::string& word) {
        if (word.starts_with("-")) {
            const bool isLong = word.starts_with("--");
            line.RefuseOption(QuoteStart(isLong ? word.substr(0, word.find('=')) : word));
        }
        if (!options.file.empty()) {
            throw Failure("Two files are given, " + QuoteStart(options.file) + " and " + QuoteStart(word) +
                          ", where one is fitted at a time.");
        }
        options.file = word;
    });
    if (!options.help) {
        CheckTogether(options);
    }
    return options;
}

std::string HelpText() {
    const Conditions water;
    return "correlogram FILE.csv [OPTION...]\n"
           "\n"
           "Fits a measured correlation curve of dynamic light scattering by a simple exponential decay, by "
           "the\n"
           "cumulants function and by the decay of a Gaussian distribution of decay rates, and prints one "
           "table of\n"
           "coefficients, quality of fit, decay rate, polydispersity, diffusion coefficient and hydrodynamic "
           "radius.\n"
           "\n"
           "FILE.csv has two columns, the lag in seconds and g2 - 1, and may have a heading.\n"
           "\n"
           "  --sigma FILE.csv             lag and standard deviation of each point, for the weights "
           "(default: all equal)\n"
           "  --wavelength METRES          of the light in vacuum (default " +
           FormatGeneral(water.wavelength, 6) +
           ")\n"
           "  --angle DEGREES              of scattering (default " +
           FormatGeneral(water.angle, 6) +
           ")\n"
           "  --temperature KELVIN         of the sample (default " +
           FormatGeneral(water.temperature, 6) +
           ")\n"
           "  --viscosity PASCAL_SECONDS   of the solvent (default " +
           FormatGeneral(water.viscosity, 6) +
           ", water at 293.15 K)\n"
           "  --refractive-index N         of the solvent (default " +
           FormatGeneral(water.refractiveIndex, 6) +
           ", water)\n"
           "  --first-lag SECONDS          leave out the points before (default: start with the first "
           "point)\n"
           "  --plot FILE.svg              draw data, curves and residuals\n"
           "  --store FILE.db              keep the analysis in a database, which is made where there is "
           "none\n"
           "  --data-source NAME           in an ODBC data source instead; the environment's "
           "CORRELOGRAM_PASSWORD is\n"
           "                               the password\n"
           "  --user NAME                  of the data source\n"
           "  --list                       list what is stored, and do nothing else\n"
           "  --show NUMBER                print a stored analysis, and do nothing else\n"
           "  --json                       print the result as JSON instead of the table\n"
           "  --verbose                    tell on the error stream what was read and where the fits "
           "started\n"
           "  --help                       print this text\n"
           "\n"
           "Fitted are the points from the first lag to ten times the lag at which the signal above the "
           "baseline\n"
           "(mean of the last 30 points) has fallen to 2 % of its intercept.\n"
           "\n"
           "Exit status: 0 all three fits converged; 1 a fit failed; 2 the command line or a file is not "
           "usable.\n";
}

} // namespace correlogram
