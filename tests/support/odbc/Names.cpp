#include "support/odbc/Names.h"

#include "support/odbc/Odbc.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>

namespace testodbc {

namespace {

struct Name {
    long code;
    const char* text;
};

#define NAME(constant)                                                                                       \
    { static_cast<long>(constant), #constant }

constexpr Name kResults[] = {
    NAME(SQL_SUCCESS), NAME(SQL_SUCCESS_WITH_INFO), NAME(SQL_NO_DATA),        NAME(SQL_NEED_DATA),
    NAME(SQL_ERROR),   NAME(SQL_INVALID_HANDLE),    NAME(SQL_STILL_EXECUTING)};
constexpr Name kHandleTypes[] = {NAME(SQL_HANDLE_ENV), NAME(SQL_HANDLE_DBC), NAME(SQL_HANDLE_STMT)};
constexpr Name kCTypes[] = {NAME(SQL_C_BIT),    NAME(SQL_C_CHAR),   NAME(SQL_C_WCHAR), NAME(SQL_C_BINARY),
                            NAME(SQL_C_SHORT),  NAME(SQL_C_SSHORT), NAME(SQL_C_LONG),  NAME(SQL_C_SLONG),
                            NAME(SQL_C_DOUBLE), NAME(SQL_C_GUID)};
constexpr Name kSqlTypes[] = {NAME(SQL_BIT),          NAME(SQL_CHAR),          NAME(SQL_INTEGER),
                              NAME(SQL_DECIMAL),      NAME(SQL_FLOAT),         NAME(SQL_DOUBLE),
                              NAME(SQL_WLONGVARCHAR), NAME(SQL_LONGVARBINARY), NAME(SQL_GUID)};
constexpr Name kAttributes[] = {NAME(SQL_ATTR_ODBC_VERSION), NAME(SQL_ATTR_LOGIN_TIMEOUT),
                                NAME(SQL_ATTR_AUTOCOMMIT)};
constexpr Name kInfos[] = {
    NAME(SQL_GETDATA_EXTENSIONS), NAME(SQL_DATABASE_NAME),          NAME(SQL_DBMS_NAME),
    NAME(SQL_USER_NAME),          NAME(SQL_CURSOR_COMMIT_BEHAVIOR), NAME(SQL_CURSOR_ROLLBACK_BEHAVIOR)};
constexpr Name kOptions[] = {NAME(SQL_CLOSE), NAME(SQL_UNBIND), NAME(SQL_RESET_PARAMS)};
constexpr Name kLengths[] = {NAME(SQL_NULL_DATA), NAME(SQL_NO_TOTAL), NAME(SQL_NTS), NAME(SQL_DATA_AT_EXEC)};

#undef NAME

std::string NameIn(std::span<const Name> names, long code) {
    const auto found =
        std::find_if(names.begin(), names.end(), [code](const Name& n) { return n.code == code; });
    return found != names.end() ? found->text : std::to_string(code);
}

} // namespace

std::string NameOfResult(int code) {
    return NameIn(kResults, code);
}

std::string NameOfHandleType(int code) {
    return NameIn(kHandleTypes, code);
}

std::string NameOfCType(int code) {
    return NameIn(kCTypes, code);
}

std::string NameOfSqlType(int code) {
    return NameIn(kSqlTypes, code);
}

std::string NameOfAttribute(int code) {
    return NameIn(kAttributes, code);
}

std::string NameOfInfo(int code) {
    return NameIn(kInfos, code);
}

std::string NameOfOption(int code) {
    return NameIn(kOptions, code);
}

std::string NameOfLength(long indicator) {
    return NameIn(kLengths, indicator);
}

std::string Quote(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '\n') {
            quoted += "\\n";
        } else if (static_cast<unsigned char>(c) < ' ') {
            quoted += "\\x" + HexOf(&c, 1);
        } else {
            quoted += c == '"' || c == '\\' ? "\\" : "";
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string HexOf(const void* bytes, std::size_t count) {
    constexpr std::size_t most = 32;
    std::string hex;
    for (std::size_t i = 0; i < std::min(count, most); ++i) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X", static_cast<const unsigned char*>(bytes)[i]);
        hex += digits.data();
    }
    if (count <= most) {
        return hex;
    }
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a
    for (std::size_t i = 0; i < count; ++i) {
        hash = (hash ^ static_cast<const unsigned char*>(bytes)[i]) * 0x100000001B3;
    }
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llX", static_cast<unsigned long long>(hash));
    return hex + "..." + std::to_string(count) + ':' + digits.data();
}

} // namespace testodbc
