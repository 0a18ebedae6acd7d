// Entry points for environments and connections.

#include "support/odbc/Handles.h"
#include "support/odbc/Names.h"
#include "support/odbc/Statement.h"

#include <cstring>

using namespace testodbc;

namespace {

/// Stands for the driver in the call that makes an environment.
Handle& Root() {
    struct RootHandle : Handle {
        RootHandle() : Handle('D') {}
    };
    const std::lock_guard lock(Driver::Get().guard);
    static auto* const root = new RootHandle;
    return *root;
}

Handle* NewHandle(SQLSMALLINT type, Handle& parent) {
    if (type == SQL_HANDLE_ENV) {
        return new Environment;
    }
    if (type == SQL_HANDLE_DBC) {
        return new Connection;
    }
    if (type == SQL_HANDLE_STMT) {
        auto& connection = static_cast<Connection&>(parent);
        auto statement = std::make_unique<Statement>(connection);
        Handle* const handle = statement.get();
        connection.statements[handle] = std::move(statement);
        return handle;
    }
    Fail("HYC00", "no handles of this type");
}

/// The value of KEY=value; in a connection string, without braces.
std::string ValueOfKey(const std::string& text, const std::string& key) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(';', at), text.size());
        const std::size_t equals = text.find('=', at);
        if (equals < end && IsSameName(text.substr(at, equals - at), key)) {
            return text.substr(equals + 1, end - equals - 1);
        }
        at = end + 1;
    }
    return {};
}

SQLUINTEGER NumberOf(SQLPOINTER value) {
    return static_cast<SQLUINTEGER>(reinterpret_cast<SQLULEN>(value));
}

std::string AttributeArguments(SQLINTEGER attribute, SQLPOINTER value) {
    return ' ' + NameOfAttribute(attribute) + ' ' + std::to_string(NumberOf(value));
}

std::optional<std::string> TextInfo(const Connection& connection, SQLUSMALLINT info) {
    const Control& control = Driver::Get().control;
    switch (info) {
    case SQL_DATABASE_NAME:
    case SQL_DATA_SOURCE_NAME:
        return connection.DatabaseName();
    case SQL_DBMS_NAME:
        return control.DbmsName();
    case SQL_USER_NAME:
        return connection.User();
    case SQL_DRIVER_NAME:
        return "krtbss_test_odbc";
    case SQL_DRIVER_VER:
    case SQL_DBMS_VER:
        return "01.00.0000";
    case SQL_DRIVER_ODBC_VER:
        return "03.52";
    case SQL_IDENTIFIER_QUOTE_CHAR:
        return "[";
    case SQL_NEED_LONG_DATA_LEN:
        return "Y";
    default:
        return std::nullopt;
    }
}

template <typename T>
SQLRETURN PutNumber(T number, SQLPOINTER out, SQLSMALLINT* length) {
    if (out != nullptr) {
        std::memcpy(out, &number, sizeof(number));
    }
    if (length != nullptr) {
        *length = sizeof(number);
    }
    return SQL_SUCCESS;
}

/// Lengths of text are counts of bytes here.
SQLRETURN GetInfo(Connection& connection, SQLUSMALLINT info, SQLPOINTER out, SQLSMALLINT room,
                  SQLSMALLINT* length) {
    if (const std::optional<std::string> text = TextInfo(connection, info)) {
        const bool isWhole = PutText(*text, static_cast<SQLWCHAR*>(out), room / SQLSMALLINT{2}, length);
        if (length != nullptr) {
            *length = static_cast<SQLSMALLINT>(*length * 2);
        }
        return ResultOf(connection, isWhole);
    }
    switch (info) {
    case SQL_GETDATA_EXTENSIONS:
        return PutNumber<SQLUINTEGER>(Driver::Get().control.Extensions(), out, length);
    case SQL_CURSOR_COMMIT_BEHAVIOR:
    case SQL_CURSOR_ROLLBACK_BEHAVIOR:
        return PutNumber<SQLUSMALLINT>(SQL_CB_CLOSE, out, length);
    case SQL_TXN_CAPABLE:
        return PutNumber<SQLUSMALLINT>(SQL_TC_ALL, out, length);
    default:
        Fail("HYC00", "no information of number " + std::to_string(info));
    }
}

} // namespace

TESTODBC_ENTRY SQLAllocHandle(SQLSMALLINT type, SQLHANDLE input, SQLHANDLE* output) {
    *output = nullptr;
    Handle& parent = type == SQL_HANDLE_ENV ? Root() : *static_cast<Handle*>(input);
    return Perform("SQLAllocHandle", parent, ' ' + NameOfHandleType(type), [&](std::string& line) {
        Handle* const handle = NewHandle(type, parent);
        line += ' ' + handle->Label();
        *output = handle;
        return SQL_SUCCESS;
    });
}

TESTODBC_ENTRY SQLFreeHandle(SQLSMALLINT type, SQLHANDLE handle) {
    std::unique_ptr<Handle> last;
    const SQLRETURN result = Enter<Handle>("SQLFreeHandle", handle, {}, [&](Handle& object, std::string&) {
        if (type == SQL_HANDLE_STMT) {
            auto& statements = static_cast<Statement&>(object).GetConnection().statements;
            last = std::move(statements.extract(&object).mapped());
        } else {
            last.reset(&object);
        }
        return SQL_SUCCESS;
    });
    const std::lock_guard lock(Driver::Get().guard);
    last.reset();
    return result;
}

