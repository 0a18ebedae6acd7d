// The functions that the driver manager calls, as far as it and the library call any.

#include "support/odbc/Tables.h"

#include <algorithm>
#include <cstring>

using namespace testodbc;

namespace {

[[noreturn]] void Fail(std::string state, std::string text) {
    throw Failure{std::move(state), std::move(text)};
}

Tables& AllTables() {
    static auto* const tables = new Tables;
    return *tables;
}

struct Connection : Handle {
    Connection() : Handle('C') {}
    ~Connection() override { EndTransaction(false); }

    Result Run(const std::string& sql, const std::vector<Argument>& arguments) {
        if (!isAutocommit && !before && !IsQuery(sql)) {
            before = AllTables();
        }
        return Execute(AllTables(), sql, arguments);
    }
    void EndTransaction(bool commits) {
        if (!commits && before) {
            AllTables() = *before;
        }
        before.reset();
        // Cursors close with their transaction.
        for (Handle* const statement : statements) {
            CloseCursor(*statement);
        }
    }
    static void CloseCursor(Handle& statement);

    bool isAutocommit = true;
    std::string source;
    std::string user;
    std::optional<Tables> before; ///< the transaction's first change; cells are shared
    std::set<Handle*> statements;
};

/// A buffer of the application.
struct Buffer {
    int cType = 0;
    SQLPOINTER data = nullptr;
    SQLLEN room = 0;
    SQLLEN* indicator = nullptr;
    int sqlType = 0;
    SQLULEN size = 0;
};

struct Statement : Handle {
    explicit Statement(Connection& parent) : Handle('S'), connection(parent) {
        parent.statements.insert(this);
    }
    ~Statement() override { connection.statements.erase(this); }

    SQLRETURN Start(const std::string& text);
    SQLRETURN NextParameter(SQLPOINTER* data);
    void Put(SQLPOINTER data, SQLLEN length, std::string& line);
    void Show(std::vector<int> types, std::vector<Row> rows);
    SQLRETURN Fetch();
    SQLRETURN GetData(int column, const Buffer& target);
    void Close();

    Connection& connection;
    std::map<int, Buffer> columns;
    std::map<int, Buffer> parameters;
    Result result;

private:
    /// How far SQLGetData is in the row.
    struct Progress {
        int column = 0;
        int cType = 0;
        std::size_t bytes = 0;
        bool isDone = false;
        Cell image;
    };

    SQLRETURN Run();
    SQLRETURN Deliver(int column, const Buffer& target, Progress& progress);

