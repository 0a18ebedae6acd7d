// What reaches the drivers of Access and of SQL Server, call by call, as the tests' own driver records it,
// and what their failures lead to.

#include "Everything.h"
#include "Fixture.h"
#include "Sample.h"
#include "Tree.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "support/DebugOutput.h"
#include "support/odbc/TestDriver.h"

#include <dlfcn.h>

namespace {

bool refusesAttributes = false;

} // namespace

/// In front of the driver manager, which keeps the attributes of a connection for itself until it connects.
extern "C" [[gnu::visibility("default")]] short SQLSetConnectAttrW(void* connection, int attribute,
                                                                   void* value, int length) {
    static const auto real =
        reinterpret_cast<decltype(&SQLSetConnectAttrW)>(dlsym(RTLD_NEXT, "SQLSetConnectAttrW"));
    return refusesAttributes ? short{-1} : real(connection, attribute, value, length);
}

namespace {

using Lines = std::vector<std::string>;

class Dialect : public BackendTest {
protected:
    bool IsAccess() const { return GetParam().name == std::string(kAccess.name); }

    /// A new database of nothing, on a new connection.
    void Restart() {
        m_database.Disconnect();
        m_driver.Clear(GetParam().name);
        m_database.Connect(L"Jim", L"secret", L"krtbss-test");
    }

    /// The texts of the statements since the last look.
    Lines Statements() {
        Lines texts = m_driver.Record("SQLExecDirectW");
        for (std::string& line : texts) {
            const std::size_t start = line.find('"') + 1;
            line = line.substr(start, line.rfind("\" = ") - start);
        }
        return texts;
    }

