// Connection, transactions, failures and queries. The schema is in WDatabaseSchema.cpp, reading and writing
// of objects in WDatabaseStore.cpp and WDatabaseFetch.cpp, of values in WDatabaseValues.cpp.

#include "bss/serial/database/WDatabase.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/database/private/SqlDialect.h"
#include "bss/serial/database/private/Statement.h"
#include "krtpal/common/odbc.h"
#include "krtpal/common/text.h"
#include "krtpal/debug.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace bss {

namespace {

namespace odbc = krtpal::odbc;

void DemandSuccess(odbc::Result result) {
    if (!odbc::Succeeded(result)) {
        throw std::runtime_error("unknown failure");
    }
}

} // namespace

bool WDatabase::column::operator<(const column& other) const {
    return ordinal < other.ordinal;
}

bool WDatabase::column::operator>(const column& other) const {
    return ordinal > other.ordinal;
}

WDatabase::parameter::parameter(e_kind parameterKind, std::wstring columnName, const void* source,
                                std::int32_t length, long objectVersion)
    : kind(parameterKind), name(std::move(columnName)), dataLength(length),
      version(static_cast<std::int32_t>(objectVersion)) {
    if (source != nullptr) {
        data = std::make_unique<unsigned char[]>(GetByteCount());
        std::memcpy(data.get(), source, GetByteCount());
    }
}

WDatabase::parameter::~parameter() = default;

bool WDatabase::parameter::operator<(const parameter& other) const {
    return columnIndex < other.columnIndex;
}

bool WDatabase::parameter::operator>(const parameter& other) const {
    return columnIndex > other.columnIndex;
}

std::size_t WDatabase::parameter::GetByteCount() const {
    const auto length = static_cast<std::size_t>(std::max(dataLength, 0));
    return kind == kindText || kind == kindTextToo ? length * sizeof(krtpal::Utf16Unit) : length;
}

WDatabase::WDatabase()
    : WSerializer(L"DATABASE"), m_nDoubleType(odbc::kDouble), m_nIntegerType(odbc::kInteger),
      m_nBitType(odbc::kBit) {}

WDatabase::~WDatabase() noexcept {
    Disconnect();
}

void WDatabase::Connect(const std::wstring& user, const std::wstring& password,
                        const std::wstring& dataSource) {
    Disconnect();
    m_sUser = user;
    m_sPassword = password;
    m_sDataSource = dataSource;
    OpenConnection(false);
    if (!odbc::Succeeded(odbc::Connect(m_hDbc, dataSource, user, password))) {
        FailToConnect(L"", m_hDbc, odbc::kConnection);
    }
    m_eConnection = connectionDataSource;
    ReadCapabilities(false);
}

void WDatabase::ConnectFile(const std::wstring& user, const std::wstring& password,
                            const std::wstring& filePath) {
    const std::wstring connection = SqlDialect::FileConnection(filePath, user, password);
    Disconnect();
    m_sUser = user;
    m_sPassword = password;
    m_sDataSource = filePath;
    OpenConnection(true);
    if (!odbc::Succeeded(odbc::DriverConnect(m_hDbc, connection))) {
        FailToConnect(L"WDatabase::ConnectFile:  Error in SQLDriverConnect: ", m_hDbc, odbc::kConnection);
    }
    m_eConnection = connectionFile;
    ReadCapabilities(true);
}

void WDatabase::FailToConnect(const wchar_t* debugText, void* handle, short handleType) {
    const std::wstring text = GetErrorMsg(handle, handleType);
    if (debugText != nullptr) {
        OutputDebugStringW((debugText + text + L"\n").c_str());
    }
    Disconnect();
    throw WNEODBCError(text);
}

