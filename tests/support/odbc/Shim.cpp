#include "support/odbc/Shim.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace testodbc {

namespace {

struct Name {
    long code;
    const char* text;
};

#define NAME(constant)                                                                                       \
    { static_cast<long>(constant), #constant }

/// In the order of the groups.
const std::vector<Name> kNames[] = {
    {NAME(SQL_SUCCESS), NAME(SQL_SUCCESS_WITH_INFO), NAME(SQL_NO_DATA), NAME(SQL_NEED_DATA), NAME(SQL_ERROR),
     NAME(SQL_INVALID_HANDLE), NAME(SQL_STILL_EXECUTING)},
    {NAME(SQL_HANDLE_ENV), NAME(SQL_HANDLE_DBC), NAME(SQL_HANDLE_STMT)},
    {NAME(SQL_C_BIT), NAME(SQL_C_CHAR), NAME(SQL_C_WCHAR), NAME(SQL_C_BINARY), NAME(SQL_C_SHORT),
     NAME(SQL_C_LONG), NAME(SQL_C_SLONG), NAME(SQL_C_DOUBLE), NAME(SQL_C_GUID)},
    {NAME(SQL_BIT), NAME(SQL_CHAR), NAME(SQL_INTEGER), NAME(SQL_DECIMAL), NAME(SQL_FLOAT), NAME(SQL_DOUBLE),
     NAME(SQL_WLONGVARCHAR), NAME(SQL_LONGVARBINARY), NAME(SQL_GUID)},
    {NAME(SQL_ATTR_ODBC_VERSION), NAME(SQL_ATTR_LOGIN_TIMEOUT), NAME(SQL_ATTR_AUTOCOMMIT)},
    {NAME(SQL_GETDATA_EXTENSIONS), NAME(SQL_DATABASE_NAME), NAME(SQL_DBMS_NAME), NAME(SQL_USER_NAME),
     NAME(SQL_CURSOR_COMMIT_BEHAVIOR), NAME(SQL_CURSOR_ROLLBACK_BEHAVIOR)},
    {NAME(SQL_CLOSE), NAME(SQL_UNBIND), NAME(SQL_RESET_PARAMS)},
    {NAME(SQL_NULL_DATA), NAME(SQL_NO_TOTAL), NAME(SQL_NTS), NAME(SQL_DATA_AT_EXEC)}};

#undef NAME

std::string Format(const char* format, unsigned long long number) {
    char text[24] = {};
    std::snprintf(text, sizeof(text), format, number);
    return text;
}

std::set<std::string>& Labels() {
    static auto* const labels = new std::set<std::string>;
    return *labels;
}

/// The line of the call in progress, and those behind it.
std::vector<std::string>& Lines() {
    static auto* const lines = new std::vector<std::string>(1);
    return *lines;
}

void Record(const std::string& line) {
    State().record.push_back(line);
    static const char* const path = std::getenv("KRTBSS_TEST_ODBC_RECORD"); // see driver-record
    if (path != nullptr) {
        static auto* const file = new std::ofstream(path, std::ios::binary | std::ios::app);
        *file << line << '\n' << std::flush;
    }
}

SQLRETURN Attempt(const std::string& call, Handle& handle, const std::function<SQLRETURN()>& body) {
    std::vector<DriverState::Rule> met;
    for (DriverState::Rule& rule : State().rules) {
        if (rule.call == call && --rule.callsToGo == 0) {
            met.push_back(rule);
        }
    }
    SQLRETURN result = SQL_ERROR;
    if (met.empty() || !met[0].fails) {
        try {
            result = body();
        } catch (const Diagnostic& diagnostic) {
            handle.diagnostics.push_back(diagnostic);
        } catch (const std::exception& error) {
            handle.diagnostics.push_back({"HY000", error.what()});
        }
        if (met.empty() || !SQL_SUCCEEDED(result)) {
            return result;
        }
        result = SQL_SUCCESS_WITH_INFO;
    }
    for (const DriverState::Rule& rule : met) {
        handle.diagnostics.push_back(rule.diagnostic);
    }
    return result;
}

} // namespace

void Fail(std::string state, std::string text) {
    throw Diagnostic{std::move(state), std::move(text)};
}

std::string NameOf(Group group, long code) {
    for (const Name& each : kNames[static_cast<std::size_t>(group)]) {
        if (each.code == code) {
            return each.text;
        }
    }
    return std::to_string(code);
}

std::string Quote(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' || c == '\\' ? "\\" : "";
        quoted += c;
    }
    return quoted + '"';
}

std::string HexOf(std::string_view bytes) {
    constexpr std::size_t most = 32;
    std::string hex;
    for (const char c : bytes.substr(0, most)) {
        hex += Format("%02llX", static_cast<unsigned char>(c));
    }
    if (bytes.size() > most) {
        std::uint64_t hash = 0xCBF29CE484222325;
        for (const char c : bytes) {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
        }
        hex += "..." + std::to_string(bytes.size()) + ':' + Format("%016llX", hash);
    }
    return hex;
}

Handle::Handle(char letter) {
    for (int number = 1; label.empty(); ++number) {
        const auto [found, isNew] = Labels().insert(letter + std::to_string(number));
        label = isNew ? *found : std::string();
    }
}

Handle::~Handle() {
    Labels().erase(label);
}

DriverState& State() {
    static auto* const state = new DriverState;
    return *state;
}

void RecordResult(const std::string& text) {
    Lines()[0] += text;
}

void RecordDetail(const std::string& line) {
    Lines().push_back(line);
}

SQLRETURN Perform(const std::string& call, Handle& handle, const std::string& arguments,
                  const std::function<SQLRETURN()>& body) {
    handle.diagnostics.clear();
    Lines() = {call + ' ' + handle.label + arguments};
    const SQLRETURN result = Attempt(call, handle, body);
    RecordResult(" = " + NameOf(Group::result, result));
    for (const Diagnostic& each : handle.diagnostics) {
        RecordResult(' ' + each.state + ' ' + std::to_string(each.native) + ' ' + Quote(each.text));
    }
    std::for_each(Lines().begin(), Lines().end(), Record);
    return result;
}

} // namespace testodbc
