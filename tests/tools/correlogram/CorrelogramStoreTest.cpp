// Analyses that are kept in a database and printed again.

#include "bss/serial/database/Fixture.h"
#include "tools/correlogram/CorrelogramSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <vector>

using namespace correlogram_test;

namespace {

class CorrelogramStore : public BackendTest {
protected:
    // The arguments, and those that say where.
    std::vector<std::string> At(std::vector<std::string> arguments) const {
        if (IsFile()) {
            arguments.push_back("--store=" + m_path.string());
        } else {
            arguments.insert(arguments.end(), {"--data-source=" + Name(), "--user=krtbss"});
        }
        return arguments;
    }
    std::string Name() const { return IsFile() ? m_path.string() : krtpal::NarrowText(m_backend.source); }
    // What goes wrong, whole.
    std::string Sentence(const std::vector<std::string>& arguments) const {
        const Outcome outcome = RunHere(At(arguments));
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        return outcome.errors;
    }

    ScratchFolder m_Scratch;
};

INSTANTIATE_TEST_SUITE_P(, CorrelogramStore, testing::Values(kSqlite, kPostgresql),
                         testing::PrintToStringParamName());

using CorrelogramNoStore = DatabaseTest;

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

TEST_P(CorrelogramStore, ShowsTheDigitsThatWerePrinted) {
    const std::string single = m_Scratch.Write("single \xC3\xA9.csv", SingleRate());
    const Outcome stored = RunHere(At({single}));
    EXPECT_EQ(stored.status, 0);
    EXPECT_EQ(stored.errors, "correlogram: stored as analysis 1.\n");
    const std::string mixture = m_Scratch.Write("mixture.csv", Mixture());
    const Outcome failed = RunHere(At({mixture, "--json"}));
    EXPECT_EQ(failed.status, 1);

    const Outcome shown = RunHere(At({"--show=1"}));
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.output, stored.output);
    const Outcome shownFailed = RunHere(At({"--show", "2", "--json"}));
    EXPECT_EQ(shownFailed.status, 1);
    EXPECT_EQ(shownFailed.output, failed.output);

    const Outcome list = RunHere(At({"--list"}));
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(std::count(list.output.begin(), list.output.end(), '\n'), 2);
    EXPECT_EQ(list.output.substr(0, 3), "1  ");
    EXPECT_NE(list.output.find(single), std::string::npos) << list.output;
}

TEST_P(CorrelogramStore, RowsAndTablesThatOthersChangedAreOneSentence) {
    const std::string curve = m_Scratch.Write("curve.csv", SingleRate());
    ASSERT_EQ(RunHere(At({curve})).status, 0);
    EXPECT_EQ(Sentence({"--show=7"}), "correlogram: There is no analysis 7 in '" + Name() + "'.\n");

    ASSERT_TRUE(Execute(L"UPDATE [StoredFit] SET [m_nIterations] = 99 WHERE [objectID] = 2"));
    const std::string damaged =
        "correlogram: Analysis 1 in '" + Name() + "' cannot be read: its data are corrupted.\n";
    EXPECT_EQ(Sentence({"--show=1"}), damaged);
    const std::string verbose = Sentence({"--show=1", "--verbose"});
    EXPECT_NE(verbose.find("Data corrupted."), std::string::npos) << verbose;
    EXPECT_EQ(verbose.substr(std::max(verbose.size(), damaged.size()) - damaged.size()), damaged);

    ASSERT_TRUE(Execute(L"DROP TABLE [StoredFit]") && Execute(L"CREATE TABLE [StoredFit] (x int)"));
    for (const char* const what : {"--list", "--show=1"}) {
        EXPECT_EQ(Sentence({what}),
                  "correlogram: The table StoredFit in '" + Name() + "' is none of correlogram's.\n");
    }
}

TEST_F(CorrelogramNoStore, EverythingThatIsWrongIsOneSentence) {
    const ScratchFolder scratch;
    const std::string curve = scratch.Write("curve.csv", SingleRate());
    const auto sentence = [](const std::vector<std::string>& arguments) {
        const Outcome outcome = RunHere(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        return outcome.errors;
    };
    EXPECT_EQ(sentence({"--store=missing.db", "--list"}),
              "correlogram: There is no database 'missing.db'.\n");
    EXPECT_EQ(sentence({"--show=1"}), "correlogram: --list and --show need --store or --data-source.\n");
    EXPECT_EQ(sentence({curve, "--store=a", "--data-source=b"}),
              "correlogram: --store and --data-source exclude each other.\n");
    EXPECT_EQ(
        sentence({curve, "--store=missing.db", "--list"}).find("correlogram: --list and --show take no file"),
        0U);
    EXPECT_EQ(sentence({"--store=missing.db", "--show=x"}),
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
