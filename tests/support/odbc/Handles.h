// The driver's handles, and the frame in which each call of the driver runs.

#ifndef TESTS_SUPPORT_ODBC_HANDLES_H
#define TESTS_SUPPORT_ODBC_HANDLES_H

#include "support/odbc/Control.h"
#include "support/odbc/Odbc.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace testodbc {

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

/// What the process shares.
struct Driver {
    static Driver& Get();

    std::mutex guard;
    Control control;
    Store store;
    std::set<std::string> labels;
    std::vector<std::string> details; ///< lines of the record that follow that of the call
};

class Environment : public Handle {
public:
    Environment() : Handle('E') {}
};

class Statement;

class Connection : public Handle {
public:
    Connection();
    ~Connection() override;

    void Connect(std::string source, std::string user);
    /// Drops the statements. Fails with 25000 while a transaction holds changes.
    void Disconnect();
    void SetAutocommit(bool isOn);
    /// Closes the cursors too.
    void EndTransaction(bool commits);
    Result Execute(const Query& query, const std::vector<Value>& parameters);

    bool IsAutocommit() const { return m_isAutocommit; }
    /// Of the script, or else what was connected to
    std::string DatabaseName() const;
    const std::string& User() const { return m_user; }

    std::map<const Handle*, std::unique_ptr<Statement>> statements;
    std::map<SQLINTEGER, SQLULEN> attributes;

private:
    bool m_isAutocommit = true;
    std::string m_source;
    std::string m_user;
    Transaction m_transaction;
};

/// A call of the driver: reads a new script, obeys its rules, turns failures into diagnostic records, and
/// writes the record. The body may append to the line what came out.
using Body = std::function<SQLRETURN(std::string& line)>;
SQLRETURN Perform(const char* call, Handle& handle, const std::string& arguments, const Body& body);

template <typename H, typename HandleBody>
SQLRETURN Enter(const char* call, SQLHANDLE handle, const std::string& arguments, HandleBody body) {
    if (handle == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    H& object = static_cast<H&>(*static_cast<Handle*>(handle));
    return Perform(call, object, arguments, [&](std::string& line) { return body(object, line); });
}

/// A text argument; a length of SQL_NTS stands for one up to its zero.
std::string TextFrom(const SQLWCHAR* text, SQLINTEGER length);
/// For the record: quoted, or NULL for none.
std::string QuoteArgument(const SQLWCHAR* text, SQLINTEGER length);
/// Room and length are counts of characters. False if the text had to be cut.
bool PutText(const std::string& text, SQLWCHAR* out, SQLLEN room, SQLSMALLINT* length);
/// SQL_SUCCESS, or SQL_SUCCESS_WITH_INFO with state 01004
SQLRETURN ResultOf(Handle& handle, bool isWhole);

} // namespace testodbc

/// Entry points are found by name in the shared object, and are not to be called from within.
#define TESTODBC_ENTRY extern "C" __attribute__((visibility("default"))) SQLRETURN

#endif
