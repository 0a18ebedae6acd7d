// Objects: the passes of a write, the statement of a row, and the checksum. WDatabaseFetch.cpp fetches rows.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/serial/database/WChecksum.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/serial/database/private/SqlDialect.h"
#include "bss/serial/database/private/Statement.h"
#include "bss/system/WEncryption.h"
#include "bss/system/WGuid.h"
#include "krtpal/common/odbc.h"
#include "krtpal/common/text.h"
#include "krtpal/debug.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace bss {

namespace {

namespace odbc = krtpal::odbc;

// Values of at least this size are sent as data at execution.
constexpr std::size_t kAtExecution = 1024;

bool IsKey(const std::wstring& column) {
    return column == L"groupID" || column == L"objectID";
}

// Replaces zeros, which would end the encrypted checksum in its column.
void ReplaceZeros(std::wstring& text) {
    std::replace(text.begin(), text.end(), L'\0', L'~');
}

void Debug(const std::wstring& text) {
    OutputDebugStringW(text.c_str());
}

} // namespace

// Sets the current object for a call. The caller may destroy the object afterwards.
class WDatabase::CurrentObject {
public:
    CurrentObject(WDatabase& database, WPersistentObject& object)
        : m_database(database), m_former(database.m_pCurrentObject), m_formerNamed(database.m_pNamedObject),
          m_formerName(std::move(database.m_sNameOfClass)) {
        m_database.m_pCurrentObject = &object;
        m_database.m_sNameOfClass = object.GetNameOfClass();
        m_database.m_pNamedObject = &object;
        m_database.m_sLastClass = m_database.m_sNameOfClass;
        m_database.m_nLastGroup = object.GetGroupID();
        m_database.m_nLastObject = object.GetObjectID();
    }
    ~CurrentObject() {
        m_database.m_pCurrentObject = m_former;
        m_database.m_pNamedObject = m_formerNamed;
        m_database.m_sNameOfClass = std::move(m_formerName);
    }
    CurrentObject(const CurrentObject&) = delete;
    CurrentObject& operator=(const CurrentObject&) = delete;

private:
    WDatabase& m_database;
    WPersistentObject* m_former;
    const WPersistentObject* m_formerNamed;
    std::wstring m_formerName;
};

// GetNameOfClass composes the name in each call: cache that of the current object.
std::wstring WDatabase::NameOfClass(const WPersistentObject& object) const {
    return &object == m_pNamedObject ? m_sNameOfClass : object.GetNameOfClass();
}