void WDatabase::OpenConnection(bool isFile) {
    const auto say = [isFile](const wchar_t* text) { return isFile ? text : nullptr; };
    if (!odbc::Succeeded(odbc::AllocHandle(odbc::kEnvironment, nullptr, &m_hEnv))) {
        FailToConnect(say(L"WDatabase::ConnectFile:  Error in SQLAllocHandle (Environment): "), m_hEnv,
                      odbc::kEnvironment);
    }
    if (!odbc::Succeeded(odbc::SetEnvAttr(m_hEnv, odbc::kAttrOdbcVersion, odbc::kOdbcVersion3))) {
        FailToConnect(say(L"WDatabase::ConnectFile:  Error in SQLSetEnvAttr: "), m_hEnv, odbc::kEnvironment);
    }
    if (!odbc::Succeeded(odbc::AllocHandle(odbc::kConnection, m_hEnv, &m_hDbc))) {
        FailToConnect(say(L"WDatabase::ConnectFile:  Error in SQLAllocHandle (Database): "), m_hEnv,
                      odbc::kEnvironment);
    }
    constexpr std::uintptr_t kSeconds = 5;
    if (!odbc::Succeeded(odbc::SetConnectAttr(m_hDbc, odbc::kAttrLoginTimeout, kSeconds))) {
        if (!isFile) {
            FailToConnect(nullptr, m_hDbc, odbc::kConnection);
        }
        // Continue: a file needs no login.
        OutputDebugStringW((L"WDatabase::ConnectFile:  Error in SQLSetConnectAttr: " +
                            GetErrorMsg(m_hDbc, odbc::kConnection) + L"\n")
                               .c_str());
    }
}

void WDatabase::ReadCapabilities(bool isFile) {
    constexpr std::uint32_t kAnyColumn = 1;
    constexpr std::uint32_t kAnyOrder = 2;
    std::uint32_t extensions = 0;
    if (!odbc::Succeeded(odbc::GetInfo(m_hDbc, odbc::kGetDataExtensions, &extensions,
                                       static_cast<std::int16_t>(sizeof(extensions)), nullptr))) {
        FailToConnect(isFile ? L"WDatabase::ConnectFile:  Error in SQLGetInfo: " : nullptr, m_hDbc,
                      odbc::kConnection);
    }
    if ((extensions & (kAnyColumn | kAnyOrder)) != 0) {
        OutputDebugStringW(L"\tKRT:\tWDatabase::Connect, May fetch any column, in any order.\n");
        m_bAnyOrder = true;
    } else if ((extensions & kAnyColumn) != 0) { // never reached (kept for compatibility)
        OutputDebugStringW(L"\tKRT:\tWDatabase::Connect, May fetch any column, in increasing order.\n");
    }
    m_pDialect = SqlDialect::Make(GetInfoText(odbc::kDbmsName, MAX_PATH), m_bAnyOrder);
    try {
        CheckDataTypes();
    } catch (...) {
        Disconnect();
        throw;
    }
}

void WDatabase::Disconnect() {
    DropKeptStatements();
    for (void** const statement : {&m_hStmt, &m_hStmtSchema}) {
        if (*statement != nullptr) {
            odbc::CloseCursor(*statement);
            odbc::FreeHandle(odbc::kStatement, *statement);
            *statement = nullptr;
        }
    }
    m_eConnection = connectionNone;
    if (m_hDbc != nullptr) {
        odbc::Disconnect(m_hDbc);
        odbc::FreeHandle(odbc::kConnection, m_hDbc);
        m_hDbc = nullptr;
    }
    if (m_hEnv != nullptr) {
        odbc::FreeHandle(odbc::kEnvironment, m_hEnv);
        m_hEnv = nullptr;
    }
    m_bAnyOrder = false;
    m_sSchema.clear();
    m_sDataSource.clear();
    m_Tables.clear();
    // Open levels end with their connection.
    m_TransactionModes.clear();
    m_ePass = passNone;
}

std::wstring WDatabase::GetInfoText(std::uint16_t what, std::size_t room) const {
    constexpr std::size_t kUnit = sizeof(krtpal::Utf16Unit);
    std::int16_t length = 0;
    if (room == 0) {
        if (!odbc::Succeeded(odbc::GetInfo(m_hDbc, what, nullptr, 0, &length)) || length < 0) {
            return {};
        }
        room = static_cast<std::size_t>(length) / kUnit + 1;
    }
    krtpal::Utf16String units(room, 0);
    if (!odbc::Succeeded(
            odbc::GetInfo(m_hDbc, what, units.data(), static_cast<std::int16_t>(room * kUnit), &length))) {
        return {};
    }
    units.resize(std::min(units.find(krtpal::Utf16Unit{0}), units.size()));
    return std::wstring(krtpal::WideFromUtf16(units));
}

std::wstring WDatabase::GetUser() const {
    return IsConnected() ? GetInfoText(odbc::kUserName, 0) : std::wstring();
}

