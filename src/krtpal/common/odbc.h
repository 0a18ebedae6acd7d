// ODBC without its headers: the calls that this library makes, in plain types.
//
//     using namespace krtpal;
//     odbc::Handle environment = nullptr;
//     if (odbc::Succeeded(odbc::AllocHandle(odbc::kEnvironment, nullptr, &environment))) ...
//     odbc::ExecDirect(statement, L"DELETE FROM WVersionInfo");
//
// Each function is the driver manager's call of that name (AllocHandle: SQLAllocHandle, ExecDirect:
// SQLExecDirectW), each constant the standard's (kCWChar: SQL_C_WCHAR). The driver manager's headers define
// names of the operating system in their own way on Linux, so only one source file includes them.
//
// The functions are the same on both systems: the system's driver manager on Windows, unixODBC on Linux. Text
// is passed as UTF-16 on both.
//
// Results are those of ODBC: kSuccess, kSuccessWithInfo, kNoData, kNeedData, kError, kInvalidHandle. After
// kError and kSuccessWithInfo, GetDiagRec returns the reasons. Names, statements and connection texts have at
// most 32,767 UTF-16 code units.
//
// Threads: one thread at a time uses a handle, its connection or its environment, as the driver manager
// requires.

#ifndef KRTPAL_COMMON_ODBC_H
#define KRTPAL_COMMON_ODBC_H

#include "krtpal/export.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace krtpal::odbc {

/// An environment, a connection or a statement.
using Handle = void*;
/// Result of a call (SQLRETURN).
using Result = std::int16_t;
/// A length in bytes, or one of the special lengths below (SQLLEN).
using Length = std::intptr_t;

/// Results. kStillExecuting does not occur, since no call is asynchronous.
inline constexpr Result kSuccess = 0;
inline constexpr Result kSuccessWithInfo = 1;
inline constexpr Result kStillExecuting = 2;
inline constexpr Result kNeedData = 99;
inline constexpr Result kNoData = 100;
inline constexpr Result kError = -1;
inline constexpr Result kInvalidHandle = -2;

/// Returns true for kSuccess and kSuccessWithInfo.
inline bool Succeeded(Result result) {
    return (result & ~1) == 0;
}

/// Kinds of handles.
inline constexpr std::int16_t kEnvironment = 1;
inline constexpr std::int16_t kConnection = 2;
inline constexpr std::int16_t kStatement = 3;

/// Attributes of environments and connections, and their values. The login time-out is in seconds.
inline constexpr std::int32_t kAttrOdbcVersion = 200;
inline constexpr std::uintptr_t kOdbcVersion3 = 3;
inline constexpr std::int32_t kAttrAutoCommit = 102;
inline constexpr std::int32_t kAttrLoginTimeout = 103;

/// Properties of GetInfo.
inline constexpr std::uint16_t kDatabaseName = 16;
inline constexpr std::uint16_t kDbmsName = 17;
inline constexpr std::uint16_t kUserName = 47;
inline constexpr std::uint16_t kGetDataExtensions = 81;

/// SQL types of columns and parameters.
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

/// C types of buffers.
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

/// Special lengths: NULL, text up to its NUL, unknown.
inline constexpr Length kNullData = -1;
inline constexpr Length kNullTerminated = -3;
inline constexpr Length kNoTotal = -4;
/// Returns the indicator of a parameter of this size that is sent by PutData (SQL_LEN_DATA_AT_EXEC).
constexpr Length LengthAtExecution(Length length) {
    return -100 - length;
}

/// Options of FreeStmt: close the cursor, remove column bindings, remove parameter bindings.
inline constexpr std::uint16_t kClose = 0;
inline constexpr std::uint16_t kUnbind = 2;
inline constexpr std::uint16_t kResetParams = 3;

/// Completions of EndTran.
inline constexpr std::int16_t kCommit = 0;
inline constexpr std::int16_t kRollback = 1;

/// Allocates an environment (null parent), a connection of an environment, or a statement of a connection, to
/// be released by FreeHandle. `*handle` is null on failure.
/// On Linux the calling thread has the locale C.UTF-8 while an environment or connection is allocated:
/// unixODBC takes from the locale how to convert text for drivers without wide calls.
KRTPAL_API Result AllocHandle(std::int16_t kind, Handle parent, Handle* handle);
/// Releases a handle.
/// REQUIRES: a connection is disconnected, an environment has no connections.
KRTPAL_API Result FreeHandle(std::int16_t kind, Handle handle);
/// Sets a numeric attribute of an environment.
KRTPAL_API Result SetEnvAttr(Handle environment, std::int32_t attribute, std::uintptr_t value);
/// Sets a numeric attribute of a connection. unixODBC passes the login time-out to the driver at the connect
/// call only, and does not report that a driver rejects it.
KRTPAL_API Result SetConnectAttr(Handle connection, std::int32_t attribute, std::uintptr_t value);
/// Connects to a data source of the machine's ODBC administrator.
KRTPAL_API Result Connect(Handle connection, const std::wstring& dataSource, const std::wstring& user,
                          const std::wstring& password);
