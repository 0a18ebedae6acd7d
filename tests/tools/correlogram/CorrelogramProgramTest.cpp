// The program from end to end: in this process for what it prints, as a process of its own for how it ends.

#include "correlogram/InputError.h"
#include "tools/correlogram/CorrelogramSupport.h"

#include <boost/property_tree/json_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

using namespace correlogram_test;

namespace {

// Three samples in one: rates over three decades, too much for the cumulants function, whose fit uses up its
// iterations.
std::string HopelessMixture() {
    return CsvText(MakeCurve([](double t) {
        return 0.9 *
               std::pow(
                   0.4 * std::exp(-30000.0 * t) + 0.3 * std::exp(-1000.0 * t) + 0.3 * std::exp(-30.0 * t), 2);
    }));
}

// Runs with the source tree as current folder, so that names of files are the same everywhere.
class InSourceTree : public testing::Test {
protected:
    InSourceTree() : m_Before(std::filesystem::current_path()) {
        std::filesystem::current_path(KRTBSS_SOURCE_DIR);
    }
    ~InSourceTree() override { std::filesystem::current_path(m_Before); }

private:
    std::filesystem::path m_Before;
};

using CorrelogramProgram = InSourceTree;

const std::vector<std::string> kMeasured{"data/correlograms/mw002_m0_avg_090deg.csv",
                                         "--temperature=292.93654", "--viscosity=0.00100703",
                                         "--first-lag=3e-7"};
const std::vector<std::string> kWeighted{"data/correlograms/cgs3_090deg_run1_ch0x1.csv",
                                         "--sigma=data/correlograms/cgs3_090deg_run1_sigma.csv",
                                         "--temperature=297.93013", "--viscosity=0.00089476"};

std::vector<std::string> With(std::vector<std::string> arguments, const std::string& more) {
    arguments.push_back(more);
    return arguments;
}

} // namespace

// Files of one set serve all targets: the digits that are printed have to be the same everywhere.
TEST_F(CorrelogramProgram, PrintsTheSameDigitsOnEverySystem) {
    const struct {
        std::vector<std::string> arguments;
        const char* golden;
    } rows[] = {
        {kMeasured, "measured.txt"},
        {With(kMeasured, "--json"), "measured.json"},
        {kWeighted, "weighted.txt"},
        {With(kWeighted, "--json"), "weighted.json"},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunHere(row.arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.output, ReadText(Source(std::string("tests/data/correlogram/") + row.golden)))
            << row.golden;
    }
}

TEST_F(CorrelogramProgram, JsonHasTheMembersThatAreWrittenDown) {
    std::istringstream stream(RunHere(With(kMeasured, "--json")).output);
    boost::property_tree::ptree tree;
    boost::property_tree::read_json(stream, tree);
    const auto names = [](const boost::property_tree::ptree& node) {
        std::string list;
        for (const auto& [name, child] : node) {
            list += name + " ";
        }
        return list;
    };
    EXPECT_EQ(names(tree), "file points fits ");
    EXPECT_EQ(tree.get<std::string>("file"), kMeasured[0]);
    EXPECT_EQ(tree.get<int>("points"), 121);
    std::string fits;
    for (const auto& [none, fit] : tree.get_child("fits")) {
        EXPECT_EQ(names(fit), "name coefficients chi_squared r_squared iterations stop_test decay_rate_per_s "
                              "polydispersity_index diffusion_m2_per_s radius_m radius_error_m ");
        fits += fit.get<std::string>("name") + " ";
        for (const auto& [empty, coefficient] : fit.get_child("coefficients")) {
            EXPECT_EQ(names(coefficient), "name value standard_error ");
            EXPECT_GT(coefficient.get<double>("standard_error"), 0.0);
        }
        EXPECT_NEAR(fit.get<double>("radius_m"), 64e-9, 2e-9);
        EXPECT_NEAR(fit.get<double>("radius_m") * fit.get<double>("diffusion_m2_per_s"),
                    1.380649e-23 * 292.93654 / (6.0 * 3.14159265358979 * 0.00100703), 1e-24);
    }
    EXPECT_EQ(fits, "exponential cumulants gaussian-cumulants ");
}

