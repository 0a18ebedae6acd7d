// A new database for each test on one of the back-ends, and statements that another program could send to it.
//
// Such statements are written with names in brackets and get the back-end's quotes.

#ifndef TESTS_BSS_SERIAL_DATABASE_FIXTURE_H
#define TESTS_BSS_SERIAL_DATABASE_FIXTURE_H

#include "bss/exception/WNestedException.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/system/WGuid.h"
#include "krtpal/common/odbc.h"
#include "krtpal/common/text.h"
#include "support/Wine.h"
#include "support/odbc/Postgresql.h"
#ifndef _WIN32
#include "support/odbc/TestDriver.h"
#endif

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

struct Backend {
    const char* name;
    const wchar_t* source;   ///< of data; none for a file
    const wchar_t* textType; ///< of a column for text

    friend std::ostream& operator<<(std::ostream& out, const Backend& backend) { return out << backend.name; }
};

inline constexpr Backend kSqlite{"SQLite", L"", L"LONGCHAR"};
inline constexpr Backend kPostgresql{"PostgreSQL", L"krtbss-postgresql", L"text"};
#ifdef _WIN32
// Wine reaches no driver that keeps its tables in the memory of a program of Linux.
inline constexpr Backend kBackends[] = {kSqlite, kPostgresql};
#else
inline constexpr Backend kAccess{"access", L"krtbss-test", L"LONGCHAR"};
inline constexpr Backend kSqlServer{"sqlserver", L"krtbss-test", L"ntext"};
inline constexpr Backend kBackends[] = {kSqlite, kPostgresql, kAccess, kSqlServer};
#endif

class DatabaseTest : public testing::Test {
protected:
    explicit DatabaseTest(const Backend& backend = kSqlite) : m_backend(backend) {}

    void SetUp() override {
        if (sizeof(void*) == 4 && RunsUnderWine()) {
            GTEST_SKIP() << "Wine reaches the ODBC drivers of Linux from 64-bit programs only";
        }
#ifndef _WIN32
        OdbcFolder();
        if (IsTestDriver()) {
            TestDriver::Get().Clear(m_backend.name);
        }
#endif
        if (IsPostgresql()) {
            const std::string& state = PostgresqlState();
            if (state.rfind("missing: ", 0) == 0) {
                GTEST_SKIP() << state;
            }
            ASSERT_EQ(state, "ready");
            ASSERT_TRUE(Execute(L"DROP SCHEMA public CASCADE") && Execute(L"CREATE SCHEMA public"));
        }
        std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        std::replace(name.begin(), name.end(), '/', '-');
        // A relative path is the same for Windows, and for the driver of Linux that Wine reaches.
        m_path = "database-" + name + ".db";
        std::filesystem::remove(m_path);
        Connect(m_database);
    }
    void TearDown() override {
        m_database.Disconnect();
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

    bool IsFile() const {
        return *m_backend.source == 0;
    }
    bool IsPostgresql() const {
        return m_backend.source == std::wstring(kPostgresql.source);
    }
    bool IsTestDriver() const {
        return !IsFile() && !IsPostgresql();
    }

    void Connect(bss::WDatabase& database) const {
        IsFile() ? database.ConnectFile(L"", L"", m_path.wstring())
                 : database.Connect(L"", L"", m_backend.source);
    }

    /// What another process connects to, as DatabaseChild takes it.
    std::vector<std::string> Arguments() const {
        return IsFile() ? std::vector<std::string>{"file", m_path.string()}
                        : std::vector<std::string>{"source", krtpal::NarrowText(m_backend.source)};
    }

    std::wstring Sql(std::wstring text) const {
        if (IsPostgresql()) {
            std::replace(text.begin(), text.end(), L'[', L'"');
            std::replace(text.begin(), text.end(), L']', L'"');
        }
        return text;
    }

    /// A value for the marker of a statement.
    struct Value {
        std::int16_t cType;
        std::int16_t sqlType;
        std::string bytes;
    };

    Value Guid(const GUID& guid) const {
        if (IsFile()) {
            return {krtpal::odbc::kCChar, krtpal::odbc::kVarChar,
                    krtpal::Utf8FromWide(bss::WGuid::GetAsText(guid))};
        }
        return {krtpal::odbc::kCGuid, krtpal::odbc::kGuid,
                std::string(reinterpret_cast<const char*>(&guid), sizeof(guid))};
    }

    static Value Binary(const std::string& bytes) {
        return {krtpal::odbc::kCBinary, krtpal::odbc::kLongVarBinary, bytes};
    }

    /// A statement on a connection of its own; false if it fails.
    bool Execute(const std::wstring& sql, Value value = {}) const {
        bool isDone = false;
        Run(sql, &value, [&isDone](krtpal::odbc::Handle) { isDone = true; });
        return isDone;
    }

    /// The first value of a query as text or in its bytes, likewise; of at most 8000 bytes.
    std::string Ask(const std::wstring& sql, std::int16_t cType = krtpal::odbc::kCChar) const {
        std::string text(8000, '\0');
        krtpal::odbc::Length length = 0;
        Run(sql, nullptr, [&](krtpal::odbc::Handle statement) {
            krtpal::odbc::Fetch(statement);
            krtpal::odbc::GetData(statement, 1, cType, text.data(),
                                  static_cast<krtpal::odbc::Length>(text.size()), &length);
        });
        text.resize(std::min(text.size(), static_cast<std::size_t>(std::max<long long>(length, 0))));
        return text;
    }

private:
    template <class Use>
    void Run(const std::wstring& sql, Value* value, Use use) const {
        namespace odbc = krtpal::odbc;
        odbc::Handle environment = nullptr;
        odbc::Handle connection = nullptr;
        odbc::Handle statement = nullptr;
        odbc::AllocHandle(odbc::kEnvironment, nullptr, &environment);
        odbc::SetEnvAttr(environment, odbc::kAttrOdbcVersion, odbc::kOdbcVersion3);
        odbc::AllocHandle(odbc::kConnection, environment, &connection);
        if (odbc::Succeeded(odbc::DriverConnect(
                connection, IsFile() ? L"DRIVER={SQLite3};Database=" + m_path.wstring() + L";"
                                     : L"DSN=" + std::wstring(m_backend.source) + L";")) &&
            odbc::Succeeded(odbc::AllocHandle(odbc::kStatement, connection, &statement))) {
            odbc::Length length = 0;
            if (value != nullptr && !value->bytes.empty()) {
                length = static_cast<odbc::Length>(value->bytes.size());
                odbc::BindParameter(statement, 1, value->cType, value->sqlType, value->bytes.size(),
                                    value->bytes.data(), length, &length);
            }
            if (odbc::Succeeded(odbc::ExecDirect(statement, Sql(sql)))) {
                use(statement);
            }
            odbc::FreeHandle(odbc::kStatement, statement);
            odbc::Disconnect(connection);
        }
        odbc::FreeHandle(odbc::kConnection, connection);
        odbc::FreeHandle(odbc::kEnvironment, environment);
    }

protected:
    const Backend m_backend;
    std::filesystem::path m_path;
    bss::WDatabase m_database;
};

/// The same on each of some back-ends.
class BackendTest : public DatabaseTest, public testing::WithParamInterface<Backend> {
protected:
    BackendTest() : DatabaseTest(GetParam()) {}
};

/// The whole text of the failure of a call; empty if it does not fail.
template <class Call>
std::string FailureOf(Call call) {
    try {
        call();
    } catch (const bss::WNestedException& e) {
        return krtpal::NarrowText(e.AsString(false));
    } catch (const std::exception& e) {
        return e.what();
    }
    return {};
}

#endif
