// SqlDialect: the differences between back-ends in their SQL, their types and the values of their drivers. No
// other file has such differences.
//
// SQLite and PostgreSQL are selected by the name that the driver reports. All other drivers use the dialect
// of Access or of SQL Server.
//
// Threads: dialects are constant.

#ifndef BSS_SERIAL_DATABASE_PRIVATE_SQLDIALECT_H
#define BSS_SERIAL_DATABASE_PRIVATE_SQLDIALECT_H

#include "bss/Export.h"
#include "bss/serial/database/WDatabase.h"
#include "krtpal/common/odbc.h"
#include "krtpal/common/text.h"

#include <memory>
#include <string>
#include <vector>

namespace bss {

/// One dialect. The base has the defaults.
class KRTBSS_API SqlDialect {
public:
    using column = WDatabase::column;
    using parameter = WDatabase::parameter;

    /// The form of texts for the driver: unchanged UTF-16, or UTF-16 or UTF-8 with an escape for texts that
    /// the back-end can't store.
    enum e_text { textUtf16, textEscapedUtf16, textEscapedUtf8 };

    virtual ~SqlDialect();

    /// Returns the connection string of a database file, for the Access driver or SQLite's.
    /// Throws WNEODBCError for a path that a connection string can't hold.
    static std::wstring FileConnection(const std::wstring& path, const std::wstring& user,
                                       const std::wstring& password);
    /// Returns the URI of a file, in ASCII.
    static std::wstring SqliteUri(const std::wstring& path);
    /// Returns the dialect of a back-end. `dbmsName` is the name that the driver reports; `anyOrder`: columns
    /// may be fetched in any order.
    static std::unique_ptr<const SqlDialect> Make(const std::wstring& dbmsName, bool anyOrder);

    /// Returns the statement that creates a table. `fixed` are the five columns at the beginning of every
    /// table.
    virtual std::wstring CreateTable(const std::wstring& table, const std::vector<column>& fixed) const;
    /// Returns the statement that creates the unique index of the key.
    virtual std::wstring CreateIndex(const std::wstring& table) const = 0;
    /// Returns the statements that add columns, to be run in this order.
    virtual std::vector<std::wstring> AddColumns(const std::wstring& table,
                                                 const std::vector<column>& columns) const;
    /// Returns the name of a table or a column as statements require it.
    virtual std::wstring Quoted(const std::wstring& name) const;
    /// Returns the query for the schema whose tables are used; empty: all that the driver lists.
    virtual std::wstring SchemaQuery() const;
    /// Returns the hint after a table's name in a statement that writes.
    virtual std::wstring WriteHint() const;
    /// Returns the hint after a table's name in a statement that reads.
    virtual std::wstring ReadHint() const;
    /// Returns the expression of a SELECT for a column that returns its value without loss.
    virtual std::wstring Selected(const std::wstring& columnName, parameter::e_kind kind) const;

    /// Returns the back-end's name of an ODBC type that its driver does not report; empty if it has none.
    virtual std::wstring NameOfType(std::int16_t sqlType) const;
    /// Returns true if the type of a column is identified by its name, false if by its number.
    virtual bool HasTypeNames() const;
    /// Returns the kind of the values of a column; kindNone for an unknown type.
    virtual parameter::e_kind KindOfType(const std::wstring& typeName) const;
    /// Returns a statement that acquires the writers' lock and changes nothing; empty if none is needed.
    virtual std::wstring LockForWriting() const;
    /// Returns a statement by which all queries of a transaction see one state; empty if none is needed or
    /// none exists.
    virtual std::wstring FixStateForReading() const;

    /// Returns the form of texts for the driver.
    virtual e_text GetTextForm() const;
    /// Returns the text that is stored for a number that the back-end can't store; empty for all other
    /// numbers.
    virtual std::string FormOfNumber(double number) const;
    /// Returns true if GUIDs are stored as text.
    virtual bool HasGuidText() const;
    /// Returns true if the statements of objects are prepared once for each connection and cached, with
    /// markers for keys, and rows are fetched by named columns and closed at once. Otherwise each statement
    /// is sent again.
    virtual bool KeepsStatements() const;

protected:
    SqlDialect() = default;
    /// Returns the schema prefix of a table that is created.
    virtual std::wstring TablePrefix() const;
    /// Returns the words before each added column except the first.
    virtual std::wstring AddClause() const;
};

/// Returns the bytes of a text for the driver. An escaped form leaves a text unchanged, except one that has a
/// NUL or an unpaired surrogate or begins with U+FFFE: that becomes U+FFFE and four hexadecimal digits for
/// each code unit.
KRTBSS_API std::string EncodeText(krtpal::Utf16View units, SqlDialect::e_text form);
/// Returns the text of bytes from the driver. Invalid UTF-8 gives U+FFFD.
KRTBSS_API krtpal::Utf16String DecodeText(std::string_view bytes, SqlDialect::e_text form);

} // namespace bss

#endif