/// Connects by a connection text, without a window and without prompts. The completed text is discarded.
KRTPAL_API Result DriverConnect(Handle connection, const std::wstring& text);
/// Closes a connection. Its statements are released.
KRTPAL_API Result Disconnect(Handle connection);
/// Stores a property of the driver or the data source. Texts are UTF-16 with a NUL. `room` and `*length` are
/// in bytes.
KRTPAL_API Result GetInfo(Handle connection, std::uint16_t what, void* value, std::int16_t room,
                          std::int16_t* length);
/// Ends the transaction of a connection, or those of all connections of an environment.
KRTPAL_API Result EndTran(std::int16_t kind, Handle handle, std::int16_t completion);

/// Opens a result set with the driver's data types of one SQL type.
KRTPAL_API Result GetTypeInfo(Handle statement, std::int16_t sqlType);
/// Opens a result set with the tables of a kind ("TABLE"), in one schema or, if that is empty, in all. The
/// schema is a search pattern: the caller escapes _ and %.
KRTPAL_API Result Tables(Handle statement, const std::wstring& kind, const std::wstring& schema = {});
/// Opens a result set with the columns of a table, in one schema or in all. Table and schema are search
/// patterns.
KRTPAL_API Result Columns(Handle statement, const std::wstring& table, const std::wstring& schema = {});
/// Executes a statement text. Returns kNoData if an UPDATE or DELETE affects no row.
KRTPAL_API Result ExecDirect(Handle statement, const std::wstring& text);
/// Prepares a statement text for Execute.
KRTPAL_API Result Prepare(Handle statement, const std::wstring& text);
/// Executes the prepared statement. Returns kNeedData if a parameter is sent at execution.
KRTPAL_API Result Execute(Handle statement);
/// Binds an input parameter, counted from 1. `value` and `indicator` must stay valid until the execution
/// ends; for a parameter that is sent at execution, `value` is only an identifier, which ParamData returns.
KRTPAL_API Result BindParameter(Handle statement, std::uint16_t number, std::int16_t cType,
                                std::int16_t sqlType, std::size_t columnSize, void* value, Length room,
                                Length* indicator);
/// Continues an execution that returned kNeedData. Returns kNeedData with the identifier of the next
/// parameter to be sent in `*value`, otherwise the result of the execution.
KRTPAL_API Result ParamData(Handle statement, void** value);
/// Sends a piece of the current parameter, or kNullData as the length for NULL.
KRTPAL_API Result PutData(Handle statement, const void* data, Length length);
/// Binds a column of the result set, counted from 1. `target` and `indicator` must stay valid while rows are
/// fetched.
KRTPAL_API Result BindCol(Handle statement, std::uint16_t column, std::int16_t cType, void* target,
                          Length room, Length* indicator);
/// Reads the next row. Returns kNoData after the last row.
KRTPAL_API Result Fetch(Handle statement);
/// Reads a column of the current row, counted from 1, or its next piece. Returns kSuccessWithInfo if more is
/// left and kNoData after the last piece. `*indicator` is the length before this piece, kNoTotal if unknown,
/// or kNullData.
KRTPAL_API Result GetData(Handle statement, std::uint16_t column, std::int16_t cType, void* target,
                          Length room, Length* indicator);
/// Closes or unbinds parts of a statement; the handle stays allocated.
KRTPAL_API Result FreeStmt(Handle statement, std::uint16_t option);
/// Closes the cursor of a statement. Fails if none is open.
KRTPAL_API Result CloseCursor(Handle statement);

/// One reason of a failure.
struct DiagnosticRecord {
    std::wstring state;           ///< SQLSTATE, five characters
    std::int32_t nativeError = 0; ///< the driver's own number
    std::wstring text;            ///< at most 1023 code units
};
/// Stores the record of this number, from 1, of the last call on a handle. Returns kNoData if there is none;
/// the record is then unchanged.
KRTPAL_API Result GetDiagRec(std::int16_t kind, Handle handle, std::int16_t number, DiagnosticRecord* record);

} // namespace krtpal::odbc

#endif
