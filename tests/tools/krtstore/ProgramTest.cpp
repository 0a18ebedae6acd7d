// The command line, what cannot be done, and how the program ends.

#include "tools/krtstore/KrtstoreFixture.h"

#include "krtstore/Connection.h"

#include <cstdlib>
#include <nlohmann/json.hpp>

namespace {

class Program : public KrtstoreTest {
protected:
    /// The built program, through the system's command interpreter.
    Outcome RunProcess(const std::string& arguments) const {
        std::string command = "\"" + std::filesystem::path(KRTSTORE_PROGRAM).make_preferred().string() +
                              "\" " + arguments + " > " + Database() + ".out 2> " + Database() + ".err";
        if constexpr (std::filesystem::path::preferred_separator == '\\') {
            command = "\"" + command + "\""; // the interpreter there takes the outermost quotes off
        }
        const int result = std::system(command.c_str());
        const int status = (result & 0xFF) != 0 ? result : result >> 8; // POSIX: status in the second byte
        Outcome outcome{status, BytesOf(Database() + ".out"), BytesOf(Database() + ".err")};
        std::erase(outcome.output, '\r');
        std::erase(outcome.errors, '\r');
        std::filesystem::remove(Database() + ".out");
        std::filesystem::remove(Database() + ".err");
        return outcome;
    }
};

TEST_F(Program, EveryWrongCommandLineIsOneSentence) {
    const struct {
        std::vector<std::string> arguments;
        std::string sentence;
    } rows[] = {
        {{}, "No command is given: see krtstore --help."},
        {{"repair", "a.db"}, "There is no command 'repair': see krtstore --help."},
        {{"ls"}, "No database is given: see krtstore --help."},
        {{"ls", "a.db", "b\n"}, "'b\\x0a' is one argument too many: see krtstore --help."},
        {{"show", "a.db"}, "show needs the name of a table."},
        {{"show", "a.db", "Sample", "x"}, "'x' is not the number of a group."},
        {{"show", "a.db", "Sample", "1", "2.5"}, "'2.5' is not the number of an object."},
        {{"show", "--data-source=x", "Sample", "1", "2", "3"},
         "'3' is one argument too many: see krtstore --help."},
        {{"ls", "a.db", "--password", "x"}, "There is no option '--password': see krtstore --help."},
        {{"ls", "a.db", "--verbose=1"}, "--verbose takes no value."},
        {{"export", "a.db", "--output"}, "--output needs a value behind it."},
        {{"verify", "a.db", "--output", "x"}, "--output goes with export."},
        {{"ls", "a.db", "--user", "x"}, "--user goes with --data-source."},
        {{"ls", "a.db", "--password-from", "x"}, "--password-from goes with --data-source."},
        {{"ls", "--data-source", "x", "--password-from", "no-such-file"},
         "No password can be read from 'no-such-file'."},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunHere(row.arguments);
        EXPECT_EQ(outcome.errors, "krtstore: " + row.sentence + "\n");
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.status, 2);
    }
    const Outcome help = RunHere({"--help", "and", "--output", "anything"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.starts_with("krtstore ls DB "));
}

TEST_F(Program, WhatCannotBeOpenedIsOneSentence) {
    m_database.Disconnect();
    std::filesystem::remove(m_path);
    EXPECT_EQ(Krtstore("verify").errors, "krtstore: There is no database '" + Database() + "'.\n");
    EXPECT_FALSE(std::filesystem::exists(m_path));
    EXPECT_EQ(RunHere({"ls", "."}).errors, "krtstore: The database '.' cannot be opened: it is a folder.\n");

    std::ofstream(m_path) << "This is no database, but a text that is long enough to be looked at as one.\n";
    const std::string text = BytesOf(m_path);
    for (const char* command : {"ls", "verify", "export"}) {
        const Outcome outcome = Krtstore(command);
        EXPECT_EQ(outcome.errors, "krtstore: The database '" + Database() +
                                      "' cannot be read: [SQLite]file is not a database (26).\n");
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.status, 2);
    }
    EXPECT_EQ(BytesOf(m_path), text);
    const Outcome source = RunHere({"ls", "--data-source=there-is-none", "--verbose"});
    EXPECT_EQ(source.status, 2);
    EXPECT_TRUE(source.errors.starts_with("SqlState: IM002\n")) << source.errors;
    EXPECT_NE(source.errors.find("\nkrtstore: The data source 'there-is-none' cannot be opened: "),
              std::string::npos)
        << source.errors;
}

class Server : public KrtstoreTest {
protected:
    Server() : KrtstoreTest(kPostgresql) {}

    static Outcome RunThere(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data-source=krtbss-postgresql", "--user", "krtbss",
                                           "--password-from", "krtstore-password.txt"});
        return RunHere(arguments);
    }
};

