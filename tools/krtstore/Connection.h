// A database that is looked into: its tables, and their rows one after the other.
//
//     Connection connection(arguments);
//     for (const Table& table : connection.Tables()) {
//         connection.ForEachRow(table, {}, [](const Row& row) { ... });
//     }
//
// Nothing is changed. No more than one row is held at a time, and each value has the room that it needs
// itself: what drivers tell of the size of columns is not relied on.
//
// All operations throw tools::Failure.

#ifndef TOOLS_KRTSTORE_CONNECTION_H
#define TOOLS_KRTSTORE_CONNECTION_H

#include "Arguments.h"
#include "Table.h"

#include "krtpal/common/odbc.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bss {
class SqlDialect;
}

namespace krtstore {

class Connection {
public:
    // The file has to be there: none is made.
    explicit Connection(const Arguments& arguments);
    ~Connection();

    // The file's or the data source's name, in quotes.
    const std::string& Name() const { return m_sName; }

    // All tables, by name.
    std::vector<Table> Tables();

    // Number of rows, lowest and highest version. The versions are null if the table has no such column, or
    // no rows.
    Row CountRows(const Table& table);
    // A row of group, object and number of rows for each key that more than one row has.
    std::vector<Row> RepeatedKeys(const Table& table);

    // The rows of one group, of one object of it, or all; in the order of their keys if they have any.
    struct Key {
        std::optional<std::int64_t> group;
        std::optional<std::int64_t> object;
    };
    // Where nobody can write while one reads, all rows are read in turns. A row that comes or goes meanwhile
    // may be among them or not.
    void ForEachRow(const Table& table, const Key& key, const std::function<void(const Row&)>& use);

    // How long a turn is; each has one key at least.
    void SetTurn(std::chrono::milliseconds turn) { m_Turn = turn; }

private:
    class Statement;
    /// The driver manager's handles, freed at the end.
    struct Link {
        Link();
        ~Link();
        Link(const Link&) = delete;
        Link& operator=(const Link&) = delete;

        krtpal::odbc::Handle environment = nullptr;
        krtpal::odbc::Handle connection = nullptr;
    };

    void ConnectFile(const std::string& file);
    void ConnectDataSource(const Arguments& arguments);
    void ReadCapabilities();
    std::wstring InfoText(std::uint16_t what) const;
    std::vector<Column> ReadColumns(const std::wstring& schema, const std::wstring& table) const;
    std::wstring Quoted(const std::wstring& name) const;
    // A column in a query; with `tellsStorage` how its value is stored stands in front.
    std::wstring Selected(const Column& column, bool tellsStorage) const;
    // Until `use` answers false.
    void Query(const std::wstring& sql, const std::vector<Kind>& kinds, bool tellsStorage,
               const std::string& failure, const std::function<bool(const Row&)>& use) const;

    // Values of the row that a statement is on, by the number of their column.
    Cell Fetch(krtpal::odbc::Handle statement, std::uint16_t column, Kind kind) const;
    Cell FetchStored(krtpal::odbc::Handle statement, std::uint16_t column, Kind kind) const;
    Cell FetchText(krtpal::odbc::Handle statement, std::uint16_t column) const;
    // Empty for NULL.
    std::wstring FetchName(krtpal::odbc::Handle statement, std::uint16_t column) const;

    std::string m_sName;
    Link m_Link;
    std::unique_ptr<const bss::SqlDialect> m_pDialect;
    bool m_bSqlite = false; // it tells how each single value is stored, and nobody writes while one reads
    std::wstring m_sSchema; // whose tables are meant; empty: all that the driver shows
    std::wstring m_sQuote;  // of identifiers; empty if they are not quoted
    std::chrono::milliseconds m_Turn{1000};
};

} // namespace krtstore

#endif
