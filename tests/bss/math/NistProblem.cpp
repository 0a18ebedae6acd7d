#include "bss/math/NistProblem.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace nist {

namespace {

std::vector<double> numbers(std::istringstream& line) {
    std::vector<double> found;
    for (double number = 0.0; line >> number;) {
        found.push_back(number);
    }
    return line.eof() ? found : std::vector<double>();
}

bool isParameter(const std::string& word) {
    return word.size() >= 2 && (word[0] == 'b' || word[0] == 'B') &&
           std::all_of(word.begin() + 1, word.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

// "b1 = start1 start2 value deviation" of a non-linear problem, "B0 value deviation" of a linear one.
void addParameter(Problem& problem, const std::vector<double>& row) {
    if (row.size() == 4) {
        problem.starts.resize(2);
        problem.starts[0].push_back(row[0]);
        problem.starts[1].push_back(row[1]);
    } else if (row.size() != 2) {
        return;
    }
    problem.values.push_back(row[row.size() - 2]);
    problem.deviations.push_back(row.back());
}

} // namespace

Problem read(const std::string& name) {
    std::ifstream file(std::string(KRTBSS_SOURCE_DIR "/data/nist/") + name + ".dat");
    Problem problem;
    bool inData = false;
    bool hasSum = false;
    for (std::string text; std::getline(file, text);) {
        std::istringstream line(text);
        if (inData) {
            const std::vector<double> row = numbers(line);
            if (row.size() == 2) {
                problem.y.push_back(row[0]);
                problem.x.push_back(row[1]);
            }
            continue;
        }
        std::string word;
        line >> word;
        if (isParameter(word)) {
            if (line >> std::ws && line.peek() == '=') {
                line.get();
            }
            addParameter(problem, numbers(line));
        } else if (text.rfind("Residual Sum of Squares:", 0) == 0) {
            hasSum = static_cast<bool>(std::istringstream(text.substr(24)) >> problem.residualSum);
        } else if (word == "Residual") {
            const std::vector<double> row = numbers(line); // degrees of freedom, sum, mean
            if (row.size() == 3) {
                problem.residualSum = row[1];
                hasSum = true;
            }
        } else if (word == "Data:") {
            inData = static_cast<bool>(line >> word) && word == "y";
        }
    }
    if (problem.x.empty() || problem.values.empty() || !hasSum) {
        throw std::runtime_error("no whole problem in data/nist/" + name + ".dat");
    }
    return problem;
}

double digits(double value, double certified) {
    if (!std::isfinite(value)) {
        return 0.0;
    }
    const double error = std::fabs(value - certified) / (certified == 0.0 ? 1.0 : std::fabs(certified));
    return error == 0.0 ? 15.0 : std::clamp(-std::log10(error), 0.0, 15.0);
}

double digits(const std::vector<double>& values, const std::vector<double>& certified) {
    double worst = values.size() == certified.size() ? 15.0 : 0.0;
    for (std::size_t i = 0; i < certified.size() && i < values.size(); ++i) {
        worst = std::min(worst, digits(values[i], certified[i]));
    }
    return worst;
}

} // namespace nist
