// Entry points for statements.

#include "support/odbc/Names.h"
#include "support/odbc/Statement.h"

#include <algorithm>

using namespace testodbc;

namespace {

constexpr std::size_t kTypeInfoWidth = 19;
constexpr std::size_t kTablesWidth = 5;
constexpr std::size_t kColumnsWidth = 18;

Value Text(const std::string& text) {
    return Utf16FromUtf8(text);
}

Value Number(std::int64_t number) {
    return number;
}

bool IsSqlServer() {
    return Driver::Get().control.GetSettings().flavour == Flavour::sqlServer;
}

Value Owner() {
    return IsSqlServer() ? Text("dbo") : Value();
}

std::vector<Row> TypeRows(int sqlType) {
    std::vector<Row> rows;
    for (const TypeRow& type : Driver::Get().control.Types()) {
        if (sqlType == SQL_ALL_TYPES || sqlType == type.sqlType) {
            Row& row = rows.emplace_back(kTypeInfoWidth);
            row[0] = Text(type.name);
            row[1] = Number(type.sqlType);
        }
    }
    return rows;
}

Row TableRow(const std::string& name, const std::string& type) {
    return {Value(), Owner(), Text(name), Text(type), Value()};
}

/// Whether a list such as "TABLE,'VIEW'" holds the type; none and an empty one hold all.
bool HasType(const std::string& list, const std::string& type) {
    std::size_t at = 0;
    while (at <= list.size() && !list.empty()) {
        const std::size_t end = std::min(list.find(',', at), list.size());
        std::string item = list.substr(at, end - at);
        std::erase_if(item, [](char c) { return c == '\''; });
        item.erase(0, item.find_first_not_of(' '));
        if (item == type) {
            return true;
        }
        at = end + 1;
    }
    return list.empty();
}

/// Each back-end has tables of its own beside those of the user.
std::vector<Row> TableRows(const std::string& pattern, const std::string& types) {
    std::vector<Row> rows;
    const std::string systemTable = IsSqlServer() ? "sysobjects" : "MSysObjects";
    if (HasType(types, "SYSTEM TABLE") && IsLike(systemTable, pattern)) {
        rows.push_back(TableRow(systemTable, "SYSTEM TABLE"));
    }
    for (const auto& [key, table] : Driver::Get().store.GetTables()) {
        if (HasType(types, "TABLE") && IsLike(table.name, pattern)) {
            rows.push_back(TableRow(table.name, "TABLE"));
        }
    }
    return rows;
}

Row ColumnRow(const Table& table, std::size_t position) {
    const Column& column = table.columns[position];
    Row row(kColumnsWidth);
    row[1] = Owner();
    row[2] = Text(table.name);
    row[3] = Text(column.name);
    row[4] = Number(column.type.sqlType);
    row[5] = Text(column.type.name);
    row[10] = Number(column.isRequired ? SQL_NO_NULLS : SQL_NULLABLE);
    row[13] = Number(column.type.sqlType);
    row[16] = Number(static_cast<std::int64_t>(position) + 1);
    row[17] = Text(column.isRequired ? "NO" : "YES");
    return row;
}

std::vector<Row> ColumnRows(const std::string& tablePattern, const std::string& columnPattern) {
    std::vector<Row> rows;
    for (const auto& [key, table] : Driver::Get().store.GetTables()) {
        for (std::size_t i = 0; IsLike(table.name, tablePattern) && i < table.columns.size(); ++i) {
            if (IsLike(table.columns[i].name, columnPattern)) {
                rows.push_back(ColumnRow(table, i));
            }
        }
    }
    return rows;
}

std::string PatternFrom(const SQLWCHAR* text, SQLINTEGER length) {
    return text == nullptr ? "%" : TextFrom(text, length);
}

std::string BufferArguments(int number, int cType, SQLLEN room) {
    return ' ' + std::to_string(number) + ' ' + NameOfCType(cType) + " room " + std::to_string(room);
}

} // namespace

TESTODBC_ENTRY SQLExecDirectW(SQLHSTMT statement, SQLWCHAR* sql, SQLINTEGER length) {
    return Enter<Statement>(
        "SQLExecDirectW", statement, QuoteArgument(sql, length),
        [&](Statement& object, std::string&) { return object.Execute(TextFrom(sql, length)); });
}

TESTODBC_ENTRY SQLPrepareW(SQLHSTMT statement, SQLWCHAR* sql, SQLINTEGER length) {
    return Enter<Statement>("SQLPrepareW", statement, QuoteArgument(sql, length),
                            [&](Statement& object, std::string&) {
                                object.Prepare(TextFrom(sql, length));
                                return SQL_SUCCESS;
                            });
}

TESTODBC_ENTRY SQLExecute(SQLHSTMT statement) {
    return Enter<Statement>("SQLExecute", statement, {},
                            [](Statement& object, std::string&) { return object.ExecutePrepared(); });
}

TESTODBC_ENTRY SQLGetTypeInfoW(SQLHSTMT statement, SQLSMALLINT type) {
    return Enter<Statement>("SQLGetTypeInfoW", statement, ' ' + NameOfSqlType(type),
                            [&](Statement& object, std::string&) {
                                object.Show(kTypeInfoWidth, TypeRows(type));
                                return SQL_SUCCESS;
                            });
}

TESTODBC_ENTRY SQLTablesW(SQLHSTMT statement, SQLWCHAR* catalog, SQLSMALLINT catalogLength, SQLWCHAR* schema,
                          SQLSMALLINT schemaLength, SQLWCHAR* table, SQLSMALLINT tableLength, SQLWCHAR* type,
                          SQLSMALLINT typeLength) {
    return Enter<Statement>(
        "SQLTablesW", statement,
        QuoteArgument(catalog, catalogLength) + QuoteArgument(schema, schemaLength) +
            QuoteArgument(table, tableLength) + QuoteArgument(type, typeLength),
        [&](Statement& object, std::string&) {
            object.Show(kTablesWidth, TableRows(PatternFrom(table, tableLength), TextFrom(type, typeLength)));
            return SQL_SUCCESS;
        });
}

