// The row that the document of the format shows.

#include "Fixture.h"
#include "Sample.h"

#include <fstream>
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

} // namespace
