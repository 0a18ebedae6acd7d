// A new database for each test, and statements that another program could send to it.

#ifndef TESTS_SERIAL_DATABASE_FIXTURE_H
#define TESTS_SERIAL_DATABASE_FIXTURE_H

#include "bss/exception/WNestedException.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/database/WDatabase.h"
#include "platform/odbc.h"
#include "platform/text.h"
#include "support/Wine.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

class DatabaseTest : public testing::Test {
protected:
    void SetUp() override {
        if (sizeof(void*) == 4 && RunsUnderWine()) {
            GTEST_SKIP() << "Wine reaches the ODBC drivers of Linux from 64-bit programs only";
        }
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        // A relative path is the same for Windows, and for the driver of Linux that Wine reaches.
        m_path = std::string("database-") + test->name() + ".db";
        std::filesystem::remove(m_path);
        Connect(m_database);
    }
    void TearDown() override {
        m_database.Disconnect();
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

    void Connect(bss::WDatabase& database) const { database.ConnectFile(L"", L"", m_path.wstring()); }

    /// A statement on a connection of its own; false if it fails.
    bool Execute(const std::wstring& sql) const {
        bool ok = false;
        Run(sql, [&ok](platform::odbc::Handle) { ok = true; });
        return ok;
    }

    /// The first value of a query as text, likewise.
    std::string Ask(const std::wstring& sql) const {
        char text[1000] = {};
        Run(sql, [&text](platform::odbc::Handle statement) {
            platform::odbc::Length length = 0;
            platform::odbc::Fetch(statement);
            platform::odbc::GetData(statement, 1, platform::odbc::kCChar, text, sizeof(text), &length);
        });
        return text;
    }

private:
    template <class Use>
    void Run(const std::wstring& sql, Use use) const {
        namespace odbc = platform::odbc;
        odbc::Handle environment = nullptr;
        odbc::Handle connection = nullptr;
        odbc::Handle statement = nullptr;
        odbc::AllocHandle(odbc::kEnvironment, nullptr, &environment);
        odbc::SetEnvAttr(environment, odbc::kAttrOdbcVersion, odbc::kOdbcVersion3);
        odbc::AllocHandle(odbc::kConnection, environment, &connection);
        if (odbc::Succeeded(
                odbc::DriverConnect(connection, L"DRIVER={SQLite3};Database=" + m_path.wstring() + L";")) &&
            odbc::Succeeded(odbc::AllocHandle(odbc::kStatement, connection, &statement))) {
            if (odbc::Succeeded(odbc::ExecDirect(statement, sql))) {
                use(statement);
            }
            odbc::FreeHandle(odbc::kStatement, statement);
            odbc::Disconnect(connection);
        }
        odbc::FreeHandle(odbc::kConnection, connection);
        odbc::FreeHandle(odbc::kEnvironment, environment);
    }

protected:
    std::filesystem::path m_path;
    bss::WDatabase m_database;
};

/// The whole text of the failure of a call; empty if it does not fail.
template <class Call>
std::string FailureOf(Call call) {
    try {
        call();
    } catch (const bss::WNestedException& e) {
        return platform::NarrowText(e.AsString(false));
    } catch (const std::exception& e) {
        return e.what();
    }
    return {};
}

#endif
