#include "support/odbc/Odbc.h"
#include "support/odbc/TestDriver.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

SQLWCHAR* Wide(const char16_t* text) {
    return reinterpret_cast<SQLWCHAR*>(const_cast<char16_t*>(text));
}

SQLPOINTER Number(SQLULEN number) {
    return reinterpret_cast<SQLPOINTER>(number);
}

class OdbcDriver : public testing::Test {
protected:
    OdbcDriver() : m_driver(TestDriver::Get()) { m_driver.Clear(); }
    ~OdbcDriver() override { Disconnect(); }

    SQLRETURN Connect() {
        AllocateConnection();
        SQLSetConnectAttrW(m_connection, SQL_ATTR_LOGIN_TIMEOUT, Number(5), SQL_IS_UINTEGER);
        const SQLRETURN result = SQLConnectW(m_connection, Wide(u"krtbss-test"), SQL_NTS, Wide(u"Jim"),
                                             SQL_NTS, Wide(u"secret"), SQL_NTS);
        if (SQL_SUCCEEDED(result)) {
            SQLAllocHandle(SQL_HANDLE_STMT, m_connection, &m_statement);
        }
        return result;
    }

    SQLRETURN ConnectByText(const char16_t* text) {
        AllocateConnection();
        std::array<SQLWCHAR, 4096> out{};
        return SQLDriverConnectW(m_connection, nullptr, Wide(text), SQL_NTS, out.data(), 4096, nullptr,
                                 SQL_DRIVER_NOPROMPT);
    }

    void AllocateConnection() {
        SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &m_environment);
        SQLSetEnvAttr(m_environment, SQL_ATTR_ODBC_VERSION, Number(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, m_environment, &m_connection);
    }

    void Disconnect() {
        SQLFreeHandle(SQL_HANDLE_STMT, m_statement);
        SQLDisconnect(m_connection);
        SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
        SQLFreeHandle(SQL_HANDLE_ENV, m_environment);
        m_statement = m_connection = m_environment = nullptr;
    }

    SQLRETURN Execute(const char16_t* sql) {
        SQLFreeStmt(m_statement, SQL_CLOSE);
        return SQLExecDirectW(m_statement, Wide(sql), SQL_NTS);
    }

    /// State of the first diagnostic record of the statement
    std::string State(SQLRETURN result) { return State(result, SQL_HANDLE_STMT, m_statement); }

    static std::string State(SQLRETURN result, SQLSMALLINT type, SQLHANDLE handle) {
        std::array<SQLWCHAR, 6> state{};
        SQLINTEGER native = 0;
        std::array<SQLWCHAR, 256> text{};
        if (result == SQL_SUCCESS || !SQL_SUCCEEDED(SQLGetDiagRecW(type, handle, 1, state.data(), &native,
                                                                   text.data(), 256, nullptr))) {
            return {};
        }
        return {state.begin(), state.begin() + 5};
    }

    SQLINTEGER Count() {
        SQLINTEGER count = -1;
        EXPECT_EQ(Execute(u"SELECT COUNT(objectID) FROM [WThing]"), SQL_SUCCESS);
        EXPECT_EQ(SQLFetch(m_statement), SQL_SUCCESS);
        EXPECT_EQ(SQLGetData(m_statement, 1, SQL_C_LONG, &count, 0, nullptr), SQL_SUCCESS);
        SQLFreeStmt(m_statement, SQL_CLOSE);
        return count;
    }

    SQLUINTEGER Extensions() {
        SQLUINTEGER value = 0;
        EXPECT_EQ(SQLGetInfoW(m_connection, SQL_GETDATA_EXTENSIONS, &value, sizeof(value), nullptr),
                  SQL_SUCCESS);
        return value;
    }

    std::u16string TextInfo(SQLUSMALLINT info) {
        std::array<char16_t, 64> text{};
        SQLSMALLINT bytes = 0;
        EXPECT_EQ(SQLGetInfoW(m_connection, info, nullptr, 0, &bytes), SQL_SUCCESS);
        EXPECT_EQ(SQLGetInfoW(m_connection, info, text.data(), static_cast<SQLSMALLINT>(bytes + 2), &bytes),
                  SQL_SUCCESS);
        return {text.data(), static_cast<std::size_t>(bytes) / 2};
    }

