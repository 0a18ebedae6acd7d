#include "Connection.h"

#include "Text.h"
#include "common/Failure.h"

#include "bss/serial/database/private/SqlDialect.h"
#include "krtpal/common/text.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <span>
#include <utility>

namespace krtstore {

using tools::Failure;
using tools::PathOf;

namespace {

namespace odbc = krtpal::odbc;

// What the seam has no name for, as the library does not need it.
constexpr std::uint16_t kIdentifierQuote = 29;
constexpr std::int32_t kAttrAccessMode = 101;
constexpr std::uintptr_t kReadOnly = 1;

/// SQLite takes so many columns in a query at most, and two are asked for for each.
constexpr std::size_t kMostTold = 900;

/// All records of a handle, and the text of the first.
struct Diagnosis {
    std::string text;
    std::string chain;
};

Diagnosis Diagnose(std::int16_t kind, odbc::Handle handle) {
    Diagnosis diagnosis;
    odbc::DiagnosticRecord record;
    for (std::int16_t number = 1; odbc::Succeeded(odbc::GetDiagRec(kind, handle, number, &record));
         ++number) {
        diagnosis.text = number == 1 ? Utf8(record.text) : diagnosis.text;
        diagnosis.chain += "SqlState: " + Utf8(record.state) +
                           "\nNativeError: " + std::to_string(record.nativeError) +
                           "\nError message: " + Utf8(record.text) + "\n";
    }
    // A driver may end its text with a line end.
    diagnosis.text.erase(diagnosis.text.find_last_not_of(" \r\n") + 1);
    return diagnosis;
}

[[noreturn]] void Fail(const std::string& what, std::int16_t kind, odbc::Handle handle) {
    const Diagnosis diagnosis = Diagnose(kind, handle);
    throw Failure(what, diagnosis.text, diagnosis.chain);
}

std::wstring Password(const Arguments& arguments) {
    if (arguments.passwordFile.empty()) {
        const char* const password = std::getenv("KRTSTORE_PASSWORD");
        return password == nullptr ? std::wstring() : krtpal::WidenText(password);
    }
    std::ifstream file(PathOf(arguments.passwordFile), std::ios::binary);
    std::string line;
    if (!std::getline(file, line)) {
        throw Failure("No password can be read from " + Quote(arguments.passwordFile) + ".");
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return Wide(line);
}

Kind KindOf(bss::WDatabase::parameter::e_kind kind) {
    using parameter = bss::WDatabase::parameter;
    switch (kind) {
    case parameter::kindBit:
    case parameter::kindBoolCharacter:
        return Kind::Bit;
    case parameter::kindInteger:
        return Kind::Integer;
    case parameter::kindDouble:
        return Kind::Double;
    case parameter::kindText:
    case parameter::kindTextToo:
        return Kind::Text;
    case parameter::kindBinary:
        return Kind::Binary;
    case parameter::kindGuid:
        return Kind::Guid;
    default:
        return Kind::Other;
    }
}

/// The kinds of columns of the store by the driver's number of their type, with those that serve where a
/// back-end has no such type.
Kind KindOfNumber(std::int64_t sqlType) {
    switch (sqlType) {
    case odbc::kBit:
    case odbc::kChar:
        return Kind::Bit;
    case odbc::kInteger:
    case odbc::kDecimal:
        return Kind::Integer;
    case odbc::kDouble:
    case odbc::kFloat:
        return Kind::Double;
    case odbc::kWLongVarChar:
    case odbc::kLongVarChar:
        return Kind::Text;
    case odbc::kLongVarBinary:
        return Kind::Binary;
    case odbc::kGuid:
        return Kind::Guid;
    default:
        return Kind::Other;
    }
}

/// By SQLite's name of how a value is stored.
Kind KindOfStorage(const std::string& name) {
    return name == "integer" ? Kind::Integer
           : name == "real"  ? Kind::Double
           : name == "blob"  ? Kind::Binary
                             : Kind::Text;
}

/// Whether the text stands for its code units by four digits each, behind a mark.
bool IsEscape(const std::wstring& text) {
    constexpr unsigned kMark = 0xFFFE;
    return !text.empty() && static_cast<unsigned>(text[0]) == kMark;
}

bool IsWholeEscape(const std::wstring& text) {
    return text.size() % 4 == 1 && text.find_first_not_of(L"0123456789abcdef", 1) == std::wstring::npos;
}

std::wstring FromUnits(const std::string& bytes) {
    krtpal::Utf16String units(bytes.size() / sizeof(krtpal::Utf16Unit), 0);
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(krtpal::Utf16Unit));
    return std::wstring(krtpal::WideFromUtf16(units));
}

struct Bytes {
    odbc::Result result = odbc::kSuccess;
    bool isNull = false;
    std::string bytes;
};

/// A value in pieces, each of which ends in a NUL of `unit` bytes.
Bytes FetchPieces(odbc::Handle statement, std::uint16_t column, std::int16_t cType, std::size_t unit) {
    Bytes value;
    char first[512]; // most values end in it
    std::vector<char> more;
    std::span<char> piece = first;
    for (;;) {
        odbc::Length indicator = 0;
        const odbc::Result result = odbc::GetData(statement, column, cType, piece.data(),
                                                  static_cast<odbc::Length>(piece.size()), &indicator);
        value.isNull = odbc::Succeeded(result) && indicator == odbc::kNullData;
        if (result == odbc::kNoData || value.isNull) {
            return value;
        }
        if (!odbc::Succeeded(result)) {
            value.result = result;
            return value;
        }
        // What the indicator tells is what was left before this piece.
        const std::size_t full = piece.size() - unit;
        const bool isFull = indicator == odbc::kNoTotal || static_cast<std::size_t>(indicator) > full;
        value.bytes.append(piece.data(), isFull ? full : static_cast<std::size_t>(indicator));
        if (result == odbc::kSuccess) {
            return value;
        }
        more.resize(65'536);
        piece = more;
    }
}

/// Binary data, at once where the driver tells its size.
odbc::Result FetchBinary(odbc::Handle statement, std::uint16_t column, Cell* cell) {
    unsigned char nothing = 0;
    odbc::Length length = 0;
    odbc::Result result = odbc::GetData(statement, column, odbc::kCBinary, &nothing, 0, &length);
    if (!odbc::Succeeded(result) || length == odbc::kNullData) {
        return result;
    }
    cell->form = Cell::Form::Binary;
    if (length == odbc::kNoTotal) {
        Bytes value = FetchPieces(statement, column, odbc::kCBinary, 0);
        cell->bytes.assign(value.bytes.begin(), value.bytes.end());
        return value.result;
    }
    if (length > 0) {
        cell->bytes.resize(static_cast<std::size_t>(length));
        result = odbc::GetData(statement, column, odbc::kCBinary, cell->bytes.data(), length, &length);
    }
    return result;
}

void SetInteger(const std::string& text, Cell* cell) {
    // Some drivers have words for the two values of a bit.
    const std::string digits = text == "t" || text == "true"    ? "1"
                               : text == "f" || text == "false" ? "0"
                                                                : text;
    if (const auto number = ParseInteger(digits)) {
        cell->form = Cell::Form::Integer;
        cell->integer = *number;
    } else {
        cell->form = Cell::Form::Text;
        cell->text = Wide(text);
    }
}

void SetDouble(const std::string& text, Cell* cell) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), cell->real);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    cell->form = isNumber ? Cell::Form::Double : Cell::Form::Text;
    cell->text = isNumber ? std::wstring() : Wide(text);
}

