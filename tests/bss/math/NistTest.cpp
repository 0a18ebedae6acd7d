// Both fits on the certified regression problems of data/nist. Each row states the digits that have to agree
// at least; what was measured is printed, and stands in docs/nonlinear-fit.md.

#include "bss/math/FormulaFunction.h"
#include "bss/math/WLinearLeastSquaresFit.h"
#include "bss/math/WNonLinearLeastSquaresFit.h"
#include "bss/math/model/WPolynomialFunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

using Coefficients = std::vector<double>;

struct Problem {
    std::vector<double> x, y;
    Coefficients starts[2]; // none for a linear problem
    Coefficients values, deviations;
    double residualSum = 0.0;
};

// Rows of interest: "b1 = start1 start2 value deviation" of a non-linear problem and "B0 value deviation" of
// a linear one; the sum, after its name or in "Residual degrees sum mean"; behind the "Data:" that names y
// and x, their values.
Problem Read(const std::string& name) {
    std::ifstream file(KRTBSS_SOURCE_DIR "/data/nist/" + name + ".dat");
    Problem problem;
    bool inData = false;
    for (std::string text; std::getline(file, text);) {
        std::replace(text.begin(), text.end(), '=', ' ');
        std::istringstream line(text);
        std::string word;
        if (!inData) {
            line >> word;
        }
        const std::vector<double> row{std::istream_iterator<double>(line), {}};
        if (inData && row.size() == 2) {
            problem.y.push_back(row[0]);
            problem.x.push_back(row[1]);
        } else if ((word[0] == 'b' || word[0] == 'B') && row.size() >= 2) {
            for (std::size_t start = 0; start < row.size() - 2; ++start) {
                problem.starts[start].push_back(row[start]);
            }
            problem.values.push_back(row[row.size() - 2]);
            problem.deviations.push_back(row.back());
        } else if (text.starts_with("Residual Sum of Squares:")) {
            problem.residualSum = std::stod(text.substr(24));
        } else if (word == "Residual" && row.size() == 3) {
            problem.residualSum = row[1];
        } else if (word == "Data:") {
            inData = row.empty(); // in the file's head, a count of variables follows
        }
    }
    EXPECT_FALSE(problem.x.empty() || problem.values.empty()) << name;
    return problem;
}

// The agreeing decimal digits of the worst entry: -log10 of the relative error, of the absolute error if the
// certified value is 0.0. At most 15, at least 0, 0 for a value that is not finite.
double Digits(const Coefficients& values, const Coefficients& certified) {
    double worst = values.size() == certified.size() ? 15.0 : 0.0;
    for (std::size_t i = 0; i < certified.size() && i < values.size(); ++i) {
        const double scale = certified[i] == 0.0 ? 1.0 : std::fabs(certified[i]);
        const double found = -std::log10(std::fabs(values[i] - certified[i]) / scale);
        worst = std::min(worst, std::isfinite(values[i]) ? std::max(found, 0.0) : 0.0);
    }
    return worst;
}

struct LeastDigits {
    double values, deviations, sum;
};

void Prepare(bss::WLeastSquaresFit& fit, bss::WFunction& model, const Problem& problem,
             bool holdFirst = false) {
    fit.SetFunction(&model);
    fit.SetX(problem.x);
    fit.SetY(problem.y);
    fit.SetCoefficientFixed(0, holdFirst);
    fit.InitializeFit();
}

