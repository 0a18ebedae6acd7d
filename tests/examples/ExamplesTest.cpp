// The examples, run as programs of their own: each prints what tests/data/examples has.

#include "support/ChildProcess.h"
#include "tools/Support.h"
#ifndef _WIN32
#include "support/odbc/OdbcFolder.h"
#endif

#include <gtest/gtest.h>

namespace {

class Example : public testing::TestWithParam<std::string> {};

std::vector<std::string> Examples() {
    std::istringstream list(KRTBSS_EXAMPLES);
    std::vector<std::string> names;
    for (std::string name; std::getline(list, name, ',');) {
        names.push_back(name);
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(, Example, testing::ValuesIn(Examples()), [](const auto& row) { return row.param; });

TEST_P(Example, PrintsWhatItsGoldenFileHas) {
    if (GetParam() == "object_store" && sizeof(void*) == 4 && RunsUnderWine()) {
        GTEST_SKIP() << "Wine reaches the ODBC drivers of Linux from 64-bit programs only";
    }
#ifndef _WIN32
    OdbcFolder(); // the programs get its environment
#endif
    std::istringstream golden(Golden("examples/" + GetParam() + ".txt"));
    ChildProcess program(EXAMPLES_FOLDER "example_" + GetParam(), {});
    int lines = 0;
    for (std::string line; std::getline(golden, line); ++lines) {
        EXPECT_EQ(program.ReadLine(), line);
    }
    EXPECT_EQ(program.ReadLine(), "");
    EXPECT_EQ(program.Wait(), 0);
    EXPECT_GT(lines, 1);
}

} // namespace