/// Text stays text where it is no identifier.
Cell GuidFromText(Cell cell) {
    const auto guid = cell.form == Cell::Form::Text ? ParseGuid(cell.text) : std::nullopt;
    if (guid) {
        cell.form = Cell::Form::Guid;
        cell.guid = *guid;
    }
    return cell;
}

std::function<bool(const Row&)> UseAll(const std::function<void(const Row&)>& use) {
    return [use](const Row& row) {
        use(row);
        return true;
    };
}

/// Rows in the order of their keys, in turns between which others may write. A turn has one key at least, and
/// all rows of a key are in one turn.
class Turns {
public:
    using Key = std::pair<std::int64_t, std::int64_t>;

    Turns(const Table& table, std::chrono::milliseconds length, const std::function<void(const Row&)>& use)
        : m_nGroup(*table.Find(L"groupID")), m_nObject(*table.Find(L"objectID")), m_Length(length),
          m_Use(use) {}

    void Begin() {
        m_Start.reset();
        m_Last.reset();
        m_Next.reset();
    }
    /// False at the end of the turn: the row was not used.
    bool Use(const Row& row) {
        const auto now = std::chrono::steady_clock::now();
        const Cell& group = row[m_nGroup];
        const Cell& object = row[m_nObject];
        std::optional<Key> key;
        if (group.form == Cell::Form::Integer && object.form == Cell::Form::Integer) {
            key = {group.integer, object.integer};
        }
        if (!m_Start) {
            m_Start = now;
        } else if (key && key != m_Last && now - *m_Start >= m_Length) {
            m_Next = key;
            return false;
        }
        m_Last = key;
        m_Use(row);
        return true;
    }
    /// The key that the next turn begins with; nothing if there were no more rows.
    const std::optional<Key>& Next() const { return m_Next; }

private:
    std::size_t m_nGroup;
    std::size_t m_nObject;
    std::chrono::milliseconds m_Length;
    const std::function<void(const Row&)>& m_Use;
    std::optional<std::chrono::steady_clock::time_point> m_Start;
    std::optional<Key> m_Last;
    std::optional<Key> m_Next;
};

} // namespace

