#include "support/odbc/Control.h"

#include "support/odbc/Odbc.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace testodbc {

namespace {

const std::vector<TypeRow> kAccessTypes = {
    {"GUID", SQL_GUID},       {"LONGCHAR", SQL_WLONGVARCHAR},
    {"BIT", SQL_BIT},         {"LONGBINARY", SQL_LONGVARBINARY},
    {"CHAR", SQL_CHAR},       {"DECIMAL", SQL_DECIMAL},
    {"INTEGER", SQL_INTEGER}, {"COUNTER", SQL_INTEGER},
    {"FLOAT", SQL_FLOAT},     {"DOUBLE", SQL_DOUBLE},
};

/// No row for SQL_DOUBLE: float is the ODBC type of that name.
const std::vector<TypeRow> kSqlServerTypes = {
    {"uniqueidentifier", SQL_GUID},
    {"ntext", SQL_WLONGVARCHAR},
    {"bit", SQL_BIT},
    {"image", SQL_LONGVARBINARY},
    {"char", SQL_CHAR},
    {"decimal", SQL_DECIMAL},
    {"int", SQL_INTEGER},
    {"int identity", SQL_INTEGER},
    {"float", SQL_FLOAT},
};

struct TypeName {
    const char* name;
    int sqlType;
};
constexpr TypeName kTypeNames[] = {
    {"bit", SQL_BIT},
    {"char", SQL_CHAR},
    {"integer", SQL_INTEGER},
    {"decimal", SQL_DECIMAL},
    {"float", SQL_FLOAT},
    {"double", SQL_DOUBLE},
    {"wlongvarchar", SQL_WLONGVARCHAR},
    {"guid", SQL_GUID},
    {"longvarbinary", SQL_LONGVARBINARY},
};

template <typename T>
T TakeWord(std::istream& line) {
    T word{};
    if (!(line >> word)) {
        throw std::invalid_argument("a word is missing");
    }
    return word;
}

std::string TakeRest(std::istream& line) {
    std::string rest;
    std::getline(line >> std::ws, rest);
    return rest;
}

int SqlTypeOf(const std::string& name) {
    for (const TypeName& type : kTypeNames) {
        if (name == type.name) {
            return type.sqlType;
        }
    }
    throw std::invalid_argument("no such type");
}

Flavour FlavourOf(const std::string& name) {
    if (name != "access" && name != "sqlserver") {
        throw std::invalid_argument("no such flavour");
    }
    return name == "access" ? Flavour::access : Flavour::sqlServer;
}

Rule ReadRule(const std::string& effect, std::istream& line) {
    Rule rule;
    rule.call = TakeWord<std::string>(line);
    rule.callsToGo = TakeWord<int>(line);
    if (effect == "answer") {
        rule.effect = Rule::Effect::answer;
        rule.answer = TakeWord<int>(line);
        return rule;
    }
    rule.effect = effect == "fail" ? Rule::Effect::fail : Rule::Effect::inform;
    rule.diagnostic.state = TakeWord<std::string>(line);
    rule.diagnostic.native = TakeWord<int>(line);
    rule.diagnostic.text = TakeRest(line);
    if (rule.diagnostic.state.size() != 5) {
        throw std::invalid_argument("a state has five characters");
    }
    return rule;
}

void ReadLine(const std::string& text, Settings& settings) {
    std::istringstream line(text);
    std::string word;
    if (!(line >> word) || word[0] == '#') {
        return;
    }
    if (word == "flavour") {
        settings.flavour = FlavourOf(TakeWord<std::string>(line));
    } else if (word == "without") {
        settings.missingTypes.insert(SqlTypeOf(TakeWord<std::string>(line)));
    } else if (word == "extensions") {
        settings.extensions = TakeWord<unsigned>(line);
    } else if (word == "dbms") {
        settings.dbms = TakeRest(line);
    } else if (word == "database") {
        settings.database = TakeRest(line);
    } else if (word == "no-totals") {
        settings.hidesTotals = true;
    } else if (word == "clear") {
        settings.clears = !(line >> settings.clearance);
    } else if (word == "fail" || word == "info" || word == "answer") {
        settings.rules.push_back(ReadRule(word, line));
    } else {
        throw std::invalid_argument("no such word");
    }
}

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string FolderOfEnvironment() {
    const char* const folder = std::getenv("KRTBSS_TEST_ODBC_FOLDER");
    return folder != nullptr ? folder : "";
}

} // namespace

Settings ParseScript(const std::string& script) {
    Settings settings;
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
        try {
            ReadLine(line, settings);
        } catch (const std::invalid_argument& error) {
            throw std::invalid_argument("script line '" + line + "': " + error.what());
        }
    }
    return settings;
}

Control::Control() : m_folder(FolderOfEnvironment()) {
    if (!m_folder.empty()) {
        m_record.open(m_folder + "/record", std::ios::binary | std::ios::app);
    }
    if (const char* const copy = std::getenv("KRTBSS_TEST_ODBC_RECORD"); copy != nullptr) {
        m_copy.open(copy, std::ios::binary | std::ios::app);
    }
}

bool Control::Refresh() {
    std::string script = m_folder.empty() ? std::string() : ContentOf(m_folder + "/script");
    if (script == m_script) {
        return false;
    }
    m_script = std::move(script);
    const int clearance = m_settings.clearance;
    try {
        m_settings = ParseScript(m_script);
    } catch (const std::invalid_argument& error) {
        m_settings = {};
        m_settings.clearance = clearance;
        m_settings.fault = error.what();
    }
    return m_settings.clears || m_settings.clearance != clearance;
}

std::optional<Rule> Control::RuleFor(const std::string& call) {
    std::optional<Rule> met;
    for (Rule& rule : m_settings.rules) {
        if (rule.call == call && --rule.callsToGo == 0) {
            met = rule;
        }
    }
    return met;
}

std::vector<TypeRow> Control::Types() const {
    std::vector<TypeRow> types = m_settings.flavour == Flavour::access ? kAccessTypes : kSqlServerTypes;
    std::erase_if(types,
                  [&](const TypeRow& type) { return m_settings.missingTypes.count(type.sqlType) != 0; });
    return types;
}

unsigned Control::Extensions() const {
    constexpr unsigned access = SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER | SQL_GD_BLOCK | SQL_GD_BOUND;
    return m_settings.extensions.value_or(m_settings.flavour == Flavour::access ? access : SQL_GD_BLOCK);
}

std::string Control::DbmsName() const {
    if (!m_settings.dbms.empty()) {
        return m_settings.dbms;
    }
    return m_settings.flavour == Flavour::access ? "ACCESS" : "Microsoft SQL Server";
}

void Control::Record(const std::string& line) {
    m_record << line << '\n';
    m_record.flush();
    if (m_copy.is_open()) {
        m_copy << line << '\n' << std::flush;
    }
}

} // namespace testodbc