std::wstring WDatabase::GetDatabasePath() const {
    if (!IsConnected()) {
        return {};
    }
    std::wstring path = GetInfoText(odbc::kDatabaseName, MAX_PATH);
    if (path.empty() || m_eConnection != connectionDataSource ||
        GetInfoText(odbc::kDbmsName, MAX_PATH) == L"access") {
        return path;
    }
    // The extension begins at the last point of the file name.
    const std::size_t name = path.find_last_of(L"/\\") + 1; // 0 if there is none
    const std::size_t point = path.rfind(L'.');
    if (point != std::wstring::npos && point >= name) {
        path.erase(point);
    }
    return path + L".mdb";
}

std::wstring WDatabase::GetErrorMsg(void* handle, short handleType) const {
    std::wstring text;
    for (std::int16_t number = 1;; ++number) {
        odbc::DiagnosticRecord record;
        const odbc::Result result = odbc::GetDiagRec(handleType, handle, number, &record);
        if (result == odbc::kNoData) {
            return text;
        }
        if (!odbc::Succeeded(result)) {
            return text + L"\tUnexpected error retrieving SQL error message.\n";
        }
        text += L"\tObject: " + NameOfCurrentClass() + L"\n\tSqlState: " + record.state +
                L"\n\tNativeError: " + std::to_wstring(record.nativeError) + L"\n\tError message: " +
                record.text + L"\n";
    }
}

std::wstring WDatabase::NameOfCurrentClass() const {
    return m_pCurrentObject == nullptr ? m_sLastClass : m_pCurrentObject->GetNameOfClass();
}

std::wstring WDatabase::GetPosition(const WPersistentObject* object, const std::wstring& where) const {
    const long group = object == nullptr ? m_nLastGroup : object->GetGroupID();
    const long number = object == nullptr ? m_nLastObject : object->GetObjectID();
    return L"\n\t" + (object == nullptr ? m_sLastClass : object->GetNameOfClass()) + L" (" +
           std::to_wstring(group) + L"," + std::to_wstring(number) + L")" +
           (where.empty() ? L"" : L"." + where) + L"\n";
}

void WDatabase::SetAutoCommit(etransactionmode mode) {
    if (!odbc::Succeeded(
            odbc::SetConnectAttr(m_hDbc, odbc::kAttrAutoCommit, mode == transactionAuto ? 1U : 0U))) {
        throw WNEODBCError(GetErrorMsg(m_hDbc, odbc::kConnection) + GetPosition(m_pCurrentObject));
    }
}

void WDatabase::SetTransactionMode(etransactionmode mode) {
    m_TransactionModes.push_back(mode);
    if (m_TransactionModes.size() == 1) {
        SetAutoCommit(mode);
    }
}

void WDatabase::Transact(etransaction kind) {
    if (m_TransactionModes.empty()) {
        return;
    }
    if (m_TransactionModes.size() == 1) {
        const odbc::Result result = odbc::EndTran(
            odbc::kConnection, m_hDbc, kind == transactionCommit ? odbc::kCommit : odbc::kRollback);
        if (!odbc::Succeeded(result)) {
            throw WNEODBCError(GetErrorMsg(m_hDbc, odbc::kConnection) + GetPosition(m_pCurrentObject));
        }
        if (result == odbc::kSuccessWithInfo) {
            GetErrorMsg(m_hDbc, odbc::kConnection); // discards the diagnostic records
        }
        m_TransactionModes.pop_back();
        SetTransactionMode(transactionAuto);
    }
    m_TransactionModes.pop_back();
}

void WDatabase::ClearQueryStream() {
    m_QueryStream.str({});
}

void WDatabase::SendQuery() {
    SendQuery(m_hStmtSchema);
}

void WDatabase::SendQuery(void* statement) {
    DemandNoError(odbc::ExecDirect(statement, m_QueryStream.str()), statement);
}

void WDatabase::DemandNoError(std::int16_t result, void* statement) const {
    switch (result) {
    case odbc::kError:
    case odbc::kInvalidHandle:
    case odbc::kNeedData:
    case odbc::kStillExecuting:
        throw WNESerializerError(GetErrorMsg(statement, odbc::kStatement));
    case odbc::kSuccessWithInfo:
        GetErrorMsg(statement, odbc::kStatement);
        break;
    default:
        break;
    }
}

void WDatabase::RunQuery(const std::wstring& query, const std::function<void(void* statement)>& read) {
    const Statement statement(m_hDbc);
    if (!statement.IsAllocated()) {
        throw WNESerializerError(GetErrorMsg(m_hDbc, odbc::kConnection));
    }
    ReadAnswer(odbc::ExecDirect(statement.Handle(), query), statement.Handle(), read);
}

