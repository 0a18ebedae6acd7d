// Certified regression problems in data/nist, and how closely a fit agrees with them.

#ifndef TESTS_BSS_MATH_NISTPROBLEM_H
#define TESTS_BSS_MATH_NISTPROBLEM_H

#include <string>
#include <vector>

namespace nist {

struct Problem {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<std::vector<double>> starts; // none for a linear problem
    std::vector<double> values;
    std::vector<double> deviations;
    double residualSum = 0.0;
};

// Reads data/nist/NAME.dat; throws std::runtime_error if it does not hold a whole problem.
Problem read(const std::string& name);

// The agreeing decimal digits of a value: -log10 of the relative error, of the absolute error if the
// certified value is 0.0. At most 15, below 0 cut to 0, 0 for a value that is not finite.
double digits(double value, double certified);
// The digits of the worst entry.
double digits(const std::vector<double>& values, const std::vector<double>& certified);

} // namespace nist

#endif
