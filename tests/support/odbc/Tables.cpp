#include "support/odbc/Tables.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <regex>

namespace testodbc {

namespace {

[[noreturn]] void Fail(std::string state, std::string text) {
    throw Failure{std::move(state), std::move(text)};
}

template <typename T>
std::string Image(T value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

/// The C type whose bytes a column keeps.
int OwnCType(int sqlType) {
    switch (sqlType) {
    case SQL_BIT:
        return SQL_C_BIT;
    case SQL_INTEGER:
    case SQL_DECIMAL:
        return SQL_C_SLONG;
    case SQL_FLOAT:
    case SQL_DOUBLE:
        return SQL_C_DOUBLE;
    case SQL_GUID:
        return SQL_C_GUID;
    case SQL_WLONGVARCHAR:
        return SQL_C_WCHAR;
    case SQL_LONGVARBINARY:
        return SQL_C_BINARY;
    default:
        return SQL_C_CHAR;
    }
}

Cell FromLiteral(const std::string& literal, int sqlType) {
    const bool isText = literal[0] == '\'';
    const std::string text = isText ? literal.substr(1, literal.size() - 2) : literal;
    switch (OwnCType(sqlType)) {
    case SQL_C_BIT:
        return CellOf(std::string(1, text == "0" ? '\0' : '\1'));
    case SQL_C_SLONG:
        return CellOf(std::stoi(text));
    case SQL_C_DOUBLE:
        return CellOf(Image(std::stod(text)));
    case SQL_C_CHAR:
        return CellOf(text);
    case SQL_C_WCHAR:
        if (isText) {
            const std::u16string units = Utf16FromUtf8(text);
            return CellOf({reinterpret_cast<const char*>(units.data()), units.size() * sizeof(units[0])});
        }
        [[fallthrough]];
    default:
        Fail("22018", "no value for the column: " + literal);
    }
}

/// {00112233-4455-6677-8899-AABBCCDDEEFF}; the first three groups have their low byte first in memory.
std::string TextOfGuid(const std::string& guid) {
    static constexpr std::array<std::size_t, 16> order = {3, 2, 1,  0,  5,  4,  7,  6,
                                                          8, 9, 10, 11, 12, 13, 14, 15};
    std::string text = "{";
    for (std::size_t i = 0; i < order.size(); ++i) {
        text += i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "";
        text += HexOf(std::string_view(guid).substr(order.at(i), 1));
    }
    return text + "}";
}

/// The parts of a list, without brackets.
std::vector<std::string> Split(const std::string& list, const std::string& separator) {
    std::vector<std::string> items;
    for (std::size_t at = 0; at <= list.size();) {
        const std::size_t end = std::min(list.find(separator, at), list.size());
        items.push_back(list.substr(at, end - at));
        std::erase_if(items.back(), [](char c) { return c == '[' || c == ']'; });
        at = end + separator.size();
    }
    return items;
}

/// One statement at work.
class Executor {
public:
    Executor(Tables& tables, const std::string& sql, const std::vector<Argument>& arguments)
        : m_tables(tables), m_sql(sql), m_arguments(arguments) {}

    Result Run() {
        const auto shape = [](const char* text) {
            // "%" stands for a name.
            return std::regex(
                std::regex_replace(std::string(text), std::regex("%"), "\\[?([^\\s\\[\\]().,]+)\\]?"));
        };
        static const std::regex createTable = shape(R"(CREATE TABLE (\[dbo\]\.)?% \((.+)\))");
        static const std::regex createIndex = shape(
            R"(CREATE UNIQUE (NONCLUSTERED )?INDEX \S+ ON % \(\[groupID\] ASC, \[objectID\] ASC\)( ON \[PRIMARY\])?)");
        static const std::regex addColumns = shape("ALTER TABLE % ADD (.+)");
        static const std::regex insert =
            shape(R"(INSERT INTO %( WITH \(ROWLOCK\) )? \((.+)\) VALUES \((.+)\))");
        static const std::regex update = shape(R"(UPDATE %( WITH \(ROWLOCK\) )? SET (.+?)( WHERE (.+))?)");
        static const std::regex remove = shape("DELETE FROM %( WHERE (.+))?");
        static const std::regex count = shape(R"(SELECT COUNT\((\S+)\) FROM %)");
        static const std::regex select = shape(R"(SELECT (.+) FROM %( WITH \(NOLOCK\) )?( WHERE (.+?))?;?)");
        if (Is(createTable)) {
            RefuseInAccess(1);
            return CreateTable(Part(2), Part(3));
        }
        if (Is(createIndex)) {
            RefuseInAccess(1);
            RefuseInAccess(3);
            return CreateIndex(Part(2));
        }
        if (Is(addColumns)) {
            return AddColumns(Part(1), Part(2));
        }
        if (Is(insert)) {
            RefuseInAccess(2);
            return Insert(Part(1), Split(Part(3), ", "), Split(Part(4), ", "));
        }
        if (Is(update)) {
            RefuseInAccess(2);
            return Update(Part(1), Split(Part(3), ", "), Part(5));
        }
        if (Is(remove)) {
            return Delete(Part(1), Part(3));
        }
        if (Is(count)) {
            return Count(Part(2), Part(1));
        }
        if (Is(select)) {
            RefuseInAccess(3);
            return Select(Split(Part(1), ", "), Part(2), Part(5));
        }
        Refuse();
    }

private:
    bool Is(const std::regex& shape) { return std::regex_match(m_sql, m_parts, shape); }
    std::string Part(std::size_t number) const { return m_parts[number]; }
    void RefuseInAccess(std::size_t part) const {
        if (m_parts[part].matched && Shim::Get().settings.isAccess) {
            Refuse();
        }
    }
    [[noreturn]] void Refuse() const { Fail("42000", "Syntax error in the statement: " + m_sql); }

    Table& Existing(const std::string& name) const {
        const auto found = m_tables.find(name);
        if (found == m_tables.end()) {
            Fail("42S02", "Table '" + name + "' does not exist.");
        }
        return found->second;
    }

    static std::size_t PositionOf(const Table& table, const std::string& column) {
        const auto found = std::find_if(table.columns.begin(), table.columns.end(),
                                        [&](const Column& each) { return each.name == column; });
        if (found == table.columns.end()) {
            Fail("42S22", "Column '" + column + "' does not exist.");
        }
        return static_cast<std::size_t>(found - table.columns.begin());
    }

    void Define(Table& table, const std::string& definitions) const {
        for (const std::string& definition : Split(definitions, ", ")) {
            const std::vector<std::string> words = Split(definition, " ");
            const std::vector<Type> types = Types();
            const auto type = std::find_if(types.begin(), types.end(), [&](const Type& each) {
                return words.size() > 1 && each.name == words[1];
            });
            if (type == types.end()) {
                Refuse();
            }
            if (std::any_of(table.columns.begin(), table.columns.end(),
                            [&](const Column& each) { return each.name == words[0]; })) {
                Fail("42S21", "Column '" + words[0] + "' already exists.");
            }
            table.columns.push_back({words[0], *type, words.size() == 4}); // NOT NULL or PRIMARY KEY
        }
    }

    Result CreateTable(const std::string& name, const std::string& definitions) {
        if (m_tables.count(name) != 0) {
            Fail("42S01", "Table '" + name + "' already exists.");
        }
        Table table;
        Define(table, definitions);
        m_tables[name] = std::move(table);
        return {};
    }

    Result CreateIndex(const std::string& name) const {
        Table changed = Existing(name);
        changed.hasUniqueKey = true;
        return Keep(name, std::move(changed), -1);
    }

    Result AddColumns(const std::string& name, const std::string& definitions) const {
        Table changed = Existing(name);
        Define(changed, definitions);
        for (Row& row : changed.rows) {
            row.resize(changed.columns.size());
        }
        return Keep(name, std::move(changed), -1);
    }

    Result Insert(const std::string& name, const std::vector<std::string>& columns,
                  const std::vector<std::string>& values) {
        Table changed = Existing(name);
        if (columns.size() != values.size()) {
            Fail("21S01", "not as many values as columns");
        }
        Row row(changed.columns.size());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            Set(changed, row, columns[i], values[i]);
        }
        changed.rows.push_back(std::move(row));
        return Keep(name, std::move(changed), 1);
    }

    Result Update(const std::string& name, const std::vector<std::string>& changes,
                  const std::string& where) {
        Table changed = Existing(name);
        long affected = 0;
        for (Row& row : changed.rows) {
            if (Matches(changed, row, where)) {
                ++affected;
                m_marker = 0;
                for (const std::string& change : changes) {
                    const std::size_t equals = change.find(" = ");
                    Set(changed, row, change.substr(0, equals),
                        change.substr(std::min(change.size(), equals + 3)));
                }
            }
        }
        return Keep(name, std::move(changed), affected);
    }

    Result Delete(const std::string& name, const std::string& where) const {
        Table changed = Existing(name);
        const std::size_t affected =
            std::erase_if(changed.rows, [&](const Row& row) { return Matches(changed, row, where); });
        return Keep(name, std::move(changed), static_cast<long>(affected));
    }

    Result Count(const std::string& name, const std::string& column) const {
        const Table& table = Existing(name);
        const std::size_t at = PositionOf(table, column);
        const auto count = std::count_if(table.rows.begin(), table.rows.end(),
                                         [at](const Row& row) { return row[at] != nullptr; });
        return {{SQL_INTEGER}, {{CellOf(static_cast<std::int32_t>(count))}}, -1};
    }

    Result Select(const std::vector<std::string>& columns, const std::string& name,
                  const std::string& where) const {
        const Table& table = Existing(name);
        std::vector<std::size_t> positions;
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            positions.push_back(i);
        }
        if (columns != std::vector<std::string>{"*"}) {
            positions.resize(columns.size());
            std::transform(columns.begin(), columns.end(), positions.begin(),
                           [&](const std::string& column) { return PositionOf(table, column); });
        }
        Result result;
        for (const std::size_t position : positions) {
            result.types.push_back(table.columns[position].type.sqlType);
        }
        for (const Row& row : table.rows) {
            if (Matches(table, row, where)) {
                Row& chosen = result.rows.emplace_back();
                for (const std::size_t position : positions) {
                    chosen.push_back(row[position]);
                }
            }
        }
        return result;
    }