/// Freed at the end of its scope.
class Connection::Statement {
public:
    explicit Statement(odbc::Handle connection) {
        if (!odbc::Succeeded(odbc::AllocHandle(odbc::kStatement, connection, &m_handle))) {
            Fail("The database takes no statement", odbc::kConnection, connection);
        }
    }
    ~Statement() { odbc::FreeHandle(odbc::kStatement, m_handle); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    odbc::Handle Handle() const { return m_handle; }

    /// Whether there is one more row.
    bool Fetch(const std::string& what) const {
        const odbc::Result result = odbc::Fetch(m_handle);
        if (result != odbc::kNoData && !odbc::Succeeded(result)) {
            Fail(what, odbc::kStatement, m_handle);
        }
        return result != odbc::kNoData;
    }

private:
    odbc::Handle m_handle = nullptr;
};

Connection::Link::Link() {
    if (!odbc::Succeeded(odbc::AllocHandle(odbc::kEnvironment, nullptr, &environment)) ||
        !odbc::Succeeded(odbc::SetEnvAttr(environment, odbc::kAttrOdbcVersion, odbc::kOdbcVersion3)) ||
        !odbc::Succeeded(odbc::AllocHandle(odbc::kConnection, environment, &connection))) {
        throw Failure("The driver manager of ODBC does not work.");
    }
    // Drivers may take it as a hint or not at all.
    odbc::SetConnectAttr(connection, kAttrAccessMode, kReadOnly);
}

Connection::Link::~Link() {
    if (connection != nullptr) {
        odbc::Disconnect(connection);
        odbc::FreeHandle(odbc::kConnection, connection);
    }
    if (environment != nullptr) {
        odbc::FreeHandle(odbc::kEnvironment, environment);
    }
}

Connection::Connection(const Arguments& arguments)
    : m_sName(Quote(arguments.file.empty() ? arguments.dataSource : arguments.file)) {
    if (arguments.file.empty()) {
        ConnectDataSource(arguments);
    } else {
        ConnectFile(arguments.file);
    }
    ReadCapabilities();
}

Connection::~Connection() = default;

void Connection::ConnectFile(const std::string& file) {
    std::error_code ignored;
    const auto status = std::filesystem::status(PathOf(file), ignored);
    if (!std::filesystem::exists(status)) {
        throw Failure("There is no database " + m_sName + ".");
    }
    if (std::filesystem::is_directory(status)) {
        throw Failure("The database " + m_sName + " cannot be opened: it is a folder.");
    }
    // A row at a time, no file made, and text as it is.
    const auto connect = [this](const std::wstring& name) {
        return odbc::Succeeded(odbc::DriverConnect(
            m_Link.connection, L"DRIVER={" KRTSTORE_SQLITE_DRIVER L"};Database=" + name +
                                   L";Timeout=10000;NoCreat=1;StepAPI=1;LongNames=0;NoWCHAR=1;"));
    };
    // Not every SQLite takes a URI, and only some drivers take any other name as it is.
    const std::wstring path = Wide(file);
    const bool isConnected =
        connect(bss::SqlDialect::SqliteUri(path)) || (path.find(L';') == std::wstring::npos && connect(path));
    if (!isConnected) {
        Fail("The database " + m_sName + " cannot be opened", odbc::kConnection, m_Link.connection);
    }
}

void Connection::ConnectDataSource(const Arguments& arguments) {
    if (!odbc::Succeeded(odbc::Connect(m_Link.connection, Wide(arguments.dataSource), Wide(arguments.user),
                                       Password(arguments)))) {
        Fail("The data source " + m_sName + " cannot be opened", odbc::kConnection, m_Link.connection);
    }
}

void Connection::ReadCapabilities() {
    constexpr std::uint32_t kAnyColumn = 1;
    constexpr std::uint32_t kAnyOrder = 2;
    std::uint32_t extensions = 0;
    odbc::GetInfo(m_Link.connection, odbc::kGetDataExtensions, &extensions,
                  static_cast<std::int16_t>(sizeof(extensions)), nullptr);
    const std::wstring backEnd = InfoText(odbc::kDbmsName);
    m_pDialect = bss::SqlDialect::Make(backEnd, (extensions & (kAnyColumn | kAnyOrder)) != 0);
    m_bSqlite = backEnd == L"SQLite";
    m_sQuote = InfoText(kIdentifierQuote);
    if (m_sQuote == L" ") {
        m_sQuote.clear();
    }
    const std::string failure = "The database " + m_sName + " cannot be read";
    if (const std::wstring query = m_pDialect->SchemaQuery(); !query.empty()) {
        Query(query, {Kind::Text}, false, failure, UseAll([&](const Row& row) { m_sSchema = row[0].text; }));
    }
    if (m_bSqlite) {
        Query(L"PRAGMA query_only = 1", {}, false, failure, {});
        // The file itself is looked at by the first statement alone; the list of tables would be empty.
        Query(L"SELECT COUNT(*) FROM sqlite_master", {Kind::Integer}, false, failure,
              UseAll([](const Row&) {}));
    }
}

std::wstring Connection::InfoText(std::uint16_t what) const {
    krtpal::Utf16String units(256, 0);
    std::int16_t length = 0;
    if (!odbc::Succeeded(odbc::GetInfo(m_Link.connection, what, units.data(),
                                       static_cast<std::int16_t>(units.size() * sizeof(units[0])),
                                       &length))) {
        return {};
    }
    units.resize(std::min(units.find(krtpal::Utf16Unit{0}), units.size()));
    return std::wstring(krtpal::WideFromUtf16(units));
}

std::vector<Table> Connection::Tables() {
    const std::string failure = "The tables of " + m_sName + " cannot be listed";
    std::map<std::wstring, std::wstring> schemas; // of each table
    const Statement statement(m_Link.connection);
    if (!odbc::Succeeded(odbc::Tables(statement.Handle(), L"TABLE", m_sSchema))) {
        Fail(failure, odbc::kStatement, statement.Handle());
    }
    while (statement.Fetch(failure)) {
        const std::wstring schema = FetchName(statement.Handle(), 2);
        schemas.emplace(FetchName(statement.Handle(), 3), schema);
    }
    std::vector<Table> tables;
    tables.reserve(schemas.size());
    for (const auto& [name, schema] : schemas) {
        tables.push_back({name, ReadColumns(schema, name)});
    }
    return tables;
}

std::vector<Column> Connection::ReadColumns(const std::wstring& schema, const std::wstring& table) const {
    const std::string failure = "The columns of table " + Quote(table) + " cannot be listed";
    const Statement statement(m_Link.connection);
    if (!odbc::Succeeded(odbc::Columns(statement.Handle(), table, m_sSchema))) {
        Fail(failure, odbc::kStatement, statement.Handle());
    }
    std::map<std::int64_t, Column> columns; // by their ordinals
    while (statement.Fetch(failure)) {
        // The name of the table is a pattern to some drivers.
        const bool isOther = FetchName(statement.Handle(), 2) != schema;
        if (FetchName(statement.Handle(), 3) != table || isOther) {
            continue;
        }
        Column column;
        column.name = FetchName(statement.Handle(), 4);
        const Cell number = Fetch(statement.Handle(), 5, Kind::Integer);
        column.type = FetchName(statement.Handle(), 6);
        const Cell ordinal = Fetch(statement.Handle(), 17, Kind::Integer);
        column.kind = m_pDialect->HasTypeNames() ? KindOf(m_pDialect->KindOfType(column.type)) : Kind::Other;
        if (column.kind == Kind::Other) {
            column.kind = KindOfNumber(number.integer);
        }
        columns.emplace(ordinal.integer, std::move(column));
    }
    std::vector<Column> sorted;
    sorted.reserve(columns.size());
    for (auto& [ordinal, column] : columns) {
        sorted.push_back(std::move(column));
    }
    return sorted;
}

Row Connection::CountRows(const Table& table) {
    const bool hasVersions = table.Find(L"m_nVersion").has_value();
    const std::wstring version = Quoted(L"m_nVersion");
    std::vector<Kind> kinds(hasVersions ? 3 : 1, Kind::Integer);
    Row counts;
    Query(L"SELECT COUNT(*)" + (hasVersions ? L", MIN(" + version + L"), MAX(" + version + L")" : L"") +
              L" FROM " + Quoted(table.name),
          kinds, false, "Table " + Quote(table.name) + " cannot be read",
          UseAll([&](const Row& row) { counts = row; }));
    counts.resize(3);
    return counts;
}

std::vector<Row> Connection::RepeatedKeys(const Table& table) {
    const std::wstring key = Quoted(L"groupID") + L", " + Quoted(L"objectID");
    std::vector<Row> rows;
    Query(L"SELECT " + key + L", COUNT(*) FROM " + Quoted(table.name) + L" GROUP BY " + key +
              L" HAVING COUNT(*) > 1 ORDER BY " + key,
          {Kind::Integer, Kind::Integer, Kind::Integer}, false,
          "Table " + Quote(table.name) + " cannot be read",
          UseAll([&](const Row& row) { rows.push_back(row); }));
    return rows;
}

void Connection::ForEachRow(const Table& table, const Key& key, const std::function<void(const Row&)>& use) {
    const bool tellsStorage = m_bSqlite && table.columns.size() <= kMostTold;
    std::wstring sql;
    std::vector<Kind> kinds;
    for (const Column& column : table.columns) {
        sql += (sql.empty() ? L"SELECT " : L", ") + Selected(column, tellsStorage);
        kinds.push_back(column.kind);
    }
    sql += L" FROM " + Quoted(table.name) + m_pDialect->ReadHint();
    const std::string failure = "Table " + Quote(table.name) + " cannot be read";
    if (!table.HasKey()) {
        Query(sql, kinds, tellsStorage, failure, UseAll(use));
        return;
    }
    const std::wstring group = Quoted(L"groupID");
    const std::wstring object = Quoted(L"objectID");
    const std::wstring order = L" ORDER BY " + group + L", " + object;
    if (key.group) {
        sql += L" WHERE " + group + L" = " + std::to_wstring(*key.group) +
               (key.object ? L" AND " + object + L" = " + std::to_wstring(*key.object) : L"");
    }
    if (key.group || !m_bSqlite) {
        Query(sql + order, kinds, tellsStorage, failure, UseAll(use));
        return;
    }
    Turns turns(table, m_Turn, use);
    std::wstring rest;
    do {
        turns.Begin();
        Query(sql + rest + order, kinds, tellsStorage, failure,
              [&turns](const Row& row) { return turns.Use(row); });
        if (turns.Next()) {
            const std::wstring from = std::to_wstring(turns.Next()->first);
            rest = L" WHERE " + group + L" >= " + from + L" AND (" + group + L" > " + from + L" OR " +
                   object + L" >= " + std::to_wstring(turns.Next()->second) + L")";
        }
    } while (turns.Next());
}

std::wstring Connection::Quoted(const std::wstring& name) const {
    std::wstring inside = name;
    for (std::size_t at = 0; !m_sQuote.empty() && (at = inside.find(m_sQuote, at)) != std::wstring::npos;) {
        inside.insert(at, m_sQuote);
        at += 2 * m_sQuote.size();
    }
    return m_sQuote + inside + m_sQuote;
}

std::wstring Connection::Selected(const Column& column, bool tellsStorage) const {
    std::wstring name = Quoted(column.name);
    if (!tellsStorage) {
        return name;
    }
    // The driver itself gives 15 digits of a number, two less than it may take.
    return L"typeof(" + name + L"), " +
           (column.kind == Kind::Double ? L"CASE typeof(" + name + L") WHEN 'real' THEN printf('%!.19g', " +
                                              name + L") ELSE " + name + L" END"
                                        : name);
}

void Connection::Query(const std::wstring& sql, const std::vector<Kind>& kinds, bool tellsStorage,
                       const std::string& failure, const std::function<bool(const Row&)>& use) const {
    const Statement statement(m_Link.connection);
    if (!odbc::Succeeded(odbc::ExecDirect(statement.Handle(), sql))) {
        Fail(failure, odbc::kStatement, statement.Handle());
    }
    const std::size_t width = tellsStorage ? 2 : 1;
    Row row(kinds.size());
    while (!kinds.empty() && statement.Fetch(failure)) {
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            const auto column = static_cast<std::uint16_t>(1 + i * width);
            try {
                row[i] = tellsStorage ? FetchStored(statement.Handle(), column, kinds[i])
                                      : Fetch(statement.Handle(), column, kinds[i]);
            } catch (const Failure& e) {
                throw Failure(failure, e.Reason(), e.Chain());
            }
        }
        if (!use(row)) {
            return;
        }
    }
}