    std::string m_sql;
    int m_markers = 0;
    std::vector<int> m_waiting; ///< parameters whose data is still to come, the next one last
    int m_current = 0;
    std::map<int, std::string> m_supplied;
    std::size_t m_next = 0; ///< position of the row that is fetched next
    Progress m_progress;
};

void Connection::CloseCursor(Handle& statement) {
    static_cast<Statement&>(statement).Close();
}

bool ComesAtExecution(const Buffer& parameter) {
    return parameter.indicator != nullptr && *parameter.indicator <= SQL_LEN_DATA_AT_EXEC_OFFSET;
}

bool IsVariable(int cType) {
    return cType == SQL_C_CHAR || cType == SQL_C_WCHAR || cType == SQL_C_BINARY;
}

Cell CellOf(const Buffer& parameter) {
    const SQLLEN length = parameter.indicator != nullptr ? *parameter.indicator : parameter.room;
    if (length == SQL_NULL_DATA) {
        return nullptr;
    }
    if (length < 0 || parameter.data == nullptr) {
        Fail("HY090", "length " + std::to_string(length));
    }
    return testodbc::CellOf(
        std::string(static_cast<const char*>(parameter.data), static_cast<std::size_t>(length)));
}

std::string Describe(int number, const Buffer& parameter) {
    const bool comes = ComesAtExecution(parameter);
    const Cell cell = comes ? nullptr : CellOf(parameter);
    return "parameter " + std::to_string(number) + ' ' + NameOf(Group::cType, parameter.cType) + ' ' +
           NameOf(Group::sqlType, parameter.sqlType) + " size " + std::to_string(parameter.size) + " room " +
           std::to_string(parameter.room) + " indicator " +
           (parameter.indicator != nullptr ? NameOf(Group::length, *parameter.indicator) : "none") +
           " value " +
           (comes  ? "at execution"
            : cell ? HexOf(*cell)
                   : "NULL");
}

SQLRETURN ResultOf(Handle& handle, bool isWhole) {
    if (!isWhole) {
        handle.diagnostics.push_back({"01004", "String data, right truncated"});
    }
    return isWhole ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

SQLRETURN Statement::Start(const std::string& text) {
    m_waiting.clear();
    m_supplied.clear();
    m_current = 0;
    Close();
    m_sql = text;
    m_markers = static_cast<int>(std::count(text.begin(), text.end(), '?'));
    for (int number = m_markers; number >= 1; --number) {
        if (parameters.count(number) == 0) {
            Fail("07002", "Too few parameters. Expected " + std::to_string(m_markers) + '.');
        }
        if (ComesAtExecution(parameters.at(number))) {
            m_waiting.push_back(number);
        }
    }
    for (int number = 1; number <= m_markers; ++number) {
        Shim::Get().details.push_back(Describe(number, parameters.at(number)));
    }
    return m_waiting.empty() ? Run() : SQL_NEED_DATA;
}

SQLRETURN Statement::Run() {
    std::vector<Argument> arguments;
    for (int number = 1; number <= m_markers; ++number) {
        const Buffer& parameter = parameters.at(number);
        const auto supplied = m_supplied.find(number);
        arguments.push_back({parameter.cType, supplied != m_supplied.end()
                                                  ? testodbc::CellOf(supplied->second)
                                                  : CellOf(parameter)});
    }
    result = connection.Run(m_sql, arguments);
    return result.affected == 0 ? SQL_NO_DATA : SQL_SUCCESS;
}

SQLRETURN Statement::NextParameter(SQLPOINTER* data) {
    if (m_current != 0) {
        // The driver wants to know lengths beforehand, as SQL Server's does.
        const SQLLEN declared = SQL_LEN_DATA_AT_EXEC_OFFSET - *parameters.at(m_current).indicator;
        if (m_supplied.count(m_current) == 0) {
            Fail("HY010", "no data for parameter " + std::to_string(m_current));
        }
        if (m_supplied[m_current].size() != static_cast<std::size_t>(declared)) {
            Fail("22026", "parameter " + std::to_string(m_current) + " has another length than announced");
        }
    }
    m_current = 0;
    if (m_waiting.empty()) {
        return Run();
    }
    m_current = m_waiting.back();
    m_waiting.pop_back();
    *data = parameters.at(m_current).data;
    return SQL_NEED_DATA;
}

void Statement::Put(SQLPOINTER data, SQLLEN length, std::string& line) {
    if (m_current == 0 || length < 0) {
        Fail("HY010", "no parameter is waiting for data");
    }
    const std::string_view piece(static_cast<const char*>(data), static_cast<std::size_t>(length));
    line += ' ' + HexOf(piece);
    m_supplied[m_current] += piece;
}

void Statement::Show(std::vector<int> types, std::vector<Row> rows) {
    Close();
    result = {std::move(types), std::move(rows), -1};
}

void Statement::Close() {
    result = {};
    m_next = 0;
    m_progress = {};
}

SQLRETURN Statement::Fetch() {
    if (result.types.empty()) {
        Fail("24000", "no cursor is open");
    }
    m_progress = {};
    if (m_next >= result.rows.size()) {
        m_next = result.rows.size() + 1;
        return SQL_NO_DATA;
    }
    ++m_next;
    SQLRETURN worst = SQL_SUCCESS;
    for (const auto& [column, target] : columns) {
        Progress fromStart;
        worst = std::max(worst, Deliver(column, target, fromStart));
    }
    return worst;
}

SQLRETURN Statement::GetData(int column, const Buffer& target) {
    if (m_next == 0 || m_next > result.rows.size()) {
        Fail("24000", "no row has been fetched");
    }
    const Settings& settings = Shim::Get().settings;
    const unsigned extensions = settings.extensions.value_or(
        settings.isAccess ? SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER | SQL_GD_BLOCK | SQL_GD_BOUND
                          : SQL_GD_BLOCK);
    if (((extensions & SQL_GD_ANY_ORDER) == 0 && column < m_progress.column) ||
        ((extensions & SQL_GD_ANY_COLUMN) == 0 && !columns.empty() && column <= columns.rbegin()->first)) {
        Fail("07009", "Invalid Descriptor Index");
    }
    if (m_progress.column != column) {
        m_progress = {};
        m_progress.column = column;
    }
    return m_progress.isDone ? SQL_NO_DATA : Deliver(column, target, m_progress);
}

/// As much as the buffer holds, with a zero behind text.
SQLRETURN Statement::Deliver(int column, const Buffer& target, Progress& progress) {
    const auto at = static_cast<std::size_t>(column) - 1;
    if (at >= result.types.size()) {
        Fail("07009", "Invalid Descriptor Index");
    }
    const Cell& cell = result.rows[m_next - 1][at];
    if (cell == nullptr) {
        if (target.indicator == nullptr) {
            Fail("22002", "Indicator variable required but not supplied");
        }
        *target.indicator = SQL_NULL_DATA;
        progress.isDone = true;
        return SQL_SUCCESS;
    }
    if (progress.image == nullptr || progress.cType != target.cType) {
        progress.image = ToC(target.cType, result.types[at], cell);
        progress.cType = target.cType;
    }
    const std::size_t left = progress.image->size() - progress.bytes;
    const std::size_t zero = target.cType == SQL_C_CHAR ? 1 : target.cType == SQL_C_WCHAR ? 2 : 0;
    const auto room = IsVariable(target.cType) ? static_cast<std::size_t>(target.room) : left;
    const std::size_t count =
        room < zero
            ? 0
            : std::min(left, (room - zero) / std::max<std::size_t>(zero, 1) * std::max<std::size_t>(zero, 1));
    if (target.data != nullptr && room >= zero) {
        std::memcpy(target.data, progress.image->data() + progress.bytes, count);
        std::memset(static_cast<char*>(target.data) + count, 0, zero);
    }
    if (target.indicator != nullptr) {
        *target.indicator = static_cast<SQLLEN>(left);
    }
    progress.bytes += count;
    progress.isDone = count == left && room >= zero;
    return ResultOf(*this, progress.isDone);
}

/// Runs a call with the object behind a handle.
template <typename Object, typename Body>
SQLRETURN Enter(const char* call, SQLHANDLE handle, const std::string& arguments, Body body) {
    if (handle == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    auto& object = static_cast<Object&>(*static_cast<Handle*>(handle));
    return Shim::Get().Perform(call, object, arguments, [&](std::string& line) {
        if constexpr (std::is_void_v<decltype(body(object, line))>) {
            body(object, line);
            return SQLRETURN{SQL_SUCCESS};
        } else {
            return static_cast<SQLRETURN>(body(object, line));
        }
    });
}

std::string TextFrom(const SQLWCHAR* text, SQLINTEGER length) {
    std::u16string units;
    for (SQLINTEGER i = 0; text != nullptr && (length == SQL_NTS ? text[i] != 0 : i < length); ++i) {
        units += static_cast<char16_t>(text[i]);
    }
    return Utf8FromUtf16(units);
}

std::string QuoteArgument(const SQLWCHAR* text, SQLINTEGER length) {
    return text == nullptr ? " NULL" : ' ' + Quote(TextFrom(text, length));
}

/// Room and length are counts of characters. False if the text had to be cut.
bool PutText(const std::string& text, SQLWCHAR* out, SQLLEN room, SQLSMALLINT* length) {
    const std::u16string units = Utf16FromUtf8(text);
    if (length != nullptr) {
        *length = static_cast<SQLSMALLINT>(units.size());
    }
    if (out != nullptr && room > 0) {
        const std::size_t count = std::min(units.size(), static_cast<std::size_t>(room) - 1);
        std::memcpy(out, units.data(), count * sizeof(SQLWCHAR));
        out[count] = 0;
    }
    return out == nullptr || static_cast<SQLLEN>(units.size()) < room;
}

std::string BufferArguments(int number, int cType, SQLLEN room) {
    return ' ' + std::to_string(number) + ' ' + NameOf(Group::cType, cType) + " room " + std::to_string(room);
}

/// The value of KEY=value; in a connection string.
std::string ValueOfKey(const std::string& text, const std::string& key) {
    const std::size_t start = (';' + text).find(';' + key + '=');
    return start == std::string::npos
               ? std::string()
               : text.substr(start + key.size() + 1, text.find(';', start) - start - key.size() - 1);
}

unsigned NumberOf(SQLPOINTER value) {
    return static_cast<unsigned>(reinterpret_cast<SQLULEN>(value));
}

std::string AttributeArguments(SQLINTEGER attribute, SQLPOINTER value) {
    return ' ' + NameOf(Group::attribute, attribute) + ' ' + std::to_string(NumberOf(value));
}

/// Lengths of text are counts of bytes here.
SQLRETURN GetInfo(Connection& connection, SQLUSMALLINT info, SQLPOINTER out, SQLSMALLINT room,
                  SQLSMALLINT* length) {
    const Settings& settings = Shim::Get().settings;
    const auto putText = [&](const std::string& text) {
        const bool isWhole = PutText(text, static_cast<SQLWCHAR*>(out), room / SQLSMALLINT{2}, length);
        if (length != nullptr) {
            *length = static_cast<SQLSMALLINT>(*length * 2);
        }
        return ResultOf(connection, isWhole);
    };
    const auto putNumber = [&](auto number) {
        std::memcpy(out, &number, sizeof(number));
        return SQLRETURN{SQL_SUCCESS};
    };
    switch (info) {
    case SQL_DATABASE_NAME:
        return putText(settings.database.empty() ? connection.source : settings.database);
    case SQL_DBMS_NAME:
        return putText(!settings.dbms.empty() ? settings.dbms
                       : settings.isAccess    ? "ACCESS"
                                              : "Microsoft SQL Server");
    case SQL_USER_NAME:
        return putText(connection.user);
    case SQL_DRIVER_ODBC_VER:
        return putText("03.52");
    case SQL_GETDATA_EXTENSIONS:
        return putNumber(SQLUINTEGER{settings.extensions.value_or(settings.isAccess ? 15 : SQL_GD_BLOCK)});
    case SQL_CURSOR_COMMIT_BEHAVIOR:
    case SQL_CURSOR_ROLLBACK_BEHAVIOR:
        return putNumber(SQLUSMALLINT{SQL_CB_CLOSE});
    default:
        Fail("HYC00", "no information of number " + std::to_string(info));
    }
}

/// Columns of a catalogue call: text but for those that are given as numbers.
std::vector<int> CatalogueTypes(std::size_t width, std::initializer_list<std::size_t> numbers) {
    std::vector<int> types(width, SQL_CHAR);
    for (const std::size_t number : numbers) {
        types[number - 1] = SQL_INTEGER;
    }
    return types;
}

} // namespace

#define ENTRY extern "C" __attribute__((visibility("default"))) SQLRETURN

ENTRY SQLAllocHandle(SQLSMALLINT type, SQLHANDLE input, SQLHANDLE* output) {
    const std::lock_guard lock(Shim::Get().guard);
    static auto* const root = new Handle('D'); // stands for the driver
    Shim::Get().dropTables = [] { AllTables().clear(); };
    *output = nullptr;
    SQLHANDLE parent = type == SQL_HANDLE_ENV ? root : input;
    return Enter<Handle>("SQLAllocHandle", parent, ' ' + NameOf(Group::handleType, type),
                         [&](Handle& object, std::string& line) {
                             Handle* const handle =
                                 type == SQL_HANDLE_ENV ? new Handle('E')
                                 : type == SQL_HANDLE_DBC
                                     ? new Connection
                                     : static_cast<Handle*>(new Statement(static_cast<Connection&>(object)));
                             line += ' ' + handle->Label();
                             *output = handle;
                         });
}

ENTRY SQLFreeHandle(SQLSMALLINT, SQLHANDLE handle) {
    const std::lock_guard lock(Shim::Get().guard);
    const SQLRETURN result = Enter<Handle>("SQLFreeHandle", handle, {}, [](Handle&, std::string&) {});
    if (SQL_SUCCEEDED(result)) {
        delete static_cast<Handle*>(handle);
    }
    return result;
}

ENTRY SQLSetEnvAttr(SQLHENV environment, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
    return Enter<Handle>("SQLSetEnvAttr", environment, AttributeArguments(attribute, value),
                         [](Handle&, std::string&) {});
}

ENTRY SQLSetConnectAttrW(SQLHDBC connection, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
    return Enter<Connection>("SQLSetConnectAttrW", connection, AttributeArguments(attribute, value),
                             [&](Connection& object, std::string&) {
                                 if (attribute == SQL_ATTR_AUTOCOMMIT) {
                                     const bool isOn = NumberOf(value) == SQL_AUTOCOMMIT_ON;
                                     if (isOn && !object.isAutocommit) {
                                         object.EndTransaction(true);
                                     }
                                     object.isAutocommit = isOn;
                                 }
                             });
}

ENTRY SQLConnectW(SQLHDBC connection, SQLWCHAR* source, SQLSMALLINT sourceLength, SQLWCHAR* user,
                  SQLSMALLINT userLength, SQLWCHAR* password, SQLSMALLINT passwordLength) {
    return Enter<Connection>("SQLConnectW", connection,
                             QuoteArgument(source, sourceLength) + QuoteArgument(user, userLength) +
                                 QuoteArgument(password, passwordLength),
                             [&](Connection& object, std::string&) {
                                 object.source = TextFrom(source, sourceLength);
                                 object.user = TextFrom(user, userLength);
                             });
}

ENTRY SQLDriverConnectW(SQLHDBC connection, SQLHWND, SQLWCHAR* in, SQLSMALLINT inLength, SQLWCHAR* out,
                        SQLSMALLINT room, SQLSMALLINT* outLength, SQLUSMALLINT completion) {
    return Enter<Connection>("SQLDriverConnectW", connection,
                             QuoteArgument(in, inLength) + " room " + std::to_string(room) + " completion " +
                                 std::to_string(completion),
                             [&](Connection& object, std::string&) {
                                 const std::string text = TextFrom(in, inLength);
                                 object.source = ValueOfKey(text, "DBQ");
                                 object.user = ValueOfKey(text, "UID");
                                 return ResultOf(object, PutText(text, out, room, outLength));
                             });
}

ENTRY SQLDisconnect(SQLHDBC connection) {
    return Enter<Connection>("SQLDisconnect", connection, {}, [](Connection& object, std::string&) {
        if (object.before) {
            Fail("25000", "A transaction is still open.");
        }
        while (!object.statements.empty()) {
            delete *object.statements.begin();
        }
        object.isAutocommit = true;
    });
}

ENTRY SQLGetInfoW(SQLHDBC connection, SQLUSMALLINT info, SQLPOINTER out, SQLSMALLINT room,
                  SQLSMALLINT* length) {
    return Enter<Connection>(
        "SQLGetInfoW", connection, ' ' + NameOf(Group::info, info) + " room " + std::to_string(room),
        [&](Connection& object, std::string&) { return GetInfo(object, info, out, room, length); });
}

ENTRY SQLEndTran(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT completion) {
    return Enter<Connection>(
        "SQLEndTran", handle, completion == SQL_COMMIT ? " SQL_COMMIT" : " SQL_ROLLBACK",
        [&](Connection& object, std::string&) { object.EndTransaction(completion == SQL_COMMIT); });
}

/// Not in the record: the driver manager asks on its own account.
ENTRY SQLGetDiagRecW(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT number, SQLWCHAR* state, SQLINTEGER* native,
                     SQLWCHAR* text, SQLSMALLINT room, SQLSMALLINT* length) {
    const std::lock_guard lock(Shim::Get().guard);
    const std::vector<Failure>& records = static_cast<Handle*>(handle)->diagnostics;
    if (number < 1 || static_cast<std::size_t>(number) > records.size()) {
        return SQL_NO_DATA;
    }
    const Failure& record = records[static_cast<std::size_t>(number) - 1];
    PutText(record.state, state, SQL_SQLSTATE_SIZE + 1, nullptr);
    *native = record.native;
    return PutText(record.text, text, room, length) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

/// Has no fields, but has to be there: without it the driver manager asks for no record either.
ENTRY SQLGetDiagFieldW(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLSMALLINT, SQLPOINTER, SQLSMALLINT,
                       SQLSMALLINT*) {
    return SQL_NO_DATA;
}

ENTRY SQLExecDirectW(SQLHSTMT statement, SQLWCHAR* sql, SQLINTEGER length) {
    return Enter<Statement>(
        "SQLExecDirectW", statement, QuoteArgument(sql, length),
        [&](Statement& object, std::string&) { return object.Start(TextFrom(sql, length)); });
}

ENTRY SQLGetTypeInfoW(SQLHSTMT statement, SQLSMALLINT type) {
    return Enter<Statement>("SQLGetTypeInfoW", statement, ' ' + NameOf(Group::sqlType, type),
                            [&](Statement& object, std::string&) {
                                std::vector<Row> rows;
                                for (const Type& each : Types()) {
                                    if (each.sqlType == type) {
                                        rows.push_back({testodbc::CellOf(each.name)});
                                    }
                                }
                                object.Show(CatalogueTypes(1, {}), std::move(rows));
                            });
}

ENTRY SQLTablesW(SQLHSTMT statement, SQLWCHAR* catalog, SQLSMALLINT catalogLength, SQLWCHAR* schema,
                 SQLSMALLINT schemaLength, SQLWCHAR* table, SQLSMALLINT tableLength, SQLWCHAR* type,
                 SQLSMALLINT typeLength) {
    return Enter<Statement>(
        "SQLTablesW", statement,
        QuoteArgument(catalog, catalogLength) + QuoteArgument(schema, schemaLength) +
            QuoteArgument(table, tableLength) + QuoteArgument(type, typeLength),
        [&](Statement& object, std::string&) {
            std::vector<Row> rows;
            if (TextFrom(type, typeLength) != "TABLE") { // each back-end has some of its own
                rows.push_back({nullptr, nullptr, testodbc::CellOf(std::string("MSysObjects"))});
            }
            for (const auto& [name, each] : AllTables()) {
                rows.push_back({nullptr, nullptr, testodbc::CellOf(name)});
            }
            object.Show(CatalogueTypes(3, {}), std::move(rows));
        });
}

ENTRY SQLColumnsW(SQLHSTMT statement, SQLWCHAR* catalog, SQLSMALLINT catalogLength, SQLWCHAR* schema,
                  SQLSMALLINT schemaLength, SQLWCHAR* table, SQLSMALLINT tableLength, SQLWCHAR* column,
                  SQLSMALLINT columnLength) {
    return Enter<Statement>("SQLColumnsW", statement,
                            QuoteArgument(catalog, catalogLength) + QuoteArgument(schema, schemaLength) +
                                QuoteArgument(table, tableLength) + QuoteArgument(column, columnLength),
                            [&](Statement& object, std::string&) {
                                std::vector<Row> rows;
                                std::int32_t ordinal = 0;
                                for (const Column& each : AllTables()[TextFrom(table, tableLength)].columns) {
                                    Row& row = rows.emplace_back(17);
                                    row[3] = testodbc::CellOf(each.name);
                                    row[5] = testodbc::CellOf(each.type.name);
                                    row[13] = testodbc::CellOf(std::int32_t{each.type.sqlType});
                                    row[16] = testodbc::CellOf(++ordinal);
                                }
                                object.Show(CatalogueTypes(17, {14, 17}), std::move(rows));
                            });
}

ENTRY SQLBindCol(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER data, SQLLEN room,
                 SQLLEN* indicator) {
    return Enter<Statement>("SQLBindCol", statement, BufferArguments(column, cType, room),
                            [&](Statement& object, std::string&) {
                                object.columns[column] = {cType, data, room, indicator};
                            });
}

ENTRY SQLFetch(SQLHSTMT statement) {
    return Enter<Statement>("SQLFetch", statement, {},
                            [](Statement& object, std::string&) { return object.Fetch(); });
}

ENTRY SQLGetData(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER data, SQLLEN room,
                 SQLLEN* indicator) {
    return Enter<Statement>(
        "SQLGetData", statement, BufferArguments(column, cType, room),
        [&](Statement& object, std::string& line) {
            const SQLRETURN result = object.GetData(column, {cType, data, room, indicator});
            if (indicator != nullptr && SQL_SUCCEEDED(result)) {
                line += " indicator " + NameOf(Group::length, *indicator);
            }
            return result;
        });
}

ENTRY SQLBindParameter(SQLHSTMT statement, SQLUSMALLINT number, SQLSMALLINT direction, SQLSMALLINT cType,
                       SQLSMALLINT sqlType, SQLULEN size, SQLSMALLINT digits, SQLPOINTER data, SQLLEN room,
                       SQLLEN* indicator) {
    const std::string arguments = ' ' + std::to_string(number) + ' ' + NameOf(Group::cType, cType) + ' ' +
                                  NameOf(Group::sqlType, sqlType) + " size " + std::to_string(size) +
                                  " digits " + std::to_string(digits) + " room " + std::to_string(room);
    return Enter<Statement>("SQLBindParameter", statement, arguments, [&](Statement& object, std::string&) {
        if (direction != SQL_PARAM_INPUT) {
            Fail("HYC00", "parameters are for input only");
        }
        object.parameters[number] = {cType, data, room, indicator, sqlType, size};
    });
}

ENTRY SQLParamData(SQLHSTMT statement, SQLPOINTER* data) {
    return Enter<Statement>("SQLParamData", statement, {},
                            [&](Statement& object, std::string&) { return object.NextParameter(data); });
}

ENTRY SQLPutData(SQLHSTMT statement, SQLPOINTER data, SQLLEN length) {
    return Enter<Statement>("SQLPutData", statement, ' ' + NameOf(Group::length, length),
                            [&](Statement& object, std::string& line) { object.Put(data, length, line); });
}

ENTRY SQLFreeStmt(SQLHSTMT statement, SQLUSMALLINT option) {
    return Enter<Statement>("SQLFreeStmt", statement, ' ' + NameOf(Group::option, option),
                            [&](Statement& object, std::string&) {
                                if (option == SQL_CLOSE) {
                                    object.Close();
                                } else if (option == SQL_UNBIND) {
                                    object.columns.clear();
                                } else {
                                    object.parameters.clear();
                                }
                            });
}

ENTRY SQLCloseCursor(SQLHSTMT statement) {
    return Enter<Statement>("SQLCloseCursor", statement, {}, [](Statement& object, std::string&) {
        if (object.result.types.empty()) {
            Fail("24000", "no cursor is open");
        }
        object.Close();
    });
}
