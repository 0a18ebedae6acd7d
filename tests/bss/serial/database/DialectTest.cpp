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
#include <fstream>
#include <iterator>

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
                         testing::PrintToStringParamName());

/// In two files, each as the driver records it. A run with other calls writes them to test-results.
TEST_P(Dialect, CallsAreAsRecorded) {
    Restart();
    Sample sample;
    sample.Write(&m_database, 0, true);
    sample.name.assign(511, L'\u20AC');
    sample.counts.assign(250, -1);
    sample.Write(&m_database, 0, true);
    sample.name.assign(512, L'\u20AC'); // from 1024 bytes on a value goes while the statement runs
    sample.counts.assign(251, -1);      // from 1001 bytes on it is compressed
    sample.Write(&m_database, 0, true);
    sample.Read(&m_database, 0, true);
    sample.Delete(&m_database, 0, true);
    m_database.GetRowCount(L"Sample");
    Tree(1, 1, 2).Write(&m_database, 0, true);
    m_database.Disconnect();
    Lines found = m_driver.Record();
    for (std::string& line : found) {
        if (line.rfind("parameter 1 SQL_C_GUID", 0) == 0) {
            line.erase(line.find(" value")); // random
        }
    }
    const std::string name = std::string(GetParam().name) + ".txt";
    std::ifstream file(KRTBSS_SOURCE_DIR "/tests/data/odbc/" + name);
    Lines stored;
    for (std::string line; std::getline(file, line);) {
        stored.push_back(line);
    }
    const auto [at, wanted] = std::mismatch(found.begin(), found.end(), stored.begin(), stored.end());
    if (at != found.end() || wanted != stored.end()) {
        ADD_FAILURE() << "call " << at - found.begin() + 1 << " is: " << (at == found.end() ? "none" : *at)
                      << "\nand was: " << (wanted == stored.end() ? "none" : *wanted);
        std::ofstream out("test-results/" + name);
        std::copy(found.begin(), found.end(), std::ostream_iterator<std::string>(out, "\n"));
    }
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
    const std::string both = BothOf("Sample") + "\n\tSample (3,4)";
    const Case cases[] = {
        {"SQLExecDirectW", 1, "unknown failure", ""},    // CREATE TABLE
        {"SQLExecDirectW", 3, "unexpected failure", ""}, // ALTER TABLE
        {"SQLExecDirectW", 2, "", both + "\n"},
        {"SQLExecDirectW", 5, both + "\n", ""},
        {"SQLBindParameter", 2, "Too few parameters", both + ".m_nVersion\n"},
        {"SQLPutData", 1, "Function sequence error", both + ".name\n"},
        {"SQLParamData", 2, both + "\n", ""},
        {"SQLEndTran", 1, both + "\n", ""},
        {"SQLEndTran", 2, both + "\n", ""},
        {"SQLSetConnectAttrW", 1, both + "\n", ""},
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
        const int number = std::string(call) == "SQLAllocHandle" ? 3 : 1; // of the first statement
        driver.Clear();
        driver.Fail(call, number, kFirst);
        driver.Fail(call, number, kSecond);
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
