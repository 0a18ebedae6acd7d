#include "tools/correlogram/CorrelogramSupport.h"

#include "correlogram/Program.h"
#include "correlogram/TextFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

namespace correlogram_test {

namespace {

std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

} // namespace

ScratchFolder::ScratchFolder()
    : m_Path(std::filesystem::temp_directory_path() /
             ("correlogram-" + std::to_string(std::random_device{}()))) {
    std::filesystem::create_directory(m_Path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
}

std::string ScratchFolder::Path(const std::string& name) const {
    return Utf8(m_Path / correlogram::PathOf(name));
}

std::string ScratchFolder::Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(correlogram::PathOf(Path(name)), std::ios::binary) << bytes;
    return Path(name);
}

std::vector<std::string> ScratchFolder::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_Path)) {
        names.push_back(Utf8(entry.path().filename()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

Outcome RunHere(const std::vector<std::string>& arguments) {
    std::ostringstream output;
    std::ostringstream errors;
    const int status = correlogram::Run(arguments, output, errors);
    return {status, output.str(), errors.str()};
}

Outcome RunProgram(const std::vector<std::string>& arguments) {
    const ScratchFolder folder;
    std::string command = Quoted(Utf8(std::filesystem::path(CORRELOGRAM_PROGRAM).make_preferred()));
    for (const std::string& argument : arguments) {
        command += " " + Quoted(argument);
    }
    command += " > " + Quoted(folder.Path("output")) + " 2> " + Quoted(folder.Path("errors"));
    if constexpr (std::filesystem::path::preferred_separator == '\\') {
        command = Quoted(command); // the interpreter there takes the outermost quotes off
    }
    const int result = std::system(command.c_str());
    const int status = (result & 0xFF) != 0 ? result : result >> 8; // POSIX: status in the second byte
    return {status, ReadText(folder.Path("output")), ReadText(folder.Path("errors"))};
}

std::string ReadText(const std::string& path) {
    std::ifstream stream(correlogram::PathOf(path), std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    std::erase(text, '\r');
    return text;
}

std::string Source(const std::string& path) {
    return std::string(KRTBSS_SOURCE_DIR "/") + path;
}

correlogram::Curve MakeCurve(const std::function<double(double)>& signal, double noise, unsigned seed,
                             int count, double firstLag, double lastLag) {
    correlogram::Curve curve;
    curve.file = "made-up.csv";
    std::mt19937 random(seed);
    std::normal_distribution<double> deviation(0.0, 1.0);
    for (int i = 0; i < count; ++i) {
        curve.lag.push_back(firstLag * std::pow(lastLag / firstLag, static_cast<double>(i) / (count - 1)));
        curve.signal.push_back(signal(curve.lag.back()) + noise * deviation(random));
        curve.line.push_back(static_cast<std::size_t>(i) + 2);
    }
    return curve;
}

std::string CsvText(const correlogram::Curve& curve) {
    std::string text = "lag_seconds,g2_minus_1\n";
    for (std::size_t i = 0; i < curve.lag.size(); ++i) {
        text += correlogram::FormatGeneral(curve.lag[i], 9) + "," +
                correlogram::FormatGeneral(curve.signal[i], 9) + "\n";
    }
    return text;
}

} // namespace correlogram_test
