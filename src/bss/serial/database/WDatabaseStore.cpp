// Objects: the passes of a write, the statement of a row, the checksum, and the fetch of a row.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/serial/database/WChecksum.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/serial/database/private/SqlDialect.h"
#include "bss/serial/database/private/Statement.h"
#include "bss/system/WEncryption.h"
#include "bss/system/WGuid.h"
#include "platform/debug.h"
#include "platform/odbc.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

namespace bss {

namespace {

namespace odbc = platform::odbc;

/// From so many bytes on a value goes to the driver while the statement runs.
constexpr std::size_t kAtExecution = 1024;

std::wstring KeyCondition(const WPersistentObject& object) {
    return L" WHERE groupID = " + std::to_wstring(object.GetGroupID()) + L" AND objectID = " +
           std::to_wstring(object.GetObjectID());
}

bool IsKey(const std::wstring& column) {
    return column == L"groupID" || column == L"objectID";
}

/// The checksum's text holds any 16-bit value; a zero would end it in a column.
void ReplaceZeros(std::wstring& text) {
    std::replace(text.begin(), text.end(), L'\0', L'~');
}

void Debug(const std::wstring& text) {
    OutputDebugStringW(text.c_str());
}

} // namespace

/// The object in hand for the time of a call: afterwards callers may destroy it.
class WDatabase::CurrentObject {
public:
    CurrentObject(WDatabase& database, WPersistentObject& object)
        : m_database(database), m_former(database.m_pCurrentObject) {
        m_database.m_pCurrentObject = &object;
        m_database.m_sLastClass = object.GetNameOfClass();
        m_database.m_nLastGroup = object.GetGroupID();
        m_database.m_nLastObject = object.GetObjectID();
    }
    ~CurrentObject() { m_database.m_pCurrentObject = m_former; }
    CurrentObject(const CurrentObject&) = delete;
    CurrentObject& operator=(const CurrentObject&) = delete;

private:
    WDatabase& m_database;
    WPersistentObject* m_former;
};

void WDatabase::Write(WPersistentObject& object, bool bDeep) {
    const CurrentObject current(*this, object);
    try {
        if (m_ePass != passNone) {
            SetTransactionMode(transactionManual);
            WriteObject(object, bDeep);
            Transact(transactionCommit);
        }
        if (!m_TransactionModes.empty()) {
            return;
        }
        switch (m_ePass) {
        case passNone:
            m_ePass = passSchema;
            Write(object, bDeep);
            break;
        case passSchema:
            m_ePass = passData;
            Write(object, bDeep);
            break;
        case passData:
            m_ePass = passNone;
            break;
        }
    } catch (...) {
        RollBack();
        throw;
    }
}

void WDatabase::Read(WPersistentObject& object, bool bDeep) {
    const CurrentObject current(*this, object);
    RunDataPass([&] { ReadObject(object, bDeep); }, [&] { Read(object, bDeep); });
}

void WDatabase::Delete(WPersistentObject& object, bool bDeep) {
    const CurrentObject current(*this, object);
    RunDataPass([&] { DeleteObject(object, bDeep); }, [&] { Delete(object, bDeep); });
}

/// The frame of what has one pass only; `runAgain` calls the operation anew, in the pass.
template <class RunOne, class RunAgain>
void WDatabase::RunDataPass(RunOne runOne, RunAgain runAgain) {
    try {
        if (m_ePass == passData) {
            SetTransactionMode(transactionManual);
            runOne();
            Transact(transactionCommit);
        }
        if (!m_TransactionModes.empty()) {
            return;
        }
        if (m_ePass == passNone) {
            m_ePass = passData;
            runAgain();
        } else if (m_ePass == passData) {
            m_ePass = passNone;
        }
    } catch (...) {
        RollBack();
        throw;
    }
}

/// After a failure, which is what is to be told: that of the way back is not.
void WDatabase::RollBack() noexcept {
    try {
        Transact(transactionRollback);
    } catch (const WNestedException& e) {
        Debug(e.AsString(false) + L"\n");
    } catch (...) { // NOLINT(bugprone-empty-catch): as above
    }
    if (m_TransactionModes.empty()) {
        m_ePass = passNone;
    }
}

void WDatabase::WriteObject(WPersistentObject& object, bool bDeep) {
    m_NewColumns.clear();
    m_pCurrentObject = &object;
    if (IsSchemaPass()) {
        CreateTable(object);
        object.WriteObject();
        if (!m_NewColumns.empty()) {
            AlterTable(object, m_NewColumns);
        }
    } else {
        if (bDeep && m_eConnection == connectionDataSource) {
            DeleteOldComponents(object);
        }
        object.WriteObject();
    }
    if (bDeep) {
        object.SerializeComponents(false);
    }
    m_pCurrentObject = &object;
}

/// Those that have gone from the object leave the database. The write goes on if they can't.
void WDatabase::DeleteOldComponents(WPersistentObject& object) {
    try {
        object.DeleteComponents();
    } catch (...) {
        Debug(L"Unexpected database error. Unable to clear"
              L"clear old data before writing updated data\t" +
              object.GetNameOfClass() + L"(" + std::to_wstring(object.GetGroupID()) + L", " +
              std::to_wstring(object.GetObjectID()) + L")\n");
    }
}

void WDatabase::ReadObject(WPersistentObject& object, bool bDeep) {
    m_NewColumns.clear();
    m_pCurrentObject = &object;
    object.ReadObject();
    if (bDeep) {
        object.SerializeComponents(true);
    }
    m_pCurrentObject = &object;
}

void WDatabase::DeleteObject(WPersistentObject& object, bool bDeep) {
    m_NewColumns.clear();
    m_pCurrentObject = &object;
    ClearQueryStream();
    const std::wstring table = object.GetNameOfClass();
    if (HasTable(table)) {
        m_QueryStream << L"DELETE FROM " << table << KeyCondition(object);
        SendQuery();
    }
    if (bDeep) {
        object.DeleteComponents();
    }
    m_pCurrentObject = &object;
}

void WDatabase::ClearCheckSumStream() {
    m_CheckSumText.clear();
}

std::wstring WDatabase::CalculateCheckSum(const std::wstring& text) const {
    const unsigned long sum = WChecksum::GetCheckSum(text.data(), static_cast<unsigned long>(text.size()), 0);
    return WEncryption().EncryptWideString(std::to_wstring(sum));
}

void WDatabase::RemoveAllParameters(parameterList& parameters) {
    parameters.clear();
}

void WDatabase::SortParameters(WPersistentObject& object, const tableMap& tables, parameterList& parameters) {
    const auto table = tables.find(object.GetNameOfClass());
    for (const std::unique_ptr<parameter>& each : parameters) {
        each->columnIndex = table == tables.end() ? -1 : GetColumnIndexFromName(table, each->name);
    }
    parameters.sort([](const auto& a, const auto& b) { return *a < *b; });
}

void WDatabase::StartInsertion(WPersistentObject& object) {
    RemoveAllParameters(m_Parameters);
    ClearCheckSumStream();
    m_NewColumns.clear();
    m_pCurrentObject = &object;
    if (IsSchemaPass()) {
        return;
    }
    odbc::FreeStmt(m_hStmt, odbc::kClose);
    odbc::FreeStmt(m_hStmt, odbc::kResetParams);
    if (!HasTable(object.GetNameOfClass())) {
        throw WNEODBCError(L"Table " + object.GetNameOfClass() + L" does not exist.");
    }
    AddToCheckSum(object.GetGroupID());
    AddToCheckSum(object.GetObjectID());
}

void WDatabase::FinishInsertion(WPersistentObject& object) {
    if (m_Parameters.empty()) {
        return;
    }
    if (!IsValid()) {
        throw WNESerializerError(L"Serializer is in an invalid state.");
    }
    std::wstring checkSum = CalculateCheckSum(m_CheckSumText);
    ReplaceZeros(checkSum);
    const bool isUpdate = Exists(object, nullptr);
    if (!isUpdate && HasColumn(object.GetNameOfClass(), L"RecID")) {
        Insert(L"RecID", WGuid::GetNextGuid());
    }
    Insert(L"checkSum", checkSum);
    SortParameters(object, m_Tables, m_Parameters);
    ComposeStatement(object, isUpdate);
    BindParameters(object, isUpdate);
    ExecuteStatement(object);
    RemoveAllParameters(m_Parameters);
    ClearQueryStream();
}

void WDatabase::ComposeStatement(const WPersistentObject& object, bool isUpdate) {
    std::wstring columns;
    std::wstring markers;
    for (const std::unique_ptr<parameter>& each : m_Parameters) {
        if (!isUpdate) {
            columns += (columns.empty() ? L"" : L", ") + each->name;
            markers += markers.empty() ? L"?" : L", ?";
        } else if (!IsKey(each->name)) {
            columns += (columns.empty() ? L"" : L", ") + each->name + L" = ?";
        }
    }
    ClearQueryStream();
    const std::wstring table = object.GetNameOfClass() + m_pDialect->WriteHint();
    if (isUpdate) {
        m_QueryStream << L"UPDATE " << table << L" SET " << columns << KeyCondition(object);
    } else {
        m_QueryStream << L"INSERT INTO " << table << L" (" << columns << L")" << L" VALUES (" << markers
                      << L")";
    }
}

void WDatabase::BindParameters(const WPersistentObject& object, bool isUpdate) {
    std::int16_t number = 0;
    for (const std::unique_ptr<parameter>& each : m_Parameters) {
        if (isUpdate && IsKey(each->name)) {
            continue;
        }
        each->number = ++number;
        MakeDriverForm(*each);
        if (!BindParameter(*each)) {
            Debug(GetErrorMsg(m_hStmt, odbc::kStatement) + GetPosition(&object, each->name));
        }
    }
}

/// Where the driver takes a value in another form, makes that.
void WDatabase::MakeDriverForm(parameter& value) const {
    if (value.kind == parameter::kindText && m_pDialect->HasUtf8Text()) {
        value.driverForm = EncodeText({reinterpret_cast<const platform::Utf16Unit*>(value.data.get()),
                                       static_cast<std::size_t>(value.dataLength)});
    } else if (value.kind == parameter::kindGuid && m_pDialect->HasGuidText()) {
        GUID guid{};
        std::memcpy(&guid, value.data.get(), sizeof(guid));
        value.driverForm = platform::Utf8FromWide(WGuid::GetAsText(guid));
    }
}

bool WDatabase::BindParameter(parameter& value) {
    struct Types {
        std::int16_t c;
        std::int16_t sql;
    };
    const Types types[] = {
        {odbc::kCBinary, odbc::kLongVarBinary},
        {odbc::kCBit, m_nBitType},
        {odbc::kCChar, m_nBitType},
        {odbc::kCSLong, m_nIntegerType},
        {odbc::kCDouble, m_nDoubleType},
        {odbc::kCWChar, odbc::kWLongVarChar},
        {odbc::kCWChar, odbc::kWLongVarChar},
        {odbc::kCBinary, odbc::kLongVarBinary},
        {odbc::kCGuid, odbc::kGuid},
    };
    Types type = types[value.kind];
    if (value.driverForm) {
        type = {odbc::kCChar, value.kind == parameter::kindText ? odbc::kLongVarChar : odbc::kVarChar};
    }
    const bool hasLength =
        value.kind == parameter::kindText || value.kind == parameter::kindBinary || value.driverForm;
    void* const data = value.driverForm ? value.driverForm->data() : static_cast<void*>(value.data.get());
    const std::size_t size = value.driverForm ? value.driverForm->size() : value.GetByteCount();
    const auto length = static_cast<odbc::Length>(size);
    const auto number = static_cast<std::uint16_t>(value.number);
    if (!hasLength) {
        value.indicator = length;
        return odbc::Succeeded(
            odbc::BindParameter(m_hStmt, number, type.c, type.sql, 0, data, length, &value.indicator));
    }
    const bool isAtExecution = size >= kAtExecution;
    value.indicator = isAtExecution ? odbc::LengthAtExecution(length) : length;
    // The driver form was made before, and stays.
    // NOLINTBEGIN(clang-analyzer-cplusplus.InnerPointer)
    return odbc::Succeeded(odbc::BindParameter(m_hStmt, number, type.c, type.sql, size,
                                               isAtExecution ? &value.number : data, 0, &value.indicator));
    // NOLINTEND(clang-analyzer-cplusplus.InnerPointer)
}

/// Leaves the statement ready for the next one.
void WDatabase::FailStatement(const std::wstring& text) {
    odbc::FreeStmt(m_hStmt, odbc::kUnbind);
    odbc::FreeStmt(m_hStmt, odbc::kResetParams);
    throw WNESerializerError(text);
}

void WDatabase::ExecuteStatement(const WPersistentObject& object) {
    const odbc::Result result = odbc::ExecDirect(m_hStmt, m_QueryStream.str());
    if (result == odbc::kError || result == odbc::kInvalidHandle) {
        FailStatement(GetErrorMsg(m_hStmt, odbc::kStatement) + GetPosition(&object));
    }
    if (result == odbc::kNeedData) {
        SendDataAtExecution(object);
    } else if (!odbc::Succeeded(result)) {
        Debug(GetErrorMsg(m_hStmt, odbc::kStatement) + GetPosition(&object));
    }
}

void WDatabase::SendDataAtExecution(const WPersistentObject& object) {
    void* address = nullptr;
    odbc::Result result = odbc::ParamData(m_hStmt, &address);
    while (result == odbc::kNeedData) {
        const auto value = std::find_if(m_Parameters.begin(), m_Parameters.end(),
                                        [address](const auto& each) { return &each->number == address; });
        if (value == m_Parameters.end()) {
            FailStatement(L"Unable to access data for serialization");
        }
        const parameter& found = **value;
        const void* const data =
            found.driverForm ? found.driverForm->data() : static_cast<const void*>(found.data.get());
        const std::size_t size = found.driverForm ? found.driverForm->size() : found.GetByteCount();
        if (!odbc::Succeeded(odbc::PutData(m_hStmt, data, static_cast<odbc::Length>(size)))) {
            Debug(GetErrorMsg(m_hStmt, odbc::kStatement) + GetPosition(&object, found.name));
        }
        result = odbc::ParamData(m_hStmt, &address);
    }
    if (!odbc::Succeeded(result)) {
        FailStatement(GetErrorMsg(m_hStmt, odbc::kStatement) + GetPosition(&object));
    }
}

bool WDatabase::Exists(const WPersistentObject& object, long* pVersion) {
    const std::wstring table = object.GetNameOfClass();
    if (!HasTable(table)) {
        return false;
    }
    bool isThere = false;
    RunQuery(L"SELECT m_nVersion FROM " + table + KeyCondition(object), [&](odbc::Handle statement) {
        std::int32_t version = 0;
        odbc::Length indicator = 0;
        BindFirstColumn(statement, &version, &indicator);
        while (!isThere && FetchRow(statement)) {
            // A row of that version or an older one counts as none.
            isThere = version > WVersion::GetVersion(5, 0, 0, 0);
        }
        if (isThere && pVersion != nullptr) {
            *pVersion = version;
        }
    });
    return isThere;
}

void WDatabase::StartRetrieval(WPersistentObject& object) {
    const auto table = m_Tables.find(object.GetNameOfClass());
    if (IsSchemaPass() || table == m_Tables.end()) {
        return;
    }
    m_pCurrentObject = &object;
    RemoveAllParameters(m_Parameters);
    ClearCheckSumStream();
    AddToCheckSum(object.GetGroupID());
    AddToCheckSum(object.GetObjectID());
    odbc::FreeStmt(m_hStmt, odbc::kClose);
    odbc::FreeStmt(m_hStmt, odbc::kResetParams);
    SendSelectQuery(L"*", m_hStmt);
    for (const column& each : table->second) {
        std::unique_ptr<parameter> value = FetchValue(object, each);
        if (value != nullptr) {
            m_Parameters.push_back(std::move(value));
        }
    }
}

void WDatabase::SendSelectQuery(const std::wstring& columns, void* statement) {
    const WPersistentObject& object = *m_pCurrentObject;
    ClearQueryStream();
    m_QueryStream << L"SELECT " << columns << L" FROM " << object.GetNameOfClass() << m_pDialect->ReadHint()
                  << KeyCondition(object) << L";";
    odbc::Result result = odbc::ExecDirect(statement, m_QueryStream.str());
    if (odbc::Succeeded(result) || result == odbc::kNoData) {
        result = odbc::Fetch(statement);
    }
    if (!odbc::Succeeded(result)) {
        throw WNESerializerError(GetErrorMsg(statement, odbc::kStatement) + GetPosition(&object, columns));
    }
}

/// The value of a column in the row that was fetched; null for a column of a type that is not known, and for
/// binary data that is not there.
std::unique_ptr<WDatabase::parameter> WDatabase::FetchValue(const WPersistentObject& object,
                                                            const column& from) {
    const parameter::e_kind kind = m_pDialect->KindOfType(from.type);
    if (kind == parameter::kindNone) {
        return nullptr;
    }
    auto value = std::make_unique<parameter>(kind, from.name, nullptr, 0, object.GetVersion());
    value->columnIndex = from.ordinal;
    bool isThere = true;
    odbc::Result result = odbc::kSuccess;
    switch (kind) {
    case parameter::kindText:
    case parameter::kindTextToo:
        result = FetchText(*value);
        break;
    case parameter::kindBinary:
        result = FetchBinary(*value, &isThere);
        break;
    default:
        result = FetchFixed(*value);
    }
    if (!odbc::Succeeded(result)) {
        FailStatement(GetErrorMsg(m_hStmt, odbc::kStatement) + GetPosition(&object, from.name));
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
        form.type = odbc::kCChar; // with a NUL behind
        room = sizeof(buffer);
    }
    const auto ordinal = static_cast<std::uint16_t>(value.columnIndex);
    odbc::Length indicator = 0;
    const odbc::Result result = odbc::GetData(m_hStmt, ordinal, form.type, buffer, room, &indicator);
    if (!odbc::Succeeded(result) || indicator == odbc::kNullData) {
        return result;
    }
    if (isGuidText) {
        buffer[sizeof(buffer) - 1] = 0;
        const GUID guid =
            WGuid(platform::WideFromUtf8(reinterpret_cast<const char*>(buffer)).c_str()).GetGuid();
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
    odbc::Result result = odbc::GetData(m_hStmt, ordinal, odbc::kCBinary, &nothing, 0, &length);
    const bool tellsSize =
        result == odbc::kSuccessWithInfo || (result == odbc::kSuccess && m_pDialect->EndsPlainly());
    if (!odbc::Succeeded(result)) {
        return result;
    }
    *isThere = length != odbc::kNullData && length != odbc::kNoTotal;
    if (!*isThere || !tellsSize || length <= 0) {
        return odbc::kSuccess;
    }
    if (length > std::numeric_limits<std::int32_t>::max()) {
        throw WNESerializerError(L"Corrupt data for table");
    }
    value.data = std::make_unique<unsigned char[]>(static_cast<std::size_t>(length));
    value.dataLength = static_cast<std::int32_t>(length);
    result = odbc::GetData(m_hStmt, ordinal, odbc::kCBinary, value.data.get(), length, &length);
    return result;
}

std::int16_t WDatabase::FetchText(parameter& value) {
    const auto ordinal = static_cast<std::uint16_t>(value.columnIndex);
    const bool isUtf8 = m_pDialect->HasUtf8Text();
    const std::size_t unit = isUtf8 ? 1 : sizeof(platform::Utf16Unit);
    std::string bytes;
    std::vector<char> piece(isUtf8 ? 65'536 : 260);
    for (;;) {
        odbc::Length indicator = 0;
        const odbc::Result result =
            odbc::GetData(m_hStmt, ordinal, isUtf8 ? odbc::kCChar : odbc::kCWChar, piece.data(),
                          static_cast<odbc::Length>(piece.size()), &indicator);
        if (result == odbc::kNoData) {
            break;
        }
        if (!odbc::Succeeded(result)) {
            return result;
        }
        if (indicator != odbc::kNullData && indicator != odbc::kNoTotal) {
            // What the indicator tells is what was left before this piece.
            const auto left = static_cast<std::size_t>(std::max<odbc::Length>(indicator, 0));
            bytes.append(piece.data(), std::min(left, piece.size() - unit));
        }
        if (result == odbc::kSuccess && m_pDialect->EndsPlainly()) {
            break;
        }
    }
    platform::Utf16String units;
    if (isUtf8) {
        units = DecodeText(bytes);
    } else {
        units.resize(bytes.size() / unit);
        std::memcpy(units.data(), bytes.data(), units.size() * unit);
    }
    value.dataLength = static_cast<std::int32_t>(units.size());
    value.data = std::make_unique<unsigned char[]>(value.GetByteCount());
    std::memcpy(value.data.get(), units.data(), value.GetByteCount());
    return odbc::kSuccess;
}

void WDatabase::FinishRetrieval() {
    if (m_pCurrentObject != nullptr) {
        FinishRetrieval(*m_pCurrentObject);
    }
}

void WDatabase::FinishRetrieval(WPersistentObject& /*object*/) {
    if (!IsValid()) {
        return;
    }
    std::wstring calculated = CalculateCheckSum(m_CheckSumText);
    ReplaceZeros(calculated);
    std::wstring stored;
    Retrieve(L"checkSum", stored);
    ReplaceZeros(stored);
    if (calculated != stored) {
        throw WNESerializerError(L"Data corrupted.");
    }
}

} // namespace bss
