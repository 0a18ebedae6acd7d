// The tests' own ODBC driver, set up for a test program: it answers as Microsoft Access or as SQL Server,
// keeps tables and rows in the memory of the process, fails on demand, and records every call that reaches
// it.
//
//     TestDriver& driver = TestDriver::Get();      // before the first ODBC call of the process
//     driver.Clear();
//     driver.Script({"flavour sqlserver", "fail SQLEndTran 1 40001 1205 Deadlock victim."});
//     ... connect to the source "krtbss-test" or the driver "Microsoft Access Driver (*.mdb)", and write ...
//     EXPECT_EQ(driver.Record("SQLEndTran").at(0),
//               "SQLEndTran C1 SQL_COMMIT = SQL_ERROR 40001 1205 \"Deadlock victim.\"");
//
// A script replaces the one before and holds from the next call of the driver on. Its lines:
//
//     flavour access | sqlserver     types, capabilities and syntax; access unless said otherwise
//     without TYPE                   SQLGetTypeInfo has no row for bit, char, integer, decimal, float,
//                                    double, wlongvarchar, longvarbinary or guid
//     extensions NUMBER              SQL_GETDATA_EXTENSIONS, which SQLGetData then obeys; without this line
//                                    15 for Access, 4 for SQL Server
//     dbms TEXT                      SQL_DBMS_NAME; else "ACCESS" or "Microsoft SQL Server"
//     database TEXT                  SQL_DATABASE_NAME; else the file or the data source connected to
//     fail CALL N STATE NATIVE TEXT  the N-th call of this function does nothing but fail; several lines for
//                                    one call give it several records
//     info CALL N STATE NATIVE TEXT  the N-th call, if it succeeds, is SQL_SUCCESS_WITH_INFO with this
//     answer CALL N CODE             the N-th call does nothing but return the code
//     clear NUMBER                   drops all tables if the last script had another number
//     # TEXT                         nothing
//
// Calls are counted from the script on, under their names in the driver: "SQLExecDirectW". After a line that
// can't be read every call fails, naming it.
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

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class TestDriver {
public:
    static TestDriver& Get() {
        static TestDriver driver;
        return driver;
    }
    TestDriver(const TestDriver&) = delete;
    TestDriver& operator=(const TestDriver&) = delete;

    void Script(const std::vector<std::string>& lines) {
        // A number makes each script another, so that the driver notices it.
        std::string text = "# script " + std::to_string(++m_scripts) + '\n';
        for (const std::string& line : lines) {
            text += line + '\n';
        }
        Write("script", text + "clear " + std::to_string(m_clears) + '\n');
    }

    /// No tables, no script, and the record so far is passed over. The tables go with the next call of the
    /// driver, whatever script there is then; no transaction should be open.
    void Clear() {
        ++m_clears;
        Script({});
        Record();
    }

    /// The lines since the last call, of all functions or of one.
    std::vector<std::string> Record(std::string_view function = {}) {
        std::ifstream file(m_folder / "record", std::ios::binary);
        file.seekg(m_read);
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            m_read += static_cast<std::streamoff>(line.size()) + 1;
            if (function.empty() || line.substr(0, line.find(' ')) == function) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    static bool HasSqlite() { return !std::string_view(KRTBSS_SQLITE_ODBC).empty(); }

private:
    TestDriver() : m_folder(OdbcFolder()) { Write("record", {}); }

    void Write(const char* name, const std::string& text) const {
        std::ofstream file(m_folder / name, std::ios::binary | std::ios::trunc);
        if (!(file << text << std::flush)) {
            throw std::runtime_error("cannot write " + (m_folder / name).string());
        }
    }

    const std::filesystem::path& m_folder;
    std::streamoff m_read = 0;
    int m_scripts = 0;
    int m_clears = 0;
};

#endif
