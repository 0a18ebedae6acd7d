// krtstore on databases that the library has written: what it prints and finds, and how it ends.

#include "krtstore/Connection.h"
#include "krtstore/Program.h"

#include "bss/serial/WVersionInfo.h"
#include "bss/serial/database/Everything.h"
#include "bss/serial/database/Fixture.h"
#include "tools/Support.h"

#include <limits>
#include <regex>

namespace {

Outcome RunHere(const std::vector<std::string>& arguments) {
    return Capture(krtstore::Run, arguments, false);
}

/// Those are made at random.
std::string WithoutIdentifiers(const std::string& text) {
    return std::regex_replace(text, std::regex("(RecID[\": ]+)\\{[0-9A-F-]{36}\\}"), "$1{...}");
}

class Sample : public Persistent {
public:
    explicit Sample(long object, double value = 90.5) : Persistent(3, object), angle(value) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Pass(bRead, L"angle", angle);
        Pass(bRead, L"name", name);
        Pass(bRead, L"names", names);
        Pass(bRead, L"counts", counts);
    }
    double angle;
    std::wstring name = L"toluene";
    std::vector<std::wstring> names = {L"one", L"", L"\"3\""};
    std::vector<long> counts = {1, 2, -1};
};

/// Two versions of one class; the later one has a member between the others.
template <bool isLater>
struct Grown : bss::WPersistentObject {
    explicit Grown(long object) : WPersistentObject(1, object, bss::WVersion(5, isLater ? 4 : 3, 2, 0)) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        m_pSerializer->Insert(L"a", 1L);
        if (isLater) {
            m_pSerializer->Insert(L"b", 2L);
        }
        m_pSerializer->Insert(L"c", 3L);
    }
};

const long kOldest = bss::WVersion::GetVersion(5, 3, 0, 0);
const long kOld = bss::WVersion::GetVersion(5, 3, 1, 0);
const long kFramed = bss::WVersion::GetVersion(5, 3, 2, 0);

class Stored : public DatabaseTest {
protected:
    explicit Stored(const Backend& backend = kSqlite) : DatabaseTest(backend) {}

    std::string Name() const { return m_path.string(); }
    Outcome RunOn(const std::string& command, const std::vector<std::string>& rest = {}) const {
        std::vector<std::string> arguments = {command, Name()};
        arguments.insert(arguments.end(), rest.begin(), rest.end());
        return RunHere(arguments);
    }
    void ExecuteAll(const std::vector<std::string>& statements) const {
        for (const std::string& statement : statements) {
            ASSERT_TRUE(Execute(krtpal::WidenText(statement))) << statement;
        }
    }
    template <class Object>
    void Store(Object object, long version = 0) {
        object.Write(&m_database, version, true);
    }
    /// Objects 1 to 4 of class Everything, of three versions, the last one empty.
    void StoreEverything() {
        const long versions[] = {kOldest, kOld, kFramed, kFramed};
        for (long i = 0; i < 4; ++i) {
            Everything object(i + 1);
            if (i < 3) {
                object.Fill();
            }
            Store(object, versions[i]);
        }
    }
};

TEST(Krtstore, WrongCommandLinesAreOneSentence) {
    ExpectRefusals("krtstore", "krtstore/wrong.json", RunHere);
    EXPECT_EQ(RunHere({"--help", "and", "--output", "anything"}).output, Golden("krtstore/help.txt"));
}

// Every kind of value in every version, what JSON has no form for, damaged values, and tables of other
// programs.
TEST_F(Stored, EveryValueIsListedShownAndExported) {
    StoreEverything();
    Sample sample(1, 0.1 + 0.2);
    sample.name = L"tab\t\u00B5 \U0001F600 quote\" back\\slash" +
                  std::wstring(1, static_cast<wchar_t>(0xDD1E)) + std::wstring(1, L'\0') + L"\uFFFE\u0085";
    Store(sample);
    Store(Sample(2, -0.0));
    Store(Sample(3, std::numeric_limits<double>::quiet_NaN()));
    Store(Sample(4, std::numeric_limits<double>::infinity()));
    EXPECT_EQ(RunOn("verify").output, "8 rows, 0 faults\n");
    ExecuteAll(GoldenRows("krtstore/tables.json")[0].first);
    m_database.Disconnect();
    const std::string before = BytesOf(Name());
    const auto text = [&](const std::string& command, const std::vector<std::string>& rest = {}) {
        const Outcome outcome = RunOn(command, rest);
        EXPECT_EQ(outcome.errors, "");
        return WithoutIdentifiers(outcome.output);
    };
    EXPECT_EQ(text("ls"), Golden("krtstore/ls.txt"));
    EXPECT_EQ(text("show", {"Everything", "7"}) + text("show", {"Sample", "3", "1"}) +
                  text("show", {"Sample", "3", "4"}) + text("show", {"numbers"}) +
                  text("show", {"a \"b\" select", "1.0", "2"}),
              Golden("krtstore/show.txt"));
    EXPECT_EQ(text("export"), Golden("krtstore/export.json"));
    EXPECT_EQ(text("verify"), Golden("krtstore/verify.txt"));
    ExpectRefusals("krtstore", "krtstore/refused.json", [this](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin() + 1, Name());
        Outcome outcome = RunHere(arguments);
        outcome.errors = std::regex_replace(outcome.errors, std::regex(Name()), "DB");
        return outcome;
    });
    EXPECT_EQ(RunOn("export", {"--output", Name()}).status, 2);
    EXPECT_EQ(BytesOf(Name()), before); // nothing was changed
}

