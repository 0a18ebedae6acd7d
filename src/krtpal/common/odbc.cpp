#include "krtpal/common/odbc.h"

#include "krtpal/common/text.h"

#include <algorithm>
#ifdef _WIN32
#include <windows.h>
#else
#include <locale.h>
#endif
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

static_assert(sizeof(SQLWCHAR) == 2 && sizeof(SQLLEN) == sizeof(krtpal::odbc::Length));

namespace krtpal::odbc {

namespace {

// A text argument. The driver manager does not change it, although its parameters are not const.
class Text {
public:
    explicit Text(const std::wstring& text) : m_units(Utf16FromWide<Utf16String>(text)) {}

    SQLWCHAR* Data() { return reinterpret_cast<SQLWCHAR*>(m_units.data()); }
    // Returns null for an empty text, where null means no restriction.
    SQLWCHAR* DataIfAny() { return m_units.empty() ? nullptr : Data(); }
    SQLSMALLINT Length() const { return static_cast<SQLSMALLINT>(m_units.size()); }

private:
    Utf16String m_units;
};

// Sets the calling thread's locale to UTF-8 while an environment or connection is allocated: unixODBC takes
// from the locale how to convert text for drivers without wide calls. In the locale "C" each letter would
// become a byte.
#ifdef _WIN32
struct Utf8Locale {
    Utf8Locale() {}
};
#else
class Utf8Locale {
public:
    Utf8Locale()
        : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)),
          m_former(m_locale == nullptr ? nullptr : uselocale(m_locale)) {}
    ~Utf8Locale() {
        if (m_locale != nullptr) {
            uselocale(m_former);
            freelocale(m_locale);
        }
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

private:
    locale_t m_locale;
    locale_t m_former;
};
#endif

std::wstring WideText(const SQLWCHAR* units, std::size_t length) {
    return std::wstring(WideFromUtf16(Utf16View(reinterpret_cast<const Utf16Unit*>(units), length)));
}

} // namespace

Result AllocHandle(std::int16_t kind, Handle parent, Handle* handle) {
    if (kind == kStatement) {
        return SQLAllocHandle(kind, parent, handle);
    }
    const Utf8Locale utf8;
    return SQLAllocHandle(kind, parent, handle);
}

Result FreeHandle(std::int16_t kind, Handle handle) {
    return SQLFreeHandle(kind, handle);
}

Result SetEnvAttr(Handle environment, std::int32_t attribute, std::uintptr_t value) {
    return SQLSetEnvAttr(environment, attribute, reinterpret_cast<SQLPOINTER>(value), SQL_IS_UINTEGER);
}

Result SetConnectAttr(Handle connection, std::int32_t attribute, std::uintptr_t value) {
    return SQLSetConnectAttrW(connection, attribute, reinterpret_cast<SQLPOINTER>(value), SQL_IS_UINTEGER);
}

Result Connect(Handle connection, const std::wstring& dataSource, const std::wstring& user,
               const std::wstring& password) {
    Text name(dataSource);
    Text who(user);
    Text secret(password);
    return SQLConnectW(connection, name.Data(), name.Length(), who.Data(), who.Length(), secret.Data(),
                       secret.Length());
}

Result DriverConnect(Handle connection, const std::wstring& text) {
    constexpr SQLSMALLINT kRoom = 4096;
    SQLWCHAR completed[kRoom] = {};
    SQLSMALLINT length = 0;
    Text request(text);
    return SQLDriverConnectW(connection, nullptr, request.Data(), request.Length(), completed, kRoom, &length,
                             SQL_DRIVER_NOPROMPT);
}

Result Disconnect(Handle connection) {
    return SQLDisconnect(connection);
}

Result GetInfo(Handle connection, std::uint16_t what, void* value, std::int16_t room, std::int16_t* length) {
    return SQLGetInfoW(connection, what, value, room, length);
}

Result EndTran(std::int16_t kind, Handle handle, std::int16_t completion) {
    return SQLEndTran(kind, handle, completion);
}

Result GetTypeInfo(Handle statement, std::int16_t sqlType) {
    return SQLGetTypeInfoW(statement, sqlType);
}

Result Tables(Handle statement, const std::wstring& kind, const std::wstring& schema) {
    Text owner(schema);
    Text type(kind);
    return SQLTablesW(statement, nullptr, 0, owner.DataIfAny(), owner.Length(), nullptr, 0, type.Data(),
                      type.Length());
}

Result Columns(Handle statement, const std::wstring& table, const std::wstring& schema) {
    Text owner(schema);
    Text name(table);
    return SQLColumnsW(statement, nullptr, 0, owner.DataIfAny(), owner.Length(), name.Data(), name.Length(),
                       nullptr, 0);
}

Result ExecDirect(Handle statement, const std::wstring& text) {
    return SQLExecDirectW(statement, Text(text).Data(), SQL_NTS);
}

Result Prepare(Handle statement, const std::wstring& text) {
    return SQLPrepareW(statement, Text(text).Data(), SQL_NTS);
}

Result Execute(Handle statement) {
    return SQLExecute(statement);
}

Result BindParameter(Handle statement, std::uint16_t number, std::int16_t cType, std::int16_t sqlType,
                     std::size_t columnSize, void* value, Length room, Length* indicator) {
    return SQLBindParameter(statement, number, SQL_PARAM_INPUT, cType, sqlType, columnSize, 0, value, room,
                            reinterpret_cast<SQLLEN*>(indicator));
}

Result ParamData(Handle statement, void** value) {
    return SQLParamData(statement, value);
}

Result PutData(Handle statement, const void* data, Length length) {
    return SQLPutData(statement, const_cast<void*>(data), length);
}

Result BindCol(Handle statement, std::uint16_t column, std::int16_t cType, void* target, Length room,
               Length* indicator) {
    return SQLBindCol(statement, column, cType, target, room, reinterpret_cast<SQLLEN*>(indicator));
}

Result Fetch(Handle statement) {
    return SQLFetch(statement);
}

Result GetData(Handle statement, std::uint16_t column, std::int16_t cType, void* target, Length room,
               Length* indicator) {
    return SQLGetData(statement, column, cType, target, room, reinterpret_cast<SQLLEN*>(indicator));
}

Result FreeStmt(Handle statement, std::uint16_t option) {
    return SQLFreeStmt(statement, option);
}

Result CloseCursor(Handle statement) {
    return SQLCloseCursor(statement);
}

Result GetDiagRec(std::int16_t kind, Handle handle, std::int16_t number, DiagnosticRecord* record) {
    constexpr SQLSMALLINT kRoom = 1024;
    SQLWCHAR state[6] = {};
    SQLWCHAR text[kRoom] = {};
    SQLINTEGER nativeError = 0;
    SQLSMALLINT length = 0;
    const Result result = SQLGetDiagRecW(kind, handle, number, state, &nativeError, text, kRoom, &length);
    if (Succeeded(result)) {
        record->state = WideText(state, 5);
        record->nativeError = nativeError;
        record->text = WideText(text, static_cast<std::size_t>(std::clamp<int>(length, 0, kRoom - 1)));
    }
    return result;
}

} // namespace krtpal::odbc