    Lines TypeNames(SQLSMALLINT type) {
        EXPECT_EQ(SQLGetTypeInfoW(m_statement, type), SQL_SUCCESS);
        return FetchTexts(1);
    }

    /// A column of all rows, by a bound buffer
    Lines FetchTexts(SQLUSMALLINT column) {
        std::array<char, 128> text{};
        SQLLEN indicator = 0;
        SQLBindCol(m_statement, column, SQL_C_CHAR, text.data(), text.size(), &indicator);
        Lines texts;
        while (SQLFetch(m_statement) == SQL_SUCCESS) {
            texts.emplace_back(text.data());
        }
        SQLFreeStmt(m_statement, SQL_UNBIND);
        SQLFreeStmt(m_statement, SQL_CLOSE);
        return texts;
    }

    void MakeTable() {
        ASSERT_EQ(
            Execute(u"CREATE TABLE WThing (RecID GUID PRIMARY KEY, objectID INTEGER NOT NULL, x DOUBLE, "
                    u"name LONGCHAR, data LONGBINARY)"),
            SQL_SUCCESS);
    }

    /// A row with the data at execution, in two pieces, of bytes that count to 99 again and again
    SQLRETURN InsertRow(unsigned char id, std::size_t length) {
        std::array<unsigned char, 16> guid{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, id};
        SQLINTEGER objectID = id;
        double x = 0;
        std::u16string name = u"H \U0001F600";
        SQLLEN guidLength = 0;
        SQLLEN null = SQL_NULL_DATA;
        SQLLEN nameLength = static_cast<SQLLEN>(name.size() * 2);
        SQLLEN dataLength = SQL_LEN_DATA_AT_EXEC(static_cast<SQLLEN>(length));
        SQLFreeStmt(m_statement, SQL_CLOSE);
        Bind(1, SQL_C_GUID, SQL_GUID, 0, guid.data(), 16, &guidLength);
        Bind(2, SQL_C_SLONG, SQL_INTEGER, 0, &objectID, 4, nullptr);
        Bind(3, SQL_C_DOUBLE, SQL_DOUBLE, 0, &x, 8, &null);
        Bind(4, SQL_C_WCHAR, SQL_WLONGVARCHAR, name.size() * 2, name.data(), 0, &nameLength);
        Bind(5, SQL_C_BINARY, SQL_LONGVARBINARY, length, &objectID, 0, &dataLength);
        const SQLRETURN result = SQLExecDirectW(
            m_statement, Wide(u"INSERT INTO WThing (RecID, objectID, x, name, data) VALUES (?, ?, ?, ?, ?)"),
            SQL_NTS);
        return result == SQL_NEED_DATA ? PutPieces(&objectID, {100, length - 100}) : result;
    }

    void Bind(SQLUSMALLINT number, SQLSMALLINT cType, SQLSMALLINT sqlType, SQLULEN size, SQLPOINTER data,
              SQLLEN room, SQLLEN* indicator) {
        SQLBindParameter(m_statement, number, SQL_PARAM_INPUT, cType, sqlType, size, 0, data, room,
                         indicator);
    }

    SQLRETURN PutPieces(SQLPOINTER expectedToken, const std::vector<std::size_t>& pieces) {
        SQLPOINTER token = nullptr;
        EXPECT_EQ(SQLParamData(m_statement, &token), SQL_NEED_DATA);
        EXPECT_EQ(token, expectedToken);
        for (const std::size_t size : pieces) {
            std::vector<unsigned char> data = Pattern(size);
            SQLPutData(m_statement, data.data(), static_cast<SQLLEN>(size));
        }
        return SQLParamData(m_statement, &token);
    }

    static std::vector<unsigned char> Pattern(std::size_t size) {
        std::vector<unsigned char> data(size);
        for (std::size_t i = 0; i < size; ++i) {
            data[i] = static_cast<unsigned char>(i % 100);
        }
        return data;
    }

