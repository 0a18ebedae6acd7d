// Analyses that are kept in a database and printed again.

#include "examples/CorrelogramSupport.h"
#include "support/Wine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

using namespace correlogram_test;

namespace {

class CorrelogramStore : public testing::Test {
protected:
    void SetUp() override {
        if (sizeof(void*) == 4 && RunsUnderWine()) {
            GTEST_SKIP() << "Wine reaches the ODBC drivers of Linux from 64-bit programs only";
        }
        // A relative path is the same for Windows, and for the driver of Linux that Wine reaches.
        m_Store = std::string("correlogram-") +
                  testing::UnitTest::GetInstance()->current_test_info()->name() + ".db";
        std::filesystem::remove(m_Store);
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove(m_Store, ignored);
    }
    std::string Option(const std::string& option) const { return option + "=" + m_Store; }

    ScratchFolder m_Scratch;
    std::string m_Store;
};

// A single rate, and a mixture that is too much for one of the fits.
std::string SingleRate() {
    return CsvText(MakeCurve([](double t) { return 0.9 * std::exp(-2.0 * 1000.0 * t); }, 1e-3));
}

std::string Mixture() {
    return CsvText(MakeCurve([](double t) {
        return 0.9 *
               std::pow(
                   0.4 * std::exp(-30000.0 * t) + 0.3 * std::exp(-1000.0 * t) + 0.3 * std::exp(-30.0 * t), 2);
    }));
}

} // namespace

TEST_F(CorrelogramStore, ShowsTheDigitsThatWerePrinted) {
    const std::string single = m_Scratch.Write("single \xC3\xA9.csv", SingleRate());
    const Outcome stored = RunHere({single, Option("--store")});
    EXPECT_EQ(stored.status, 0);
    EXPECT_EQ(stored.errors, "correlogram: stored as analysis 1.\n");
    const std::string mixture = m_Scratch.Write("mixture.csv", Mixture());
    const Outcome failed = RunHere({mixture, Option("--store"), "--json"});
    EXPECT_EQ(failed.status, 1);

    const Outcome shown = RunHere({Option("--store"), "--show=1"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.output, stored.output);
    const Outcome shownFailed = RunHere({Option("--store"), "--show", "2", "--json"});
    EXPECT_EQ(shownFailed.status, 1);
    EXPECT_EQ(shownFailed.output, failed.output);

    const Outcome list = RunHere({Option("--store"), "--list"});
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(std::count(list.output.begin(), list.output.end(), '\n'), 2);
    EXPECT_EQ(list.output.substr(0, 3), "1  ");
    EXPECT_NE(list.output.find(single), std::string::npos) << list.output;
}

TEST_F(CorrelogramStore, EverythingThatIsWrongIsOneSentence) {
    const std::string curve = m_Scratch.Write("curve.csv", SingleRate());
    const auto sentence = [](const std::vector<std::string>& arguments) {
        const Outcome outcome = RunHere(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        return outcome.errors;
    };
    EXPECT_EQ(sentence({Option("--store"), "--list"}),
              "correlogram: There is no database '" + m_Store + "'.\n");
    ASSERT_EQ(RunHere({curve, Option("--store")}).status, 0);
    EXPECT_EQ(sentence({Option("--store"), "--show=7"}),
              "correlogram: There is no analysis 7 in '" + m_Store + "'.\n");
    EXPECT_EQ(sentence({"--show=1"}), "correlogram: --list and --show need --store or --data-source.\n");
    EXPECT_EQ(sentence({curve, "--store=a", "--data-source=b"}),
              "correlogram: --store and --data-source exclude each other.\n");
    EXPECT_EQ(
        sentence({curve, Option("--store"), "--list"}).find("correlogram: --list and --show take no file"),
        0U);
    EXPECT_EQ(sentence({Option("--store"), "--show=x"}),
              "correlogram: --show 'x' is not the number of an analysis.\n");

    const Outcome noSource = RunHere({"--data-source=there-is-none", "--list", "--verbose"});
    EXPECT_EQ(noSource.status, 2);
    EXPECT_NE(noSource.errors.find("SqlState: IM002"), std::string::npos) << noSource.errors;
    EXPECT_NE(noSource.errors.find("\ncorrelogram: The database 'there-is-none' cannot be opened: "),
              std::string::npos)
        << noSource.errors;

    const std::string other = "no-database.db";
    std::ofstream(other) << "This is no database, but a text that is long enough to be looked at as one.\n";
    EXPECT_EQ(sentence({"--store=" + other, "--show=1"}).find("correlogram: "), 0U);
    std::filesystem::remove(other);
}