TEST_F(Stored, VerifyNamesEachKindOfDamageInOneLine) {
    StoreEverything();
    m_database.Disconnect();
    const std::string pristine = BytesOf(Name());
    for (const auto& [statements, line] : GoldenRows("krtstore/damage.json")) {
        Write(Name(), pristine);
        ExecuteAll(statements);
        const Outcome outcome = RunOn("verify");
        EXPECT_EQ(outcome.status, 1) << line;
        EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')), line);
    }
}

TEST_F(Stored, VerifyKnowsTheOrderOfMembersFromTheLibraryOrFromOtherRows) {
    bss::WVersion::SetDefaultFileSerializationVersion(bss::WVersion(5, 3, 2, 0)); // as applications do
    bss::WVersionInfo info(L"Control.exe");
    info.SetGroupID(1);
    info.SetObjectID(1);
    Store(info);
    for (long i = 1; i <= 2; ++i) {
        Store(Grown<false>(i));
        Store(Grown<true>(i + 2));
        Everything object(i); // an update to frames leaves sizes behind, which are no members
        object.Fill();
        Store(object, kOld);
        Store(object, kFramed);
    }
    const std::string unknown =
        "Grown: checksums of 2 rows not tested: the order of its members is not known\n";
    EXPECT_EQ(RunOn("verify").output, unknown + "7 rows, 0 faults\n");
    ASSERT_TRUE(Execute(L"UPDATE WVersionInfo SET m_nBuild = 7") &&
                Execute(L"UPDATE Grown SET c = 4 WHERE objectID = 1"));
    const std::string damaged = " (1, 1) checkSum: the checksum differs: the row was changed or damaged\n";
    EXPECT_EQ(RunOn("verify").output,
              "Grown" + damaged + unknown + "WVersionInfo" + damaged + "7 rows, 2 faults\n");
    // A version that no other row has is judged by all rows, one that others have by itself.
    ASSERT_TRUE(Execute(L"UPDATE Grown SET m_nVersion = 84083201, c = 3 WHERE objectID = 1"));
    EXPECT_EQ(RunOn("verify", {"Grown"}).output, "Grown" + damaged + unknown + "4 rows, 1 fault\n");
    ASSERT_TRUE(Execute(L"UPDATE Grown SET m_nVersion = 84083201 WHERE objectID = 2"));
    EXPECT_EQ(RunOn("verify", {"Grown"}).output,
              std::regex_replace(unknown, std::regex("2 rows"), "4 rows") + "4 rows, 0 faults\n");
}