    TestDriver& m_driver;
    SQLHANDLE m_environment = nullptr;
    SQLHANDLE m_connection = nullptr;
    SQLHANDLE m_statement = nullptr;
};

TEST_F(OdbcDriver, RecordsConnectAndAnswersAsEitherBackEnd) {
    m_driver.Script({"flavour sqlserver", "database /data/store.ndf", "dbms Server"});
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    EXPECT_EQ(m_driver.Record(), (Lines{"SQLAllocHandle D1 SQL_HANDLE_ENV E1 = SQL_SUCCESS",
                                        "SQLSetEnvAttr E1 SQL_ATTR_ODBC_VERSION 3 = SQL_SUCCESS",
                                        "SQLAllocHandle E1 SQL_HANDLE_DBC C1 = SQL_SUCCESS",
                                        "SQLSetConnectAttrW C1 SQL_ATTR_LOGIN_TIMEOUT 5 = SQL_SUCCESS",
                                        "SQLConnectW C1 \"krtbss-test\" \"Jim\" \"secret\" = SQL_SUCCESS",
                                        "SQLAllocHandle C1 SQL_HANDLE_STMT S1 = SQL_SUCCESS"}));
    EXPECT_EQ(Extensions(), SQLUINTEGER{SQL_GD_BLOCK});
    EXPECT_EQ(TextInfo(SQL_DATABASE_NAME), u"/data/store.ndf");
    EXPECT_EQ(TextInfo(SQL_DBMS_NAME), u"Server");
    EXPECT_EQ(TypeNames(SQL_INTEGER), (Lines{"int", "int identity"}));
    EXPECT_EQ(TypeNames(SQL_DOUBLE), Lines{});
    m_driver.Script({"without bit", "extensions 3"});
    EXPECT_EQ(Extensions(), SQLUINTEGER{SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER});
    EXPECT_EQ(TextInfo(SQL_DBMS_NAME), u"ACCESS");
    EXPECT_EQ(TextInfo(SQL_DATABASE_NAME), u"krtbss-test");
    EXPECT_EQ(TypeNames(SQL_BIT), Lines{});
    EXPECT_EQ(TypeNames(SQL_DOUBLE), Lines{"DOUBLE"});
}

TEST_F(OdbcDriver, ConnectsByDriverName) {
    ASSERT_EQ(ConnectByText(u"APP=vorin.exe;DRIVER={Microsoft Access Driver (*.mdb)};MaxBufferSize=4096;"
                            u"DBQ=/data/store.mdb;UID=Jim;PWD=;"),
              SQL_SUCCESS);
    EXPECT_EQ(TextInfo(SQL_DATABASE_NAME), u"/data/store.mdb");
    EXPECT_EQ(TextInfo(SQL_USER_NAME), u"Jim");
}

