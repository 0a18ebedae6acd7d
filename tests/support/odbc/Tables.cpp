#include "support/odbc/Tables.h"

#include <algorithm>
#include <regex>

namespace testodbc {

namespace {

template <typename T>
std::string Image(T value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

Cell FromLiteral(const std::string& literal, int cType) {
    const bool isText = literal[0] == '\'';
    const std::string text = isText ? literal.substr(1, literal.size() - 2) : literal;
    switch (cType) {
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
            return CellOf(Utf16Image(text));
        }
        [[fallthrough]];
    default:
        Fail("22018", "no value for the column: " + literal);
    }
}

std::vector<std::string> Split(const std::string& list, const std::string& separator) {
    std::vector<std::string> items;
    for (std::size_t at = 0; at <= list.size();) {
        const std::size_t end = std::min(list.find(separator, at), list.size());
        items.push_back(list.substr(at, end - at));
        at = end + separator.size();
    }
    return items;
}

/// Without brackets, and in SQL Server's case without what Access does not know.
std::string Plain(std::string sql) {
    const auto cut = [&sql](std::string_view part) {
        for (std::size_t at = sql.find(part); at != std::string::npos; at = sql.find(part, at)) {
            sql.erase(at, part.size());
        }
    };
    if (!State().isAccess) {
        for (const char* const part :
             {"[dbo].", "NONCLUSTERED ", " ON [PRIMARY]", " WITH (ROWLOCK) ", " WITH (NOLOCK) "}) {
            cut(part);
        }
    }
    for (const char* const part : {"[", "]", ";"}) {
        cut(part);
    }
    return sql;
}

/// One statement at work.
class Executor {
public:
    Executor(Tables& tables, const std::vector<Argument>& arguments)
        : m_tables(tables), m_arguments(arguments) {}

    Result Run(const std::string& sql) {
        struct Shape {
            std::regex text;
            Result (Executor::*run)(const Parts& parts);
        };
        static const Shape shapes[] = {
            {std::regex(R"(CREATE TABLE (\S+) \((.+)\))"), &Executor::CreateTable},
            {std::regex(R"(CREATE UNIQUE INDEX \S+ ON (\S+) \(groupID ASC, objectID ASC\))"),
             &Executor::CreateIndex},
            {std::regex(R"(ALTER TABLE (\S+) ADD (.+))"), &Executor::AddColumns},
            {std::regex(R"(INSERT INTO (\S+) \((.+)\) VALUES \((.+)\))"), &Executor::Insert},
            {std::regex(R"(UPDATE (\S+) SET (.+?)(?: WHERE (.+))?)"), &Executor::Update},
            {std::regex(R"(DELETE FROM (\S+)(?: WHERE (.+))?)"), &Executor::Delete},
            {std::regex(R"(SELECT COUNT\((\S+)\) FROM (\S+))"), &Executor::Count},
            {std::regex(R"(SELECT \* FROM (\S+)(?: WHERE (.+))?)"), &Executor::SelectAll},
            {std::regex(R"(SELECT (\S+) FROM (\S+)(?: WHERE (.+))?)"), &Executor::SelectOne},
        };
        const std::string plain = Plain(sql);
        for (const Shape& shape : shapes) {
            std::smatch match;
            if (std::regex_match(plain, match, shape.text)) {
                return (this->*shape.run)(Parts(match.begin(), match.end()));
            }
        }
        Fail("42000", "Syntax error in the statement: " + sql);
    }

private:
    using Parts = std::vector<std::string>; ///< the whole, then the groups of the shape

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

    static void Define(Table& table, const std::string& definitions) {
        for (const std::string& definition : Split(definitions, ", ")) {
            const std::vector<std::string> words = Split(definition, " ");
            const std::vector<Type> types = Types();
            const auto type = std::find_if(types.begin(), types.end(),
                                           [&](const Type& each) { return each.name == words.at(1); });
            if (type == types.end()) {
                Fail("42000", "Syntax error in field definition: " + definition);
            }
            table.columns.push_back({words[0], *type, words.size() == 4}); // NOT NULL or PRIMARY KEY
        }
        for (Row& row : table.rows) {
            row.resize(table.columns.size());
        }
    }

    Result CreateTable(const Parts& parts) {
        if (m_tables.count(parts[1]) != 0) {
            Fail("42S01", "Table '" + parts[1] + "' already exists.");
        }
        Table table;
        Define(table, parts[2]);
        m_tables[parts[1]] = std::move(table);
        return {};
    }

    Result CreateIndex(const Parts& parts) {
        Table changed = Existing(parts[1]);
        changed.hasUniqueKey = true;
        return Keep(parts[1], std::move(changed), -1);
    }

    Result AddColumns(const Parts& parts) {
        Table changed = Existing(parts[1]);
        Define(changed, parts[2]);
        return Keep(parts[1], std::move(changed), -1);
    }

    Result Insert(const Parts& parts) {
        Table changed = Existing(parts[1]);
        const Parts columns = Split(parts[2], ", ");
        const Parts values = Split(parts[3], ", ");
        Row row(changed.columns.size());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            Set(changed, row, columns[i], values.at(i));
        }
        changed.rows.push_back(std::move(row));
        return Keep(parts[1], std::move(changed), 1);
    }

