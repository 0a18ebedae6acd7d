// The tests' own ODBC driver, set up for a test program: it acts as Microsoft Access or as SQL Server, keeps
// tables and rows in the memory of the process, fails on demand, and records every call that reaches it.
//
//     TestDriver& driver = TestDriver::Get();      // before the first ODBC call of the process
//     driver.Clear("sqlserver");
//     driver.Fail("SQLEndTran", 1, {"40001", "Deadlock victim.", 1205});
//     ... connect to the source "krtbss-test" or the driver "Microsoft Access Driver (*.mdb)", and write ...
//     EXPECT_EQ(driver.Record("SQLEndTran").at(0),
//               "SQLEndTran C1 SQL_COMMIT = SQL_ERROR 40001 1205 \"Deadlock victim.\"");
//
// A line of the record is the function, the handle, the arguments, what came out, " = ", the result, and of
// each diagnostic record the state, the number and the text. Handles are E1, C1, S1 and so on, each with the
// smallest free number; D1 is the driver. A statement with parameters is followed by a line for each:
//
//     parameter 2 SQL_C_SLONG SQL_INTEGER size 0 room 4 indicator 4 value 01000000
//
// with up to 32 bytes (of a longer value, its length and a hash), "NULL", or "at execution": those bytes are
// in the line of SQLPutData. The driver manager hands on attributes of a connection when it connects, and
// asks for SQL_CURSOR_COMMIT_BEHAVIOR and SQL_CURSOR_ROLLBACK_BEHAVIOR on its own account; it answers
// SQLGetDiagRecW itself.
//
// The driver is one a process (OdbcFolder.h), so there is one object. Not for several threads.

#ifndef TESTS_SUPPORT_ODBC_TESTDRIVER_H
#define TESTS_SUPPORT_ODBC_TESTDRIVER_H

#include "support/odbc/OdbcFolder.h"

#include <dlfcn.h>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// A diagnostic record.
struct Diagnostic {
    std::string state;
    std::string text;
    int native = 0;
};

/// The driver's memory, which the test program shares.
struct DriverState {
    struct Rule {
        std::string call;
        int callsToGo = 1;
        Diagnostic diagnostic;
        bool fails = true; ///< does nothing else; otherwise a success has the record
    };
    bool isAccess = true;
    std::optional<unsigned>
        extensions;             ///< SQL_GETDATA_EXTENSIONS, which SQLGetData obeys; else the flavour's
    std::string dbms;           ///< SQL_DBMS_NAME; empty for the flavour's
    std::string database;       ///< SQL_DATABASE_NAME; empty for what was connected to
    std::set<int> missingTypes; ///< SQL types of which SQLGetTypeInfo has no row
    bool hidesTotals = false;   ///< SQLGetData says SQL_NO_TOTAL of what it cuts
    std::vector<Rule> rules;
    std::vector<std::string> record;
    void (*dropTables)() = nullptr;
};

class TestDriver {
public:
    static TestDriver& Get() {
        static TestDriver driver;
        return driver;
    }
    TestDriver(const TestDriver&) = delete;
    TestDriver& operator=(const TestDriver&) = delete;

    /// No tables, no record and no rules. No transaction may be open.
    void Clear(const std::string& flavour = "access") {
        state.dropTables();
        void (*const dropTables)() = state.dropTables;
        state = {};
        state.isAccess = flavour == "access";
        state.dropTables = dropTables;
    }

    /// The n-th call of a function from now on fails. Several failures of one call give it several records.
    void Fail(const std::string& call, int n, const Diagnostic& diagnostic) {
        state.rules.push_back({call, n, diagnostic, true});
    }
    /// Likewise, but the call succeeds with this information.
    void Inform(const std::string& call, int n, const Diagnostic& diagnostic) {
        state.rules.push_back({call, n, diagnostic, false});
    }

    /// The lines since the last call, of all functions or of one.
    std::vector<std::string> Record(std::string_view function = {}) {
        std::vector<std::string> lines = std::move(state.record);
        state.record.clear();
        std::erase_if(lines, [function](const std::string& line) {
            return !function.empty() && line.substr(0, line.find(' ')) != function;
        });
        return lines;
    }

    DriverState& state;

private:
    TestDriver() : state(Load()) { OdbcFolder(); }

    static DriverState& Load() {
        void* const module = dlopen(KRTBSS_TEST_ODBC_DRIVER, RTLD_NOW | RTLD_LOCAL);
        void* const entry = module == nullptr ? nullptr : dlsym(module, "GetDriverState");
        if (entry == nullptr) {
            throw std::runtime_error(dlerror());
        }
        return *reinterpret_cast<DriverState* (*)()>(entry)();
    }
};

#endif