TEST_F(OdbcDriver, ReadsStatementsOfBothDialects) {
    struct Case {
        const char16_t* sql;
        const char* stateAccess;
        const char* stateSqlServer;
    };
    const Case cases[] = {
        {u"CREATE TABLE Plain (k INTEGER PRIMARY KEY, t LONGCHAR NOT NULL)", "", "42000"},
        {u"CREATE TABLE [dbo].Owned (k int PRIMARY KEY, t ntext NOT NULL)", "42000", ""},
        {u"CREATE TABLE PLAIN (k INTEGER)", "42S01", "42000"},
        {u"CREATE UNIQUE INDEX [i] ON Plain ([k] ASC, [t] ASC)", "", "42S02"},
        {u"CREATE UNIQUE INDEX [i] ON Plain ([t] ASC)", "42S11", "42S02"},
        {u"CREATE UNIQUE NONCLUSTERED INDEX [i] ON [Owned] ([k] ASC, [t] ASC) ON [PRIMARY]", "42000", ""},
        {u"ALTER TABLE Plain ADD a DOUBLE NULL, b BIT NULL", "", "42S02"},
        {u"ALTER TABLE Owned ADD a float NULL, A bit NULL", "42S02", "42S21"},
        {u"INSERT INTO Plain (k, t, b) VALUES (7, 'it''s', 1)", "", "42S02"},
        {u"INSERT INTO Owned WITH (ROWLOCK)  (k, t) VALUES (7, 'x')", "42000", ""},
        {u"INSERT INTO Plain (k) VALUES (8)", "23000", "42S02"},
        {u"INSERT INTO Plain (k, none) VALUES (8, 1)", "42S22", "42S02"},
        {u"INSERT INTO Plain (k, t) VALUES (8)", "21S01", "21S01"},
        {u"INSERT INTO Plain (k, t) VALUES ('word', 'x')", "22018", "42S02"},
        {u"UPDATE Plain SET a = 0.5 WHERE k = 7 AND t = 'IT''S'", "", "42S02"},
        {u"UPDATE Owned WITH (ROWLOCK)  SET t = 'y' WHERE k = 7", "42000", ""},
        {u"SELECT * FROM Owned WITH (NOLOCK)  WHERE k = 7;", "42000", ""},
        {u"SELECT k, t FROM Plain WHERE (t LIKE '%''S') ORDER BY k", "", "42S02"},
        {u"SELECT k FROM Plain WHERE k NOT IN (SELECT k FROM Plain WHERE t LIKE 'x')", "", "42S02"},
        {u"SELECT k FROM Plain WHERE k = ?", "07002", "07002"},
        {u"RENAME TABLE Plain TO Other", "42000", "42000"},
        {u"SELECT 'open", "42000", "42000"},
    };
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    for (const bool isAccess : {true, false}) {
        m_driver.Clear();
        m_driver.Script({isAccess ? "flavour access" : "flavour sqlserver"});
        for (const Case& row : cases) {
            EXPECT_EQ(State(Execute(row.sql)), isAccess ? row.stateAccess : row.stateSqlServer)
                << testing::PrintToString(row.sql);
        }
    }
    EXPECT_EQ(Execute(u"DELETE FROM Owned WHERE k = 8"), SQL_NO_DATA);
    EXPECT_EQ(Execute(u"DELETE FROM Owned WHERE k = 7"), SQL_SUCCESS);
    EXPECT_EQ(Execute(u"DROP TABLE Owned"), SQL_SUCCESS);
}

TEST_F(OdbcDriver, ShowsTablesAndColumns) {
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    MakeTable();
    EXPECT_EQ(SQLTablesW(m_statement, nullptr, 0, nullptr, 0, nullptr, 0, Wide(u"TABLE"), SQL_NTS),
              SQL_SUCCESS);
    EXPECT_EQ(FetchTexts(3), Lines{"WThing"});
    EXPECT_EQ(SQLTablesW(m_statement, nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0), SQL_SUCCESS);
    EXPECT_EQ(FetchTexts(3), (Lines{"MSysObjects", "WThing"}));
    for (const auto& [column, texts] :
         std::vector<std::pair<SQLUSMALLINT, Lines>>{{4, {"RecID", "objectID", "x", "name", "data"}},
                                                     {14, {"-11", "4", "8", "-10", "-4"}},
                                                     {17, {"1", "2", "3", "4", "5"}}}) {
        EXPECT_EQ(SQLColumnsW(m_statement, nullptr, 0, nullptr, 0, Wide(u"WThing"), SQL_NTS, nullptr, 0),
                  SQL_SUCCESS);
        EXPECT_EQ(FetchTexts(column), texts);
    }
}