/// By how the value is stored, which `column` tells; the value is in the one behind it.
Cell Connection::FetchStored(odbc::Handle statement, std::uint16_t column, Kind kind) const {
    const std::string storage = FetchPieces(statement, column, odbc::kCChar, 1).bytes;
    const auto value = static_cast<std::uint16_t>(column + 1);
    Cell cell;
    if (storage == "null") {
        return cell;
    }
    if (storage == "real") {
        SetDouble(FetchPieces(statement, value, odbc::kCChar, 1).bytes, &cell);
        return cell;
    }
    if (storage == "text" && kind == Kind::Double) {
        // The two numbers that SQLite does not have stand there as texts.
        const std::string text = FetchPieces(statement, value, odbc::kCChar, 1).bytes;
        SetDouble(text == "-0x0" ? "-0" : text, &cell);
        return cell;
    }
    const bool isGuid = kind == Kind::Guid && storage == "text";
    return Fetch(statement, value, isGuid ? Kind::Guid : KindOfStorage(storage));
}

Cell Connection::Fetch(odbc::Handle statement, std::uint16_t column, Kind kind) const {
    Cell cell;
    odbc::Result result = odbc::kSuccess;
    odbc::Length indicator = 0;
    switch (kind) {
    case Kind::Bit:
    case Kind::Integer: {
        const Bytes value = FetchPieces(statement, column, odbc::kCChar, 1);
        result = value.result;
        if (!value.isNull) {
            SetInteger(value.bytes, &cell);
        }
        break;
    }
    case Kind::Double:
        result = odbc::GetData(statement, column, odbc::kCDouble, &cell.real, sizeof(cell.real), &indicator);
        cell.form = indicator == odbc::kNullData ? Cell::Form::Null : Cell::Form::Double;
        break;
    case Kind::Guid:
        if (m_pDialect->HasGuidText()) {
            return GuidFromText(FetchText(statement, column));
        }
        result = odbc::GetData(statement, column, odbc::kCGuid, &cell.guid, sizeof(cell.guid), &indicator);
        cell.form = indicator == odbc::kNullData ? Cell::Form::Null : Cell::Form::Guid;
        break;
    case Kind::Binary:
        result = FetchBinary(statement, column, &cell);
        break;
    case Kind::Text:
    case Kind::Other:
        return FetchText(statement, column);
    }
    if (!odbc::Succeeded(result)) {
        Fail("", odbc::kStatement, statement);
    }
    return cell;
}

