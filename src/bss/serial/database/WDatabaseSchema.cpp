// The schema: reads types, tables and columns, creates and changes tables.

#include "bss/exception/WEventLog.h"
#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/serial/database/private/SqlDialect.h"
#include "bss/serial/database/private/Statement.h"
#include "krtpal/common/odbc.h"
#include "krtpal/common/text.h"
#include "krtpal/debug.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace bss {

namespace {

namespace odbc = krtpal::odbc;

void Release(odbc::Handle statement, std::initializer_list<std::uint16_t> options) {
    for (const std::uint16_t option : options) {
        odbc::FreeStmt(statement, option);
    }
}

// A bound column of a catalogue function, which returns narrow text.
template <std::size_t room>
struct NarrowColumn {
    std::array<char, room> text{};
    odbc::Length indicator = 0;

    void Bind(odbc::Handle statement, std::uint16_t number) {
        odbc::BindCol(statement, number, odbc::kCChar, text.data(), room, &indicator);
    }
    std::wstring Value() const {
        return indicator == odbc::kNullData ? std::wstring() : krtpal::WidenText(text.data());
    }
};

} // namespace

bool WDatabase::HasTable(const std::wstring& table) const {
    return m_Tables.count(table) != 0;
}

bool WDatabase::HasColumn(const std::wstring& table, const std::wstring& name) const {
    const auto found = m_Tables.find(table);
    return found != m_Tables.end() && GetColumnIndexFromName(found, name) > 0;
}

void WDatabase::CheckDataTypes() {
    for (void** const statement : {&m_hStmt, &m_hStmtSchema}) {
        if (!odbc::Succeeded(odbc::AllocHandle(odbc::kStatement, m_hDbc, statement))) {
            throw WNEODBCError(GetErrorMsg(m_hDbc, odbc::kConnection));
        }
    }
    ReadSchema();
    m_nBitType = odbc::kBit;
    m_nIntegerType = odbc::kInteger;
    m_nDoubleType = odbc::kDouble;
    struct FallBack {
        const wchar_t* name;
        std::int16_t* type;
        std::int16_t first;
        std::int16_t second;
    };
    const FallBack fallBacks[] = {
        {L"bit", &m_nBitType, odbc::kBit, odbc::kChar},
        {L"integer", &m_nIntegerType, odbc::kInteger, odbc::kDecimal},
        {L"double", &m_nDoubleType, odbc::kDouble, odbc::kFloat},
    };
    for (bool isMapped = false; !isMapped;) {
        try {
            MapDataTypes();
            isMapped = true;
        } catch (const WNEODBCTypeNotSupported& e) {
            const std::wstring& name = e.GetArgument<0>();
            const auto* const fallBack =
                std::find_if(std::begin(fallBacks), std::end(fallBacks), [&](const FallBack& each) {
                    return each.name == name && *each.type == each.first;
                });
            if (fallBack == std::end(fallBacks)) {
                throw WNEODBCTypeNotSupported(std::wstring());
            }
            *fallBack->type = fallBack->second;
        }
    }
    MapTables();
}

void WDatabase::ReadSchema() {
    m_sSchema.clear();
    const std::wstring query = m_pDialect->SchemaQuery();
    if (query.empty()) {
        return;
    }
    NarrowColumn<128> name;
    name.Bind(m_hStmtSchema, 1);
    if (!odbc::Succeeded(odbc::ExecDirect(m_hStmtSchema, query)) ||
        !odbc::Succeeded(odbc::Fetch(m_hStmtSchema))) {
        throw WNEODBCError(GetErrorMsg(m_hStmtSchema, odbc::kStatement));
    }
    m_sSchema = name.Value();
}