TEST_F(OdbcDriver, KeepsWhatParametersBring) {
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    MakeTable();
    m_driver.Record();
    ASSERT_EQ(InsertRow(9, 400), SQL_SUCCESS);
    const std::string hex = "000102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F...";
    const Lines expected = {
        "SQLExecDirectW S1 \"INSERT INTO WThing (RecID, objectID, x, name, data) VALUES (?, ?, ?, ?, ?)\""
        " = SQL_NEED_DATA",
        "parameter 1 SQL_C_GUID SQL_GUID size 0 room 16 indicator 0 value 000102030405060708090A0B0C0D0E09",
        "parameter 2 SQL_C_SLONG SQL_INTEGER size 0 room 4 indicator none value 09000000",
        "parameter 3 SQL_C_DOUBLE SQL_DOUBLE size 0 room 8 indicator SQL_NULL_DATA value NULL",
        "parameter 4 SQL_C_WCHAR SQL_WLONGVARCHAR size 8 room 0 indicator 8 value 480020003DD800DE",
        "parameter 5 SQL_C_BINARY SQL_LONGVARBINARY size 400 room 0 indicator -500 value at execution",
        "SQLParamData S1 = SQL_NEED_DATA",
        "SQLPutData S1 100 " + hex + "100:FB5C8CEC60D83AB1 = SQL_SUCCESS",
        "SQLPutData S1 300 " + hex + "300:C0A61764E7580009 = SQL_SUCCESS",
        "SQLParamData S1 = SQL_SUCCESS"};
    const Lines record = m_driver.Record();
    ASSERT_GE(record.size(), expected.size());
    EXPECT_EQ(Lines(record.end() - static_cast<std::ptrdiff_t>(expected.size()), record.end()), expected);
    EXPECT_EQ(record.at(5),
              "SQLBindParameter S1 5 SQL_C_BINARY SQL_LONGVARBINARY size 400 digits 0 room 0 = SQL_SUCCESS");

    EXPECT_EQ(State(InsertRow(9, 400)), "23000");
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(Execute(u"UPDATE WThing SET x = 0.25 WHERE objectID = 9"), SQL_SUCCESS);
    Execute(u"SELECT x FROM WThing WHERE objectID = 9");
    EXPECT_EQ(FetchTexts(1), Lines{"0.25"});
}

TEST_F(OdbcDriver, GivesDataInPieces) {
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    MakeTable();
    ASSERT_EQ(InsertRow(9, 400), SQL_SUCCESS);
    ASSERT_EQ(Execute(u"SELECT * FROM WThing WHERE objectID = 9;"), SQL_SUCCESS);
    ASSERT_EQ(SQLFetch(m_statement), SQL_SUCCESS);

    std::vector<unsigned char> data(400);
    SQLLEN indicator = 0;
    EXPECT_EQ(State(SQLGetData(m_statement, 5, SQL_C_BINARY, data.data(), 0, &indicator)), "01004");
    EXPECT_EQ(indicator, 400);
    EXPECT_EQ(SQLGetData(m_statement, 5, SQL_C_BINARY, data.data(), 400, &indicator), SQL_SUCCESS);
    EXPECT_EQ(data, Pattern(400));
    EXPECT_EQ(SQLGetData(m_statement, 5, SQL_C_BINARY, data.data(), 400, &indicator), SQL_NO_DATA);

    std::array<char16_t, 4> text{};
    EXPECT_EQ(State(SQLGetData(m_statement, 4, SQL_C_WCHAR, text.data(), 7, &indicator)), "01004");
    EXPECT_EQ(indicator, 8);
    EXPECT_EQ(std::u16string(text.data()), u"H ");
    m_driver.Script({"no-totals"});
    EXPECT_EQ(SQLGetData(m_statement, 4, SQL_C_WCHAR, text.data(), 4, &indicator), SQL_SUCCESS_WITH_INFO);
    EXPECT_EQ(indicator, SQL_NO_TOTAL);
    EXPECT_EQ(SQLGetData(m_statement, 4, SQL_C_WCHAR, text.data(), 8, &indicator), SQL_SUCCESS);
    EXPECT_EQ(indicator, 2);
    EXPECT_EQ(SQLGetData(m_statement, 4, SQL_C_WCHAR, text.data(), 8, &indicator), SQL_NO_DATA);

    double x = 1;
    EXPECT_EQ(SQLGetData(m_statement, 3, SQL_C_DOUBLE, &x, 8, &indicator), SQL_SUCCESS);
    EXPECT_EQ(indicator, SQL_NULL_DATA);
    EXPECT_EQ(State(SQLGetData(m_statement, 4, SQL_C_DOUBLE, &x, 8, &indicator)), "22018");
    m_driver.Script({"flavour sqlserver"});
    EXPECT_EQ(State(SQLGetData(m_statement, 1, SQL_C_GUID, data.data(), 16, &indicator)), "07009");
    EXPECT_EQ(SQLFetch(m_statement), SQL_NO_DATA);
}

