// correlogram from end to end: what it finds, prints, draws, stores and refuses, and how it ends.

#include "correlogram/Analysis.h"
#include "correlogram/Models.h"
#include "correlogram/Program.h"

#include "bss/serial/database/Fixture.h"
#include "bss/serial/database/WChecksum.h"
#include "tools/Support.h"

#include <cmath>
#include <functional>
#include <numbers>
#include <numeric>

namespace {

using namespace correlogram;

Outcome RunHere(const std::vector<std::string>& arguments) {
    return Capture(Run, arguments);
}

class Correlograms : public InFolder {
protected:
    Correlograms() {
        std::filesystem::create_directory("data");
        std::filesystem::copy(KRTBSS_SOURCE_DIR "/data/correlograms", "data/correlograms");
        for (const char* const name : {"flat.csv", "mixture.csv", "short.csv"}) {
            Write(name, Golden(std::string("correlogram/") + name));
        }
    }
};

const std::vector<std::string> kMeasured{"data/correlograms/mw002_m0_avg_090deg.csv",
                                         "--temperature=292.93654", "--viscosity=0.00100703",
                                         "--first-lag=3e-7"};
const std::vector<std::string> kWeighted{"data/correlograms/cgs3_090deg_run1_ch0x1.csv",
                                         "--sigma=data/correlograms/cgs3_090deg_run1_sigma.csv",
                                         "--temperature=297.93013", "--viscosity", "0.00089476"};

std::vector<std::string> With(std::vector<std::string> arguments, const std::string& more) {
    arguments.push_back(more);
    return arguments;
}

/// 180 lags over seven decades, equally spaced by logarithm, with normally distributed noise.
Curve MakeCurve(const std::function<double(double)>& signal, double noise = 0.0, unsigned seed = 1,
                double firstLag = 1e-7) {
    Curve curve;
    curve.file = "made-up.csv";
    std::mt19937 random(seed);
    std::normal_distribution<double> deviation(0.0, 1.0);
    for (int i = 0; i < 180; ++i) {
        curve.lag.push_back(firstLag * std::pow(1e7, i / 179.0));
        curve.signal.push_back(signal(curve.lag.back()) + noise * deviation(random));
        curve.line.push_back(static_cast<std::size_t>(i) + 2);
    }
    return curve;
}

/// A cumulant expansion with decay rate 1000/s and polydispersity index 0.06.
double CumulantDecay(double t) {
    return -0.002 + 0.9 * std::exp(-2000.0 * t) * std::pow(1.0 + 0.06e6 * t * t / 2.0, 2);
}

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// Reference: the measuring laboratory's own cumulant analysis over all angles.
TEST_F(Correlograms, GiveTheReferenceRadius) {
    for (const char* const angle : {"058", "090", "122"}) {
        Curve curve = ReadCurve(std::string("data/correlograms/mw002_m0_avg_") + angle + "deg.csv");
        const Conditions conditions{6.328e-7, std::stod(angle), 292.93654, 0.00100703, 1.332};
        const Analysis analysis = Analyse(std::move(curve), conditions, 3e-7);
        ASSERT_TRUE(analysis.HasConverged());
        for (const FitResult& fit : analysis.fits) {
            EXPECT_NEAR(fit.radius->value, 63.98e-9, 2.00e-9) << angle << fit.name;
        }
        EXPECT_NEAR(analysis.fits[1].polydispersity->value, 0.080, 0.031) << angle;
    }
}

TEST(CorrelogramAnalysis, FindsKnownDecaysInAnyUnitOfTime) {
    const Conditions conditions{5e-7, 60.0, 300.0, 0.002, 1.4};
    const Analysis slow = Analyse(MakeCurve(CumulantDecay), conditions, 0.0);
    const auto fast = [](double t) { return CumulantDecay(t * 1e4); };
    const Analysis quick = Analyse(MakeCurve(fast, 0.0, 1, 1e-11), conditions, 0.0);
    const FitResult& cumulants = slow.fits[1];
    // Stokes and Einstein, Bragg's q, written down anew.
    const double q = 4.0 * std::numbers::pi * 1.4 * std::sin(std::numbers::pi / 6.0) / 5e-7;
    const double radius = 1.380649e-23 * 300.0 * q * q / (6.0 * std::numbers::pi * 0.002 * 1000.0);
    EXPECT_NEAR(cumulants.radius->value / radius, 1.0, 1e-5);
    EXPECT_NEAR(cumulants.diffusion->value / (1000.0 / q / q), 1.0, 1e-5);
    EXPECT_NEAR(cumulants.polydispersity->value, 0.06, 1e-5);
    const double expected[] = {-0.002, 0.9, std::sqrt(1000.0)};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(cumulants.coefficients[i].fitted.value / expected[i], 1.0, 1e-4);
        EXPECT_EQ(slow.fits[i].iterations, quick.fits[i].iterations);
        EXPECT_NEAR(quick.fits[i].decayRate->value / slow.fits[i].decayRate->value, 1e4, 1e-2);
    }
}

