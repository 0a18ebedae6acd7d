// The exported document, read again by a JSON library and compared value by value.

#include "tools/krtstore/KrtstoreFixture.h"

#include "bss/system/base64.h"
#include "krtpal/common/text.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using Json = nlohmann::json;
using Export = KrtstoreTest;

const Json& TableOf(const Json& document, const std::string& name) {
    for (const Json& table : document["tables"]) {
        if (table["table"] == name) {
            return table;
        }
    }
    throw std::runtime_error("no table " + name);
}

std::vector<unsigned char> BytesOfText(const std::string& text) {
    int length = bss::base64::DecodeGetRequiredLength(static_cast<int>(text.size()));
    std::vector<unsigned char> bytes(static_cast<std::size_t>(length));
    bss::base64::Decode(text.data(), static_cast<int>(text.size()), bytes.data(), &length);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

template <class Element>
std::vector<Element> Elements(const Json& value) {
    const std::vector<unsigned char> bytes = BytesOfText(value["data"]);
    std::vector<Element> elements(bytes.size() / sizeof(Element));
    if (!elements.empty()) {
        std::memcpy(elements.data(), bytes.data(), bytes.size());
    }
    return elements;
}

TEST_F(Export, HasEveryValueOfEveryVersion) {
    WriteEverything({kOldest, kOld, kFramed, kFramed});
    const Outcome outcome = Krtstore("export");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const Json table = TableOf(Json::parse(outcome.output), "Everything");
    EXPECT_EQ(table["columns"][0], Json({{"name", "RecID"}, {"type", "GUID"}}));
    ASSERT_EQ(table["rows"].size(), 4U);
    const long versions[] = {kOldest, kOld, kFramed};
    for (std::size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const Json& row = table["rows"][i];
        Everything object;
        object.Fill();
        ASSERT_EQ(row.size(), table["columns"].size());
        EXPECT_EQ(row["m_nVersion"], versions[i]);
        EXPECT_EQ(row["groupID"], 7);
        EXPECT_EQ(row["objectID"], i + 1);
        EXPECT_EQ(row["RecID"].get<std::string>().size(), 38U);
        EXPECT_EQ(row["m_1"], 1);
        EXPECT_EQ(row["m_2"], -32768);
        EXPECT_EQ(row["m_3"], 2147483647);
        EXPECT_EQ(row["m_5"].get<double>(), -0.5);
        EXPECT_EQ(row["m_6"].get<double>(), object.real);
        EXPECT_EQ(krtpal::WideFromUtf8(row["m_7"].get<std::string>()), object.text);
        const auto narrow = Elements<char>(row["m_8"]);
        EXPECT_EQ(std::string(narrow.begin(), narrow.end()), object.narrow);
        EXPECT_EQ(row["m_9"], "2004-03-02 03:04:05");
        EXPECT_EQ(row["m_10"], "{01234567-89AB-CDEF-0102-030405060708}");
        EXPECT_EQ(row["m_11L"], 3);
        EXPECT_EQ(row["m_11"], "first\xEF\xAA\xB5\xEF\xAA\xB5third \xF0\x9F\x98\x80\xEF\xAA\xB5");
        EXPECT_EQ(Elements<double>(row["m_14"]), object.reals);
        EXPECT_EQ(Elements<std::int32_t>(row["m_15"]), (std::vector<std::int32_t>{1, -2, 3}));
        EXPECT_EQ(Elements<std::int16_t>(row["m_17"]), object.smalls);
        if (versions[i] < kFramed) {
            EXPECT_EQ(row["m_14LU"], 4000);
            EXPECT_EQ(Elements<float>(row["m_series"]),
                      (std::vector<float>{1.0F / 3.0F, std::numeric_limits<float>::infinity()}));
        } else {
            EXPECT_TRUE(row["m_14LU"].is_null());
            EXPECT_EQ(Elements<double>(row["m_series"]), object.series);
        }
    }
}

TEST_F(Export, KeepsNumbersAndTextsThatJsonHasNoFormFor) {
    Sample sample;
    sample.name = std::wstring(1, static_cast<wchar_t>(0xDD1E)) + L"x" + static_cast<wchar_t>(0xD834) +
                  std::wstring(1, L'\0') + L"\uFFFE";
    sample.angle = std::numeric_limits<double>::infinity();
    Write(sample);
    EXPECT_NE(Krtstore("export").output.find(
                  "\"angle\": \"Infinity\", \"name\": \"\\udd1ex\\ud834\\u0000\\ufffe\""),
              std::string::npos);

    // Where SQLite has no number.
    sample = Sample();
    sample.angle = -0.0;
    Write(sample);
    sample = Sample(5);
    sample.angle = std::numeric_limits<double>::quiet_NaN();
    Write(sample);
    EXPECT_EQ(Krtstore("verify").output, "2 rows, 0 faults\n");
    const Json angles = TableOf(Json::parse(Krtstore("export").output), "Sample")["rows"];
    EXPECT_TRUE(std::signbit(angles[0]["angle"].get<double>()));
    EXPECT_EQ(angles[1]["angle"], "NaN");

    Execute(L"CREATE TABLE numbers (a integer, b double, c double, d TEXT, e BLOB)");
    Execute(L"INSERT INTO numbers VALUES (9007199254740993, -1e999, 1.2345678901234567e-300, 'a\nb', x'')");
    Execute(L"INSERT INTO numbers VALUES (NULL, 5e-324, 3.0, '', zeroblob(100000))");
    const Json rows = TableOf(Json::parse(Krtstore("export", {"numbers"}).output), "numbers")["rows"];
    EXPECT_EQ(rows[0]["a"].get<std::int64_t>(), 9007199254740993);
    EXPECT_EQ(rows[0]["b"], "-Infinity");
    EXPECT_EQ(rows[0]["c"].get<double>(), 1.2345678901234567e-300);
    EXPECT_EQ(rows[0]["d"], "a\nb");
    EXPECT_EQ(rows[0]["e"], Json({{"stored", ""}}));
    EXPECT_TRUE(rows[1]["a"].is_null());
    EXPECT_EQ(rows[1]["b"].get<double>(), 5e-324);
    EXPECT_EQ(BytesOfText(rows[1]["e"]["stored"]), std::vector<unsigned char>(100000));
}

TEST_F(Export, KeepsTheBytesOfWhatIsDamaged) {
    Write(Sample());
    Execute(L"UPDATE Sample SET counts = x'010203', isOpen = 'perhaps', RecID = x'FF'");
    const Json row = TableOf(Json::parse(Krtstore("export").output), "Sample")["rows"][0];
    EXPECT_EQ(row["counts"],
              Json({{"stored", "AQID"}, {"fault", "it has 3 bytes, where a frame's header alone has 16"}}));
    EXPECT_EQ(row["isOpen"], "perhaps");
    EXPECT_EQ(row["RecID"]["stored"], "/w==");
}

TEST_F(Export, AFileIsWrittenWholeOrNotAtAll) {
    Write(Sample());
    const std::filesystem::path folder = "krtstore-export";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    const std::string file = (folder / "all.json").string();
    const Outcome outcome = Krtstore("export", {"--output", file});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(BytesOf(file), Krtstore("export").output);

    EXPECT_EQ(Krtstore("export", {"--output", folder.string()}).errors,
              "krtstore: Cannot write 'krtstore-export': it is a folder.\n");
    EXPECT_EQ(Krtstore("export", {"--output=none/all.json"}).errors,
              "krtstore: Cannot write 'none/all.json': no file can be made in that folder.\n");
    EXPECT_EQ(Krtstore("export", {"--output", Database()}).errors,
              "krtstore: The export would overwrite the database '" + Database() + "'.\n");
    // A table that can't be read: what was there before stays, and nothing else is left.
    m_database.Disconnect();
    const std::string before = BytesOf(file);
    std::string bytes = BytesOf(m_path);
    const std::size_t page = bytes.rfind("toluene") / 4096 * 4096;
    std::ofstream(m_path, std::ios::binary) << bytes.replace(page, 100, 100, '\xEE');
    EXPECT_EQ(Krtstore("export", {"--output", file}).status, 2);
    EXPECT_EQ(BytesOf(file), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
    std::filesystem::remove_all(folder);
}

} // namespace
