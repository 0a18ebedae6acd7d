// How back-ends differ in their SQL, their types, and what their drivers take and give. All such differences
// stand here and nowhere else.
//
// Access and SQL Server are spoken to in one exact form each, and so is any driver that is not known. The
// others are chosen by the name of the back-end that the driver tells.

#ifndef BSS_SERIAL_DATABASE_SQLDIALECT_H
#define BSS_SERIAL_DATABASE_SQLDIALECT_H

#include "bss/Export.h"
#include "bss/serial/database/WDatabase.h"
#include "platform/odbc.h"
#include "platform/text.h"

#include <memory>
#include <string>
#include <vector>

namespace bss {

class KRTBSS_API SqlDialect {
public:
    using column = WDatabase::column;
    using parameter = WDatabase::parameter;

    virtual ~SqlDialect();

    /// `dbmsName` as the driver tells it; `anyOrder`: columns may be fetched in any order.
    static std::unique_ptr<const SqlDialect> Make(const std::wstring& dbmsName, bool anyOrder);

    /// `fixed` are the five columns that every table begins with.
    virtual std::wstring CreateTable(const std::wstring& table, const std::vector<column>& fixed) const;
    virtual std::wstring CreateIndex(const std::wstring& table) const = 0;
    /// The statements that add columns, to be run in their order.
    virtual std::vector<std::wstring> AddColumns(const std::wstring& table,
                                                 const std::vector<column>& columns) const;
    /// What stands behind a table's name when it is written or read.
    virtual std::wstring WriteHint() const;
    virtual std::wstring ReadHint() const;

    /// The back-end's name for an ODBC type of which its driver tells nothing; empty if it has none.
    virtual std::wstring NameOfType(std::int16_t sqlType) const;
    /// Whether the columns of a table tell their type by name rather than by number.
    virtual bool HasTypeNames() const;
    virtual parameter::e_kind KindOfType(const std::wstring& typeName) const;

    /// Whether texts go to and from the driver as UTF-8 and not as UTF-16.
    virtual bool HasUtf8Text() const;
    /// Whether GUIDs go as their text.
    virtual bool HasGuidText() const;
    /// Whether the driver tells the size of binary data as a plain success, and the end of a text by one,
    /// too, rather than by having no more data.
    virtual bool EndsPlainly() const;

protected:
    SqlDialect() = default;
    virtual std::wstring TablePrefix() const;
};

/// Any text as UTF-8 that every back-end can hold: as it is, or, where it holds a NUL or half a surrogate
/// pair, as U+FFFE and four hexadecimal digits for each code unit.
KRTBSS_API std::string EncodeText(platform::Utf16View units);
/// Text that is no UTF-8 has U+FFFD for what is wrong.
KRTBSS_API platform::Utf16String DecodeText(std::string_view bytes);

} // namespace bss

#endif