TESTODBC_ENTRY SQLSetEnvAttr(SQLHENV environment, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
    return Enter<Environment>("SQLSetEnvAttr", environment, AttributeArguments(attribute, value),
                              [](Environment&, std::string&) { return SQL_SUCCESS; });
}

TESTODBC_ENTRY SQLSetConnectAttrW(SQLHDBC connection, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
    return Enter<Connection>("SQLSetConnectAttrW", connection, AttributeArguments(attribute, value),
                             [&](Connection& object, std::string&) {
                                 if (attribute == SQL_ATTR_AUTOCOMMIT) {
                                     object.SetAutocommit(NumberOf(value) == SQL_AUTOCOMMIT_ON);
                                 } else {
                                     object.attributes[attribute] = NumberOf(value);
                                 }
                                 return SQL_SUCCESS;
                             });
}

TESTODBC_ENTRY SQLGetConnectAttrW(SQLHDBC connection, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER,
                                  SQLINTEGER*) {
    return Enter<Connection>("SQLGetConnectAttrW", connection, ' ' + NameOfAttribute(attribute),
                             [&](Connection& object, std::string&) {
                                 if (attribute == SQL_ATTR_AUTOCOMMIT) {
                                     return PutNumber<SQLUINTEGER>(object.IsAutocommit() ? 1 : 0, value,
                                                                   nullptr);
                                 }
                                 const auto found = object.attributes.find(attribute);
                                 if (found == object.attributes.end()) {
                                     Fail("HYC00", "attribute not set");
                                 }
                                 return PutNumber(static_cast<SQLUINTEGER>(found->second), value, nullptr);
                             });
}

TESTODBC_ENTRY SQLConnectW(SQLHDBC connection, SQLWCHAR* source, SQLSMALLINT sourceLength, SQLWCHAR* user,
                           SQLSMALLINT userLength, SQLWCHAR* password, SQLSMALLINT passwordLength) {
    return Enter<Connection>("SQLConnectW", connection,
                             QuoteArgument(source, sourceLength) + QuoteArgument(user, userLength) +
                                 QuoteArgument(password, passwordLength),
                             [&](Connection& object, std::string&) {
                                 object.Connect(TextFrom(source, sourceLength), TextFrom(user, userLength));
                                 return SQL_SUCCESS;
                             });
}

TESTODBC_ENTRY SQLDriverConnectW(SQLHDBC connection, SQLHWND, SQLWCHAR* in, SQLSMALLINT inLength,
                                 SQLWCHAR* out, SQLSMALLINT room, SQLSMALLINT* outLength,
                                 SQLUSMALLINT completion) {
    return Enter<Connection>("SQLDriverConnectW", connection,
                             QuoteArgument(in, inLength) + " room " + std::to_string(room) + " completion " +
                                 std::to_string(completion),
                             [&](Connection& object, std::string&) {
                                 const std::string text = TextFrom(in, inLength);
                                 object.Connect(ValueOfKey(text, "DBQ"), ValueOfKey(text, "UID"));
                                 return ResultOf(object, PutText(text, out, room, outLength));
                             });
}

TESTODBC_ENTRY SQLDisconnect(SQLHDBC connection) {
    return Enter<Connection>("SQLDisconnect", connection, {}, [](Connection& object, std::string&) {
        object.Disconnect();
        return SQL_SUCCESS;
    });
}

TESTODBC_ENTRY SQLGetInfoW(SQLHDBC connection, SQLUSMALLINT info, SQLPOINTER out, SQLSMALLINT room,
                           SQLSMALLINT* length) {
    return Enter<Connection>(
        "SQLGetInfoW", connection, ' ' + NameOfInfo(info) + " room " + std::to_string(room),
        [&](Connection& object, std::string&) { return GetInfo(object, info, out, room, length); });
}

TESTODBC_ENTRY SQLEndTran(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT completion) {
    return Enter<Connection>("SQLEndTran", handle, completion == SQL_COMMIT ? " SQL_COMMIT" : " SQL_ROLLBACK",
                             [&](Connection& object, std::string&) {
                                 object.EndTransaction(completion == SQL_COMMIT);
                                 return SQL_SUCCESS;
                             });
}

/// Not in the record: the driver manager asks on its own account.
TESTODBC_ENTRY SQLGetDiagRecW(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT number, SQLWCHAR* state,
                              SQLINTEGER* native, SQLWCHAR* text, SQLSMALLINT room, SQLSMALLINT* length) {
    if (handle == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    const std::lock_guard lock(Driver::Get().guard);
    const std::vector<Failure>& records = static_cast<Handle*>(handle)->diagnostics;
    if (number < 1 || static_cast<std::size_t>(number) > records.size()) {
        return SQL_NO_DATA;
    }
    const Failure& record = records[static_cast<std::size_t>(number) - 1];
    if (state != nullptr) {
        PutText(record.state, state, SQL_SQLSTATE_SIZE + 1, nullptr);
    }
    if (native != nullptr) {
        *native = record.native;
    }
    return PutText(record.text, text, room, length) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

/// Has no fields, but has to be there: without it the driver manager asks for no record either.
TESTODBC_ENTRY SQLGetDiagFieldW(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLSMALLINT, SQLPOINTER, SQLSMALLINT,
                                SQLSMALLINT*) {
    return SQL_NO_DATA;
}