void WDatabase::Write(WPersistentObject& object, bool bDeep) {
    const CurrentObject current(*this, object);
    try {
        if (m_ePass != passNone) {
            SetTransactionMode(transactionManual);
            if (m_ePass == passData && m_TransactionModes.size() == 1) {
                Send(m_pDialect->LockForWriting());
            }
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
    const auto readOne = [&] {
        if (bDeep && m_TransactionModes.size() == 1) {
            Send(m_pDialect->FixStateForReading());
        }
        ReadObject(object, bDeep);
    };
    RunDataPass(readOne, [&] { Read(object, bDeep); });
}

void WDatabase::Delete(WPersistentObject& object, bool bDeep) {
    const CurrentObject current(*this, object);
    RunDataPass([&] { DeleteObject(object, bDeep); }, [&] { Delete(object, bDeep); });
}

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

void WDatabase::RollBack() noexcept {
    try {
        Transact(transactionRollback);
    } catch (const WNestedException& e) {
        Debug(e.AsString(false) + L"\n");
    } catch (...) { // NOLINT(bugprone-empty-catch): another failure is being reported
    }
    DropKeptStatements(); // one may still wait for data at execution
    if (m_TransactionModes.empty()) {
        m_ePass = passNone;
    }
}

void WDatabase::Send(const std::wstring& text) {
    if (!text.empty()) {
        const Statement statement(m_hDbc);
        DemandNoError(odbc::ExecDirect(statement.Handle(), text), statement.Handle());
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

void WDatabase::DeleteOldComponents(WPersistentObject& object) {
    try {
        object.DeleteComponents();
    } catch (...) {
        Debug(L"Unexpected database error. Unable to clear"
              L"clear old data before writing updated data\t" +
              NameOfClass(object) + L"(" + std::to_wstring(object.GetGroupID()) + L", " +
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
    const std::wstring table = NameOfClass(object);
    if (HasTable(table)) {
        m_QueryStream << L"DELETE FROM " << Quoted(table) << KeyCondition(object);
        if (m_pDialect->KeepsStatements()) {
            const odbc::Handle statement = StatementFor(m_QueryStream.str());
            BindKey(statement, 1, object);
            DemandNoError(odbc::Execute(statement), statement);
        } else {
            SendQuery();
        }
    }
    if (bDeep) {
        object.DeleteComponents();
    }
    m_pCurrentObject = &object;
}

std::wstring WDatabase::Quoted(const std::wstring& name) const {
    return m_pDialect == nullptr ? name : m_pDialect->Quoted(name);
}

std::wstring WDatabase::KeyCondition(const WPersistentObject& object) const {
    const bool hasMarkers = m_pDialect->KeepsStatements();
    const auto equal = [&](const wchar_t* name, long number) {
        return Quoted(name) + L" = " + (hasMarkers ? L"?" : std::to_wstring(number));
    };
    return L" WHERE " + equal(L"groupID", object.GetGroupID()) + L" AND " +
           equal(L"objectID", object.GetObjectID());
}

// Bind results are ignored: SQLExecute reports the error.
void WDatabase::BindKey(void* statement, int firstMarker, const WPersistentObject& object) {
    m_aKey[0] = object.GetGroupID();
    m_aKey[1] = object.GetObjectID();
    auto marker = static_cast<std::uint16_t>(firstMarker);
    for (std::int64_t& number : m_aKey) {
        odbc::BindParameter(statement, marker++, odbc::kCSBigInt, odbc::kBigInt, 0, &number, sizeof(number),
                            nullptr);
    }
}

void* WDatabase::StatementFor(const std::wstring& text) {
    if (const auto kept = m_KeptStatements.find(text); kept != m_KeptStatements.end()) {
        return kept->second;
    }
    constexpr std::size_t kMost = 500; // a class has five
    if (m_KeptStatements.size() >= kMost) {
        DropKeptStatements();
    }
    odbc::Handle statement = nullptr;
    if (!odbc::Succeeded(odbc::AllocHandle(odbc::kStatement, m_hDbc, &statement))) {
        throw WNESerializerError(GetErrorMsg(m_hDbc, odbc::kConnection));
    }
    if (!odbc::Succeeded(odbc::Prepare(statement, text))) {
        const std::wstring failure = GetErrorMsg(statement, odbc::kStatement);
        odbc::FreeHandle(odbc::kStatement, statement);
        throw WNESerializerError(failure);
    }
    m_KeptStatements.emplace(text, statement);
    return statement;
}

void WDatabase::DropKeptStatements() {
    for (const auto& [text, statement] : m_KeptStatements) {
        odbc::FreeHandle(odbc::kStatement, statement);
    }
    m_KeptStatements.clear();
    m_KeptTables.clear();
    m_hRow = m_hStmt;
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
    if (!m_pDialect->KeepsStatements()) {
        odbc::FreeStmt(m_hStmt, odbc::kClose);
        odbc::FreeStmt(m_hStmt, odbc::kResetParams);
    }
    if (!HasTable(NameOfClass(object))) {
        throw WNEODBCError(L"Table " + NameOfClass(object) + L" does not exist.");
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
    if (!isUpdate && HasColumn(NameOfClass(object), L"RecID")) {
        Insert(L"RecID", WGuid::GetNextGuid());
    }
    Insert(L"checkSum", checkSum);
    SortParameters(object, m_Tables, m_Parameters);
    if (m_pDialect->KeepsStatements()) {
        m_hRow = ChangeFor(object, isUpdate);
        odbc::FreeStmt(m_hRow, odbc::kResetParams);
    } else {
        m_hRow = m_hStmt;
        ComposeStatement(object, isUpdate);
    }
    BindParameters(object, isUpdate);
    ExecuteStatement(object);
    RemoveAllParameters(m_Parameters);
    ClearQueryStream();
}

void* WDatabase::ChangeFor(const WPersistentObject& object, bool isUpdate) {
    const std::wstring table = NameOfClass(object);
    const auto changeOf = [isUpdate](KeptTable& kept) -> KeptTable::Change& {
        return isUpdate ? kept.update : kept.insert;
    };
    if (const auto kept = m_KeptTables.find(table); kept != m_KeptTables.end()) {
        const KeptTable::Change& change = changeOf(kept->second);
        if (std::equal(m_Parameters.begin(), m_Parameters.end(), change.columns.begin(), change.columns.end(),
                       [](const auto& value, const std::wstring& name) { return value->name == name; })) {
            return change.statement;
        }
    }
    ComposeStatement(object, isUpdate);
    const odbc::Handle statement = StatementFor(m_QueryStream.str());
    KeptTable::Change& change = changeOf(m_KeptTables[table]);
    change.statement = statement;
    change.columns.clear();
    for (const std::unique_ptr<parameter>& each : m_Parameters) {
        change.columns.push_back(each->name);
    }
    return statement;
}

void WDatabase::ComposeStatement(const WPersistentObject& object, bool isUpdate) {
    std::wstring columns;
    std::wstring markers;
    for (const std::unique_ptr<parameter>& each : m_Parameters) {
        if (!isUpdate) {
            columns += (columns.empty() ? L"" : L", ") + Quoted(each->name);
            markers += markers.empty() ? L"?" : L", ?";
        } else if (!IsKey(each->name)) {
            columns += (columns.empty() ? L"" : L", ") + Quoted(each->name) + L" = ?";
        }
    }
    ClearQueryStream();
    const std::wstring table = Quoted(NameOfClass(object)) + m_pDialect->WriteHint();
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
            Debug(GetErrorMsg(m_hRow, odbc::kStatement) + GetPosition(&object, each->name));
        }
    }
    if (isUpdate && m_pDialect->KeepsStatements()) {
        BindKey(m_hRow, number + 1, object);
    }
}

void WDatabase::MakeDriverForm(parameter& value) const {
    const SqlDialect::e_text form = m_pDialect->GetTextForm();
    if (value.kind == parameter::kindText && form != SqlDialect::textUtf16) {
        value.driverForm = EncodeText({reinterpret_cast<const krtpal::Utf16Unit*>(value.data.get()),
                                       static_cast<std::size_t>(value.dataLength)},
                                      form);
    } else if (value.kind == parameter::kindGuid && m_pDialect->HasGuidText()) {
        GUID guid{};
        std::memcpy(&guid, value.data.get(), sizeof(guid));
        value.driverForm = krtpal::Utf8FromWide(WGuid::GetAsText(guid));
    } else if (value.kind == parameter::kindDouble) {
        double number = 0.0;
        std::memcpy(&number, value.data.get(), sizeof(number));
        if (std::string special = m_pDialect->FormOfNumber(number); !special.empty()) {
            value.driverForm = std::move(special);
        }
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
    if (value.kind == parameter::kindText && m_pDialect->GetTextForm() == SqlDialect::textEscapedUtf8) {
        type = {odbc::kCChar, odbc::kLongVarChar};
    } else if (value.kind != parameter::kindText && value.driverForm) {
        type = {odbc::kCChar, odbc::kVarChar};
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
            odbc::BindParameter(m_hRow, number, type.c, type.sql, 0, data, length, &value.indicator));
    }
    const bool isAtExecution = size >= kAtExecution;
    value.indicator = isAtExecution ? odbc::LengthAtExecution(length) : length;
    // The driver form was made before and is not changed.
    // NOLINTBEGIN(clang-analyzer-cplusplus.InnerPointer)
    return odbc::Succeeded(odbc::BindParameter(m_hRow, number, type.c, type.sql, size,
                                               isAtExecution ? &value.number : data, 0, &value.indicator));
    // NOLINTEND(clang-analyzer-cplusplus.InnerPointer)
}

void WDatabase::FailStatement(const std::wstring& text) {
    odbc::FreeStmt(m_hRow, odbc::kUnbind);
    odbc::FreeStmt(m_hRow, odbc::kResetParams);
    throw WNESerializerError(text);
}

void WDatabase::ExecuteStatement(const WPersistentObject& object) {
    const odbc::Result result =
        m_pDialect->KeepsStatements() ? odbc::Execute(m_hRow) : odbc::ExecDirect(m_hRow, m_QueryStream.str());
    if (result == odbc::kError || result == odbc::kInvalidHandle) {
        FailStatement(GetErrorMsg(m_hRow, odbc::kStatement) + GetPosition(&object));
    }
    if (result == odbc::kNeedData) {
        SendDataAtExecution(object);
    } else if (!odbc::Succeeded(result)) {
        Debug(GetErrorMsg(m_hRow, odbc::kStatement) + GetPosition(&object));
    }
}

void WDatabase::SendDataAtExecution(const WPersistentObject& object) {
    void* address = nullptr;
    odbc::Result result = odbc::ParamData(m_hRow, &address);
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
        if (!odbc::Succeeded(odbc::PutData(m_hRow, data, static_cast<odbc::Length>(size)))) {
            Debug(GetErrorMsg(m_hRow, odbc::kStatement) + GetPosition(&object, found.name));
        }
        result = odbc::ParamData(m_hRow, &address);
    }
    if (!odbc::Succeeded(result)) {
        FailStatement(GetErrorMsg(m_hRow, odbc::kStatement) + GetPosition(&object));
    }
}

bool WDatabase::Exists(const WPersistentObject& object, long* pVersion) {
    const std::wstring table = NameOfClass(object);
    if (!HasTable(table)) {
        return false;
    }
    bool isThere = false;
    const auto query = [&] {
        return L"SELECT " + Quoted(L"m_nVersion") + L" FROM " + Quoted(table) + KeyCondition(object);
    };
    const auto read = [&](odbc::Handle statement) {
        std::int32_t version = 0;
        odbc::Length indicator = 0;
        BindFirstColumn(statement, &version, &indicator);
        while (!isThere && FetchRow(statement)) {
            // A row of 5.0.0.0 or an older version is ignored.
            isThere = version > WVersion::GetVersion(5, 0, 0, 0);
        }
        if (isThere && pVersion != nullptr) {
            *pVersion = version;
        }
    };
    if (!m_pDialect->KeepsStatements()) {
        RunQuery(query(), read);
        return isThere;
    }
    odbc::Handle statement = m_KeptTables[table].exists;
    if (statement == nullptr) {
        statement = StatementFor(query());
        m_KeptTables[table].exists = statement;
    }
    RunKeyQuery(statement, object, read);
    return isThere;
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
    // Compare code units: the encrypted text may have surrogate pairs by chance, which are read as one
    // character.
    if (krtpal::Utf16FromWide(calculated) != krtpal::Utf16FromWide(stored)) {
        throw WNESerializerError(L"Data corrupted.");
    }
}

} // namespace bss
