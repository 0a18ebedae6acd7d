// How the record writes codes, texts and bytes.

#ifndef TESTS_SUPPORT_ODBC_NAMES_H
#define TESTS_SUPPORT_ODBC_NAMES_H

#include <string>
#include <string_view>

namespace testodbc {

/// The constant's name, or the number of one that has no name here.
std::string NameOfResult(int code);
std::string NameOfHandleType(int code);
std::string NameOfCType(int code);
std::string NameOfSqlType(int code);
std::string NameOfAttribute(int code);
std::string NameOfInfo(int code);
std::string NameOfOption(int code); ///< of SQLFreeStmt
std::string NameOfLength(long indicator);

/// In double quotes; quotes, backslashes and control characters inside with a backslash.
std::string Quote(std::string_view text);
/// The first 32 bytes. If there are more, "...", their number, a colon and the FNV-1a hash of all follow.
std::string HexOf(const void* bytes, std::size_t count);

} // namespace testodbc

#endif