    void Set(const Table& table, Row& row, const std::string& column, const std::string& value) {
        const std::size_t position = PositionOf(table, column);
        const int sqlType = table.columns[position].type.sqlType;
        if (value == "NULL") {
            row[position] = nullptr;
        } else if (value != "?") {
            row[position] = FromLiteral(value, sqlType);
        } else {
            const Argument& argument = m_arguments.at(m_marker++);
            if (argument.cType != OwnCType(sqlType)) {
                Fail("22018", "a value of another type for column '" + column + "'");
            }
            row[position] = argument.cell;
        }
    }

    /// Conditions that are all to hold: column = literal.
    static bool Matches(const Table& table, const Row& row, const std::string& where) {
        static const std::regex equal("\\[?(\\w+)\\]? = (\\S+)");
        for (std::sregex_iterator at(where.begin(), where.end(), equal), end; at != end; ++at) {
            const std::size_t position = PositionOf(table, (*at)[1]);
            const Cell wanted = FromLiteral((*at)[2], table.columns[position].type.sqlType);
            if (row[position] == nullptr || *row[position] != *wanted) {
                return false;
            }
        }
        return true;
    }

    /// Checks the rows and puts the table in the place of the former one.
    Result Keep(const std::string& name, Table changed, long affected) const {
        std::set<std::string> keys;
        for (const Row& row : changed.rows) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                if (changed.columns[i].isRequired && row[i] == nullptr) {
                    Fail("23000", "Column '" + changed.columns[i].name + "' does not allow nulls.");
                }
            }
            if (changed.hasUniqueKey &&
                !keys.insert(*row[PositionOf(changed, "groupID")] + *row[PositionOf(changed, "objectID")])
                     .second) {
                Fail("23000", "Duplicate key in table '" + name + "'.");
            }
        }
        Existing(name) = std::move(changed);
        return {{}, {}, affected};
    }

    Tables& m_tables;
    const std::string& m_sql;
    const std::vector<Argument>& m_arguments;
    std::smatch m_parts;
    std::size_t m_marker = 0;
};

} // namespace