TEST_F(OdbcDriver, HoldsTheApplicationToAnnouncedLengths) {
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    MakeTable();
    SQLINTEGER token = 0;
    SQLLEN announced = SQL_LEN_DATA_AT_EXEC(300);
    SQLPrepareW(m_statement, Wide(u"INSERT INTO WThing (objectID, data) VALUES (5, ?)"), SQL_NTS);
    Bind(1, SQL_C_BINARY, SQL_LONGVARBINARY, 300, &token, 0, &announced);
    ASSERT_EQ(SQLExecute(m_statement), SQL_NEED_DATA);
    EXPECT_EQ(State(PutPieces(&token, {100, 100})), "22026");
    ASSERT_EQ(SQLExecute(m_statement), SQL_NEED_DATA);
    EXPECT_EQ(State(PutPieces(&token, {100, 100, 100})), "23000") << "no RecID";
    EXPECT_EQ(SQLPrepareW(m_statement, Wide(u"SELECT objectID, data FROM WThing"), SQL_NTS), SQL_SUCCESS);
    EXPECT_EQ(SQLExecute(m_statement), SQL_SUCCESS);
    SQLSMALLINT width = 0;
    EXPECT_EQ(SQLNumResultCols(m_statement, &width), SQL_SUCCESS);
    EXPECT_EQ(width, 2);
}

TEST_F(OdbcDriver, AnswersTheQueryOfMissingEntries) {
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    for (const char16_t* const sql :
         {u"CREATE TABLE WExperiment (groupID INTEGER, m_sPath LONGCHAR)",
          u"CREATE TABLE WDirectoryEntry (m_nDirectoryID INTEGER, m_sDirectoryClassName LONGCHAR)",
          u"INSERT INTO WExperiment (groupID, m_sPath) VALUES (3, 'c')",
          u"INSERT INTO WExperiment (groupID, m_sPath) VALUES (2, 'b')",
          u"INSERT INTO WExperiment (groupID, m_sPath) VALUES (1, 'a')",
          u"INSERT INTO WDirectoryEntry (m_nDirectoryID, m_sDirectoryClassName) VALUES (2, 'wexperiment')",
          u"INSERT INTO WDirectoryEntry (m_nDirectoryID, m_sDirectoryClassName) VALUES (3, 'WOther')",
          u"SELECT groupID,m_sPath FROM WExperiment WHERE groupID NOT IN (SELECT m_nDirectoryID FROM "
          u"WDirectoryEntry WHERE m_sDirectoryClassName LIKE 'WExperiment') ORDER BY groupID"}) {
        ASSERT_EQ(State(Execute(sql)), "");
    }
    EXPECT_EQ(FetchTexts(2), (Lines{"a", "c"}));
}

TEST_F(OdbcDriver, CommitsAndRollsBackRowsAndTables) {
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    MakeTable();
    SQLSetConnectAttrW(m_connection, SQL_ATTR_AUTOCOMMIT, Number(SQL_AUTOCOMMIT_OFF), SQL_IS_UINTEGER);
    ASSERT_EQ(InsertRow(1, 200), SQL_SUCCESS);
    EXPECT_EQ(Count(), 1);
    ASSERT_EQ(Execute(u"CREATE TABLE Other (k INTEGER)"), SQL_SUCCESS);
    EXPECT_EQ(SQLEndTran(SQL_HANDLE_DBC, m_connection, SQL_ROLLBACK), SQL_SUCCESS);
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(State(Execute(u"DROP TABLE Other")), "42S02");

    ASSERT_EQ(InsertRow(1, 200), SQL_SUCCESS);
    SQLEndTran(SQL_HANDLE_DBC, m_connection, SQL_COMMIT);
    ASSERT_EQ(InsertRow(2, 200), SQL_SUCCESS);
    EXPECT_EQ(State(SQLDisconnect(m_connection), SQL_HANDLE_DBC, m_connection), "25000");
    SQLEndTran(SQL_HANDLE_DBC, m_connection, SQL_ROLLBACK);
    m_driver.Record();
    Disconnect();
    EXPECT_EQ(m_driver.Record("SQLDisconnect"), Lines{"SQLDisconnect C1 = SQL_SUCCESS"});
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    EXPECT_EQ(Count(), 1) << "rows outlive the connection";
}

