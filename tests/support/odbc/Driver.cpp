// The functions that the driver manager calls, as far as it and the library call any.

#include "support/odbc/Tables.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <sstream>

using namespace testodbc;

namespace {

Tables& AllTables() {
    static auto* const tables = new Tables;
    return *tables;
}

unsigned Extensions() {
    constexpr unsigned access = SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER | SQL_GD_BLOCK | SQL_GD_BOUND;
    return State().extensions.value_or(State().isAccess ? access : SQL_GD_BLOCK);
}

struct Connection : Handle {
    Connection() : Handle('C') {}
    ~Connection() override { EndTransaction(false); }

    Result Run(const std::string& sql, const std::vector<Argument>& arguments) {
        if (!isAutocommit && !before && sql.rfind("SELECT", 0) != 0) {
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
            statement->Close();
        }
    }

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

/// For the record: each with a blank before it.
template <typename... Parts>
std::string Listed(const Parts&... parts) {
    std::ostringstream out;
    ((out << ' ' << parts), ...);
    return out.str();
}

bool ComesAtExecution(const Buffer& parameter) {
    return *parameter.indicator <= SQL_LEN_DATA_AT_EXEC_OFFSET;
}

SQLRETURN ResultOf(Handle& handle, bool isWhole) {
    if (!isWhole) {
        handle.diagnostics.push_back({"01004", "String data, right truncated"});
    }
    return isWhole ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

struct Statement : Handle {
    explicit Statement(Connection& parent) : Handle('S'), connection(parent) {
        parent.statements.insert(this);
    }
    ~Statement() override { connection.statements.erase(this); }

    SQLRETURN Start(const std::string& text) {
        m_waiting.clear();
        m_arguments.clear();
        m_isCurrent = false;
        Close();
        m_sql = text;
        const auto markers = static_cast<int>(std::count(text.begin(), text.end(), '?'));
        if (std::distance(parameters.begin(), parameters.upper_bound(markers)) != markers) {
            Fail("07002", "Too few parameters. Expected " + std::to_string(markers) + '.');
        }
        for (int number = 1; number <= markers; ++number) {
            Take(number, parameters.at(number));
        }
        return m_waiting.empty() ? Run() : SQL_NEED_DATA;
    }

    SQLRETURN NextParameter(SQLPOINTER* data) {
        if (m_isCurrent) {
            // The driver wants to know lengths beforehand, as SQL Server's does.
            const int number = m_waiting.front();
            const auto declared = SQL_LEN_DATA_AT_EXEC_OFFSET - *parameters.at(number).indicator;
            const Cell& cell = m_arguments.at(static_cast<std::size_t>(number) - 1).cell;
            if (cell == nullptr || static_cast<SQLLEN>(cell->size()) != declared) {
                Fail("22026", "parameter " + std::to_string(number) + " has another length than announced");
            }
            m_waiting.pop_front();
        }
        m_isCurrent = !m_waiting.empty();
        if (!m_isCurrent) {
            return Run();
        }
        *data = parameters.at(m_waiting.front()).data;
        return SQL_NEED_DATA;
    }

    /// A value comes in one piece.
    void Put(SQLPOINTER data, SQLLEN length) {
        const Cell piece = CellOf({static_cast<const char*>(data), static_cast<std::size_t>(length)});
        RecordResult(' ' + HexOf(*piece));
        m_arguments.at(static_cast<std::size_t>(m_waiting.at(0)) - 1).cell = piece;
    }

    void Show(std::vector<int> types, std::vector<Row> rows) {
        Close();
        result = {std::move(types), std::move(rows), -1};
    }

    SQLRETURN Fetch() {
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

    SQLRETURN GetData(int column, const Buffer& target) {
        if (m_next == 0 || m_next > result.rows.size()) {
            Fail("24000", "no row has been fetched");
        }
        if (((Extensions() & SQL_GD_ANY_ORDER) == 0 && column < m_progress.column) ||
            ((Extensions() & SQL_GD_ANY_COLUMN) == 0 && !columns.empty() &&
             column <= columns.rbegin()->first)) {
            Fail("07009", "Invalid Descriptor Index");
        }
        if (m_progress.column != column) {
            m_progress = {};
            m_progress.column = column;
        }
        return m_progress.isDone ? SQL_NO_DATA : Deliver(column, target, m_progress);
    }

    void Close() override {
        result = {};
        m_next = 0;
        m_progress = {};
    }

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

    /// The value of a parameter, unless it is to come.
    void Take(int number, const Buffer& from) {
        Cell cell;
        std::string value = "NULL";
        if (ComesAtExecution(from)) {
            m_waiting.push_back(number);
            value = "at execution";
        } else if (*from.indicator != SQL_NULL_DATA) {
            cell = CellOf({static_cast<const char*>(from.data), static_cast<std::size_t>(*from.indicator)});
            value = HexOf(*cell);
        }
        m_arguments.push_back({from.cType, cell});
        RecordDetail("parameter" + Listed(number, NameOf(Group::cType, from.cType),
                                          NameOf(Group::sqlType, from.sqlType), "size", from.size, "room",
                                          from.room, "indicator", NameOf(Group::length, *from.indicator),
                                          "value", value));
    }

    SQLRETURN Run() {
        result = connection.Run(m_sql, m_arguments);
        return result.affected == 0 ? SQL_NO_DATA : SQL_SUCCESS;
    }

    /// As much as the buffer holds, with a zero behind text.
    SQLRETURN Deliver(int column, const Buffer& target, Progress& progress) {
        const auto at = static_cast<std::size_t>(column) - 1;
        if (at >= result.types.size()) {
            Fail("07009", "Invalid Descriptor Index");
        }
        const Cell& cell = result.rows[m_next - 1][at];
        if (cell == nullptr) {
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
        const bool isVariable = zero != 0 || target.cType == SQL_C_BINARY;
        const auto room = isVariable ? static_cast<std::size_t>(target.room) : left;
        const std::size_t usable = room < zero ? 0 : room - zero;
        const std::size_t count = std::min(left, zero == 2 ? usable / 2 * 2 : usable);
        if (target.data != nullptr && room >= zero) {
            std::memcpy(target.data, progress.image->data() + progress.bytes, count);
            std::memset(static_cast<char*>(target.data) + count, 0, zero);
        }
        progress.bytes += count;
        progress.isDone = count == left && room >= zero;
        const bool isHidden = State().hidesTotals && !progress.isDone;
        *target.indicator = isHidden ? SQL_NO_TOTAL : static_cast<SQLLEN>(left);
        return ResultOf(*this, progress.isDone);
    }

    std::string m_sql;
    std::vector<Argument> m_arguments;
    std::deque<int> m_waiting; ///< parameters whose data is still to come
    bool m_isCurrent = false;  ///< that of the first one is
    std::size_t m_next = 0;    ///< position of the row that is fetched next
    Progress m_progress;
};

/// Runs a call with the object behind a handle.
template <typename Object, typename Body>
SQLRETURN Enter(const char* call, SQLHANDLE handle, const std::string& arguments, Body body) {
    auto& object = static_cast<Object&>(*static_cast<Handle*>(handle));
    return Perform(call, object, arguments, [&] {
        if constexpr (std::is_void_v<decltype(body(object))>) {
            body(object);
            return SQLRETURN{SQL_SUCCESS};
        } else {
            return body(object);
        }
    });
}

std::string TextFrom(const SQLWCHAR* text, SQLINTEGER length) {
    std::size_t count = text == nullptr ? 0 : static_cast<std::size_t>(length);
    if (text != nullptr && length == SQL_NTS) {
        count = std::char_traits<char16_t>::length(reinterpret_cast<const char16_t*>(text));
    }
    return Utf8FromImage(std::string(reinterpret_cast<const char*>(text), 2 * count));
}

std::string Quoted(const SQLWCHAR* text, SQLINTEGER length) {
    return text == nullptr ? "NULL" : Quote(TextFrom(text, length));
}

/// Room and length are counts of characters. False if the text had to be cut.
bool PutText(const std::string& text, SQLWCHAR* out, SQLLEN room, SQLSMALLINT* length) {
    const std::string units = Utf16Image(text);
    const std::size_t count = units.size() / 2;
    if (length != nullptr) {
        *length = static_cast<SQLSMALLINT>(count);
    }
    if (out != nullptr && room > 0) {
        const std::size_t fitting = std::min(count, static_cast<std::size_t>(room) - 1);
        std::memcpy(out, units.data(), 2 * fitting);
        out[fitting] = 0;
    }
    return out == nullptr || static_cast<SQLLEN>(count) < room;
}

/// The value of KEY=value; in a connection string.
std::string ValueOf(const std::string& key, const std::string& text) {
    const std::size_t start = text.find(';' + key + '=') + key.size() + 2;
    return text.substr(start, text.find(';', start) - start);
}

unsigned NumberOf(SQLPOINTER value) {
    return static_cast<unsigned>(reinterpret_cast<SQLULEN>(value));
}

/// Lengths of text are counts of bytes here.
SQLRETURN GetInfo(Connection& connection, int info, SQLPOINTER out, SQLSMALLINT room, SQLSMALLINT* length) {
    const auto putText = [&](const std::string& text) {
        const bool isWhole = PutText(text, static_cast<SQLWCHAR*>(out), room / 2, length);
        if (length != nullptr) {
            *length = static_cast<SQLSMALLINT>(*length * 2);
        }
        return ResultOf(connection, isWhole);
    };
    const auto putNumber = [&](auto number) {
        std::memcpy(out, &number, sizeof(number));
        return SQLRETURN{SQL_SUCCESS};
    };
    const DriverState& state = State();
    switch (info) {
    case SQL_DATABASE_NAME:
        return putText(state.database.empty() ? connection.source : state.database);
    case SQL_DBMS_NAME:
        return putText(!state.dbms.empty() ? state.dbms : state.isAccess ? "ACCESS" : "Microsoft SQL Server");
    case SQL_USER_NAME:
        return putText(connection.user);
    case SQL_DRIVER_ODBC_VER:
        return putText("03.52");
    case SQL_GETDATA_EXTENSIONS:
        return putNumber(SQLUINTEGER{Extensions()});
    case SQL_CURSOR_COMMIT_BEHAVIOR:
    case SQL_CURSOR_ROLLBACK_BEHAVIOR:
        return putNumber(SQLUSMALLINT{SQL_CB_CLOSE});
    default:
        Fail("HYC00", "no information of number " + std::to_string(info));
    }
}

} // namespace

extern "C" __attribute__((visibility("default"))) DriverState* GetDriverState() {
    State().dropTables = [] { AllTables().clear(); };
    return &State();
}

#define ENTRY extern "C" __attribute__((visibility("default"))) SQLRETURN

ENTRY SQLAllocHandle(SQLSMALLINT type, SQLHANDLE input, SQLHANDLE* output) {
    static auto* const root = new Handle('D'); // stands for the driver
    *output = nullptr;
    const auto make = [&](Handle& parent) {
        Handle* handle = nullptr;
        if (type == SQL_HANDLE_STMT) {
            handle = new Statement(static_cast<Connection&>(parent));
        } else {
            handle = type == SQL_HANDLE_ENV ? new Handle('E') : new Connection;
        }
        RecordResult(' ' + handle->label);
        *output = handle;
    };
    return Enter<Handle>(__func__, type == SQL_HANDLE_ENV ? root : input,
                         Listed(NameOf(Group::handleType, type)), make);
}

ENTRY SQLFreeHandle(SQLSMALLINT, SQLHANDLE handle) {
    const SQLRETURN result = Enter<Handle>(__func__, handle, {}, [](Handle&) {});
    if (SQL_SUCCEEDED(result)) {
        delete static_cast<Handle*>(handle);
    }
    return result;
}

ENTRY SQLSetEnvAttr(SQLHENV handle, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
    return Enter<Handle>(__func__, handle, Listed(NameOf(Group::attribute, attribute), NumberOf(value)),
                         [](Handle&) {});
}

ENTRY SQLSetConnectAttrW(SQLHDBC handle, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
    const auto set = [&](Connection& connection) {
        if (attribute == SQL_ATTR_AUTOCOMMIT) {
            const bool isOn = NumberOf(value) == SQL_AUTOCOMMIT_ON;
            if (isOn && !connection.isAutocommit) {
                connection.EndTransaction(true);
            }
            connection.isAutocommit = isOn;
        }
    };
    return Enter<Connection>(__func__, handle, Listed(NameOf(Group::attribute, attribute), NumberOf(value)),
                             set);
}

ENTRY SQLConnectW(SQLHDBC handle, SQLWCHAR* source, SQLSMALLINT sourceLength, SQLWCHAR* user,
                  SQLSMALLINT userLength, SQLWCHAR* password, SQLSMALLINT passwordLength) {
    const auto connect = [&](Connection& connection) {
        connection.source = TextFrom(source, sourceLength);
        connection.user = TextFrom(user, userLength);
    };
    return Enter<Connection>(
        __func__, handle,
        Listed(Quoted(source, sourceLength), Quoted(user, userLength), Quoted(password, passwordLength)),
        connect);
}

ENTRY SQLDriverConnectW(SQLHDBC handle, SQLHWND, SQLWCHAR* in, SQLSMALLINT inLength, SQLWCHAR* out,
                        SQLSMALLINT room, SQLSMALLINT* outLength, SQLUSMALLINT completion) {
    const auto connect = [&](Connection& connection) {
        const std::string text = TextFrom(in, inLength);
        connection.source = ValueOf("DBQ", text);
        connection.user = ValueOf("UID", text);
        return ResultOf(connection, PutText(text, out, room, outLength));
    };
    return Enter<Connection>(__func__, handle,
                             Listed(Quoted(in, inLength), "room", room, "completion", completion), connect);
}

ENTRY SQLDisconnect(SQLHDBC handle) {
    return Enter<Connection>(__func__, handle, {}, [](Connection& connection) {
        if (connection.before) {
            Fail("25000", "A transaction is still open.");
        }
        while (!connection.statements.empty()) {
            delete *connection.statements.begin();
        }
        connection.isAutocommit = true;
    });
}

ENTRY SQLGetInfoW(SQLHDBC handle, SQLUSMALLINT info, SQLPOINTER out, SQLSMALLINT room, SQLSMALLINT* length) {
    return Enter<Connection>(
        __func__, handle, Listed(NameOf(Group::info, info), "room", room),
        [&](Connection& connection) { return GetInfo(connection, info, out, room, length); });
}

ENTRY SQLEndTran(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT completion) {
    const bool commits = completion == SQL_COMMIT;
    return Enter<Connection>(__func__, handle, commits ? " SQL_COMMIT" : " SQL_ROLLBACK",
                             [&](Connection& connection) { connection.EndTransaction(commits); });
}

/// Not in the record: the driver manager asks on its own account.
ENTRY SQLGetDiagRecW(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT number, SQLWCHAR* state, SQLINTEGER* native,
                     SQLWCHAR* text, SQLSMALLINT room, SQLSMALLINT* length) {
    const std::vector<Diagnostic>& records = static_cast<Handle*>(handle)->diagnostics;
    if (number < 1 || static_cast<std::size_t>(number) > records.size()) {
        return SQL_NO_DATA;
    }
    const Diagnostic& record = records[static_cast<std::size_t>(number) - 1];
    PutText(record.state, state, SQL_SQLSTATE_SIZE + 1, nullptr);
    *native = record.native;
    return PutText(record.text, text, room, length) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

/// Has no fields, but has to be there: without it the driver manager asks for no record either.
ENTRY SQLGetDiagFieldW(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLSMALLINT, SQLPOINTER, SQLSMALLINT,
                       SQLSMALLINT*) {
    return SQL_NO_DATA;
}

ENTRY SQLExecDirectW(SQLHSTMT handle, SQLWCHAR* sql, SQLINTEGER length) {
    return Enter<Statement>(__func__, handle, Listed(Quoted(sql, length)),
                            [&](Statement& statement) { return statement.Start(TextFrom(sql, length)); });
}

ENTRY SQLGetTypeInfoW(SQLHSTMT handle, SQLSMALLINT type) {
    return Enter<Statement>(__func__, handle, Listed(NameOf(Group::sqlType, type)),
                            [&](Statement& statement) {
                                std::vector<Row> rows;
                                for (const Type& each : Types()) {
                                    if (each.sqlType == type) {
                                        rows.push_back({CellOf(each.name)});
                                    }
                                }
                                statement.Show({SQL_C_CHAR}, std::move(rows));
                            });
}

ENTRY SQLTablesW(SQLHSTMT handle, SQLWCHAR* catalog, SQLSMALLINT catalogLength, SQLWCHAR* schema,
                 SQLSMALLINT schemaLength, SQLWCHAR* table, SQLSMALLINT tableLength, SQLWCHAR* type,
                 SQLSMALLINT typeLength) {
    const auto show = [&](Statement& statement) {
        std::vector<Row> rows;
        if (TextFrom(type, typeLength) != "TABLE") { // each back-end has some of its own
            rows.push_back({nullptr, nullptr, CellOf(std::string("MSysObjects"))});
        }
        for (const auto& [name, each] : AllTables()) {
            rows.push_back({nullptr, nullptr, CellOf(name)});
        }
        statement.Show(std::vector<int>(3, SQL_C_CHAR), std::move(rows));
    };
    return Enter<Statement>(__func__, handle,
                            Listed(Quoted(catalog, catalogLength), Quoted(schema, schemaLength),
                                   Quoted(table, tableLength), Quoted(type, typeLength)),
                            show);
}

ENTRY SQLColumnsW(SQLHSTMT handle, SQLWCHAR* catalog, SQLSMALLINT catalogLength, SQLWCHAR* schema,
                  SQLSMALLINT schemaLength, SQLWCHAR* table, SQLSMALLINT tableLength, SQLWCHAR* column,
                  SQLSMALLINT columnLength) {
    const auto show = [&](Statement& statement) {
        std::vector<int> types(17, SQL_C_CHAR);
        types[13] = types[16] = SQL_C_SLONG;
        std::vector<Row> rows;
        for (const Column& each : AllTables()[TextFrom(table, tableLength)].columns) {
            Row& row = rows.emplace_back(types.size());
            row[3] = CellOf(each.name);
            row[5] = CellOf(each.type.name);
            row[13] = CellOf(std::int32_t{each.type.sqlType});
            row[16] = CellOf(static_cast<std::int32_t>(rows.size()));
        }
        statement.Show(types, std::move(rows));
    };
    return Enter<Statement>(__func__, handle,
                            Listed(Quoted(catalog, catalogLength), Quoted(schema, schemaLength),
                                   Quoted(table, tableLength), Quoted(column, columnLength)),
                            show);
}

ENTRY SQLBindCol(SQLHSTMT handle, SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER data, SQLLEN room,
                 SQLLEN* indicator) {
    return Enter<Statement>(__func__, handle, Listed(column, NameOf(Group::cType, cType), "room", room),
                            [&](Statement& statement) {
                                statement.columns[column] = {cType, data, room, indicator};
                            });
}

ENTRY SQLFetch(SQLHSTMT handle) {
    return Enter<Statement>(__func__, handle, {}, [](Statement& statement) { return statement.Fetch(); });
}

ENTRY SQLGetData(SQLHSTMT handle, SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER data, SQLLEN room,
                 SQLLEN* indicator) {
    const auto get = [&](Statement& statement) {
        const SQLRETURN result = statement.GetData(column, {cType, data, room, indicator});
        if (SQL_SUCCEEDED(result)) {
            RecordResult(" indicator " + NameOf(Group::length, *indicator));
        }
        return result;
    };
    return Enter<Statement>(__func__, handle, Listed(column, NameOf(Group::cType, cType), "room", room), get);
}

ENTRY SQLBindParameter(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT, SQLSMALLINT cType,
                       SQLSMALLINT sqlType, SQLULEN size, SQLSMALLINT digits, SQLPOINTER data, SQLLEN room,
                       SQLLEN* indicator) {
    return Enter<Statement>(__func__, handle,
                            Listed(number, NameOf(Group::cType, cType), NameOf(Group::sqlType, sqlType),
                                   "size", size, "digits", digits, "room", room),
                            [&](Statement& statement) {
                                statement.parameters[number] = {cType, data, room, indicator, sqlType, size};
                            });
}

ENTRY SQLParamData(SQLHSTMT handle, SQLPOINTER* data) {
    return Enter<Statement>(__func__, handle, {},
                            [&](Statement& statement) { return statement.NextParameter(data); });
}

ENTRY SQLPutData(SQLHSTMT handle, SQLPOINTER data, SQLLEN length) {
    return Enter<Statement>(__func__, handle, Listed(NameOf(Group::length, length)),
                            [&](Statement& statement) { statement.Put(data, length); });
}

ENTRY SQLFreeStmt(SQLHSTMT handle, SQLUSMALLINT option) {
    return Enter<Statement>(__func__, handle, Listed(NameOf(Group::option, option)),
                            [&](Statement& statement) {
                                if (option == SQL_CLOSE) {
                                    statement.Close();
                                } else if (option == SQL_UNBIND) {
                                    statement.columns.clear();
                                } else {
                                    statement.parameters.clear();
                                }
                            });
}

ENTRY SQLCloseCursor(SQLHSTMT handle) {
    return Enter<Statement>(__func__, handle, {}, [](Statement& statement) {
        if (statement.result.types.empty()) {
            Fail("24000", "no cursor is open");
        }
        statement.Close();
    });
}