Cell Connection::FetchText(odbc::Handle statement, std::uint16_t column) const {
    const bss::SqlDialect::e_text form = m_pDialect->GetTextForm();
    const bool isUtf8 = form == bss::SqlDialect::textEscapedUtf8;
    const Bytes value = isUtf8 ? FetchPieces(statement, column, odbc::kCChar, 1)
                               : FetchPieces(statement, column, odbc::kCWChar, sizeof(krtpal::Utf16Unit));
    if (!odbc::Succeeded(value.result)) {
        Fail("", odbc::kStatement, statement);
    }
    Cell cell;
    if (value.isNull) {
        return cell;
    }
    cell.form = Cell::Form::Text;
    cell.text = isUtf8 ? Wide(value.bytes) : FromUnits(value.bytes);
    // Where a byte stood for no character there is another one now.
    cell.isDecodable = !isUtf8 || Utf8(cell.text) == value.bytes;
    if (form != bss::SqlDialect::textUtf16 && IsEscape(cell.text)) {
        cell.isDecodable = IsWholeEscape(cell.text);
        if (cell.isDecodable) {
            cell.text = std::wstring(
                krtpal::WideFromUtf16(bss::DecodeText(Utf8(cell.text), bss::SqlDialect::textEscapedUtf8)));
        }
    }
    return cell;
}

std::wstring Connection::FetchName(odbc::Handle statement, std::uint16_t column) const {
    return FetchText(statement, column).text;
}

} // namespace krtstore