void WDatabase::RunKeyQuery(void* statement, const WPersistentObject& object,
                            const std::function<void(void* statement)>& read) {
    BindKey(statement, 1, object);
    const Reset reset(statement);
    ReadAnswer(odbc::Execute(statement), statement, read);
}

void WDatabase::ReadAnswer(std::int16_t result, void* statement,
                           const std::function<void(void* statement)>& read) const {
    if (result == odbc::kNoData || result == odbc::kError) {
        return;
    }
    try {
        DemandSuccess(result);
        read(statement);
    } catch (const std::runtime_error&) {
        throw WNESerializerError(GetErrorMsg(statement, odbc::kStatement));
    }
}

void WDatabase::BindFirstColumn(void* statement, std::int32_t* target, std::intptr_t* indicator) {
    DemandSuccess(odbc::BindCol(statement, 1, odbc::kCLong, target, sizeof(*target), indicator));
}

bool WDatabase::FetchRow(void* statement) {
    const odbc::Result result = odbc::Fetch(statement);
    if (result != odbc::kNoData) {
        DemandSuccess(result);
    }
    return result != odbc::kNoData;
}

long WDatabase::GetLongFromQuery(const std::wstring& query) {
    std::int32_t value = 0;
    RunQuery(query, [&value](odbc::Handle statement) {
        odbc::Length indicator = 0;
        BindFirstColumn(statement, &value, &indicator);
        while (FetchRow(statement)) {
        }
    });
    return value;
}

std::vector<long> WDatabase::GetVectorOfLongsFromQuery(const std::wstring& query) {
    std::vector<long> values;
    RunQuery(query, [&values](odbc::Handle statement) {
        std::int32_t value = 0;
        odbc::Length indicator = 0;
        BindFirstColumn(statement, &value, &indicator);
        // The fetch that finds no more rows adds the last value again (kept for compatibility).
        for (bool hasRow = true; hasRow;) {
            hasRow = FetchRow(statement);
            values.push_back(value);
        }
    });
    return values;
}

long WDatabase::GetRowCount(const std::wstring& table) {
    return GetLongFromQuery(L"SELECT COUNT(" + Quoted(L"m_nVersion") + L") FROM " + Quoted(table));
}

long WDatabase::GetDirectoryEntryCount(const std::wstring& className) {
    return GetLongFromQuery(L"SELECT COUNT(" + Quoted(L"m_nVersion") + L") FROM " +
                            Quoted(L"WDirectoryEntry") + L" WHERE (" + Quoted(L"m_sDirectoryClassName") +
                            L" LIKE '" + className + L"')");
}

std::vector<long> WDatabase::GetEntryIDs(const std::wstring& table) {
    return GetVectorOfLongsFromQuery(L"SELECT " + Quoted(L"groupID") + L" FROM " + Quoted(table));
}

std::vector<WDatabase::entryInfo> WDatabase::GetMissingExperimentDirectoryInfo() {
    std::vector<entryInfo> entries;
    const std::wstring group = Quoted(L"groupID");
    RunQuery(
        L"SELECT " + group + L"," + Quoted(L"m_sPath") + L"," + Quoted(L"m_sName") + L" FROM " +
            Quoted(L"WExperiment") + L" WHERE " + group + L" NOT IN (SELECT " + Quoted(L"m_nDirectoryID") +
            L" FROM " + Quoted(L"WDirectoryEntry") + L" WHERE " + Quoted(L"m_sDirectoryClassName") +
            L" LIKE 'WExperiment') ORDER BY " + group,
        [&entries](odbc::Handle statement) {
            constexpr std::size_t kRoom = 260 / sizeof(krtpal::Utf16Unit);
            std::int32_t number = 0;
            krtpal::Utf16Unit path[kRoom] = {};
            krtpal::Utf16Unit name[kRoom] = {};
            odbc::Length indicators[3] = {};
            BindFirstColumn(statement, &number, &indicators[0]);
            DemandSuccess(odbc::BindCol(statement, 2, odbc::kCWChar, path, sizeof(path), &indicators[1]));
            DemandSuccess(odbc::BindCol(statement, 3, odbc::kCWChar, name, sizeof(name), &indicators[2]));
            const auto text = [](const krtpal::Utf16Unit* units) {
                return std::wstring(krtpal::WideFromUtf16(krtpal::Utf16View(units)));
            };
            for (bool hasRow = true; hasRow;) {
                hasRow = FetchRow(statement);
                entries.push_back({number, text(path), text(name)});
            }
        });
    return entries;
}

} // namespace bss