Cell CellOf(std::string bytes) {
    return std::make_shared<const std::string>(std::move(bytes));
}

Cell CellOf(std::int32_t number) {
    return CellOf(Image(number));
}

std::vector<Type> Types() {
    static const std::vector<Type> access = {
        {"GUID", SQL_GUID},       {"LONGCHAR", SQL_WLONGVARCHAR},
        {"BIT", SQL_BIT},         {"LONGBINARY", SQL_LONGVARBINARY},
        {"CHAR", SQL_CHAR},       {"DECIMAL", SQL_DECIMAL},
        {"INTEGER", SQL_INTEGER}, {"COUNTER", SQL_INTEGER},
        {"FLOAT", SQL_FLOAT},     {"DOUBLE", SQL_DOUBLE},
    };
    // No row for SQL_DOUBLE: float is the ODBC type of that name.
    static const std::vector<Type> sqlServer = {
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
    const Settings& settings = Shim::Get().settings;
    std::vector<Type> types = settings.isAccess ? access : sqlServer;
    std::erase_if(types, [&](const Type& type) { return settings.missingTypes.count(type.sqlType) != 0; });
    return types;
}

bool IsQuery(const std::string& sql) {
    return sql.rfind("SELECT ", 0) == 0;
}

Result Execute(Tables& tables, const std::string& sql, const std::vector<Argument>& arguments) {
    return Executor(tables, sql, arguments).Run();
}

Cell ToC(int cType, int sqlType, const Cell& cell) {
    const int own = OwnCType(sqlType);
    if (cType == own || cType == SQL_C_BINARY || (own == SQL_C_SLONG && cType == SQL_C_LONG)) {
        return cell;
    }
    if (own == SQL_C_SLONG && cType == SQL_C_SHORT) {
        return CellOf(cell->substr(0, 2));
    }
    if (cType == SQL_C_CHAR && own == SQL_C_WCHAR) {
        std::u16string units(cell->size() / 2, u'\0');
        std::memcpy(units.data(), cell->data(), units.size() * 2);
        return CellOf(Utf8FromUtf16(units));
    }
    if (cType == SQL_C_CHAR && own == SQL_C_GUID) {
        return CellOf(TextOfGuid(*cell));
    }
    Fail("07006", "no such form of the column");
}

} // namespace testodbc
