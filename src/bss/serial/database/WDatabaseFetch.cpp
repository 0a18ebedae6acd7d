// Fetches the whole row of an object, before the object retrieves its members.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/serial/database/private/SqlDialect.h"
#include "bss/serial/database/private/Statement.h"
#include "bss/system/WGuid.h"
#include "krtpal/common/odbc.h"
#include "krtpal/common/text.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace bss {

namespace {

namespace odbc = krtpal::odbc;

} // namespace

void WDatabase::StartRetrieval(WPersistentObject& object) {
    const auto table = m_Tables.find(NameOfClass(object));
    if (IsSchemaPass() || table == m_Tables.end()) {
        return;
    }
    m_pCurrentObject = &object;
    RemoveAllParameters(m_Parameters);
    ClearCheckSumStream();
    AddToCheckSum(object.GetGroupID());
    AddToCheckSum(object.GetObjectID());
    if (m_pDialect->KeepsStatements()) {
        RetrieveRow(object, table->second);
        return;
    }
    odbc::FreeStmt(m_hStmt, odbc::kClose);
    odbc::FreeStmt(m_hStmt, odbc::kResetParams);
    m_hRow = m_hStmt;
    SendSelectQuery(L"*", m_hStmt);
    for (const column& each : table->second) {
        std::unique_ptr<parameter> value =
            FetchValue(object, m_pDialect->KindOfType(each.type), each.name, each.ordinal);
        if (value != nullptr) {
            m_Parameters.push_back(std::move(value));
        }
    }
}

const WDatabase::KeptTable& WDatabase::SelectionFor(const WPersistentObject& object,
                                                    const std::vector<column>& columns) {
    const std::wstring table = NameOfClass(object);
    if (const auto kept = m_KeptTables.find(table);
        kept != m_KeptTables.end() && kept->second.select != nullptr) {
        return kept->second;
    }
    std::vector<KeptTable::Selected> known;
    std::wstring names;
    for (const column& each : columns) {
        const parameter::e_kind kind = m_pDialect->KindOfType(each.type);
        if (kind != parameter::kindNone) {
            names += (names.empty() ? L"" : L", ") + m_pDialect->Selected(each.name, kind);
            known.push_back({kind, each.name, static_cast<std::int32_t>(known.size()) + 1});
        }
    }
    const odbc::Handle statement =
        StatementFor(L"SELECT " + names + L" FROM " + Quoted(table) + KeyCondition(object));
    KeptTable& made = m_KeptTables[table];
    made.select = statement;
    made.selected = std::move(known);
    return made;
}

void WDatabase::RetrieveRow(const WPersistentObject& object, const std::vector<column>& columns) {
    const KeptTable& table = SelectionFor(object, columns);
    m_hRow = table.select;
    const Reset reset(m_hRow);
    BindKey(m_hRow, 1, object);
    odbc::Result result = odbc::Execute(m_hRow);
    if (odbc::Succeeded(result)) {
        result = odbc::Fetch(m_hRow);
    }
    if (!odbc::Succeeded(result)) {
        throw WNESerializerError(GetErrorMsg(m_hRow, odbc::kStatement) + GetPosition(&object, L"*"));
    }
    for (const KeptTable::Selected& each : table.selected) {
        std::unique_ptr<parameter> value = FetchValue(object, each.kind, each.name, each.ordinal);
        if (value != nullptr) {
            m_Parameters.push_back(std::move(value));
        }
    }
}

void WDatabase::SendSelectQuery(const std::wstring& columns, void* statement) {
    const WPersistentObject& object = *m_pCurrentObject;
    ClearQueryStream();
    m_QueryStream << L"SELECT " << columns << L" FROM " << Quoted(NameOfClass(object))
                  << m_pDialect->ReadHint() << KeyCondition(object) << L";";
    odbc::Result result = odbc::ExecDirect(statement, m_QueryStream.str());
    if (odbc::Succeeded(result) || result == odbc::kNoData) {
        result = odbc::Fetch(statement);
    }
    if (!odbc::Succeeded(result)) {
        throw WNESerializerError(GetErrorMsg(statement, odbc::kStatement) + GetPosition(&object, columns));
    }
}

std::unique_ptr<WDatabase::parameter> WDatabase::FetchValue(const WPersistentObject& object,
                                                            parameter::e_kind kind, const std::wstring& name,
                                                            std::int32_t ordinal) {
    if (kind == parameter::kindNone) {
        return nullptr;
    }
    auto value = std::make_unique<parameter>(kind, name, nullptr, 0, object.GetVersion());
    value->columnIndex = ordinal;
    bool isThere = true;
    odbc::Result result = odbc::kSuccess;
    switch (kind) {
    case parameter::kindText:
    case parameter::kindTextToo:
        result = FetchText(*value);
        break;
    case parameter::kindBinary:
        result = m_pDialect->KeepsStatements() ? FetchWholeBinary(*value, &isThere)
                                               : FetchBinary(*value, &isThere);
        break;
    default:
        result = FetchFixed(*value);
    }
    if (!odbc::Succeeded(result)) {
        FailStatement(GetErrorMsg(m_hRow, odbc::kStatement) + GetPosition(&object, name));
    }
    if (!isThere) {
        value.reset();
    }
    return value;
}