TEST_F(OdbcDriver, KeepsOthersFromTablesWithChangesThatAreNotCommitted) {
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    MakeTable();
    SQLSetConnectAttrW(m_connection, SQL_ATTR_AUTOCOMMIT, Number(SQL_AUTOCOMMIT_OFF), SQL_IS_UINTEGER);
    ASSERT_EQ(InsertRow(1, 200), SQL_SUCCESS);
    const std::array first = {m_environment, m_connection, m_statement};
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(State(InsertRow(2, 200)), "HYT00");
    SQLSetConnectAttrW(first[1], SQL_ATTR_AUTOCOMMIT, Number(SQL_AUTOCOMMIT_ON), SQL_IS_UINTEGER);
    EXPECT_EQ(InsertRow(2, 200), SQL_SUCCESS);
    EXPECT_EQ(Count(), 2);
    Disconnect();
    m_environment = first[0];
    m_connection = first[1];
    m_statement = first[2];
}

TEST_F(OdbcDriver, FailsOnDemand) {
    m_driver.Script({"fail SQLConnectW 1 28000 18456 Login failed."});
    const SQLRETURN refused = Connect();
    EXPECT_EQ(State(refused, SQL_HANDLE_DBC, m_connection), "28000");
    Disconnect();
    ASSERT_EQ(Connect(), SQL_SUCCESS) << "a rule works once";
    MakeTable();
    m_driver.Script({"fail SQLExecDirectW 2 HY001 -3 Out of \"memory\".",
                     "info SQLExecDirectW 3 01000 7 Mind this.", "answer SQLFetch 1 100"});
    m_driver.Record();
    EXPECT_EQ(Execute(u"DROP TABLE WThing"), SQL_SUCCESS);
    EXPECT_EQ(State(Execute(u"CREATE TABLE A (k INTEGER)")), "HY001");
    EXPECT_EQ(State(Execute(u"CREATE TABLE A (k INTEGER)")), "01000");
    const std::string create = "SQLExecDirectW S1 \"CREATE TABLE A (k INTEGER)\" = ";
    EXPECT_EQ(m_driver.Record("SQLExecDirectW"),
              (Lines{"SQLExecDirectW S1 \"DROP TABLE WThing\" = SQL_SUCCESS",
                     create + "SQL_ERROR HY001 -3 \"Out of \\\"memory\\\".\"",
                     create + "SQL_SUCCESS_WITH_INFO 01000 7 \"Mind this.\""}));
    EXPECT_EQ(Execute(u"SELECT COUNT(k) FROM A"), SQL_SUCCESS);
    EXPECT_EQ(SQLFetch(m_statement), SQL_NO_DATA);
    EXPECT_EQ(SQLFetch(m_statement), SQL_SUCCESS);
    m_driver.Script({"flavour access", "fial SQLFetch 1"});
    EXPECT_EQ(State(SQLFetch(m_statement)), "HY000");
    EXPECT_EQ(m_driver.Record().back(),
              R"(SQLFetch S1 = SQL_ERROR HY000 0 "script line 'fial SQLFetch 1': no such word")");
    m_driver.Clear();
}

TEST_F(OdbcDriver, FindsSqliteToo) {
    if (!TestDriver::HasSqlite()) {
        GTEST_SKIP() << "SQLite's ODBC driver is not installed";
    }
    ASSERT_EQ(ConnectByText(u"DRIVER={SQLite3};Database=:memory:"), SQL_SUCCESS);
    EXPECT_EQ(TextInfo(SQL_DBMS_NAME), u"SQLite");
}

} // namespace