// Chi-squared is a multiple of the residual sum: 1, or 10,000 where data without sigmas weigh 100. It cancels
// out of the deviations. Golden are the bits of the results: arithmetic alone has the same on every target.
void ExpectAgreement(const bss::WLeastSquaresFit& fit, const Problem& problem, double multiple,
                     const std::string& name, const LeastDigits& least, const Coefficients& golden = {}) {
    Coefficients values;
    Coefficients deviations;
    for (long i = 0, row = 0; i < static_cast<long>(fit.GetNumberOfCoefficients()); ++i) {
        if (!fit.GetCoefficientFixed(i)) {
            values.push_back(fit.GetCoefficient(i));
            deviations.push_back(std::sqrt(fit.GetCovariance(row, row) * fit.GetReducedChiSquared()));
            ++row;
        }
    }
    const LeastDigits found{Digits(values, problem.values), Digits(deviations, problem.deviations),
                            Digits({fit.GetChiSquared() / multiple}, {problem.residualSum})};
    std::printf("| %s | %.1f | %.1f | %.1f |\n", name.c_str(), found.values, found.deviations, found.sum);
    EXPECT_GE(found.values, least.values) << name;
    EXPECT_GE(found.deviations, least.deviations) << name;
    EXPECT_GE(found.sum, least.sum) << name;
    values.insert(values.end(), {fit.GetChiSquared(), fit.GetCovariance(2, 0), fit.GetStdError(),
                                 fit.GetRSquared(), fit.GetAdjustedRSquared()});
    for (std::size_t i = 0; i < golden.size(); ++i) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(golden[i]), std::bit_cast<std::uint64_t>(values.at(i)))
            << name << ", value " << i << " is " << std::hexfloat << values[i];
    }
}

using Complex = std::complex<double>;
using ComplexModel = Complex (*)(const std::vector<Complex>& b, double x);

// Derivatives by a complex step, exact to rounding (Squire and Trapp, SIAM Review 40, 1998).
FormulaFunction::Formula WithDerivatives(ComplexModel model) {
    return [model](const Coefficients& b, double x, double* d) {
        std::vector<Complex> c(b.begin(), b.end());
        for (std::size_t i = 0; i < b.size(); ++i) {
            c[i].imag(1e-30);
            d[i] = model(c, x).imag() / 1e-30;
            c[i].imag(0.0);
        }
        return model(c, x).real();
    };
}

// Polynomials of one degree over each other, the lower one starting with 1. Arithmetic alone, so that it has
// the same bits everywhere.
double Rational(const Coefficients& b, double x, double* d) {
    const std::size_t degree = b.size() / 2;
    double above = b[0];
    double below = 1.0;
    double power = 1.0;
    d[0] = 1.0;
    for (std::size_t k = 1; k <= degree; ++k) {
        power *= x;
        above += b[k] * power;
        below += b[degree + k] * power;
        d[k] = d[degree + k] = power;
    }
    for (std::size_t k = 0; k < b.size(); ++k) {
        d[k] = (k > degree ? -(above / below) * d[k] : d[k]) / below;
    }
    return above / below;
}

using B = const std::vector<Complex>&;

Complex Eckerle4(B b, double x) {
    const Complex u = (x - b[2]) / b[1];
    return b[0] / b[1] * std::exp(-0.5 * u * u);
}

Complex Gauss1(B b, double x) {
    const Complex u = (x - b[3]) / b[4];
    const Complex v = (x - b[6]) / b[7];
    return b[0] * std::exp(-b[1] * x) + b[2] * std::exp(-u * u) + b[5] * std::exp(-v * v);
}

