#include "Options.h"

#include "InputError.h"
#include "TextFormat.h"

#include <cmath>

namespace correlogram {

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
        throw InputError(std::string(option.name) + " " + Quote(text) + " is not a number.");
    }
    if (!(*value >= option.lowest && *value <= option.highest)) {
        const std::string unit = *option.unit != '\0' ? std::string(" ") + option.unit : "";
        throw InputError(std::string(option.name) + " " + Quote(text) + " is outside " +
                         FormatGeneral(option.lowest, 6) + " to " + FormatGeneral(option.highest, 6) + unit +
                         ".");
    }
    return *value;
}

// Walks over the arguments and hands out the value of an option.
class ArgumentReader {
public:
    explicit ArgumentReader(const std::vector<std::string>& arguments) : m_Arguments(arguments) {}

    bool Next() {
        if (m_nNext == m_Arguments.size()) {
            return false;
        }
        m_sName = m_Arguments[m_nNext++];
        m_bValueInside = m_sName.starts_with("--") && m_sName.find('=') != std::string::npos;
        if (m_bValueInside) {
            m_sInside = m_sName.substr(m_sName.find('=') + 1);
            m_sName.resize(m_sName.find('='));
        }
        return true;
    }

    const std::string& Name() const { return m_sName; }

    std::string Value() {
        if (m_bValueInside) {
            return m_sInside;
        }
        if (m_nNext == m_Arguments.size()) {
            throw InputError(m_sName + " needs a value behind it.");
        }
        return m_Arguments[m_nNext++];
    }

    void ExpectNoValue() const {
        if (m_bValueInside) {
            throw InputError(m_sName + " takes no value.");
        }
    }

private:
    const std::vector<std::string>& m_Arguments;
    std::size_t m_nNext = 0;
    std::string m_sName;
    std::string m_sInside;
    bool m_bValueInside = false;
};

std::string ParsePath(ArgumentReader& reader) {
    std::string path = reader.Value();
    if (path.empty()) {
        throw InputError(reader.Name() + " needs the name of a file.");
    }
    return path;
}

bool ParseNumberOption(ArgumentReader& reader, Options& options) {
    for (const NumberOption& option : kNumberOptions) {
        if (reader.Name() == option.name) {
            double& target = option.member != nullptr ? options.conditions.*option.member : options.firstLag;
            target = ParseValue(option, reader.Value());
            return true;
        }
    }
    return false;
}

long ParseAnalysisNumber(ArgumentReader& reader) {
    const std::string text = reader.Value();
    const auto value = ParseNumber(text);
    constexpr double highest = 2147483647.0;
    if (!value || *value < 1.0 || *value > highest || *value != std::floor(*value)) {
        throw InputError("--show " + Quote(text) + " is not the number of an analysis.");
    }
    return static_cast<long>(*value);
}

bool ParseStoreOption(ArgumentReader& reader, Options& options) {
    if (reader.Name() == "--store") {
        options.storeFile = ParsePath(reader);
    } else if (reader.Name() == "--data-source") {
        options.dataSource = ParsePath(reader);
    } else if (reader.Name() == "--user") {
        options.user = reader.Value();
    } else if (reader.Name() == "--show") {
        options.show = ParseAnalysisNumber(reader);
    } else {
        return false;
    }
    return true;
}

void CheckTogether(const Options& options) {
    if (!options.storeFile.empty() && !options.dataSource.empty()) {
        throw InputError("--store and --data-source exclude each other.");
    }
    if (options.ReadsStore() && !options.HasStore()) {
        throw InputError("--list and --show need --store or --data-source.");
    }
    if (!options.user.empty() && options.dataSource.empty()) {
        throw InputError("--user goes with --data-source.");
    }
    if (options.ReadsStore() && !options.file.empty()) {
        throw InputError("--list and --show take no file: " + Quote(options.file) + " would not be read.");
    }
    if (options.ReadsStore() && !options.plotFile.empty()) {
        throw InputError("--list and --show draw no plot.");
    }
    if (options.file.empty() && !options.ReadsStore()) {
        throw InputError("No file is given: see correlogram --help.");
    }
}

bool ParseFlag(const ArgumentReader& reader, Options& options) {
    bool* flag = reader.Name() == "--json"                            ? &options.json
                 : reader.Name() == "--verbose"                       ? &options.verbose
                 : reader.Name() == "--list"                          ? &options.list
                 : reader.Name() == "--help" || reader.Name() == "-h" ? &options.help
                                                                      : nullptr;
    if (flag == nullptr) {
        return false;
    }
    reader.ExpectNoValue();
    *flag = true;
    return true;
}

} // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
    Options options;
    ArgumentReader reader(arguments);
    while (reader.Next()) {
        if (ParseFlag(reader, options) || ParseNumberOption(reader, options) ||
            ParseStoreOption(reader, options)) {
            continue;
        }
        if (reader.Name() == "--sigma") {
            options.sigmaFile = ParsePath(reader);
        } else if (reader.Name() == "--plot") {
            options.plotFile = ParsePath(reader);
        } else if (reader.Name().starts_with("-")) {
            throw InputError("There is no option " + Quote(reader.Name()) + ": see correlogram --help.");
        } else if (!options.file.empty()) {
            throw InputError("Two files are given, " + Quote(options.file) + " and " + Quote(reader.Name()) +
                             ", where one is fitted at a time.");
        } else {
            options.file = reader.Name();
        }
    }
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