    Result Update(const Parts& parts) {
        Table changed = Existing(parts[1]);
        long affected = 0;
        for (Row& row : changed.rows) {
            if (Matches(changed, row, parts[3])) {
                ++affected;
                m_marker = 0;
                for (const std::string& change : Split(parts[2], ", ")) {
                    const Parts sides = Split(change, " = ");
                    Set(changed, row, sides[0], sides.at(1));
                }
            }
        }
        return Keep(parts[1], std::move(changed), affected);
    }

    Result Delete(const Parts& parts) {
        Table changed = Existing(parts[1]);
        const std::size_t affected =
            std::erase_if(changed.rows, [&](const Row& row) { return Matches(changed, row, parts[2]); });
        return Keep(parts[1], std::move(changed), static_cast<long>(affected));
    }

    Result Count(const Parts& parts) {
        const Result rows = SelectOne({parts[0], parts[1], parts[2], {}});
        return {{SQL_C_SLONG}, {{CellOf(static_cast<std::int32_t>(rows.rows.size()))}}, -1};
    }

    Result SelectAll(const Parts& parts) {
        const Table& table = Existing(parts[1]);
        Result result;
        for (const Column& column : table.columns) {
            result.types.push_back(column.type.cType);
        }
        std::copy_if(table.rows.begin(), table.rows.end(), std::back_inserter(result.rows),
                     [&](const Row& row) { return Matches(table, row, parts[2]); });
        return result;
    }

    Result SelectOne(const Parts& parts) {
        Result result = SelectAll({parts[0], parts[2], parts[3]});
        const std::size_t position = PositionOf(Existing(parts[2]), parts[1]);
        result.types = {result.types[position]};
        for (Row& row : result.rows) {
            row = {row[position]};
        }
        return result;
    }

    void Set(const Table& table, Row& row, const std::string& column, const std::string& value) {
        const std::size_t position = PositionOf(table, column);
        const int cType = table.columns[position].type.cType;
        if (value == "NULL") {
            row[position] = nullptr;
        } else if (value != "?") {
            row[position] = FromLiteral(value, cType);
        } else {
            const Argument& argument = m_arguments.at(m_marker++);
            if (argument.cType != cType) {
                Fail("22018", "a value of another type for column '" + column + "'");
            }
            row[position] = argument.cell;
        }
    }

    /// Conditions that are all to hold: column = literal.
    static bool Matches(const Table& table, const Row& row, const std::string& where) {
        static const std::regex equal("(\\w+) = (\\S+)");
        for (std::sregex_iterator at(where.begin(), where.end(), equal), end; at != end; ++at) {
            const std::size_t position = PositionOf(table, (*at)[1]);
            const Cell wanted = FromLiteral((*at)[2], table.columns[position].type.cType);
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
    const std::vector<Argument>& m_arguments;
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
        {"GUID", SQL_GUID, SQL_C_GUID},        {"LONGCHAR", SQL_WLONGVARCHAR, SQL_C_WCHAR},
        {"BIT", SQL_BIT, SQL_C_BIT},           {"LONGBINARY", SQL_LONGVARBINARY, SQL_C_BINARY},
        {"CHAR", SQL_CHAR, SQL_C_CHAR},        {"DECIMAL", SQL_DECIMAL, SQL_C_SLONG},
        {"INTEGER", SQL_INTEGER, SQL_C_SLONG}, {"COUNTER", SQL_INTEGER, SQL_C_SLONG},
        {"FLOAT", SQL_FLOAT, SQL_C_DOUBLE},    {"DOUBLE", SQL_DOUBLE, SQL_C_DOUBLE}};
    // No row for SQL_DOUBLE: float is the ODBC type of that name.
    static const std::vector<Type> sqlServer = {{"uniqueidentifier", SQL_GUID, SQL_C_GUID},
                                                {"ntext", SQL_WLONGVARCHAR, SQL_C_WCHAR},
                                                {"bit", SQL_BIT, SQL_C_BIT},
                                                {"image", SQL_LONGVARBINARY, SQL_C_BINARY},
                                                {"char", SQL_CHAR, SQL_C_CHAR},
                                                {"decimal", SQL_DECIMAL, SQL_C_SLONG},
                                                {"int", SQL_INTEGER, SQL_C_SLONG},
                                                {"int identity", SQL_INTEGER, SQL_C_SLONG},
                                                {"float", SQL_FLOAT, SQL_C_DOUBLE}};
    std::vector<Type> types = State().isAccess ? access : sqlServer;
    std::erase_if(types, [](const Type& type) { return State().missingTypes.count(type.sqlType) != 0; });
    return types;
}

Result Execute(Tables& tables, const std::string& sql, const std::vector<Argument>& arguments) {
    return Executor(tables, arguments).Run(sql);
}

Cell ToC(int cType, int own, const Cell& cell) {
    if (cType == own || cType == SQL_C_BINARY || (own == SQL_C_SLONG && cType == SQL_C_LONG)) {
        return cell;
    }
    if (own == SQL_C_SLONG && cType == SQL_C_SHORT) {
        return CellOf(cell->substr(0, 2));
    }
    if (cType == SQL_C_CHAR && (own == SQL_C_WCHAR || own == SQL_C_GUID)) {
        return CellOf(own == SQL_C_WCHAR ? Utf8FromImage(*cell) : TextOfGuid(*cell));
    }
    Fail("07006", "no such form of the column");
}

} // namespace testodbc
