#include "support/odbc/Shim.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace testodbc {

namespace {

struct Name {
    Group group;
    long code;
    const char* text;
};

#define NAME(group, constant)                                                                                \
    { Group::group, static_cast<long>(constant), #constant }

constexpr Name kNames[] = {
    NAME(result, SQL_SUCCESS),
    NAME(result, SQL_SUCCESS_WITH_INFO),
    NAME(result, SQL_NO_DATA),
    NAME(result, SQL_NEED_DATA),
    NAME(result, SQL_ERROR),
    NAME(result, SQL_INVALID_HANDLE),
    NAME(result, SQL_STILL_EXECUTING),
    NAME(handleType, SQL_HANDLE_ENV),
    NAME(handleType, SQL_HANDLE_DBC),
    NAME(handleType, SQL_HANDLE_STMT),
    NAME(cType, SQL_C_BIT),
    NAME(cType, SQL_C_CHAR),
    NAME(cType, SQL_C_WCHAR),
    NAME(cType, SQL_C_BINARY),
    NAME(cType, SQL_C_SHORT),
    NAME(cType, SQL_C_LONG),
    NAME(cType, SQL_C_SLONG),
    NAME(cType, SQL_C_DOUBLE),
    NAME(cType, SQL_C_GUID),
    NAME(sqlType, SQL_BIT),
    NAME(sqlType, SQL_CHAR),
    NAME(sqlType, SQL_INTEGER),
    NAME(sqlType, SQL_DECIMAL),
    NAME(sqlType, SQL_FLOAT),
    NAME(sqlType, SQL_DOUBLE),
    NAME(sqlType, SQL_WLONGVARCHAR),
    NAME(sqlType, SQL_LONGVARBINARY),
    NAME(sqlType, SQL_GUID),
    NAME(attribute, SQL_ATTR_ODBC_VERSION),
    NAME(attribute, SQL_ATTR_LOGIN_TIMEOUT),
    NAME(attribute, SQL_ATTR_AUTOCOMMIT),
    NAME(info, SQL_GETDATA_EXTENSIONS),
    NAME(info, SQL_DATABASE_NAME),
    NAME(info, SQL_DBMS_NAME),
    NAME(info, SQL_USER_NAME),
    NAME(info, SQL_CURSOR_COMMIT_BEHAVIOR),
    NAME(info, SQL_CURSOR_ROLLBACK_BEHAVIOR),
    NAME(option, SQL_CLOSE),
    NAME(option, SQL_UNBIND),
    NAME(option, SQL_RESET_PARAMS),
    NAME(length, SQL_NULL_DATA),
    NAME(length, SQL_NO_TOTAL),
    NAME(length, SQL_NTS),
    NAME(length, SQL_DATA_AT_EXEC),
};

#undef NAME

std::string Format(const char* format, unsigned long long number) {
    char text[24] = {};
    std::snprintf(text, sizeof(text), format, number);
    return text;
}

/// The ODBC type that a script calls "bit", "wlongvarchar" and so on.
int SqlTypeOf(const std::string& name) {
    std::string constant = "SQL_" + name;
    std::transform(constant.begin(), constant.end(), constant.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    const auto* const found = std::find_if(std::begin(kNames), std::end(kNames), [&](const Name& each) {
        return each.group == Group::sqlType && each.text == constant;
    });
    if (found == std::end(kNames)) {
        throw std::invalid_argument("no such type");
    }
    return static_cast<int>(found->code);
}

std::string TakeRest(std::istream& line) {
    std::string rest;
    std::getline(line >> std::ws, rest);
    return rest;
}

void ReadLine(const std::string& text, Settings& settings) {
    std::istringstream line(text);
    std::string word;
    std::string name;
    if (!(line >> word) || word[0] == '#') {
        return;
    }
    bool isRead = true;
    if (word == "flavour") {
        isRead = line >> name && (name == "access" || name == "sqlserver");
        settings.isAccess = name == "access";
    } else if (word == "without") {
        line >> name;
        settings.missingTypes.insert(SqlTypeOf(name));
    } else if (word == "extensions") {
        isRead = static_cast<bool>(line >> settings.extensions.emplace());
    } else if (word == "dbms") {
        settings.dbms = TakeRest(line);
    } else if (word == "database") {
        settings.database = TakeRest(line);
    } else if (word == "clear") {
        isRead = static_cast<bool>(line >> settings.clearance);
    } else {
        Rule rule{word, {}, 1, {}, 0};
        line >> rule.call >> rule.callsToGo;
        if (word == "answer") {
            line >> rule.answer;
        } else {
            line >> rule.diagnostic.state >> rule.diagnostic.native;
            rule.diagnostic.text = TakeRest(line);
            isRead = (word == "fail" || word == "info") && rule.diagnostic.state.size() == 5;
        }
        isRead = isRead && !line.bad();
        settings.rules.push_back(rule);
    }
    if (!isRead) {
        throw std::invalid_argument("not as TestDriver.h has it");
    }
}

std::set<std::string>& Labels() {
    static auto* const labels = new std::set<std::string>;
    return *labels;
}

} // namespace

std::string NameOf(Group group, long code) {
    const auto* const found = std::find_if(std::begin(kNames), std::end(kNames), [&](const Name& each) {
        return each.group == group && each.code == code;
    });
    return found != std::end(kNames) ? found->text : std::to_string(code);
}

std::string Quote(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '\n') {
            quoted += "\\n";
        } else if (static_cast<unsigned char>(c) < ' ') {
            quoted += "\\x" + HexOf({&c, 1});
        } else {
            quoted += c == '"' || c == '\\' ? "\\" : "";
            quoted += c;
        }
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
    for (int number = 1; m_label.empty(); ++number) {
        const auto [label, isNew] = Labels().insert(letter + std::to_string(number));
        m_label = isNew ? *label : std::string();
    }
}

Handle::~Handle() {
    Labels().erase(m_label);
}

Shim& Shim::Get() {
    static auto* const shim = new Shim;
    return *shim;
}

Shim::Shim() {
    if (const char* const folder = std::getenv("KRTBSS_TEST_ODBC_FOLDER"); folder != nullptr) {
        m_folder = folder;
        m_record.open(m_folder + "/record", std::ios::binary | std::ios::app);
    }
    if (const char* const copy = std::getenv("KRTBSS_TEST_ODBC_RECORD"); copy != nullptr) {
        m_copy.open(copy, std::ios::binary | std::ios::app);
    }
}

void Shim::ReadScript() {
    std::ifstream file(m_folder + "/script", std::ios::binary);
    const std::string script{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (script == m_script) {
        return;
    }
    m_script = script;
    const int clearance = settings.clearance;
    settings = {};
    settings.clearance = clearance;
    std::istringstream lines(script);
    for (std::string line; settings.fault.empty() && std::getline(lines, line);) {
        try {
            ReadLine(line, settings);
        } catch (const std::invalid_argument& error) {
            settings.fault = "script line '" + line + "': " + error.what();
        }
    }
    if (settings.clearance != clearance) {
        dropTables();
    }
}

SQLRETURN Shim::Attempt(const char* call, Handle& handle, const Body& body, std::string& line) {
    if (!settings.fault.empty()) {
        handle.diagnostics.push_back({"HY000", settings.fault});
        return SQL_ERROR;
    }
    std::vector<Rule> met;
    for (Rule& rule : settings.rules) {
        if (rule.call == call && --rule.callsToGo == 0) {
            met.push_back(rule);
        }
    }
    if (!met.empty() && met[0].effect == "answer") {
        return static_cast<SQLRETURN>(met[0].answer);
    }
    SQLRETURN result = SQL_ERROR;
    if (met.empty() || met[0].effect == "info") {
        try {
            result = body(line);
        } catch (const Failure& failure) {
            handle.diagnostics.push_back(failure);
        } catch (const std::exception& error) {
            handle.diagnostics.push_back({"HY000", error.what()});
        }
        if (met.empty() || !SQL_SUCCEEDED(result)) {
            return result;
        }
        result = SQL_SUCCESS_WITH_INFO;
    }
    for (const Rule& rule : met) {
        handle.diagnostics.push_back(rule.diagnostic);
    }
    return result;
}

SQLRETURN Shim::Perform(const char* call, Handle& handle, const std::string& arguments, const Body& body) {
    const std::lock_guard lock(guard);
    ReadScript();
    details.clear();
    handle.diagnostics.clear();
    std::string line = std::string(call) + ' ' + handle.Label() + arguments;
    const SQLRETURN result = Attempt(call, handle, body, line);
    line += " = " + NameOf(Group::result, result);
    for (const Failure& each : handle.diagnostics) {
        line += ' ' + each.state + ' ' + std::to_string(each.native) + ' ' + Quote(each.text);
    }
    Record(line);
    for (const std::string& detail : details) {
        Record(detail);
    }
    return result;
}

void Shim::Record(const std::string& line) {
    m_record << line << '\n' << std::flush;
    if (m_copy.is_open()) {
        m_copy << line << '\n' << std::flush;
    }
}

} // namespace testodbc
