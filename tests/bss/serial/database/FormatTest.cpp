// The row that the document of the format shows, and rows of older versions.

#include "Everything.h"
#include "Fixture.h"
#include "Sample.h"

#include <fstream>
#include <map>
#include <numeric>
#include <sstream>

namespace {

using Format = DatabaseTest;

TEST_F(Format, TheRowOfTheDocumentIsWhatIsWritten) {
    Sample().Write(&m_database, 0, true);
    std::ifstream file(KRTBSS_SOURCE_DIR "/docs/database-format.md");
    std::string line;
    while (std::getline(file, line) && line.substr(0, 6) != "```row") {
    }
    int rows = 0;
    for (; std::getline(file, line) && line.substr(0, 3) != "```"; ++rows) {
        std::istringstream words(line);
        std::string column;
        std::string value;
        words >> column >> value;
        const std::wstring name(column.begin(), column.end());
        // Numbers as they are, all else by its bytes.
        const std::wstring shown = L"CASE typeof(" + name + L") WHEN 'text' THEN hex(" + name +
                                   L") WHEN 'blob' THEN hex(" + name + L") ELSE " + name + L" END";
        EXPECT_EQ(Ask(L"SELECT " + shown + L" FROM Sample"), value) << column;
    }
    EXPECT_EQ(rows, 8);
}

/// The file has the columns of such a row as SQL has them, and checksums behind the versions that they are
/// of.
TEST_F(Format, RowsOfOldVersionsAreReadAndWrittenAsTheyWere) {
    std::ifstream file(KRTBSS_SOURCE_DIR "/tests/data/old_rows.txt");
    std::map<long, std::wstring> checkSums;
    std::map<std::wstring, std::wstring> values = {{L"groupID", L"7"}, {L"objectID", L"1"}};
    std::string name;
    for (std::string value; file >> name && std::getline(file, value);) {
        const bool isVersion = name[0] != 'm';
        (isVersion ? checkSums[std::stol(name)] : values[krtpal::WidenText(name)]) = krtpal::WidenText(value);
    }
    Everything written;
    written.Fill();
    written.narrow.resize(256);
    std::iota(written.narrow.begin(), written.narrow.end(), '\0');
    written.series = {0.5, 1e30F};
    ASSERT_EQ(checkSums.size(), 4U);
    for (const auto& [version, checkSum] : checkSums) {
        SCOPED_TRACE(version);
        values[L"m_nVersion"] = std::to_wstring(version);
        values[L"checkSum"] = checkSum;
        ASSERT_EQ(FailureOf([&] { written.Write(&m_database, version, true); }), "");
        std::wstring names = L"RecID";
        std::wstring list = L"'{}'";
        for (const auto& [column, value] : values) {
            EXPECT_EQ(Ask(L"SELECT COUNT(*) FROM Everything WHERE " + column + L" IS " + value), "1")
                << krtpal::NarrowText(column);
            names += L", " + column;
            list += L", " + value;
        }
        ASSERT_TRUE(Execute(L"DELETE FROM Everything"));
        ASSERT_TRUE(Execute(L"INSERT INTO Everything (" + names + L") VALUES (" + list + L")"));
        Everything read;
        EXPECT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
        EXPECT_TRUE(read.IsSame(written));
        EXPECT_EQ(read.GetVersion(), version);
        ASSERT_TRUE(Execute(L"DELETE FROM Everything"));
    }
}

} // namespace