void WDatabase::MapDataTypes() {
    m_DataTypes = {
        {m_nBitType, L"bit"},       {odbc::kWLongVarChar, L"wlongvarchar"},   {m_nIntegerType, L"integer"},
        {m_nDoubleType, L"double"}, {odbc::kLongVarBinary, L"longvarbinary"}, {odbc::kGuid, L"guid"}};
    for (auto& [type, name] : m_DataTypes) {
        Release(m_hStmtSchema, {odbc::kUnbind, odbc::kClose});
        if (!odbc::Succeeded(odbc::GetTypeInfo(m_hStmtSchema, type))) {
            throw WNEODBCError(GetErrorMsg(m_hStmtSchema, odbc::kStatement));
        }
        NarrowColumn<100> typeName;
        typeName.Bind(m_hStmtSchema, 1);
        std::wstring found;
        while (odbc::Succeeded(odbc::Fetch(m_hStmtSchema))) {
            found = found.empty() ? typeName.Value() : found;
        }
        if (found.empty()) {
            found = m_pDialect->NameOfType(type);
        }
        if (found.empty()) {
            throw WNEODBCTypeNotSupported(name);
        }
        name = found;
    }
}

void WDatabase::MapTables() {
    m_Tables.clear();
    DropKeptStatements();
    Release(m_hStmtSchema, {odbc::kUnbind, odbc::kClose});
    if (!odbc::Succeeded(odbc::Tables(m_hStmtSchema, L"TABLE", m_sSchema))) {
        throw WNEODBCError(GetErrorMsg(m_hStmtSchema, odbc::kStatement));
    }
    NarrowColumn<128> name;
    name.Bind(m_hStmtSchema, 3);
    while (odbc::Succeeded(odbc::Fetch(m_hStmtSchema))) {
        m_Tables[name.Value()];
    }
    MapColumns();
    Release(m_hStmtSchema, {odbc::kUnbind, odbc::kClose, odbc::kResetParams});
}

void WDatabase::MapColumns() {
    for (auto& [table, columns] : m_Tables) {
        Release(m_hStmtSchema, {odbc::kUnbind, odbc::kClose});
        if (!odbc::Succeeded(odbc::Columns(m_hStmtSchema, table, m_sSchema))) {
            throw WNEODBCError(GetErrorMsg(m_hStmtSchema, odbc::kStatement));
        }
        NarrowColumn<128> name;
        NarrowColumn<128> typeName;
        std::int16_t type = 0;
        std::int32_t ordinal = 0;
        odbc::Length indicator = 0;
        name.Bind(m_hStmtSchema, 4);
        if (m_pDialect->HasTypeNames()) {
            typeName.Bind(m_hStmtSchema, 6);
        }
        odbc::BindCol(m_hStmtSchema, 14, odbc::kCShort, &type, sizeof(type), &indicator);
        odbc::BindCol(m_hStmtSchema, 17, odbc::kCLong, &ordinal, sizeof(ordinal), &indicator);
        while (odbc::Succeeded(odbc::Fetch(m_hStmtSchema))) {
            const auto known = m_DataTypes.find(type);
            const std::wstring byNumber = known == m_DataTypes.end() ? std::wstring() : known->second;
            columns.emplace_back(ordinal, name.Value(),
                                 m_pDialect->HasTypeNames() ? typeName.Value() : byNumber);
        }
        std::sort(columns.begin(), columns.end());
    }
}

WDatabase::tableMap::iterator WDatabase::FindTable(const std::wstring& name) {
    const auto table = m_Tables.find(name);
    if (table != m_Tables.end()) {
        return table;
    }
    MapTables();
    return m_Tables.find(name);
}

