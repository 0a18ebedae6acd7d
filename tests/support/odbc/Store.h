// The tables and rows of the process, and the statements that read and change them.

#ifndef TESTS_SUPPORT_ODBC_STORE_H
#define TESTS_SUPPORT_ODBC_STORE_H

#include "support/odbc/Sql.h"

#include <map>
#include <optional>

namespace testodbc {

struct TypeRow {
    std::string name;
    int sqlType = 0;
};

struct Column {
    std::string name;
    TypeRow type;
    bool isRequired = false;
};

struct Index {
    std::string name; ///< empty for the primary key
    std::vector<std::size_t> columns;
};

struct Table {
    std::string name;
    std::vector<Column> columns;
    std::vector<Index> uniqueIndexes;
    std::vector<Row> rows;
};

struct Result {
    bool isRowSet = false;
    std::size_t width = 0;
    std::vector<Row> rows;
    long affected = -1; ///< rows that were changed; -1 where that says nothing
};

/// What one connection has changed since its last commit: each table as it was, nothing for one that is new.
struct Transaction {
    std::map<std::string, std::optional<Table>> before;
};

class Store {
public:
    using Tables = std::map<std::string, Table>; ///< by the name in lower case

    /// A failed statement changes nothing. Changing a table that another transaction has changed fails with
    /// HYT00.
    Result Execute(const Query& query, const std::vector<Value>& parameters,
                   const std::vector<TypeRow>& types, Transaction& transaction);

    void Commit(Transaction& transaction);
    void Rollback(Transaction& transaction);
    void Clear();

    const Tables& GetTables() const { return m_tables; }

private:
    friend class Executor;

    Table& Existing(const std::string& name);
    /// To be called before a table is made, changed or dropped.
    void Remember(const std::string& name, Transaction& transaction);

    Tables m_tables;
    std::map<std::string, const Transaction*> m_writers;
};

} // namespace testodbc

#endif
