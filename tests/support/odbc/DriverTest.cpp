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
        SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &m_environment);
        SQLSetEnvAttr(m_environment, SQL_ATTR_ODBC_VERSION, Number(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, m_environment, &m_connection);
        SQLSetConnectAttrW(m_connection, SQL_ATTR_LOGIN_TIMEOUT, Number(5), SQL_IS_UINTEGER);
        const SQLRETURN result = SQLConnectW(m_connection, Wide(u"krtbss-test"), SQL_NTS, Wide(u"Jim"),
                                             SQL_NTS, Wide(u"secret"), SQL_NTS);
        if (SQL_SUCCEEDED(result)) {
            SQLAllocHandle(SQL_HANDLE_STMT, m_connection, &m_statement);
        }
        return result;
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

    void MakeTable() {
        ASSERT_EQ(
            Execute(u"CREATE TABLE WThing (RecID GUID PRIMARY KEY, objectID INTEGER NOT NULL, x DOUBLE, "
                    u"name LONGCHAR, data LONGBINARY)"),
            SQL_SUCCESS);
    }

    TestDriver& m_driver;
    SQLHANDLE m_environment = nullptr;
    SQLHANDLE m_connection = nullptr;
    SQLHANDLE m_statement = nullptr;
};

TEST_F(OdbcDriver, RecordsConnectAndStatement) {
    ASSERT_EQ(Connect(), SQL_SUCCESS);
    Execute(u"DROP TABLE Nothing");
    for (const std::string& line : m_driver.Record()) {
        printf("%s\n", line.c_str());
    }
}

} // namespace
