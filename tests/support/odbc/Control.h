// What a test tells the driver, and what the driver tells the test: the files `script` and `record` in the
// folder that the environment variable KRTBSS_TEST_ODBC_FOLDER names. TestDriver.h has the grammar of both.

#ifndef TESTS_SUPPORT_ODBC_CONTROL_H
#define TESTS_SUPPORT_ODBC_CONTROL_H

#include "support/odbc/Store.h"

#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace testodbc {

/// A line of the script that changes the result of a call.
struct Rule {
    enum class Effect { fail, inform, answer };
    Effect effect = Effect::fail;
    std::string call;
    int callsToGo = 1;
    Failure diagnostic;
    int answer = 0;
};

/// What the script says; each script that is read replaces the whole.
struct Settings {
    Flavour flavour = Flavour::access;
    std::optional<unsigned> extensions;
    std::string dbms;
    std::string database;
    std::set<int> missingTypes;
    bool hidesTotals = false;
    bool clears = false;
    int clearance = 0; ///< another number than before empties the store too
    std::vector<Rule> rules;
    std::string fault; ///< the first line that can't be read
};

/// Throws std::invalid_argument naming the line that can't be read.
Settings ParseScript(const std::string& script);

class Control {
public:
    Control();

    /// Reads the script if it is a new one. True if that empties the store.
    bool Refresh();
    const Settings& GetSettings() const { return m_settings; }

    /// The rule that concerns this call of a function. Counts it, so to be asked once a call.
    std::optional<Rule> RuleFor(const std::string& call);
    /// The types of the flavour without those that are to be missing, in the order of their numbers.
    std::vector<TypeRow> Types() const;
    unsigned Extensions() const;
    std::string DbmsName() const;

    void Record(const std::string& line);

private:
    std::string m_folder;
    std::string m_script;
    Settings m_settings;
    std::ofstream m_record;
    std::ofstream m_copy; ///< for a program that outlives the test's folder
};

} // namespace testodbc

#endif