std::int16_t WDatabase::FetchFixed(parameter& value) {
    struct Form {
        std::int16_t type;
        std::int32_t size;
    };
    const Form forms[] = {{odbc::kCBinary, 0}, {odbc::kCBit, 1},    {odbc::kCChar, 1},
                          {odbc::kCLong, 4},   {odbc::kCDouble, 8}, {odbc::kCBinary, 0},
                          {odbc::kCBinary, 0}, {odbc::kCBinary, 0}, {odbc::kCGuid, 16}};
    Form form = forms[value.kind];
    unsigned char buffer[64] = {};
    odbc::Length room = form.size;
    const bool isGuidText = value.kind == parameter::kindGuid && m_pDialect->HasGuidText();
    if (isGuidText || value.kind == parameter::kindBoolCharacter) {
        form.type = odbc::kCChar; // with a terminating NUL
        room = sizeof(buffer);
    }
    const auto ordinal = static_cast<std::uint16_t>(value.columnIndex);
    odbc::Length indicator = 0;
    const odbc::Result result = odbc::GetData(m_hRow, ordinal, form.type, buffer, room, &indicator);
    if (!odbc::Succeeded(result) || indicator == odbc::kNullData) {
        return result;
    }
    if (isGuidText) {
        buffer[sizeof(buffer) - 1] = 0;
        const GUID guid =
            WGuid(krtpal::WideFromUtf8(reinterpret_cast<const char*>(buffer)).c_str()).GetGuid();
        std::memcpy(buffer, &guid, sizeof(guid));
    }
    const auto size = static_cast<std::size_t>(form.size);
    value.data = std::make_unique<unsigned char[]>(size);
    std::memcpy(value.data.get(), buffer, size);
    value.dataLength = form.size;
    return result;
}

std::int16_t WDatabase::FetchBinary(parameter& value, bool* isThere) {
    const auto ordinal = static_cast<std::uint16_t>(value.columnIndex);
    odbc::Length length = 0;
    unsigned char nothing = 0;
    odbc::Result result = odbc::GetData(m_hRow, ordinal, odbc::kCBinary, &nothing, 0, &length);
    if (!odbc::Succeeded(result)) {
        return result;
    }
    *isThere = length != odbc::kNullData && length != odbc::kNoTotal;
    if (!*isThere || result != odbc::kSuccessWithInfo || length <= 0) {
        return odbc::kSuccess;
    }
    if (length > std::numeric_limits<std::int32_t>::max()) {
        throw WNESerializerError(L"Corrupt data for table");
    }
    value.data = std::make_unique<unsigned char[]>(static_cast<std::size_t>(length));
    value.dataLength = static_cast<std::int32_t>(length);
    result = odbc::GetData(m_hRow, ordinal, odbc::kCBinary, value.data.get(), length, &length);
    return result;
}

std::int16_t WDatabase::FetchWholeBinary(parameter& value, bool* isThere) {
    std::string bytes;
    bool isNull = false;
    const odbc::Result result = FetchPieces(value, odbc::kCBinary, 0, &bytes, &isNull);
    *isThere = !isNull;
    if (odbc::Succeeded(result) && !bytes.empty()) {
        value.data = std::make_unique<unsigned char[]>(bytes.size());
        value.dataLength = static_cast<std::int32_t>(bytes.size());
        std::memcpy(value.data.get(), bytes.data(), bytes.size());
    }
    return result;
}

std::int16_t WDatabase::FetchText(parameter& value) {
    const SqlDialect::e_text form = m_pDialect->GetTextForm();
    const bool isUtf8 = form == SqlDialect::textEscapedUtf8;
    std::string bytes;
    bool isNull = false;
    const odbc::Result result = FetchPieces(value, isUtf8 ? odbc::kCChar : odbc::kCWChar,
                                            isUtf8 ? 1 : sizeof(krtpal::Utf16Unit), &bytes, &isNull);
    if (!odbc::Succeeded(result)) {
        return result;
    }
    const krtpal::Utf16String units = DecodeText(bytes, form);
    value.dataLength = static_cast<std::int32_t>(units.size());
    value.data = std::make_unique<unsigned char[]>(value.GetByteCount());
    std::memcpy(value.data.get(), units.data(), value.GetByteCount());
    return odbc::kSuccess;
}

std::int16_t WDatabase::FetchPieces(const parameter& value, std::int16_t cType, std::size_t endUnit,
                                    std::string* bytes, bool* isNull) {
    const bool endsPlainly = m_pDialect->KeepsStatements();
    const auto ordinal = static_cast<std::uint16_t>(value.columnIndex);
    std::size_t room = endsPlainly ? 1024 : 260; // a size that allocators cache
    for (;;) {
        const std::size_t start = bytes->size();
        bytes->resize(start + room);
        odbc::Length left = 0;
        const odbc::Result result = odbc::GetData(m_hRow, ordinal, cType, bytes->data() + start,
                                                  static_cast<odbc::Length>(room), &left);
        *isNull = left == odbc::kNullData;
        // The driver reports the number of bytes that were left before this piece.
        const auto told = endsPlainly && left == odbc::kNoTotal
                              ? room
                              : static_cast<std::size_t>(std::max<odbc::Length>(left, 0));
        const std::size_t taken = odbc::Succeeded(result) ? std::min(told, room - endUnit) : 0;
        bytes->resize(start + taken);
        if (result == odbc::kNoData || (endsPlainly && (result == odbc::kSuccess || *isNull))) {
            return odbc::kSuccess;
        }
        if (!odbc::Succeeded(result)) {
            return result;
        }
        if (endsPlainly && told > taken) {
            room = told - taken + endUnit;
        }
    }
}

} // namespace bss