TEST_F(Stored, DamagedPagesAreReadAroundAndChecksumsMayHoldSurrogatePairs) {
    Store(Sample(640, 160.0));
    Store(Sample(744, 186.0));
    const std::string shown = RunOn("show", {"Sample"}).output;
    EXPECT_NE(shown.find("  checkSum    8977fc09db6add80"), std::string::npos); // one character or two
    EXPECT_NE(shown.find("  checkSum    da50df3a"), std::string::npos);
    const Outcome sound = Capture(krtstore::Run, {"verify", Name()}, true);
    EXPECT_EQ(sound.output, "2 rows, 0 faults\n");
    const std::string half = "[####################                    ]  50 % Sample";
    EXPECT_NE(sound.errors.find(half + "\r" + std::string(half.size(), ' ') + "\r"), std::string::npos);
    EXPECT_TRUE(sound.errors.ends_with(" \r")); // of the bar nothing is left
    EXPECT_EQ(RunOn("verify").errors, "");

    for (long object = 1; object <= 20; ++object) {
        Sample sample(object);
        sample.counts.assign(200, object);
        Store(sample);
    }
    m_database.Disconnect();
    std::string bytes = BytesOf(Name());
    Write(Name(), bytes.replace(bytes.find("toluene", bytes.size() / 2) / 4096 * 4096, 100, 100, '\xEE'));
    const Outcome damaged = RunOn("verify");
    EXPECT_EQ(damaged.status, 1) << damaged.errors;
    EXPECT_TRUE(damaged.output.starts_with("Sample: its rows cannot be read behind the first "));
    EXPECT_NE(damaged.output.find(": [SQLite]database disk image is malformed (11)\n"), std::string::npos);
    const std::string folder = "krtstore-export";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    const std::string file = Write(folder + "/all.json", "old");
    EXPECT_EQ(RunOn("export", {"--output", file}).status, 2);
    EXPECT_EQ(BytesOf(file), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
    std::filesystem::remove_all(folder);
}

TEST_F(Stored, RowsThatAreReadInTurnsAreAllThereOnce) {
    for (const long object : {1L, 2L, 3L, 5L, 8L}) {
        Store(Sample(object));
    }
    ExecuteAll({"DROP INDEX Sample_groupID_objectID", "UPDATE Sample SET objectID = 3 WHERE objectID = 5",
                "UPDATE Sample SET groupID = -1 WHERE objectID = 8",
                "UPDATE Sample SET groupID = 'x' WHERE objectID = 1"});
    krtstore::Arguments arguments;
    arguments.file = Name();
    krtstore::Connection connection(arguments);
    connection.SetTurn(std::chrono::milliseconds(0));
    const krtstore::Table table = connection.Tables().at(0);
    std::string keys;
    connection.ForEachRow(table, {}, [&](const krtstore::Row& row) { keys += KeyText(table, row); });
    EXPECT_EQ(keys, "(-1, 8)(3, 2)(3, 3)(3, 3)('x', 1)");
}

TEST_F(Stored, ProgramsEndWithTheirStatus) {
    Store(Sample(1));
    Store(Sample(2));
    m_database.Disconnect();
    // Wine hands names to the drivers of Linux in its own encoding.
    const std::string name =
        RunsUnderWine() ? "krtstore.db" : "krtstore; Gr\xC3\xB6\xC3\x9F\x65 \xE2\x82\xAC.db";
    std::filesystem::copy_file(m_path, tools::PathOf(name));
    EXPECT_EQ(RunProgram(KRTSTORE_PROGRAM, {"verify", name}).output, "2 rows, 0 faults\n");
    std::filesystem::remove(tools::PathOf(name));
    Execute(L"UPDATE Sample SET angle = 91 WHERE objectID = 1");
    const Outcome damaged = RunProgram(KRTSTORE_PROGRAM, {"verify", Name()});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(damaged.output, "Sample (3, 1) checkSum: the checksum differs: the row was changed or damaged\n"
                              "2 rows, 1 fault\n");
    const Outcome missing = RunProgram(KRTSTORE_PROGRAM, {"verify", "Sch\xC3\xB6n.db"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.output, "");
    EXPECT_EQ(missing.errors, "krtstore: There is no database 'Sch\xC3\xB6n.db'.\n");

    Write(Name(), "This is no database, but a text that is long enough to be looked at as one.\n");
    EXPECT_EQ(RunOn("verify").errors, "krtstore: The database '" + Name() +
                                          "' cannot be read: [SQLite]file is not a database (26).\n");
    const Outcome source = RunHere({"ls", "--data-source=there-is-none", "--verbose"});
    EXPECT_EQ(source.status, 2);
    EXPECT_TRUE(source.errors.starts_with("SqlState: IM002\n")) << source.errors;
}

class Server : public Stored {
protected:
    Server() : Stored(kPostgresql) {}
};

TEST_F(Server, IsReadAsAFileIs) {
    Write("krtstore-password.txt", "secret\r\nsecond line\n");
    const auto there = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data-source=krtbss-postgresql", "--user", "krtbss",
                                           "--password-from", "krtstore-password.txt"});
        return WithoutIdentifiers(RunHere(arguments).output);
    };
    StoreEverything();
    m_database.Disconnect();
    m_database.ConnectFile(L"", L"", m_path.wstring());
    StoreEverything();
    EXPECT_EQ(there({"show", "Everything"}), WithoutIdentifiers(RunOn("show", {"Everything"}).output));
    EXPECT_EQ(there({"ls"}), RunOn("ls").output);
    EXPECT_EQ(there({"verify"}), "4 rows, 0 faults\n");
    ASSERT_TRUE(Execute(L"UPDATE [Everything] SET [m_4] = 5 WHERE [objectID] = 2"));
    EXPECT_EQ(there({"verify"}),
              "Everything (7, 2) checkSum: the checksum differs: the row was changed or damaged\n"
              "4 rows, 1 fault\n");
    std::filesystem::remove("krtstore-password.txt");
}

} // namespace