    TestDriver& m_driver = TestDriver::Get();
};

INSTANTIATE_TEST_SUITE_P(Flavours, Dialect, testing::Values(kAccess, kSqlServer),
                         [](const auto& backend) { return std::string(backend.param.name); });

TEST_P(Dialect, ConnectAsksForWhatItNeedsAndNoMore) {
    Restart();
    Lines calls = m_driver.Record();
    const auto count = [&calls](const std::string& start) {
        return std::count_if(calls.begin(), calls.end(),
                             [&](const std::string& line) { return line.rfind(start, 0) == 0; });
    };
    for (const char* const call : {"SQLSetEnvAttr E1 SQL_ATTR_ODBC_VERSION 3 = SQL_SUCCESS",
                                   "SQLSetConnectAttrW C1 SQL_ATTR_LOGIN_TIMEOUT 5 = SQL_SUCCESS",
                                   "SQLConnectW C1 \"krtbss-test\" \"Jim\" \"secret\" = SQL_SUCCESS",
                                   "SQLGetInfoW C1 SQL_GETDATA_EXTENSIONS", "SQLTablesW S2"}) {
        EXPECT_EQ(count(call), 1) << call;
    }
    // SQL Server has no double, the last to be asked for: all are asked for once more.
    EXPECT_EQ(count("SQLGetTypeInfoW"), IsAccess() ? 6 : 6 + 6);
    EXPECT_EQ(m_database.GetConnectionType(), bss::WDatabase::connectionDataSource);
}

TEST_P(Dialect, MissingTypesHaveOneSecondChoice) {
    const auto connectWithout = [this](const std::set<int>& types) {
        m_driver.Clear(GetParam().name);
        m_driver.state.missingTypes = types;
        m_database.Connect(L"", L"", L"krtbss-test");
        m_driver.Record();
    };
    connectWithout({-7}); // SQL_BIT
    Sample sample;
    sample.Write(&m_database, 0, true);
    const std::string added = Statements().at(2);
    EXPECT_NE(added.find(IsAccess() ? "isOpen CHAR NULL" : "isOpen char NULL"), std::string::npos) << added;
    sample.isOpen = false;
    EXPECT_EQ(FailureOf([&] { sample.Read(&m_database, 0, true); }).empty(),
              !IsAccess()); // "CHAR" is not read
    EXPECT_EQ(sample.isOpen, !IsAccess());
    connectWithout({4}); // SQL_INTEGER
    sample.Write(&m_database, 0, true);
    const std::string created = Statements().at(0);
    EXPECT_NE(created.find(IsAccess() ? "groupID DECIMAL" : "groupID decimal"), std::string::npos) << created;
    try {
        connectWithout({8, 6}); // SQL_DOUBLE, SQL_FLOAT
        ADD_FAILURE() << "connected without any type for doubles";
    } catch (const bss::WNEODBCTypeNotSupported& e) {
        EXPECT_EQ(e.GetArgument<0>(), L"");
    }
    EXPECT_FALSE(m_database.IsConnected());
}

TEST_P(Dialect, StatementsHaveTheirExactText) {
    m_driver.Record();
    Sample sample;
    sample.Write(&m_database, 0, true);
    const Lines first = Statements();
    const std::string integer = IsAccess() ? "INTEGER" : "int";
    const std::string guid = IsAccess() ? "GUID" : "uniqueidentifier";
    const std::string text = IsAccess() ? "LONGCHAR" : "ntext";
    const std::string writeHint = IsAccess() ? "" : " WITH (ROWLOCK) ";
    const std::string readHint = IsAccess() ? "" : " WITH (NOLOCK) ";
    const std::string key = " WHERE groupID = 3 AND objectID = 4";
    ASSERT_EQ(first.size(), 5U);
    EXPECT_EQ(first[0], "CREATE TABLE " + std::string(IsAccess() ? "" : "[dbo].") + "Sample (RecID " + guid +
                            " PRIMARY KEY, m_nVersion " + integer + " NOT NULL, groupID " + integer +
                            " NOT NULL, objectID " + integer + " NOT NULL, checkSum " + text + " NOT NULL)");
    EXPECT_EQ(
        first[1],
        IsAccess()
            ? "CREATE UNIQUE INDEX [groupID_objectID] ON Sample ([groupID] ASC, [objectID] ASC)"
            : "CREATE UNIQUE NONCLUSTERED INDEX [groupID_objectID] ON [Sample] ([groupID] ASC, [objectID] "
              "ASC) ON [PRIMARY]");
    EXPECT_EQ(first[2], "ALTER TABLE Sample ADD isOpen " + std::string(IsAccess() ? "BIT" : "bit") +
                            " NULL, angle " + (IsAccess() ? "DOUBLE" : "float") + " NULL, name " + text +
                            " NULL, counts " + (IsAccess() ? "LONGBINARY" : "image") + " NULL");
    EXPECT_EQ(first[3], "SELECT m_nVersion FROM Sample" + key);
    EXPECT_EQ(first[4],
              "INSERT INTO Sample" + writeHint +
                  " (RecID, m_nVersion, groupID, objectID, checkSum, isOpen, angle, name, counts) VALUES "
                  "(?, ?, ?, ?, ?, ?, ?, ?, ?)");
    sample.Write(&m_database, 0, true);
    EXPECT_EQ(Statements().back(), "UPDATE Sample" + writeHint +
                                       " SET m_nVersion = ?, checkSum = ?, isOpen = ?, angle = ?, name = ?, "
                                       "counts = ?" +
                                       key);
    sample.Read(&m_database, 0, true);
    EXPECT_EQ(Statements(), Lines{"SELECT * FROM Sample" + readHint + key + ";"});
    sample.Delete(&m_database, 0, true);
    EXPECT_EQ(Statements(), Lines{"DELETE FROM Sample" + key});
    EXPECT_EQ(m_database.GetRowCount(L"Sample"), 0);
    EXPECT_EQ(Statements(), Lines{"SELECT COUNT(m_nVersion) FROM Sample"});
}

TEST_P(Dialect, ValuesFrom1024BytesOnGoWhileTheStatementRuns) {
    struct Row {
        std::size_t characters;
        std::size_t counts;
        std::size_t frame; ///< of the counts; from 1001 bytes on they are compressed, which adds 11 to them
    };
    for (const Row& row : {Row{511, 250, 1016}, Row{512, 251, 1031}}) {
        Sample written;
        written.name.assign(row.characters, L'\u20AC');
        written.counts.assign(row.counts, -1);
        m_driver.Record();
        written.Write(&m_database, 0, true);
        const Lines record = m_driver.state.record;
        const Lines bound = m_driver.Record("SQLBindParameter");
        ASSERT_GE(bound.size(), 6U);
        EXPECT_NE(bound.end()[-2].find(" SQL_C_WCHAR SQL_WLONGVARCHAR size " +
                                       std::to_string(2 * row.characters) + " digits 0 room 0 = SQL_SUCCESS"),
                  std::string::npos);
        EXPECT_NE(bound.back().find(" SQL_C_BINARY SQL_LONGVARBINARY size " + std::to_string(row.frame) +
                                    " digits 0 room 0 = SQL_SUCCESS"),
                  std::string::npos);
        EXPECT_EQ(std::count_if(record.begin(), record.end(),
                                [](const std::string& line) { return line.rfind("SQLPutData", 0) == 0; }),
                  row.characters == 512 ? 2 : 0);
        Sample read;
        read.isOpen = false;
        read.Read(&m_database, 0, true);
        EXPECT_TRUE(read.name == written.name && read.counts == written.counts && read.isOpen);
    }
}

/// Autocommit, statements and ends of transactions, one letter each.
TEST_P(Dialect, DeepWritesAreTwoTransactions) {
    m_driver.Record();
    Tree(1, 1, 2).Write(&m_database, 0, true);
    std::string order;
    for (const std::string& line : m_driver.Record()) {
        if (line.rfind("SQLSetConnectAttrW C1 SQL_ATTR_AUTOCOMMIT", 0) == 0) {
            order += line.find("AUTOCOMMIT 0") != std::string::npos ? '(' : ')';
        } else if (line.rfind("SQLEndTran C1 SQL_COMMIT", 0) == 0) {
            order += 'C';
        } else if (line.rfind("SQLExecDirectW", 0) == 0) {
            order += line.at(line.find('"') + 1);
        }
    }
    // Table, index and column; then the old parts go, and for each object a look and an insert.
    EXPECT_EQ(order, "(CCAC)(DDSISISIC)");
}

/// After a failure at any call of a deep write, rows are as before it, and the next write succeeds.
TEST_P(Dialect, NothingOfAFailedWriteStays) {
    Tree tree(1, 1, 2);
    tree.SetAll(1);
    tree.Write(&m_database, 0, true);
    const auto all = [&] {
        Tree read(1, 1, 2);
        read.Read(&m_database, 0, true);
        std::vector<long> values;
        read.ForEach([&](Tree& each) { values.push_back(each.value); });
        return values;
    };
    int failures = 0;
    for (const std::string call : {"SQLExecDirectW", "SQLEndTran", "SQLSetConnectAttrW", "SQLAllocHandle"}) {
        for (int n = 1; n <= 12; ++n) {
            SCOPED_TRACE(call + " " + std::to_string(n));
            m_driver.Fail(call, n, {"HY000", "Out of order.", 77});
            tree.SetAll(2);
            const bool failed = !FailureOf([&] { tree.Write(&m_database, 0, true); }).empty();
            m_driver.state.rules.clear();
            if (failed) {
                ++failures;
                if (call == "SQLEndTran" || call == "SQLSetConnectAttrW") {
                    m_database.Disconnect(); // a connection that can't end its transactions is of no more use
                    Connect(m_database);
                }
                // The last of the calls is the way back to autocommit: by then all is committed.
                const bool isCommitted = call == "SQLSetConnectAttrW" && n == 4;
                EXPECT_EQ(all(), std::vector<long>(3, isCommitted ? 2 : 1));
            }
            tree.SetAll(1);
            tree.Write(&m_database, 0, true);
            EXPECT_EQ(all(), std::vector<long>(3, 1));
        }
    }
    EXPECT_GT(failures, 10);
}

const Diagnostic kFirst = {"HY000", "Out of order.", 77};
const Diagnostic kSecond = {"08S01", std::string(2000, 'x'), 78};

/// Both records, of which the second is cut.
std::string BothOf(const std::string& className) {
    return "\tObject: " + className +
           "\n\tSqlState: HY000\n\tNativeError: 77\n\tError message: Out of order.\n" +
           "\tObject: " + className +
           "\n\tSqlState: 08S01\n\tNativeError: 78\n\tError message: " + std::string(1023, 'x') + "\n";
}

/// Where a failure of a call is seen: the failure of the write of a new object, or the debug output alone.
TEST_P(Dialect, FailuresOfAWriteAreReportedWithAllTheirRecords) {
    struct Case {
        const char* call;
        int number;
        std::string failure; ///< part of it; empty: the write succeeds
        std::string debugText;
    };
    const Case cases[] = {
        {"SQLExecDirectW", 1, "unknown failure", ""},    // CREATE TABLE
        {"SQLExecDirectW", 3, "unexpected failure", ""}, // ALTER TABLE
        {"SQLExecDirectW", 2, "", BothOf("Sample") + "\n\tSample (3,4)\n"},
        {"SQLExecDirectW", 5, BothOf("Sample") + "\n\tSample (3,4)\n", ""},
        {"SQLBindParameter", 2, "Too few parameters", BothOf("Sample") + "\n\tSample (3,4).m_nVersion\n"},
        {"SQLPutData", 1, "Function sequence error", BothOf("Sample") + "\n\tSample (3,4).name\n"},
        {"SQLParamData", 2, BothOf("Sample") + "\n\tSample (3,4)\n", ""},
        {"SQLEndTran", 1, BothOf("Sample") + "\n\tSample (3,4)\n", ""},
        {"SQLEndTran", 2, BothOf("Sample") + "\n\tSample (3,4)\n", ""},
        {"SQLSetConnectAttrW", 1, BothOf("Sample") + "\n\tSample (3,4)\n", ""},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(std::string(each.call) + " " + std::to_string(each.number));
        Restart();
        m_driver.Fail(each.call, each.number, kFirst);
        m_driver.Fail(each.call, each.number, kSecond);
        Sample written;
        written.name.assign(600, L'n'); // goes while the statement runs
        DebugOutput output;
        const std::string failure = FailureOf([&] { written.Write(&m_database, 0, true); });
        EXPECT_EQ(failure.empty(), each.failure.empty());
        EXPECT_NE(failure.find(each.failure), std::string::npos) << failure;
        const std::string text = krtpal::NarrowText(output.Text());
        EXPECT_NE(text.find(each.debugText), std::string::npos) << text;
        Sample read;
        EXPECT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }).empty(), each.failure.empty());
    }
    Restart();
    m_driver.Inform("SQLEndTran", 2, kFirst);
    EXPECT_EQ(FailureOf([&] { Sample().Write(&m_database, 0, true); }), ""); // a commit with a warning
    m_driver.Fail("SQLFetch", 1, kFirst);
    const std::string failure = FailureOf([&] { m_database.GetRowCount(L"Sample"); });
    EXPECT_NE(failure.find("Error message: Out of order."), std::string::npos) << failure;
}

