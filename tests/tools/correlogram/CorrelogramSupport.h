// What the tests of the correlogram program share: folders that vanish, made-up curves, runs of the program.

#ifndef TESTS_TOOLS_CORRELOGRAM_CORRELOGRAMSUPPORT_H
#define TESTS_TOOLS_CORRELOGRAM_CORRELOGRAMSUPPORT_H

#include "correlogram/Curve.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace correlogram_test {

// A folder of its own, empty at first and removed with all it holds at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The path of a file in the folder, UTF-8.
    std::string Path(const std::string& name) const;
    // Writes the bytes into a file and returns its path.
    std::string Write(const std::string& name, const std::string& bytes) const;
    // Names of all that lies in the folder, sorted.
    std::vector<std::string> Names() const;

private:
    std::filesystem::path m_Path;
};

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

// Runs the program's code in this process.
Outcome RunHere(const std::vector<std::string>& arguments);

// Runs the built program as a process of its own, through the system's command interpreter.
Outcome RunProgram(const std::vector<std::string>& arguments);

// The bytes of a file without carriage returns; empty if there is none.
std::string ReadText(const std::string& path);

// A path of the source tree.
std::string Source(const std::string& path);

// A curve at `count` lags, equally spaced by logarithm. Where noise is above zero, normally distributed noise
// of that standard deviation is added, always the same for the same seed.
correlogram::Curve MakeCurve(const std::function<double(double)>& signal, double noise = 0.0,
                             unsigned seed = 1, int count = 180, double firstLag = 1e-7,
                             double lastLag = 1.0);

// The curve as a file has it.
std::string CsvText(const correlogram::Curve& curve);

} // namespace correlogram_test

#endif
