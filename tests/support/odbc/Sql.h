// Reads the statements that the two back-ends are sent. What neither of them is sent fails with 42000, and so
// does SQL Server's own syntax where the driver answers as Access.

#ifndef TESTS_SUPPORT_ODBC_SQL_H
#define TESTS_SUPPORT_ODBC_SQL_H

#include "support/odbc/Value.h"

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace testodbc {

enum class Flavour { access, sqlServer };

/// A question mark: its number in the statement, from 1.
struct Marker {
    int number = 0;
};
using Operand = std::variant<Marker, Value>;

struct Select;

/// column = value, column LIKE 'pattern', column NOT IN (SELECT ...)
struct Comparison {
    enum class Kind { equal, like, notIn };
    Kind kind = Kind::equal;
    std::string column;
    Operand value;
    std::shared_ptr<Select> others;
};
using Condition = std::vector<Comparison>; ///< all of them hold

struct ColumnDefinition {
    std::string name;
    std::string type;
    bool isRequired = false;
    bool isPrimaryKey = false;
};

struct CreateTable {
    std::string table;
    std::vector<ColumnDefinition> columns;
};
struct CreateIndex {
    std::string name;
    std::string table;
    std::vector<std::string> columns;
};
struct AddColumns {
    std::string table;
    std::vector<ColumnDefinition> columns;
};
struct Insert {
    std::string table;
    std::vector<std::string> columns;
    std::vector<Operand> values;
};
struct Update {
    std::string table;
    std::vector<std::pair<std::string, Operand>> changes;
    Condition where;
};
struct Select {
    std::string table;
    bool isCount = false;
    std::vector<std::string> columns; ///< none for all
    Condition where;
    std::string orderBy;
};
struct Delete {
    std::string table;
    Condition where;
};
struct DropTable {
    std::string table;
};

struct Query {
    std::variant<CreateTable, CreateIndex, AddColumns, Insert, Update, Select, Delete, DropTable> body;
    int markers = 0;
};

Query Parse(std::string_view sql, Flavour flavour);

} // namespace testodbc

#endif