TEST_P(Dialect, BinaryDataOfUnknownLengthIsNotTaken) {
    Sample().Write(&m_database, 0, true);
    m_driver.state.hidesTotals = true;
    Sample read;
    EXPECT_NE(FailureOf([&] { read.Read(&m_database, 0, true); }).find("Unexpected error reading data."),
              std::string::npos);
}

TEST(DialectConnection, FailuresToConnectAreReportedAndLeaveNothing) {
    TestDriver& driver = TestDriver::Get();
    for (const char* const call : {"SQLConnectW", "SQLGetInfoW", "SQLAllocHandle", "SQLTablesW"}) {
        SCOPED_TRACE(call);
        driver.Clear();
        driver.Fail(call, std::string(call) == "SQLAllocHandle" ? 3 : 1,
                    kFirst); // that of the first statement
        driver.Fail(call, std::string(call) == "SQLAllocHandle" ? 3 : 1, kSecond);
        bss::WDatabase database;
        const std::string failure = FailureOf([&] { database.Connect(L"", L"", L"krtbss-test"); });
        EXPECT_NE(failure.find("Out of order.\n\tObject: Unknown\n\tSqlState: 08S01\n\tNativeError: 78"),
                  std::string::npos)
            << failure;
        EXPECT_FALSE(database.IsConnected());
    }
    driver.Clear();
    refusesAttributes = true;
    bss::WDatabase database;
    EXPECT_THROW(database.Connect(L"", L"", L"krtbss-test"), bss::WNEODBCError);
    DebugOutput output;
    EXPECT_NO_THROW(database.ConnectFile(L"", L"", L"/data/x.mdb")); // it needs no login
    refusesAttributes = false;
    EXPECT_NE(output.Text().find(L"WDatabase::ConnectFile:  Error in SQLSetConnectAttr: "),
              std::wstring::npos);
    EXPECT_TRUE(database.IsConnected());
}