TESTODBC_ENTRY SQLColumnsW(SQLHSTMT statement, SQLWCHAR* catalog, SQLSMALLINT catalogLength, SQLWCHAR* schema,
                           SQLSMALLINT schemaLength, SQLWCHAR* table, SQLSMALLINT tableLength,
                           SQLWCHAR* column, SQLSMALLINT columnLength) {
    return Enter<Statement>("SQLColumnsW", statement,
                            QuoteArgument(catalog, catalogLength) + QuoteArgument(schema, schemaLength) +
                                QuoteArgument(table, tableLength) + QuoteArgument(column, columnLength),
                            [&](Statement& object, std::string&) {
                                object.Show(kColumnsWidth, ColumnRows(PatternFrom(table, tableLength),
                                                                      PatternFrom(column, columnLength)));
                                return SQL_SUCCESS;
                            });
}

TESTODBC_ENTRY SQLBindCol(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER data,
                          SQLLEN room, SQLLEN* indicator) {
    return Enter<Statement>("SQLBindCol", statement, BufferArguments(column, cType, room),
                            [&](Statement& object, std::string&) {
                                object.BindColumn(column, {cType, data, room, indicator});
                                return SQL_SUCCESS;
                            });
}

TESTODBC_ENTRY SQLFetch(SQLHSTMT statement) {
    return Enter<Statement>("SQLFetch", statement, {},
                            [](Statement& object, std::string&) { return object.Fetch(); });
}

TESTODBC_ENTRY SQLGetData(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER data,
                          SQLLEN room, SQLLEN* indicator) {
    return Enter<Statement>(
        "SQLGetData", statement, BufferArguments(column, cType, room),
        [&](Statement& object, std::string& line) {
            const SQLRETURN result = object.GetData(column, {cType, data, room, indicator});
            if (indicator != nullptr && SQL_SUCCEEDED(result)) {
                line += " indicator " + NameOfLength(*indicator);
            }
            return result;
        });
}

TESTODBC_ENTRY SQLBindParameter(SQLHSTMT statement, SQLUSMALLINT number, SQLSMALLINT direction,
                                SQLSMALLINT cType, SQLSMALLINT sqlType, SQLULEN size, SQLSMALLINT digits,
                                SQLPOINTER data, SQLLEN room, SQLLEN* indicator) {
    const std::string arguments = ' ' + std::to_string(number) + ' ' + NameOfCType(cType) + ' ' +
                                  NameOfSqlType(sqlType) + " size " + std::to_string(size) + " digits " +
                                  std::to_string(digits) + " room " + std::to_string(room);
    return Enter<Statement>("SQLBindParameter", statement, arguments, [&](Statement& object, std::string&) {
        if (direction != SQL_PARAM_INPUT) {
            Fail("HYC00", "parameters are for input only");
        }
        object.BindParameter(number, {cType, sqlType, size, data, room, indicator});
        return SQL_SUCCESS;
    });
}

TESTODBC_ENTRY SQLParamData(SQLHSTMT statement, SQLPOINTER* data) {
    return Enter<Statement>("SQLParamData", statement, {},
                            [&](Statement& object, std::string&) { return object.NextParameter(data); });
}

TESTODBC_ENTRY SQLPutData(SQLHSTMT statement, SQLPOINTER data, SQLLEN length) {
    return Enter<Statement>("SQLPutData", statement, ' ' + NameOfLength(length),
                            [&](Statement& object, std::string& line) {
                                object.Put(data, length, line);
                                return SQL_SUCCESS;
                            });
}

TESTODBC_ENTRY SQLCancel(SQLHSTMT statement) {
    return Enter<Statement>("SQLCancel", statement, {}, [](Statement& object, std::string&) {
        object.Cancel();
        return SQL_SUCCESS;
    });
}

TESTODBC_ENTRY SQLFreeStmt(SQLHSTMT statement, SQLUSMALLINT option) {
    return Enter<Statement>("SQLFreeStmt", statement, ' ' + NameOfOption(option),
                            [&](Statement& object, std::string&) {
                                if (option == SQL_CLOSE) {
                                    object.Close();
                                } else if (option == SQL_UNBIND) {
                                    object.Unbind();
                                } else {
                                    object.ResetParameters();
                                }
                                return SQL_SUCCESS;
                            });
}

TESTODBC_ENTRY SQLCloseCursor(SQLHSTMT statement) {
    return Enter<Statement>("SQLCloseCursor", statement, {}, [](Statement& object, std::string&) {
        if (!object.HasRows()) {
            Fail("24000", "no cursor is open");
        }
        object.Close();
        return SQL_SUCCESS;
    });
}

TESTODBC_ENTRY SQLNumResultCols(SQLHSTMT statement, SQLSMALLINT* count) {
    return Enter<Statement>("SQLNumResultCols", statement, {}, [&](Statement& object, std::string& line) {
        *count = static_cast<SQLSMALLINT>(object.Width());
        line += ' ' + std::to_string(*count);
        return SQL_SUCCESS;
    });
}

TESTODBC_ENTRY SQLRowCount(SQLHSTMT statement, SQLLEN* count) {
    return Enter<Statement>("SQLRowCount", statement, {}, [&](Statement& object, std::string& line) {
        *count = object.Affected();
        line += ' ' + std::to_string(*count);
        return SQL_SUCCESS;
    });
}
