// What verify finds, and what it does not take for a fault.

#include "tools/krtstore/KrtstoreFixture.h"

#include "bss/serial/WVersionInfo.h"
#include "bss/system/WCompression.h"
#include "krtstore/Binary.h"
#include "krtstore/SumJudge.h"
#ifdef WITH_CORRELOGRAM
#include "correlogram/Program.h"
#endif

#include <algorithm>
#include <cstring>

namespace {

using Verify = KrtstoreTest;

// Two versions of one class; the later one has a member between the others.
namespace first {
class Grown : public bss::WPersistentObject {
public:
    explicit Grown(long object) : WPersistentObject(1, object, bss::WVersion(5, 3, 2, 0)) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        m_pSerializer->Insert(L"a", 1L);
        m_pSerializer->Insert(L"c", 3L);
    }
};
} // namespace first
namespace second {
class Grown : public bss::WPersistentObject {
public:
    explicit Grown(long object) : WPersistentObject(1, object, bss::WVersion(5, 4, 0, 0)) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        m_pSerializer->Insert(L"a", 1L);
        m_pSerializer->Insert(L"b", 2L);
        m_pSerializer->Insert(L"c", 3L);
    }
};
} // namespace second

TEST_F(Verify, RowsOfAllVersionsAreSoundWhicheverMadeTheTable) {
    for (const std::vector<long>& versions :
         {std::vector<long>{kOldest, kOld, kFramed}, std::vector<long>{kFramed, kOld, kOldest}}) {
        WriteEverything(versions);
        const Outcome outcome = Krtstore("verify");
        EXPECT_EQ(outcome.output, "3 rows, 0 faults\n");
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.status, 0);
        Execute(L"DROP TABLE Everything");
        m_database.Disconnect();
        Connect(m_database);
    }
}

TEST_F(Verify, SizesThatAnUpdateToFramesLeftBehindAreNoMembers) {
    WriteEverything({kOld, kOld});
    WriteEverything({kFramed, kFramed});
    ASSERT_NE(Krtstore("show", {"Everything", "7", "2"}).output.find("\n  m_14LU      0\n"),
              std::string::npos);
    EXPECT_EQ(Krtstore("verify").output, "2 rows, 0 faults\n");
}

TEST_F(Verify, ClassesOfThisProjectAreKnown) {
    // As applications do at their start: without it version infos are stored as of version 0.0.0.0.
    bss::WVersion::SetDefaultFileSerializationVersion(bss::WVersion(5, 3, 2, 0));
    bss::WVersionInfo info(L"Control.exe");
    info.SetGroupID(1);
    info.SetObjectID(1);
    Write(info);
    std::string damaged =
        "WVersionInfo (1, 1) checkSum: the checksum differs: the row was changed or damaged\n";
    std::size_t rows = 1;
    Execute(L"UPDATE WVersionInfo SET m_nBuild = 7");
#ifdef WITH_CORRELOGRAM
    std::ostringstream ignored;
    ASSERT_EQ(correlogram::Run({KRTBSS_SOURCE_DIR "/data/correlograms/mw002_m0_avg_090deg.csv",
                                "--temperature=292.93654", "--viscosity=0.00100703", "--first-lag=3e-7",
                                "--store=" + Database()},
                               ignored, ignored),
              0);
    rows += 4;
    ASSERT_EQ(Krtstore("verify", {"StoredAnalysis", "StoredFit"}).output, "4 rows, 0 faults\n");
    ASSERT_TRUE(Execute(L"UPDATE StoredAnalysis SET m_sFile = 'another'"));
    ASSERT_TRUE(Execute(L"UPDATE StoredFit SET m_nIterations = 1000 WHERE objectID = 2"));
    damaged = "StoredAnalysis (1, 1) checkSum: the checksum differs: the row was changed or damaged\n"
              "StoredFit (1, 2) checkSum: the checksum differs: the row was changed or damaged\n" +
              damaged;
#endif
    const Outcome outcome = Krtstore("verify");
    EXPECT_EQ(outcome.output, damaged + std::to_string(rows) + " row" + (rows == 1 ? "" : "s") + ", " +
                                  (rows == 1 ? "1 fault\n" : "3 faults\n"));
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Verify, AChecksumMayHoldASurrogatePair) {
    // Of so many sums a few have one: two units of a scrambled text, of which a read may make one character.
    int pairs = 0;
    for (long object = 1; object <= 1500; ++object) {
        Sample sample(object);
        sample.angle = 0.25 * static_cast<double>(object);
        Write(sample);
    }
    const Outcome outcome = Krtstore("verify");
    EXPECT_EQ(outcome.output, "1500 rows, 0 faults\n");
    std::istringstream lines(Krtstore("show", {"Sample"}).output);
    for (std::string line; std::getline(lines, line);) {
        for (std::size_t at = 14; line.starts_with("  checkSum ") && at + 8 <= line.size(); at += 4) {
            pairs += line[at] == 'd' && std::string("89ab").find(line[at + 1]) != std::string::npos &&
                     line[at + 4] == 'd' && std::string("cdef").find(line[at + 5]) != std::string::npos;
        }
    }
    EXPECT_GT(pairs, 0);
}