/// One object, connected to one after the other.
TEST(DialectConnection, ABitOfTheFetchCapabilitiesTellsTheDialect) {
    TestDriver& driver = TestDriver::Get();
    bss::WDatabase database;
    for (const unsigned extensions : {1U, 2U, 4U}) {
        SCOPED_TRACE(extensions);
        driver.Clear();
        driver.state.extensions = extensions;
        database.Connect(L"J\u00FCrgen", L"", L"krtbss-test");
        EXPECT_EQ(database.GetUser(), L"J\u00FCrgen");
        driver.Record();
        FailureOf([&] { Tree(1, 0, 0).Write(&database, 0, true); });
        EXPECT_EQ(driver.Record("SQLExecDirectW").at(0).find("[dbo].") != std::string::npos, extensions == 4);
    }
}

TEST(DialectConnection, AccessFilesAreOpenedByTheirDriver) {
    TestDriver& driver = TestDriver::Get();
    driver.Clear();
    bss::WDatabase database;
    database.ConnectFile(L"Jim", L"secret", L"/data/results.MDB");
    const std::string call = driver.Record("SQLDriverConnectW").at(0);
    EXPECT_NE(call.find("\"APP=vorin.exe;DRIVER={Microsoft Access Driver (*.mdb)};MaxBufferSize=4096;"
                        "DBQ=/data/results.MDB;UID=Jim;PWD=secret;\""),
              std::string::npos)
        << call;
    EXPECT_EQ(database.GetConnectionType(), bss::WDatabase::connectionFile);
    EXPECT_EQ(database.GetDatabasePath(), L"/data/results.MDB");

    driver.state.dbms = "ACCESS";
    driver.state.database = "/data/old.dat";
    bss::WDatabase source;
    source.Connect(L"", L"", L"krtbss-test");
    EXPECT_EQ(source.GetDatabasePath(), L"/data/old.mdb"); // "ACCESS" is not "access"
    driver.state.dbms = "access";
    EXPECT_EQ(source.GetDatabasePath(), L"/data/old.dat");
}

} // namespace