// Standard errors are the scatter of repeated measurements, with and without standard deviations given.
TEST(CorrelogramAnalysis, StandardErrorsAreTheScatterOfRepeatedMeasurements) {
    constexpr int kRuns = 60;
    for (const double sigma : {0.0, 1.0}) { // 1 would be the fit's sign for "none"
        const double scale = sigma > 0.0 ? 250.0 : 1.0;
        std::vector<double> values[3];
        double errors[3] = {};
        for (unsigned run = 0; run < kRuns; ++run) {
            const auto signal = [scale](double t) { return scale * CumulantDecay(t); };
            Curve curve = MakeCurve(signal, 4e-3 * scale, 100U + run);
            curve.sigma.assign(sigma > 0.0 ? curve.lag.size() : 0, sigma);
            const Analysis analysis = Analyse(std::move(curve), {}, 0.0);
            const FitResult& fit = analysis.fits[1];
            ASSERT_TRUE(fit.HasConverged());
            EXPECT_NEAR(fit.reducedChiSquared, sigma > 0.0 ? 1.0 : 0.16, sigma > 0.0 ? 0.5 : 0.08);
            int i = 0;
            for (const Measured& each : {*fit.radius, *fit.polydispersity, fit.coefficients[1].fitted}) {
                values[i].push_back(each.value);
                errors[i++] += each.error / kRuns;
            }
        }
        for (int i = 0; i < 3; ++i) {
            const double mean = std::accumulate(values[i].begin(), values[i].end(), 0.0) / kRuns;
            double sum = 0.0;
            for (const double value : values[i]) {
                sum += (value - mean) * (value - mean) / (kRuns - 1);
            }
            EXPECT_NEAR(errors[i] / std::sqrt(sum), 1.0, 0.3) << i; // 3 standard errors of it
        }
    }
}

TEST(CorrelogramAnalysis, ParticlesOfOneSizeEndWithATiedWidth) {
    const Analysis analysis =
        Analyse(MakeCurve([](double t) { return std::exp(-2000.0 * t); }, 1e-3), {}, 0.0);
    const FitResult& fit = analysis.fits[2];
    ASSERT_TRUE(fit.HasConverged());
    EXPECT_EQ(fit.coefficients.size(), 3U);
    EXPECT_FALSE(fit.polydispersity.has_value());
    EXPECT_NE(fit.note, "");
    EXPECT_NEAR(fit.decayRate->value, 1000.0, 5.0);

    NarrowGaussian function;
    const auto at = [&function](double root) {
        function.SetCoefficients({0.1, 0.8, root});
        return function.Evaluate(0.5);
    };
    const double slope = (at(0.7 + 1e-5) - at(0.7 - 1e-5)) / 2e-5;
    std::vector<double> derivatives;
    at(0.7);
    function.ComputeDerivatives(0.5, derivatives);
    EXPECT_NEAR(derivatives[2], slope, 1e-6);
}