TEST_F(Verify, NamesEachKindOfDamageInOneLine) {
    // Rows 1 and 3 are of frames, row 2 of the older form.
    WriteEverything({kFramed, kOldest, kFramed});
    m_database.Disconnect();
    const std::string pristine = BytesOf(m_path);
    struct {
        std::vector<std::wstring> statements;
        std::string line; // behind the table's name
    } const rows[] = {
        {{L"SET m_3 = 5 WHERE objectID = 1"},
         " (7, 1) checkSum: the checksum differs: the row was changed or damaged"},
        {{L"SET m_12 = NULL WHERE objectID = 1"},
         " (7, 1) checkSum: the checksum differs: the row was changed or damaged"},
        {{L"SET m_nVersion = m_nVersion + 1 WHERE objectID = 1"},
         " (7, 1) checkSum: the checksum differs: the row was changed or damaged"},
        {{L"SET checkSum = 'x' WHERE objectID = 3"},
         " (7, 3) checkSum: the checksum differs: the row was changed or damaged"},
        {{L"SET RecID = NULL WHERE objectID = 1"}, " (7, 1) RecID: it is empty"},
        {{L"SET RecID = '{0}' WHERE objectID = 1"}, " (7, 1) RecID: its text '{0}' is no GUID"},
        {{L"SET m_1 = 2 WHERE objectID = 1"}, " (7, 1) m_1: its flag is 2, neither 0 nor 1"},
        {{L"SET m_3 = 'x' WHERE objectID = 1"}, " (7, 1) m_3: it has text, where an integer belongs"},
        {{L"SET m_6 = x'00' WHERE objectID = 1"}, " (7, 1) m_6: it has binary data, where a number belongs"},
        {{L"SET m_7 = x'00' WHERE objectID = 1"}, " (7, 1) m_7: it has binary data, where text belongs"},
        {{L"SET m_8 = 'x' WHERE objectID = 1"}, " (7, 1) m_8: it has text, where binary data belongs"},
        {{L"SET m_3 = 3000000000 WHERE objectID = 1"},
         " (7, 1) m_3: its number 3000000000 has more than 32 bits"},
        {{L"SET m_7 = CAST(x'41FF' AS TEXT) WHERE objectID = 1"}, " (7, 1) m_7: its text cannot be decoded"},
        {{L"SET m_7 = char(65534) || '00' WHERE objectID = 1"}, " (7, 1) m_7: its text cannot be decoded"},
        {{L"SET m_nVersion = 83886080 WHERE objectID = 2"},
         " (7, 2) m_nVersion: its version 5.0.0.0 is not above 5.0.0.0: the row counts as none"},
        {{L"SET m_15 = x'1C0000' WHERE objectID = 1"},
         " (7, 1) m_15: it has 3 bytes, where a frame's header alone has 16"},
        {{L"SET m_15 = x'1D000000000000000C0000000C000000010000000200000003000000' WHERE objectID = 1"},
         " (7, 1) m_15: its frame tells 29 bytes, the column has 28"},
        {{L"SET m_15 = x'1C000000000000000C0000000D000000010000000200000003000000' WHERE objectID = 1"},
         " (7, 1) m_15: its frame tells two lengths, 12 and 13 bytes"},
        {{L"SET m_15 = x'1C000000000000000D0000000D000000010000000200000003000000' WHERE objectID = 1"},
         " (7, 1) m_15: its frame tells 13 bytes of data, behind the header are 12"},
        {{L"SET m_15 = x'1C0000000B0000000C0000000C000000010000000200000003000000' WHERE objectID = 1"},
         " (7, 1) m_15: its frame tells 11 bytes of compressed data, behind the header are 12"},
        {{L"SET m_15 = x'1C0000000C0000000C0000000C000000010000000200000003000000' WHERE objectID = 1"},
         " (7, 1) m_15: its compressed data are damaged"},
        {{L"SET m_15 = x'1C0000000C000000FFFFFF7FFFFFFF7F010000000200000003000000' WHERE objectID = 1"},
         " (7, 1) m_15: its 12 bytes of compressed data cannot hold the 2147483647 bytes that are told"},
        // 'abc' as a zlib stream
        {{L"SET m_15 = x'1B0000000B0000000700000007000000789C4B4C4A0600024D0127' WHERE objectID = 1"},
         " (7, 1) m_15: its compressed data hold 3 bytes, where 7 are told"},
        {{L"SET m_15L = 11 WHERE objectID = 2"}, " (7, 2) m_15: column m_15L tells 11, it has 12 bytes"},
        {{L"SET m_15L = NULL WHERE objectID = 2"},
         " (7, 2) m_15: column m_15L tells nothing, it has 12 bytes"},
        {{L"SET m_15LU = 13 WHERE objectID = 2"}, " (7, 2) m_15: column m_15LU tells 13, it has 12 bytes"},
        {{L"SET m_15LU = -1 WHERE objectID = 2"}, " (7, 2) m_15: column m_15LU tells -1, it has 12 bytes"},
        {{L"SET m_15 = NULL WHERE objectID = 2"}, " (7, 2) m_15: column m_15L tells 12, it has 0 bytes"},
        {{L"SET m_14LU = 4001 WHERE objectID = 2"},
         " (7, 2) m_14: its compressed data hold 4000 bytes, where 4001 are told"},
        {{L"DROP INDEX Everything_groupID_objectID", L"SET objectID = 3, RecID = '' WHERE objectID = 2"},
         " (7, 3): 2 rows have this key"},
        {{L"ALTER TABLE Everything DROP COLUMN checkSum"}, ": column checkSum is missing"},
        {{L"ALTER TABLE Everything RENAME COLUMN checkSum TO old",
          L"ALTER TABLE Everything ADD checkSum LONGCHAR", L"UPDATE Everything SET checkSum = old"},
         ": RecID, m_nVersion, groupID, objectID and checkSum are not its first columns"},
    };
    for (const auto& row : rows) {
        std::ofstream(m_path, std::ios::binary) << pristine;
        for (const std::wstring& statement : row.statements) {
            ASSERT_TRUE(Execute((statement.starts_with(L"SET") ? L"UPDATE Everything " : L"") + statement))
                << row.line;
        }
        const Outcome outcome = Krtstore("verify");
        EXPECT_EQ(outcome.status, 1) << row.line;
        EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')), "Everything" + row.line);
    }
}

