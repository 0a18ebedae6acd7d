// The frame of each call of the tests' driver: obeys the rules of the test, calls the driver, turns its
// exceptions into diagnostic records, and writes the record.

#ifndef TESTS_SUPPORT_ODBC_SHIM_H
#define TESTS_SUPPORT_ODBC_SHIM_H

#define SQL_NOUNICODEMAP
#include <sql.h>

#include <sqlext.h>
#include <sqlucode.h>

#include "support/odbc/TestDriver.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));

namespace testodbc {

[[noreturn]] void Fail(std::string state, std::string text);

/// UTF-8 from and to code units of 16 bits as they lie in memory.
std::string Utf8FromImage(const std::string& image);
std::string Utf16Image(const std::string& text);
std::string TextOfGuid(const std::string& image);

/// A constant's name, or the number of one without a name here.
enum class Group { result, handleType, cType, sqlType, attribute, info, option, length };
std::string NameOf(Group group, long code);
/// In double quotes, with a backslash before quotes and backslashes.
std::string Quote(std::string_view text);
/// The first 32 bytes. If there are more, "...", their number, a colon and the FNV-1a hash of all follow.
std::string HexOf(std::string_view bytes);

struct Handle {
    /// The label is the letter with the smallest number from 1 that no other handle has.
    explicit Handle(char letter);
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    virtual ~Handle();
    virtual void Close() {} ///< its cursor

    std::string label;
    std::vector<Diagnostic> diagnostics;
};

DriverState& State();
/// Appends to the line of the call in progress.
void RecordResult(const std::string& text);
/// Writes a line behind it.
void RecordDetail(const std::string& line);

/// Runs the body unless a rule prevents it.
SQLRETURN Perform(const std::string& call, Handle& handle, const std::string& arguments,
                  const std::function<SQLRETURN()>& body);

} // namespace testodbc

#endif
