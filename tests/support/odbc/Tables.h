// Tables in memory, and the nine shapes of statement that reach them. Any other statement fails with 42000,
// and so does SQL Server's own syntax when the driver acts as Access.

#ifndef TESTS_SUPPORT_ODBC_TABLES_H
#define TESTS_SUPPORT_ODBC_TABLES_H

#include "support/odbc/Shim.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace testodbc {

/// The bytes that a buffer of the column's C type holds; null for NULL.
using Cell = std::shared_ptr<const std::string>;
using Row = std::vector<Cell>;

Cell CellOf(std::string bytes);
Cell CellOf(std::int32_t number);

struct Type {
    std::string name;
    int sqlType = 0;
    int cType = 0; ///< of the bytes that a column keeps
};
/// Those of the flavour, without the ones that the script removes.
std::vector<Type> Types();

struct Column {
    std::string name;
    Type type;
    bool isRequired = false;
};

struct Table {
    std::vector<Column> columns;
    bool hasUniqueKey = false; ///< groupID and objectID
    std::vector<Row> rows;
};
using Tables = std::map<std::string, Table>;

/// The value bound to a marker.
struct Argument {
    int cType = 0;
    Cell cell;
};

struct Result {
    std::vector<int> types; ///< C types of the columns; none for a statement without rows
    std::vector<Row> rows;
    long affected = -1;
};

/// A statement that fails changes nothing.
Result Execute(Tables& tables, const std::string& sql, const std::vector<Argument>& arguments);

/// The bytes of a cell for a buffer of a C type, without a closing zero. Fails with 07006 where the type of
/// the column has no such form.
Cell ToC(int cType, int own, const Cell& cell);

} // namespace testodbc

#endif