TEST(CorrelogramFormat, BytesThatAreOfNoCharacterAreReplacedOneByOne) {
    const std::string mark = "\xEF\xBF\xBD";
    EXPECT_EQ(ValidUtf8("a\xC3\xA4\xF0\x9F\x98\x80\xC3"), "a\xC3\xA4\xF0\x9F\x98\x80" + mark); // cut off
    EXPECT_EQ(ValidUtf8("\xC0\xAF\xED\xA0\x80"), mark + mark + mark + mark + mark); // overlong, surrogate
    EXPECT_EQ(ValidUtf8("\xF4\x90\x80\x80z"), mark + mark + mark + mark + "z");     // beyond U+10FFFF
}

// Files of one set serve all targets: the digits that are printed have to be the same everywhere.
TEST_F(Correlograms, PrintTheSameDigitsOnEverySystem) {
    for (const auto& [arguments, name] :
         {std::pair{kMeasured, "measured"}, std::pair{kWeighted, "weighted"}}) {
        const std::string golden = std::string("correlogram/") + name;
        const Outcome verbose = RunHere(With(arguments, "--verbose"));
        EXPECT_EQ(verbose.output, Golden(golden + ".txt"));
        EXPECT_EQ(verbose.errors, Golden(golden + ".verbose"));
        const Outcome json = RunHere(With(arguments, "--json"));
        EXPECT_EQ(json.output, Golden(golden + ".json"));
        EXPECT_EQ(json.errors, "");
        EXPECT_EQ(json.status, 0);
    }
    EXPECT_EQ(RunHere({"--help"}).output, Golden("correlogram/help.txt"));
}

TEST_F(Correlograms, PlotsHaveEveryPointAndCurve) {
    ASSERT_EQ(RunHere(With(kMeasured, "--plot=\xC3\xA4.svg")).status, 0);
    std::string plot = BytesOf("\xC3\xA4.svg");
    EXPECT_EQ(Count(plot, "<circle"), 182 + 3 * 121 + 1U); // one in the legend
    EXPECT_EQ(Count(plot, "<path"), 6U);                   // curves and residuals
    EXPECT_EQ(bss::WChecksum::GetCheckSum(reinterpret_cast<unsigned char*>(plot.data()),
                                          static_cast<unsigned long>(plot.size()), 0),
              2987689867U);

    EXPECT_EQ(RunHere({Write("a&\xE2\x82\xAC.csv", BytesOf("mixture.csv")), "--plot=mixture.svg"}).status, 1);
    plot = BytesOf("mixture.svg");
    EXPECT_EQ(Count(plot, "<title>a&amp;\xE2\x82\xAC.csv</title>"), 1U);
    EXPECT_EQ(Count(plot, ">cumulants: failed<"), 1U);
    EXPECT_EQ(Count(plot, "<path"), 4U);
}