TEST_F(Server, IsReadAsAFileIs) {
    std::ofstream("krtstore-password.txt") << "secret\r\nsecond line\n";
    WriteEverything({kOldest, kOld, kFramed});
    m_database.Disconnect();
    m_database.ConnectFile(L"", L"", m_path.wstring());
    WriteEverything({kOldest, kOld, kFramed});

    const auto rows = [](const Outcome& outcome) {
        EXPECT_EQ(outcome.errors, "");
        auto all = nlohmann::json::parse(outcome.output).at("tables").at(0).at("rows");
        for (auto& row : all) {
            row.erase("RecID"); // made at random
        }
        return all;
    };
    const auto there = rows(RunThere({"export"}));
    EXPECT_EQ(there.size(), 3U);
    EXPECT_EQ(there, rows(Krtstore("export")));
    EXPECT_EQ(RunThere({"ls"}).output, Krtstore("ls").output);
    EXPECT_EQ(RunThere({"verify"}).output, "3 rows, 0 faults\n");

    ASSERT_TRUE(Execute(L"UPDATE [Everything] SET [m_4] = 5 WHERE [objectID] = 2"));
    const Outcome damaged = RunThere({"verify"});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(damaged.output,
              "Everything (7, 2) checkSum: the checksum differs: the row was changed or damaged\n"
              "3 rows, 1 fault\n");
    std::filesystem::remove("krtstore-password.txt");
}

TEST_F(Program, TablesHaveToBeThere) {
    Write(Sample());
    Execute(L"CREATE TABLE notes (text TEXT)");
    for (const char* command : {"show", "verify", "export"}) {
        EXPECT_EQ(Krtstore(command, {"sample"}).errors,
                  "krtstore: There is no table 'sample' in '" + Database() + "'.\n");
    }
    EXPECT_EQ(Krtstore("verify", {"notes"}).errors,
              "krtstore: Table 'notes' is none of the store's: nothing in it can be tested.\n");
    EXPECT_EQ(Krtstore("verify").output, "1 row, 0 faults\n");
}

TEST_F(Program, NamesAreQuoted) {
    Execute(L"CREATE TABLE \"a \"\"b\"\" select\" (RecID GUID, m_nVersion integer, groupID integer, objectID "
            L"integer, checkSum LONGCHAR, \"order\" integer)");
    Execute(L"INSERT INTO \"a \"\"b\"\" select\" VALUES (NULL, 84083200, 1, 2, 'x', 3)");
    EXPECT_EQ(Krtstore("verify").output, "a \"b\" select (1, 2) RecID: it is empty\n1 row, 1 fault\n");
    EXPECT_EQ(Krtstore("show", {"a \"b\" select", "1"}).status, 0);
}

TEST_F(Program, ChangesNothing) {
    WriteEverything({kOldest, kFramed});
    m_database.Disconnect();
    const std::string before = BytesOf(m_path);
    for (const char* command : {"ls", "verify", "export"}) {
        EXPECT_EQ(Krtstore(command).status, 0);
    }
    EXPECT_EQ(BytesOf(m_path), before);
}

TEST_F(Program, AProcessEndsWithItsStatus) {
    Write(Sample(1));
    Write(Sample(2));
    Outcome outcome = RunProcess("verify " + Database());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "2 rows, 0 faults\n");
    EXPECT_EQ(outcome.errors, "");
    Execute(L"UPDATE Sample SET angle = 91 WHERE objectID = 1");
    outcome = RunProcess("verify " + Database());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(
        outcome.output,
        "Sample (3, 1) checkSum: the checksum differs: the row was changed or damaged\n2 rows, 1 fault\n");
    EXPECT_EQ(outcome.errors, "");
    outcome = RunProcess("verify no-such.db");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "krtstore: There is no database 'no-such.db'.\n");
}

TEST_F(Program, RowsThatAreReadInTurnsAreAllThereOnce) {
    for (const long object : {1L, 2L, 3L, 5L, 8L}) {
        Write(Sample(object));
    }
    Execute(L"DROP INDEX Sample_groupID_objectID");
    Execute(L"UPDATE Sample SET objectID = 3 WHERE objectID = 5");
    Execute(L"UPDATE Sample SET groupID = -1 WHERE objectID = 8");
    Execute(L"UPDATE Sample SET groupID = 'x' WHERE objectID = 1");
    krtstore::Arguments arguments;
    arguments.file = Database();
    krtstore::Connection connection(arguments);
    connection.SetTurn(std::chrono::milliseconds(0));
    const krtstore::Table table = connection.Tables().at(0);
    std::string keys;
    connection.ForEachRow(table, {}, [&](const krtstore::Row& row) { keys += KeyText(table, row); });
    EXPECT_EQ(keys, "(-1, 8)(3, 2)(3, 3)(3, 3)('x', 1)");
}

TEST_F(Program, NamesMayBeAnyText) {
    if (RunsUnderWine()) {
        GTEST_SKIP() << "Wine hands names to the drivers of Linux in its own encoding";
    }
    Write(Sample());
    m_database.Disconnect();
    const std::string name = "krtstore; Gr\xC3\xB6\xC3\x9F\x65 \xE2\x82\xAC.db";
    std::filesystem::rename(m_path, std::filesystem::path(std::u8string(name.begin(), name.end())));
    const Outcome outcome = RunProcess("verify \"" + name + "\" Sample");
    EXPECT_EQ(outcome.output, "1 row, 0 faults\n") << outcome.errors;
    EXPECT_EQ(RunProcess("show \"" + name + "\" Sch\xC3\xB6n").errors,
              "krtstore: There is no table 'Sch\xC3\xB6n' in '" + name + "'.\n");
    std::filesystem::remove(std::filesystem::path(std::u8string(name.begin(), name.end())));
}

} // namespace