TEST_F(Verify, CountsEveryFaultAndGoesOn) {
    Write(Sample(1));
    Write(Sample(2));
    Write(Sample(3));
    WriteEverything({kFramed});
    Execute(L"UPDATE Sample SET isOpen = 3, name = NULL, angle = 'x' WHERE objectID = 1");
    Execute(L"UPDATE Sample SET angle = 91 WHERE objectID = 3");
    const Outcome outcome = Krtstore("verify");
    EXPECT_EQ(outcome.output, "Sample (3, 1) isOpen: its flag is 3, neither 0 nor 1\n"
                              "Sample (3, 1) angle: it has text, where a number belongs\n"
                              "Sample (3, 3) checkSum: the checksum differs: the row was changed or damaged\n"
                              "4 rows, 3 faults\n");
    EXPECT_EQ(Krtstore("verify", {"Everything"}).output, "1 row, 0 faults\n");
}

TEST_F(Verify, AnOrderThatIsNotKnownIsNoFault) {
    Write(first::Grown(1));
    Write(first::Grown(2));
    Write(second::Grown(3));
    Write(second::Grown(4));
    Outcome outcome = Krtstore("verify");
    EXPECT_EQ(outcome.output, "Grown: checksums of 2 rows not tested: the order of its members is not known\n"
                              "4 rows, 0 faults\n");
    EXPECT_EQ(outcome.status, 0);
    // The rows of the first version show that its order is known.
    Execute(L"UPDATE Grown SET c = 4 WHERE objectID = 1");
    outcome = Krtstore("verify");
    EXPECT_EQ(outcome.output, "Grown (1, 1) checkSum: the checksum differs: the row was changed or damaged\n"
                              "Grown: checksums of 2 rows not tested: the order of its members is not known\n"
                              "4 rows, 1 fault\n");
}