TEST(CertifiedProblems, NonLinearFitAgrees) {
    const auto misra1a = [](B b, double x) { return b[0] * (1.0 - std::exp(-b[1] * x)); };
    const auto chwirut2 = [](B b, double x) { return std::exp(-b[0] * x) / (b[1] + b[2] * x); };
    const auto danWood = [](B b, double x) { return b[0] * std::pow(x, b[1]); };
    const auto rat42 = [](B b, double x) { return b[0] / (1.0 + std::exp(b[1] - b[2] * x)); };
    const auto lanczos3 = [](B b, double x) {
        return b[0] * std::exp(-b[1] * x) + b[2] * std::exp(-b[3] * x) + b[4] * std::exp(-b[5] * x);
    };
    struct Row {
        const char* name;
        FormulaFunction::Formula formula;
        LeastDigits least[2];     // from each start
        Coefficients golden = {}; // from the first start
    };
    const Row rows[] = {
        {"Misra1a", WithDerivatives(misra1a), {{7.0, 6.7, 10.3}, {7.0, 6.7, 10.3}}},
        {"Chwirut2", WithDerivatives(chwirut2), {{6.0, 6.4, 11.0}, {5.9, 6.3, 11.0}}},
        {"DanWood", WithDerivatives(danWood), {{7.7, 7.8, 11.5}, {7.0, 7.1, 11.5}}},
        {"Gauss1", WithDerivatives(Gauss1), {{6.8, 6.6, 11.2}, {6.7, 6.5, 11.2}}},
        {"Kirby2",
         Rational,
         {{5.7, 6.0, 10.8}, {5.4, 5.7, 10.1}},
         {0x1.acac9e9918553p+0, -0x1.1d3bc1e6f6516p-3, 0x1.544753175e98fp-9, -0x1.c3fbb199c5ea6p-10,
          0x1.6b79a6a13a821p-16, 0x1.31157ab00b9a7p+15, 0x1.7bfec12f3c147p-27, 0x1.10922e80f4e6ep-3,
          0x1.fffc430030d8dp-1, 0x1.fffc28c816216p-1}},
        {"Rat42", WithDerivatives(rat42), {{5.7, 5.3, 9.5}, {5.9, 5.5, 9.9}}},
        {"Thurber", Rational, {{4.8, 4.1, 9.0}, {4.7, 4.1, 9.0}}},
        {"Lanczos3", WithDerivatives(lanczos3), {{5.5, 5.5, 10.5}, {5.5, 5.5, 10.5}}},
        {"Eckerle4", WithDerivatives(Eckerle4), {{6.0, 6.0, 9.4}, {5.7, 5.7, 9.0}}},
    };
    for (const Row& row : rows) {
        const Problem problem = Read(row.name);
        for (const int start : {0, 1}) {
            FormulaFunction model(problem.starts[start], row.formula);
            bss::WNonLinearLeastSquaresFit fit;
            Prepare(fit, model, problem);
            EXPECT_EQ(500U, fit.MaxIterations());
            fit.SetMaxIterations(5000); // of which Eckerle4 needs more than 500 from its far start
            ASSERT_EQ(0, fit.PerformFit()) << row.name;
            ExpectAgreement(fit, problem, 10000.0,
                            row.name + (", start " + std::to_string(start + 1)) + " | " +
                                std::to_string(fit.Iterations()),
                            row.least[start], start == 0 ? row.golden : Coefficients());
        }
    }
}

TEST(CertifiedProblems, LinearFitAgrees) {
    struct Row {
        const char* name;
        long coefficients; // of the polynomial
        bool isThroughOrigin;
        LeastDigits least;
        Coefficients golden = {};
    };
    const Row rows[] = {
        {"Norris", 2, false, {12.0, 13.5, 13.3}},
        {"Pontius",
         3,
         false,
         {11.0, 13.8, 13.7},
         {0x1.6124784cc0fc7p-11, 0x1.890571e3fd83dp-21, -0x1.c785a0b3a0c93p-49, 0x1.a21eac2720802p-20,
          0x1.b6f2845b4e432p-44, 0x1.ae49ca70ecacbp-13, 0x1.fffffca68a482p-1, 0x1.fffffc7830e44p-1}},
        {"NoInt1", 2, true, {14.4, 14.5, 14.5}},
        {"Wampler1", 6, false, {6.5, 7.0, 13.0}},
        {"Wampler4", 6, false, {6.5, 10.9, 14.5}}};
    for (const Row& row : rows) {
        const Problem problem = Read(row.name);
        bss::WPolynomialFunction model;
        model.SetNumberOfBasisFunctions(row.coefficients);
        bss::WLinearLeastSquaresFit fit;
        Prepare(fit, model, problem, row.isThroughOrigin);
        ASSERT_EQ(0, fit.PerformFit());
        ExpectAgreement(fit, problem, 1.0, row.name, row.least, row.golden);
    }
}

} // namespace
