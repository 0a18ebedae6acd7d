// The texts of ls and show.

#include "tools/krtstore/KrtstoreFixture.h"

namespace {

using Inspect = KrtstoreTest;

TEST_F(Inspect, ListTellsRowsVersionsAndColumns) {
    EXPECT_EQ(Krtstore("ls").output, "There are no tables in '" + Database() + "'.\n");
    WriteEverything({kOldest, kOld, kFramed});
    Write(Sample());
    Execute(L"CREATE TABLE notes (text TEXT)");
    Execute(L"CREATE TABLE Broken AS SELECT m_nVersion, groupID, objectID FROM Sample WHERE groupID = 0");
    const Outcome outcome = Krtstore("ls");
    EXPECT_EQ(outcome.output, "table       rows  versions          columns\n"
                              "Broken         0  -                       3  lacks RecID, checkSum\n"
                              "Everything     3  5.3.0.0..5.3.2.0       43\n"
                              "Sample         1  5.3.2.0                11\n"
                              "notes          0  -                       1  none of the store's\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Inspect, ListShowsTheOtherTablesOfADamagedFile) {
    for (long i = 1; i <= 300; ++i) {
        Write(Sample(i));
    }
    Execute(L"CREATE TABLE notes (text TEXT)");
    m_database.Disconnect();
    // Every page of the table and its indices but the first, which has the schema
    std::string bytes = BytesOf(m_path);
    for (std::size_t page = 4096; page + 8192 < bytes.size(); page += 4096) {
        bytes.replace(page, 100, 100, '\xEE');
    }
    std::ofstream(m_path, std::ios::binary) << bytes;
    const Outcome outcome = Krtstore("ls");
    EXPECT_EQ(outcome.output,
              "table   rows  versions  columns\n"
              "Sample     ?  ?              11  cannot be read: [SQLite]database disk image is "
              "malformed (11)\n"
              "notes      0  -               1  none of the store's\n");
}

TEST_F(Inspect, ShowPrintsARowInFull) {
    Sample sample;
    sample.name = L"tab\t\u00B5 \U0001F600 quote\" back\\slash";
    sample.name += static_cast<wchar_t>(0xD834);
    sample.angle = 0.1 + 0.2;
    Write(sample);
    const std::string text = Krtstore("show", {"Sample"}).output;
    EXPECT_TRUE(text.starts_with("Sample (3, 4)\n  RecID       {")) << text;
    EXPECT_NE(
        text.find("}\n  m_nVersion  5.3.2.0 (84083200)\n  groupID     3\n  objectID    4\n  checkSum    "),
        std::string::npos)
        << text;
    EXPECT_EQ(text.substr(text.find("  isOpen")),
              "  isOpen      1\n"
              "  angle       0.30000000000000004\n"
              "  name        \"tab\\t\xC2\xB5 \xF0\x9F\x98\x80 quote\\\" back\\\\slash\\ud834\"\n"
              "  counts      binary, 28 bytes; frame, not compressed, 12 bytes of data: "
              "01 00 00 00 02 00 00 00 ff ff ff ff\n"
              "  namesL      3\n"
              "  names       [\"one\", \"\", \"\\\"3\\\"\"]\n");
}

TEST_F(Inspect, ShowDecodesTheOlderFormAndTellsWhatIsDamaged) {
    WriteEverything({kOldest, kFramed});
    const auto line = [&](const char* object, const std::string& column) {
        const std::string text = Krtstore("show", {"Everything", "7", object}).output;
        const std::size_t at = text.find("\n  " + column + " ") + 1;
        return text.substr(at, text.find('\n', at) - at);
    };
    EXPECT_EQ(line("1", "m_10"), "  m_10        {01234567-89AB-CDEF-0102-030405060708}");
    EXPECT_EQ(line("1", "m_17"),
              "  m_17        binary, 4 bytes; sizes in front, not compressed, 4 bytes of data: ff ff 02 00");
    EXPECT_EQ(line("1", "m_17LU"), "  m_17LU      4");
    EXPECT_EQ(line("2", "m_17LU"), "  m_17LU      -");
    EXPECT_EQ(line("2", "m_17"), "  m_17        binary, 16 bytes; frame, not compressed, 0 bytes of data");
    EXPECT_EQ(line("1", "m_14"),
              "  m_14        binary, 4011 bytes; sizes in front, compressed, 4000 bytes of data: "
              "9a 99 99 99 99 99 b9 3f 9a 99 99 99 99 99 b9 3f ...");
    Execute(L"UPDATE Everything SET m_17 = x'0102' WHERE objectID = 2");
    EXPECT_EQ(line("2", "m_17"),
              "  m_17        binary, 2 bytes; frame, damaged (it has 2 bytes, where a frame's header "
              "alone has 16): 01 02");
}

TEST_F(Inspect, ShowChoosesRowsByTheirKey) {
    for (const long object : {3L, 1L, 2L}) {
        Write(Sample(object));
    }
    const auto keys = [&](const std::vector<std::string>& arguments) {
        std::istringstream lines(Krtstore("show", arguments).output);
        std::string found;
        for (std::string line; std::getline(lines, line);) {
            found += line.starts_with("Sample ") ? line.substr(7) : "";
        }
        return found;
    };
    EXPECT_EQ(keys({"Sample"}), "(3, 1)(3, 2)(3, 3)");
    EXPECT_EQ(keys({"Sample", "3"}), "(3, 1)(3, 2)(3, 3)");
    EXPECT_EQ(keys({"Sample", "3", "2"}), "(3, 2)");
    EXPECT_EQ(Krtstore("show", {"Sample", "-3"}).errors,
              "krtstore: There is no row of group -3 in table 'Sample'.\n");
    EXPECT_EQ(Krtstore("show", {"Sample", "3", "9"}).errors,
              "krtstore: There is no row of object (3, 9) in table 'Sample'.\n");
    Execute(L"CREATE TABLE notes (text TEXT, data BLOB)");
    Execute(L"INSERT INTO notes VALUES ('first', x'0aff')");
    EXPECT_EQ(Krtstore("show", {"notes"}).output,
              "notes row 1\n  text  \"first\"\n  data  binary, 2 bytes: 0a ff\n");
    const Outcome refused = Krtstore("show", {"notes", "1"});
    EXPECT_EQ(refused.errors, "krtstore: Table 'notes' is none of the store's: it has no groups.\n");
    EXPECT_EQ(refused.status, 2);
}

} // namespace