TEST_F(Verify, AFileWithDamagedPagesIsReadAsFarAsItGoes) {
    for (long i = 1; i <= 20; ++i) {
        Sample sample(i);
        sample.counts.assign(200, i);
        Write(sample);
    }
    Write(first::Grown(1));
    m_database.Disconnect();
    // Pages have 4096 bytes: the middle one becomes none.
    const std::string bytes = BytesOf(m_path);
    const std::size_t page = bytes.find("toluene", bytes.size() / 2) / 4096 * 4096;
    {
        std::fstream file(m_path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(page));
        file << std::string(100, '\xEE');
    }
    const Outcome outcome = Krtstore("verify");
    EXPECT_EQ(outcome.status, 1) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_NE(outcome.output.find("Sample: its rows cannot be read behind the first "), std::string::npos)
        << outcome.output;
    EXPECT_NE(outcome.output.find(": [SQLite]database disk image is malformed (11)\n"), std::string::npos)
        << outcome.output;
}

TEST_F(Verify, TheBarIsDrawnOnATerminalOnlyAndLeavesNothing) {
    for (long i = 1; i <= 4; ++i) {
        Write(Sample(i));
    }
    const Outcome piped = Krtstore("verify");
    EXPECT_EQ(piped.errors, "");
    const Outcome shown = Krtstore("verify", {}, true);
    EXPECT_EQ(shown.output, piped.output);
    const std::string half = "[####################                    ]  50 % Sample";
    EXPECT_NE(shown.errors.find(half + "\r" + std::string(half.size(), ' ') + "\r"), std::string::npos)
        << shown.errors;
    EXPECT_TRUE(shown.errors.ends_with(" \r"));
}

TEST(BinaryValue, NoChangeOfAFramesHeaderOrStreamPasses) {
    // 2,000 bytes as the library stores them
    std::vector<unsigned char> data(2000);
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<unsigned char>(i * i);
    }
    unsigned long length = bss::WCompression::CompressBound(2000);
    std::vector<unsigned char> frame(16 + length);
    bss::WCompression::Compress(frame.data() + 16, &length, data.data(), 2000);
    frame.resize(16 + length);
    const std::uint32_t header[] = {static_cast<std::uint32_t>(frame.size()),
                                    static_cast<std::uint32_t>(length), 2000, 2000};
    std::memcpy(frame.data(), header, sizeof(header));

    const krtstore::Table table{L"T", {{L"x", L"", krtstore::Kind::Binary}}};
    krtstore::Row row(1);
    row[0].form = krtstore::Cell::Form::Binary;
    row[0].bytes = frame;
    const krtstore::BinaryValue whole = DecodeBinary(table, row, 0);
    ASSERT_EQ(whole.fault, "");
    ASSERT_TRUE(std::equal(whole.payload.begin(), whole.payload.end(), data.begin(), data.end()));
    for (std::size_t i = 0; i < frame.size(); ++i) {
        row[0].bytes[i] ^= static_cast<unsigned char>(1U << i % 8);
        EXPECT_NE(DecodeBinary(table, row, 0).fault, "") << i;
        row[0].bytes[i] = frame[i];
    }
    while (!row[0].bytes.empty()) {
        row[0].bytes.pop_back();
        EXPECT_NE(DecodeBinary(table, row, 0).fault, "") << row[0].bytes.size();
    }
}

TEST(SumJudge, ARowIsDamagedIfOneThatAgreesHasAllItsMembers) {
    const std::vector<bool> few = {true, false};
    const std::vector<bool> all = {true, true};
    krtstore::SumJudge judge;
    judge.AddDiffering(1, few, "a");
    judge.AddDiffering(1, all, "b");
    EXPECT_EQ(judge.Judge().untested, 2U);
    judge.AddAgreeing(1, few);
    EXPECT_EQ(judge.Judge().damaged, std::vector<std::string>{"a"});
    EXPECT_EQ(judge.Judge().untested, 1U);
    // A version that no other row has is judged by all, one that others have by itself.
    judge.AddDiffering(2, few, "c");
    EXPECT_EQ(judge.Judge().damaged, (std::vector<std::string>{"a", "c"}));
    judge.AddDiffering(2, few, "d");
    EXPECT_EQ(judge.Judge().damaged, std::vector<std::string>{"a"});
}

} // namespace