TEST_F(CorrelogramProgram, EndsWithZeroTableAndPlot) {
    const ScratchFolder folder;
    const Outcome outcome = RunProgram(With(kMeasured, "--plot=" + folder.Path("plot.svg")));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, ReadText(Source("tests/data/correlogram/measured.txt")));
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"plot.svg"});
    EXPECT_TRUE(ReadText(folder.Path("plot.svg")).ends_with("</svg>\n"));
}

TEST_F(CorrelogramProgram, EndsWithOneAndTheChainOfAFailedFit) {
    const ScratchFolder folder;
    const std::string file = folder.Write("mixture.csv", HopelessMixture());
    const Outcome outcome = RunProgram({file, "--json", "--plot", folder.Path("plot.svg")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors,
              "******** MINOR    LocalHost::correlogram  ********\n"
              "3.3714 WNEFitFailed           : Fit failed in module correlogram, cumulants.\n"
              "3.3714 WNEFitFailed           : Fit failed in module Nonlinear least squares fit.\n");
    std::istringstream stream(outcome.output);
    boost::property_tree::ptree tree;
    boost::property_tree::read_json(stream, tree);
    const auto& fits = tree.get_child("fits");
    const auto failed = std::next(fits.begin())->second;
    EXPECT_EQ(failed.get<std::string>("stop_test"), "forced-off");
    EXPECT_EQ(failed.get<int>("iterations"), 500);
    EXPECT_EQ(failed.get<std::string>("radius_m"), "null");
    EXPECT_GT(fits.begin()->second.get<double>("radius_m"), 0.0); // the others are reported all the same
    EXPECT_NE(ReadText(folder.Path("plot.svg")).find(">cumulants: failed<"), std::string::npos);
}

TEST_F(CorrelogramProgram, EndsWithTwoAndNothingElse) {
    const ScratchFolder folder;
    const Outcome outcome = RunProgram({"none.csv", "--plot", folder.Path("plot.svg")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "correlogram: Cannot read 'none.csv': there is no such file.\n");
    EXPECT_TRUE(folder.Names().empty());
}

TEST_F(CorrelogramProgram, NeverOverwritesWhatItReads) {
    const ScratchFolder folder;
    const std::string file = folder.Write("mixture.csv", HopelessMixture());
    const Outcome outcome = RunHere({file, "--plot", file});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "correlogram: The plot " + correlogram::Quote(file) +
                                  " would overwrite the measured file " + correlogram::Quote(file) + ".\n");
    EXPECT_EQ(ReadText(file), HopelessMixture());
}

TEST_F(CorrelogramProgram, NamesOfFilesMayBeAnyText) {
    const ScratchFolder folder;
    const std::string name = "Gr\xC3\xB6\xC3\x9F\x65 \xE2\x82\xAC \xF0\x9F\x98\x80.csv";
    const std::string file = folder.Write(name, ReadText(kMeasured[0]));
    const Outcome outcome = RunHere({file, "--plot", folder.Path("\xC3\xA4.svg")});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.output.starts_with(file + ": ")) << outcome.output;
    EXPECT_NE(ReadText(folder.Path("\xC3\xA4.svg")).find("<title>" + file), std::string::npos);
}

TEST_F(CorrelogramProgram, HelpStatesTheDefaultsAndVerboseTheStart) {
    const std::string help = RunHere({"--help"}).output;
    for (const char* text : {"(default 6.328e-07)", "(default 90)", "(default 293.15)",
                             "(default 0.0010016, water", "(default 1.332, water)"}) {
        EXPECT_NE(help.find(text), std::string::npos) << text;
    }
    const Outcome outcome = RunHere(With(kMeasured, "--verbose"));
    EXPECT_EQ(outcome.output, ReadText(Source("tests/data/correlogram/measured.txt")));
    EXPECT_NE(outcome.errors.find("cumulants: started at A0 = "), std::string::npos);
}
