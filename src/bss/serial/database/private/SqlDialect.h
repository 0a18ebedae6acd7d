// How back-ends differ in their SQL, their types, and what their drivers take and give. All such differences
// stand here and nowhere else.
//
// Access and SQL Server are spoken to in one exact form each, and so is any driver that is not known. The
// others are chosen by the name of the back-end that the driver tells.

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

class KRTBSS_API SqlDialect {
public:
    using column = WDatabase::column;
    using parameter = WDatabase::parameter;

    /// How texts go to and from the driver: UTF-16 as it is, or, in that or in UTF-8, with an escape for what
    /// the back-end can't hold.
    enum e_text { textUtf16, textEscapedUtf16, textEscapedUtf8 };

    virtual ~SqlDialect();

    /// What opens a database file: by the Access driver or by SQLite's. Throws WNEODBCError for a name that
    /// the driver can't be told.
    static std::wstring FileConnection(const std::wstring& path, const std::wstring& user,
                                       const std::wstring& password);
    /// The name of a file in ASCII, whatever its letters.
    static std::wstring SqliteUri(const std::wstring& path);
    /// `dbmsName` as the driver tells it; `anyOrder`: columns may be fetched in any order.
    static std::unique_ptr<const SqlDialect> Make(const std::wstring& dbmsName, bool anyOrder);

    /// `fixed` are the five columns that every table begins with.
    virtual std::wstring CreateTable(const std::wstring& table, const std::vector<column>& fixed) const;
    virtual std::wstring CreateIndex(const std::wstring& table) const = 0;
    /// The statements that add columns, to be run in their order.
    virtual std::vector<std::wstring> AddColumns(const std::wstring& table,
                                                 const std::vector<column>& columns) const;
    /// A table's or a column's name as it stands in statements.
    virtual std::wstring Quoted(const std::wstring& name) const;
    /// The query for the schema whose tables are meant; empty: all that the driver shows.
    virtual std::wstring SchemaQuery() const;
    /// What stands behind a table's name when it is written or read.
    virtual std::wstring WriteHint() const;
    virtual std::wstring ReadHint() const;
    /// What a SELECT names for a column, so that its value comes whole.
    virtual std::wstring Selected(const std::wstring& columnName, parameter::e_kind kind) const;

    /// The back-end's name for an ODBC type of which its driver tells nothing; empty if it has none.
    virtual std::wstring NameOfType(std::int16_t sqlType) const;
    /// Whether the columns of a table tell their type by name rather than by number.
    virtual bool HasTypeNames() const;
    virtual parameter::e_kind KindOfType(const std::wstring& typeName) const;
    /// A statement that changes nothing and takes the lock of writers; empty: none is needed.
    virtual std::wstring LockForWriting() const;
    /// A statement by which the queries of a transaction all see one state; empty: none is needed, or there
    /// is none.
    virtual std::wstring FixStateForReading() const;

    virtual e_text GetTextForm() const;
    /// What goes in the place of a number that the back-end cannot hold; empty for all others.
    virtual std::string FormOfNumber(double number) const;
    /// Whether GUIDs go as their text.
    virtual bool HasGuidText() const;
    /// Whether the statements of objects are prepared once a connection and kept, with markers for keys, and
    /// rows are fetched column by named column and closed at once. Otherwise each is sent anew.
    virtual bool KeepsStatements() const;

protected:
    SqlDialect() = default;
    virtual std::wstring TablePrefix() const;
    /// What stands before each added column but the first.
    virtual std::wstring AddClause() const;
};

/// The bytes of a text for the driver. An escaped text is one that every back-end can hold: as it is, or,
/// where it holds a NUL or half a surrogate pair or begins with U+FFFE, as U+FFFE and four hexadecimal digits
/// for each code unit.
KRTBSS_API std::string EncodeText(krtpal::Utf16View units, SqlDialect::e_text form);
/// Text that is no UTF-8 has U+FFFD for what is wrong.
KRTBSS_API krtpal::Utf16String DecodeText(std::string_view bytes, SqlDialect::e_text form);

} // namespace bss

#endif
