// ODBC, without its headers: the calls that the library makes, in plain types.
//
//     using namespace krtpal;
//     odbc::Handle environment = nullptr;
//     if (odbc::Succeeded(odbc::AllocHandle(odbc::kEnvironment, nullptr, &environment))) ...
//     odbc::ExecDirect(statement, L"DELETE FROM WVersionInfo");
//
// Each function is the call of the driver manager with that name (AllocHandle: SQLAllocHandle, ExecDirect:
// SQLExecDirectW), each constant the one of the standard (kCWChar: SQL_C_WCHAR). The driver manager's headers
// define names of the operating system in their own way on Linux, so they stay in one source file. Text goes
// as UTF-16, whatever wchar_t is.
//
// Threads: as the driver manager has it: a handle belongs to one thread at a time.

#ifndef KRTPAL_COMMON_ODBC_H
#define KRTPAL_COMMON_ODBC_H

#include "krtpal/export.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace krtpal::odbc {

using Handle = void*;
using Result = std::int16_t;
/// SQLLEN
using Length = std::intptr_t;

inline constexpr Result kSuccess = 0;
inline constexpr Result kSuccessWithInfo = 1;
inline constexpr Result kStillExecuting = 2;
inline constexpr Result kNeedData = 99;
inline constexpr Result kNoData = 100;
inline constexpr Result kError = -1;
inline constexpr Result kInvalidHandle = -2;

inline bool Succeeded(Result result) {
    return (result & ~1) == 0;
}

// Kinds of handles
inline constexpr std::int16_t kEnvironment = 1;
inline constexpr std::int16_t kConnection = 2;
inline constexpr std::int16_t kStatement = 3;

// Attributes and their values
inline constexpr std::int32_t kAttrOdbcVersion = 200;
inline constexpr std::uintptr_t kOdbcVersion3 = 3;
inline constexpr std::int32_t kAttrAutoCommit = 102;
inline constexpr std::int32_t kAttrLoginTimeout = 103;

// What GetInfo answers
inline constexpr std::uint16_t kDatabaseName = 16;
inline constexpr std::uint16_t kDbmsName = 17;
inline constexpr std::uint16_t kUserName = 47;
inline constexpr std::uint16_t kGetDataExtensions = 81;

// SQL types
inline constexpr std::int16_t kGuid = -11;
inline constexpr std::int16_t kWLongVarChar = -10;
inline constexpr std::int16_t kBit = -7;
inline constexpr std::int16_t kBigInt = -5;
inline constexpr std::int16_t kLongVarBinary = -4;
inline constexpr std::int16_t kLongVarChar = -1;
inline constexpr std::int16_t kChar = 1;
inline constexpr std::int16_t kDecimal = 3;
inline constexpr std::int16_t kInteger = 4;
inline constexpr std::int16_t kFloat = 6;
inline constexpr std::int16_t kDouble = 8;
inline constexpr std::int16_t kVarChar = 12;

// C types
inline constexpr std::int16_t kCSBigInt = -25;
inline constexpr std::int16_t kCSLong = -16;
inline constexpr std::int16_t kCGuid = -11;
inline constexpr std::int16_t kCWChar = -8;
inline constexpr std::int16_t kCBit = -7;
inline constexpr std::int16_t kCBinary = -2;
inline constexpr std::int16_t kCChar = 1;
inline constexpr std::int16_t kCLong = 4;
inline constexpr std::int16_t kCShort = 5;
inline constexpr std::int16_t kCDouble = 8;

// Lengths that are none
inline constexpr Length kNullData = -1;
inline constexpr Length kNullTerminated = -3;
inline constexpr Length kNoTotal = -4;
/// SQL_LEN_DATA_AT_EXEC
constexpr Length LengthAtExecution(Length length) {
    return -100 - length;
}

// What FreeStmt gives up
inline constexpr std::uint16_t kClose = 0;
inline constexpr std::uint16_t kUnbind = 2;
inline constexpr std::uint16_t kResetParams = 3;

// How EndTran ends
inline constexpr std::int16_t kCommit = 0;
inline constexpr std::int16_t kRollback = 1;

KRTPAL_API Result AllocHandle(std::int16_t kind, Handle parent, Handle* handle);
KRTPAL_API Result FreeHandle(std::int16_t kind, Handle handle);
KRTPAL_API Result SetEnvAttr(Handle environment, std::int32_t attribute, std::uintptr_t value);
/// Numbers only.
KRTPAL_API Result SetConnectAttr(Handle connection, std::int32_t attribute, std::uintptr_t value);
KRTPAL_API Result Connect(Handle connection, const std::wstring& dataSource, const std::wstring& user,
                          const std::wstring& password);
/// Without a window and without questions; the completed text, of at most 4096 characters, is dropped.
KRTPAL_API Result DriverConnect(Handle connection, const std::wstring& text);
KRTPAL_API Result Disconnect(Handle connection);
/// `room` and `*length` are in bytes.
KRTPAL_API Result GetInfo(Handle connection, std::uint16_t what, void* value, std::int16_t room,
                          std::int16_t* length);
KRTPAL_API Result EndTran(std::int16_t kind, Handle handle, std::int16_t completion);

KRTPAL_API Result GetTypeInfo(Handle statement, std::int16_t sqlType);
/// All tables of a kind, in one schema or, if that is empty, in all.
KRTPAL_API Result Tables(Handle statement, const std::wstring& kind, const std::wstring& schema = {});
/// All columns of a table, likewise.
KRTPAL_API Result Columns(Handle statement, const std::wstring& table, const std::wstring& schema = {});
KRTPAL_API Result ExecDirect(Handle statement, const std::wstring& text);
KRTPAL_API Result Prepare(Handle statement, const std::wstring& text);
KRTPAL_API Result Execute(Handle statement);
KRTPAL_API Result BindParameter(Handle statement, std::uint16_t number, std::int16_t cType,
                                std::int16_t sqlType, std::size_t columnSize, void* value, Length room,
                                Length* indicator);
KRTPAL_API Result ParamData(Handle statement, void** value);
KRTPAL_API Result PutData(Handle statement, const void* data, Length length);
KRTPAL_API Result BindCol(Handle statement, std::uint16_t column, std::int16_t cType, void* target,
                          Length room, Length* indicator);
KRTPAL_API Result Fetch(Handle statement);
KRTPAL_API Result GetData(Handle statement, std::uint16_t column, std::int16_t cType, void* target,
                          Length room, Length* indicator);
KRTPAL_API Result FreeStmt(Handle statement, std::uint16_t option);
KRTPAL_API Result CloseCursor(Handle statement);

struct DiagnosticRecord {
    std::wstring state;
    std::int32_t nativeError = 0;
    std::wstring text; ///< of at most 1023 code units
};
/// The `number`th record of a handle, from 1 on.
KRTPAL_API Result GetDiagRec(std::int16_t kind, Handle handle, std::int16_t number, DiagnosticRecord* record);

} // namespace krtpal::odbc

#endif
