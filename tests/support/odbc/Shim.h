// The frame of each call of the tests' driver: obeys the script, calls the driver, turns its exceptions into
// diagnostic records, and writes the record. TestDriver.h has the grammar of script and record.

#ifndef TESTS_SUPPORT_ODBC_SHIM_H
#define TESTS_SUPPORT_ODBC_SHIM_H

#define SQL_NOUNICODEMAP
#include <sql.h>

#include <sqlext.h>
#include <sqlucode.h>

#include <fstream>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));

namespace testodbc {

/// Thrown by a call that fails; becomes its diagnostic record.
struct Failure {
    std::string state;
    std::string text;
    int native = 0;
};

std::string Utf8FromUtf16(std::u16string_view text);
std::u16string Utf16FromUtf8(std::string_view text);

/// A constant's name, or the number of one without a name here.
enum class Group { result, handleType, cType, sqlType, attribute, info, option, length };
std::string NameOf(Group group, long code);
/// In double quotes, with a backslash before quotes, backslashes and control characters.
std::string Quote(std::string_view text);
/// The first 32 bytes. If there are more, "...", their number, a colon and the FNV-1a hash of all follow.
std::string HexOf(std::string_view bytes);

/// A line of the script that changes the result of a call.
struct Rule {
    std::string effect; ///< "fail", "info" or "answer"
    std::string call;
    int callsToGo = 1;
    Failure diagnostic;
    int answer = 0;
};

struct Settings {
    bool isAccess = true;
    std::optional<unsigned> extensions;
    std::string dbms;
    std::string database;
    std::set<int> missingTypes;
    int clearance = 0; ///< another number than before drops all tables
    std::vector<Rule> rules;
    std::string fault; ///< the first line that can't be read
};

class Handle {
public:
    /// The label is the letter with the smallest number from 1 that no other handle has.
    explicit Handle(char letter);
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    virtual ~Handle();

    const std::string& Label() const { return m_label; }

    std::vector<Failure> diagnostics;

private:
    std::string m_label;
};

/// State of the shim; one a process.
class Shim {
public:
    static Shim& Get();

    /// Runs the body unless a rule prevents it. The body may append results to the line of the record.
    using Body = std::function<SQLRETURN(std::string& line)>;
    SQLRETURN Perform(const char* call, Handle& handle, const std::string& arguments, const Body& body);

    std::recursive_mutex guard;
    Settings settings;
    std::vector<std::string> details; ///< lines of the record that follow that of the call
    std::function<void()> dropTables;

private:
    Shim();
    void ReadScript();
    SQLRETURN Attempt(const char* call, Handle& handle, const Body& body, std::string& line);
    void Record(const std::string& line);

    std::string m_folder;
    std::string m_script;
    std::ofstream m_record;
    std::ofstream m_copy; ///< for a program that outlives the test's folder
};

} // namespace testodbc

#endif