TEST_F(Correlograms, ProgramsEndWithTheStatusOfTheWorstFit) {
    const Outcome sound = RunProgram(CORRELOGRAM_PROGRAM, With(kMeasured, "--plot=plot.svg"));
    EXPECT_EQ(sound.status, 0);
    EXPECT_EQ(sound.errors, "");
    EXPECT_EQ(sound.output, Golden("correlogram/measured.txt"));

    // Rates over three decades: the fit of the cumulants function uses up its iterations.
    const Outcome failed = RunProgram(CORRELOGRAM_PROGRAM, {"mixture.csv", "--json"});
    EXPECT_EQ(failed.status, 1);
    // The third fit leaves a coefficient undetermined, whose digits are those of the system.
    const auto settled = [](const std::string& json) {
        return json.substr(0, json.find("gaussian-cumulants"));
    };
    EXPECT_EQ(settled(failed.output), settled(Golden("correlogram/mixture.json")));
    EXPECT_EQ(failed.errors,
              "******** MINOR    LocalHost::correlogram  ********\n"
              "3.3714 WNEFitFailed           : Fit failed in module correlogram, cumulants.\n"
              "3.3714 WNEFitFailed           : Fit failed in module Nonlinear least squares fit.\n");
    EXPECT_EQ(RunHere({"mixture.csv"}).output, Golden("correlogram/mixture.txt"));

    // Arguments are UTF-8 behind the entry point of every system.
    const std::string name = "Gr\xC3\xB6\xC3\x9F\x65 \xE2\x82\xAC \xF0\x9F\x98\x80.csv";
    const Outcome missing = RunProgram(CORRELOGRAM_PROGRAM, {name, "--plot=plot.svg"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.output, "");
    EXPECT_EQ(missing.errors, "correlogram: Cannot read '" + name + "': there is no such file.\n");
}

TEST_F(Correlograms, WrongCommandLinesAndFilesAreOneSentence) {
    Write("large.csv", "");
    std::filesystem::resize_file("large.csv", std::uintmax_t{1} << 30U);
    ExpectRefusals("correlogram", "correlogram/wrong.json", RunHere);
    ExpectRefusals("correlogram", "correlogram/refused.json", [](const std::vector<std::string>& bytes) {
        return RunHere({Write("curve.csv", bytes[0]), "--plot=plot.svg"});
    });
    // Nothing was drawn over data, into a folder, or beside a failure.
    EXPECT_EQ(BytesOf(kMeasured[0]), BytesOf(KRTBSS_SOURCE_DIR "/" + kMeasured[0]));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 6);
    EXPECT_EQ(RunHere(With(kMeasured, "--plot=flat.csv")).status, 0);
    EXPECT_TRUE(BytesOf("flat.csv").starts_with("<?xml")); // another file is replaced
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 6);
}

class CorrelogramStore : public BackendTest {
protected:
    std::string Name() const { return IsFile() ? m_path.string() : krtpal::NarrowText(m_backend.source); }
    Outcome RunAt(std::vector<std::string> arguments) const {
        arguments.push_back((IsFile() ? "--store=" : "--data-source=") + Name());
        return RunHere(arguments);
    }
};

INSTANTIATE_TEST_SUITE_P(, CorrelogramStore, testing::Values(kSqlite, kPostgresql),
                         testing::PrintToStringParamName());

TEST_P(CorrelogramStore, ShowsTheDigitsThatWerePrinted) {
    const std::string mixture = Write("mixture \xC3\xA9.csv", Golden("correlogram/mixture.csv"));
    const Outcome stored = RunAt({mixture});
    EXPECT_TRUE(stored.errors.starts_with("correlogram: stored as analysis 1.\n"));
    const Outcome json = RunAt({mixture, "--json"});
    EXPECT_TRUE(json.errors.starts_with("correlogram: stored as analysis 2.\n"));
    const Outcome shown = RunAt({"--show=1"});
    EXPECT_EQ(shown.status, 1);
    EXPECT_EQ(shown.output, stored.output);
    EXPECT_EQ(RunAt({"--show", "2", "--json"}).output, json.output);
    EXPECT_EQ(Count(RunAt({"--list"}).output, "  " + mixture + "  165 points\n"), 2U);
    EXPECT_EQ(RunAt({"--show=7"}).errors, "correlogram: There is no analysis 7 in '" + Name() + "'.\n");

    ASSERT_TRUE(Execute(L"UPDATE [StoredFit] SET [m_nIterations] = 99 WHERE [objectID] = 2"));
    const Outcome damaged = RunAt({"--show=1", "--verbose"});
    EXPECT_EQ(damaged.status, 2);
    EXPECT_NE(damaged.errors.find("Data corrupted."), std::string::npos) << damaged.errors; // the chain
    EXPECT_TRUE(damaged.errors.ends_with("correlogram: Analysis 1 in '" + Name() +
                                         "' cannot be read: its data are corrupted.\n"));
    ASSERT_TRUE(Execute(L"DROP TABLE [StoredFit]") && Execute(L"CREATE TABLE [StoredFit] (x int)"));
    EXPECT_EQ(RunAt({"--list"}).errors,
              "correlogram: The table StoredFit in '" + Name() + "' is none of correlogram's.\n");
    std::filesystem::remove(tools::PathOf(mixture));
}

} // namespace