void WDatabase::CreateTable(const WPersistentObject& object) {
    const std::wstring name = NameOfClass(object);
    if (!HasTable(name)) {
        Send(m_pDialect->LockForWriting());
    }
    if (FindTable(name) != m_Tables.end()) {
        return;
    }
    const std::vector<column> fixed = {{1, L"RecID", m_DataTypes[odbc::kGuid]},
                                       {2, L"m_nVersion", m_DataTypes[m_nIntegerType]},
                                       {3, L"groupID", m_DataTypes[m_nIntegerType]},
                                       {4, L"objectID", m_DataTypes[m_nIntegerType]},
                                       {5, L"checkSum", m_DataTypes[odbc::kWLongVarChar]}};
    const Statement statement(m_hDbc);
    if (!statement.IsAllocated() ||
        !odbc::Succeeded(odbc::ExecDirect(statement.Handle(), m_pDialect->CreateTable(name, fixed)))) {
        throw std::runtime_error("unknown failure");
    }
    if (!odbc::Succeeded(odbc::ExecDirect(statement.Handle(), m_pDialect->CreateIndex(name)))) {
        // Continue: without the index, rows are found more slowly.
        const std::wstring text = GetErrorMsg(statement.Handle(), odbc::kStatement) + GetPosition(&object);
        WEventLog::Write(text.c_str(), WEventLog::Warning);
        OutputDebugStringW(text.c_str());
    }
    m_Tables[name] = fixed;
    DropKeptStatements();
}

WDatabase::tableIterator WDatabase::CurrentTable() const {
    if (m_pCurrentObject == nullptr) {
        return m_Tables.end();
    }
    return m_pCurrentObject == m_pNamedObject ? m_Tables.find(m_sNameOfClass)
                                              : m_Tables.find(m_pCurrentObject->GetNameOfClass());
}

int WDatabase::CreateColumn(const std::wstring& name, const std::wstring& typeName) {
    const auto table = CurrentTable();
    if (table == m_Tables.end()) {
        return -1;
    }
    const int index = GetColumnIndexFromName(table, name);
    if (index > 0) {
        return index;
    }
    m_NewColumns.emplace_back(-1, name, typeName);
    return static_cast<int>(m_NewColumns.size() + table->second.size());
}

void WDatabase::AlterTable(const WPersistentObject& object, const std::vector<column>& newColumns) {
    const auto table = FindTable(NameOfClass(object));
    if (table == m_Tables.end() || std::any_of(newColumns.begin(), newColumns.end(), [&](const column& each) {
            return GetColumnIndexFromName(table, each.name) > 0;
        })) {
        return;
    }
    std::vector<column> added = newColumns;
    auto ordinal = static_cast<std::int32_t>(table->second.size());
    for (column& each : added) {
        each.ordinal = ++ordinal;
    }
    for (const std::wstring& text : m_pDialect->AddColumns(table->first, added)) {
        const Statement statement(m_hDbc);
        if (!statement.IsAllocated()) {
            throw std::runtime_error("unexpected failure: SQLAllocHandle");
        }
        if (!odbc::Succeeded(odbc::ExecDirect(statement.Handle(), text))) {
            throw std::runtime_error("unexpected failure");
        }
    }
    table->second.insert(table->second.end(), added.begin(), added.end());
    std::sort(table->second.begin(), table->second.end());
    DropKeptStatements();
}

void WDatabase::DropTable(const WPersistentObject& object) {
    const std::wstring name = NameOfClass(object);
    if (!m_TransactionModes.empty() || !HasTable(name)) {
        return;
    }
    ClearQueryStream();
    m_QueryStream << L"DROP TABLE " << Quoted(name);
    SetTransactionMode(transactionAuto);
    SendQuery();
    MapTables();
}

void WDatabase::RenameTable(const WPersistentObject& object, const std::wstring& oldName,
                            const std::wstring& newName) {
    if (!m_TransactionModes.empty() || !HasTable(NameOfClass(object))) {
        return;
    }
    ClearQueryStream();
    m_QueryStream << L"RENAME TABLE " << Quoted(oldName) << L" TO " << Quoted(newName);
    SetTransactionMode(transactionAuto);
    SendQuery();
    MapTables();
}

int WDatabase::GetColumnIndexFromName(const std::wstring& name) const {
    const auto table = CurrentTable();
    return table == m_Tables.end() ? 1 : GetColumnIndexFromName(table, name);
}

int WDatabase::GetColumnIndexFromName(tableIterator table, const std::wstring& name) {
    const auto found = std::find_if(table->second.begin(), table->second.end(),
                                    [&](const column& each) { return each.name == name; });
    return found == table->second.end() ? -1 : static_cast<int>(found - table->second.begin()) + 1;
}

} // namespace bss
