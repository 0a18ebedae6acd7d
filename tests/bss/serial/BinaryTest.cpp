#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WBinarySerializer.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "krtpal/common/text.h"
#include "support/Hex.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <new>
#include <numeric>
#include <set>
#include <sstream>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

using bss::WBinarySerializer;

WBinarySerializer Reader(std::string hex) {
    std::erase(hex, ' ');
    return {FromHex(hex), false};
}

template <class Value>
bool Same(const Value& a, const Value& b) {
    if constexpr (std::is_same_v<Value, tm>) { // systems add fields of their own
        const auto fields = [](const tm& t) {
            return std::tie(t.tm_sec, t.tm_min, t.tm_hour, t.tm_mday, t.tm_mon, t.tm_year, t.tm_wday,
                            t.tm_yday, t.tm_isdst);
        };
        return fields(a) == fields(b);
    } else {
        return a == b;
    }
}

struct Row {
    std::string name;
    /// Writes an item, or reads it: whether it is the same.
    std::function<bool(WBinarySerializer&, bool)> run;
};

template <class Value>
Row ValueRow(const char* name, Value value) {
    return {name, [value](WBinarySerializer& s, bool bRead) {
                if (!bRead) {
                    s.Insert(L"ab", value);
                    return true;
                }
                Value read{};
                constexpr bool isText =
                    std::is_same_v<Value, std::string> || std::is_same_v<Value, std::wstring>;
                if constexpr (!isText && requires { read.resize(5); }) {
                    read.resize(5); // which does not stay
                }
                s.Retrieve(L"another label", read);
                return Same(read, value);
            }};
}

template <class Element>
Row ArrayRow(const char* name, const std::vector<Element>& values) {
    return {name, [=](WBinarySerializer& s, bool bRead) {
                const std::unique_ptr<Element[]> data(new Element[values.size()]);
                std::copy(values.begin(), values.end(), data.get());
                auto count = static_cast<long>(values.size());
                if (!bRead) {
                    s.Insert(L"ab", data.get(), count);
                    return true;
                }
                Element* read = data.get();
                s.Retrieve({}, read, count);
                const std::unique_ptr<Element[]> owner(read);
                return (count == 0) == (read == nullptr) &&
                       values == std::vector<Element>(read, read + count);
            }};
}

class Sample : public bss::WPersistentObject {
public:
    Sample() : WPersistentObject(3, -1, bss::WVersion(5, 3, 0, 9)) {
        SetValid(false);
        SetModified(true);
    }
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        bRead ? m_pSerializer->Retrieve(L"m_fAngle", angle) : m_pSerializer->Insert(L"m_fAngle", angle);
        bRead ? m_pSerializer->Retrieve(L"m_sName", name) : m_pSerializer->Insert(L"m_sName", name);
    }
    double angle = 90.0;
    std::wstring name = L"run 1";
};

Row ObjectRow(const char* name, long version) {
    return {name, [version](WBinarySerializer& s, bool bRead) {
                Sample sample;
                if (!bRead) {
                    sample.Write(&s, version, true);
                    return true;
                }
                sample.SetGroupID(0);
                sample.SetObjectID(0);
                sample.SetModified(false);
                sample.angle = 0.0;
                sample.name.clear();
                sample.Read(&s, 0, true);
                return sample.GetVersion() == version && sample.GetGroupID() == 3 &&
                       sample.GetObjectID() == -1 &&
                       sample.GetModified() == (version == bss::WVersion::GetVersion(5, 3, 0, 9)) &&
                       sample.angle == 90.0 && sample.name == L"run 1";
            }};
}

std::vector<Row> Rows() {
    const GUID guid = {0x01234567, 0x89AB, 0xCDEF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};
    tm time{};
    time.tm_sec = 59, time.tm_min = 30, time.tm_hour = 12, time.tm_mday = 31, time.tm_mon = 11;
    time.tm_year = 126, time.tm_wday = 4, time.tm_yday = 364, time.tm_isdst = -1;
    const std::wstring lone = {wchar_t(0xD83D), L'a',           wchar_t(0xDE00), L'\0',
                               wchar_t(0xFFFE), wchar_t(0xD83D)};
    const std::wstring pair = L"\U0001F600";
    const std::wstring wide = L"a\u00E9\u20AC";
    const long least = -2147483647L - 1;
    using std::string;
    using std::vector;
    using std::wstring;
    vector<Row> rows = {
        ValueRow("bool", true),
        ValueRow<short>("short", -2),
        ValueRow<unsigned short>("unsigned short", 65534),
        ValueRow("int", -3),
        ValueRow("long", least),
        ValueRow("float", 1.5F),
        ValueRow("double", -2.25),
        ValueRow("GUID", guid),
        ValueRow("tm", time),
        ValueRow("wstring", wide),
        ValueRow("wstring empty", wstring()),
        ValueRow("wstring pair", pair),
        ValueRow("wstring lone", lone),
        ValueRow("string", string("a\xE9\0b", 4)),
        ValueRow("string empty", string()),
        ArrayRow<unsigned char>("unsigned char array", {0, 127, 255}),
        ArrayRow<short>("short array", {-1, 256}),
        ArrayRow<float>("float array", {0.5F, -1.0F}),
        ValueRow("int array", std::list<int>{-1, 65536}),
        ValueRow("empty array", std::list<int>()),
        {"vector float F",
         [](WBinarySerializer& s, bool bRead) {
             vector<double> values = {0.1, -1e30, 7.0};
             values.resize(bRead ? 3 : 2);
             bRead ? s.RetrieveF(L"", values) : s.InsertF(L"ab", values);
             return values == vector<double>{static_cast<double>(0.1F), static_cast<double>(-1e30F)};
         }},
        {"Ex",
         [](WBinarySerializer& s, bool bRead) {
             char bytes[] = {1, 2, 3, 4};
             std::fill_n(bytes, bRead ? 3 : 0, '\0');
             bRead ? s.RetrieveEx(L"", bytes, 3) : s.InsertEx(L"ab", bytes, 3);
             return std::memcmp(bytes, "\1\2\3\4", 4) == 0;
         }},
        ObjectRow("object 5.3.0.8", bss::WVersion::GetVersion(5, 3, 0, 8)),
        ObjectRow("object 5.3.0.9", bss::WVersion::GetVersion(5, 3, 0, 9)),
    };
    const auto arrays = [&rows](const char* name, const auto& values) {
        rows.push_back(ArrayRow(name, values));
        rows.push_back(ValueRow(name, values));
        rows.push_back(ArrayRow("empty array", std::decay_t<decltype(values)>()));
        rows.push_back(ValueRow("empty array", std::decay_t<decltype(values)>()));
    };
    arrays("bool array", vector<bool>{true, false, true});
    arrays("int array", vector<int>{-1, 65536});
    arrays("long array", vector<long>{-1, 2147483647, least});
    arrays("double array", vector<double>{0.1, -1e300});
    arrays("wstring array", vector<wstring>{L"a", L"", pair});
    arrays("string array", vector<string>{"xy", ""});
    return rows;
}

/// name: images without and with labels
std::map<std::string, std::pair<std::string, std::string>> GoldenImages() {
    std::map<std::string, std::pair<std::string, std::string>> images;
    std::ifstream file(KRTBSS_SOURCE_DIR "/tests/data/binary_golden.txt");
    EXPECT_TRUE(file) << "cannot open tests/data/binary_golden.txt";
    for (std::string line, name; std::getline(file, line);) {
        if (std::istringstream parts(line); line[0] != '#' && std::getline(parts, name, ':')) {
            parts >> images[name].first >> images[name].second;
        }
    }
    return images;
}

TEST(Binary, EveryTypeHasItsGoldenImage) {
    auto images = GoldenImages();
    std::set<std::string> seen;
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(images.count(row.name), 1U);
        for (const bool labels : {false, true}) {
            const std::string& golden = labels ? images[row.name].second : images[row.name].first;
            WBinarySerializer writer(false, labels);
            row.run(writer, false);
            EXPECT_EQ(ToHex(writer.GetBuffer()), golden);
            WBinarySerializer sizing(true, labels);
            row.run(sizing, false);
            EXPECT_EQ(sizing.GetBufferSize() * 2, golden.size());
            EXPECT_EQ(sizing.GetBuffer(), "");
            WBinarySerializer reader(FromHex(golden), !labels); // the reader's flag is ignored
            EXPECT_TRUE(row.run(reader, true));
            char more = 0;
            EXPECT_TRUE(reader.MoreToRead());
            reader.RetrieveEx(L"", &more, 1);
            EXPECT_FALSE(reader.MoreToRead()); // every byte was taken
        }
        seen.insert(row.name);
    }
    EXPECT_EQ(seen.size(), images.size());
}

TEST(Binary, EveryTypeCutShortGivesNoFailure) {
    for (const Row& row : Rows()) {
        WBinarySerializer writer(false, true);
        row.run(writer, false);
        const std::string image = writer.GetBuffer();
        for (std::size_t size = 0; size < image.size(); ++size) {
            WBinarySerializer reader(image.substr(0, size), false);
            EXPECT_NO_THROW(EXPECT_FALSE(row.run(reader, true) && reader.MoreToRead())) << row.name << size;
        }
    }
}

TEST(Binary, WorkedExampleOfTheDocumentIsAnImage) {
    std::ifstream file(KRTBSS_SOURCE_DIR "/docs/binary-format.md");
    std::string line;
    while (std::getline(file, line) && line.substr(0, 10) != "```hexdump") {
    }
    std::string hex;
    while (std::getline(file, line) && line.substr(0, 3) != "```") {
        EXPECT_EQ(std::stoul(line.substr(0, 4), nullptr, 16), hex.size() / 2);
        for (const char c : line.substr(6, line.find("  ", 6) - 6)) {
            hex += c == ' ' || c == '\r' ? "" : std::string(1, c);
        }
    }
    EXPECT_EQ(hex, GoldenImages()["object 5.3.0.9"].second);
}

TEST(Binary, HugeItemsPass) {
    std::vector<double> numbers(1'000'000);
    std::iota(numbers.begin(), numbers.end(), 0.5);
    const std::wstring text(3'000'000, L'\u20AC');
    const std::vector<std::string> strings(100'000, "abc");
    WBinarySerializer s(false, false);
    const Row rows[] = {ValueRow("", numbers), ValueRow("", text), ValueRow("", strings)};
    for (const bool bRead : {false, true}) {
        EXPECT_TRUE(rows[0].run(s, bRead) && rows[1].run(s, bRead) && rows[2].run(s, bRead));
        EXPECT_EQ(s.GetBufferSize(), 8U + 8'000'000 + 8 + 6'000'000 + 8 + 1'100'000);
    }
}

template <class Call>
std::wstring FailureOf(Call call) {
    try {
        call();
    } catch (const bss::WNESerializerError& e) {
        return e.GetArgument<0>();
    } catch (const std::length_error& e) {
        return krtpal::WidenText(e.what());
    }
    return L"none";
}

TEST(Binary, WhatTheImageCannotHoldIsRefusedByName) {
    for (const bool sizing : {false, true}) {
        WBinarySerializer s(sizing, true);
        const auto refused = [&s](auto... arguments) {
            return FailureOf([&] { s.Insert(L"m_nCount", arguments...); });
        };
        const std::wstring begin = L"cannot write item 'm_nCount': its ";
        const double one = 1.0;
        EXPECT_EQ(refused(&one, -1L), begin + L"count -1 is negative");
        EXPECT_EQ(refused(static_cast<const bool*>(nullptr), 2L), begin + L"pointer is null and its count 2");
        EXPECT_EQ(FailureOf([&s] { s.InsertEx(L"m_nCount", nullptr, 3); }),
                  begin + L"pointer is null and its size 3");
        if constexpr (sizeof(long) > 4) {
            const auto wide = static_cast<long>(0x100000000);
            const std::wstring end = L" does not fit into 32 bits";
            EXPECT_EQ(refused(wide), begin + L"value 4294967296" + end);
            EXPECT_EQ(refused(-wide / 2 - 1), begin + L"value -2147483649" + end);
            EXPECT_EQ(refused(std::vector<long>{1, wide / 2}), begin + L"element 1, 2147483648," + end);
            EXPECT_EQ(refused(&one, wide), begin + L"count 4294967296" + end);
        }
        EXPECT_EQ(s.GetBufferSize(), 0U);
    }
}

/// What an item is read into such a value.
template <class Value>
Value ReadInto(Value value, const std::string& hex) {
    Reader(hex).Retrieve(L"", value);
    return value;
}

TEST(Binary, ReadingPastTheEndKeepsTheValue) {
    EXPECT_EQ(ReadInto(7L, "00000000 FFFF"), 7);
    EXPECT_EQ(ReadInto(2.5, ""), 2.5);
    EXPECT_EQ(ReadInto(std::wstring(L"kept"), ""), L"kept"); // of a count that is 0
    EXPECT_TRUE(ReadInto(std::vector<double>{1.0}, "").empty());
    char bytes[4] = {9, 9, 9, 9};
    WBinarySerializer part = Reader("00000000 0102");
    part.RetrieveEx(L"", bytes, 4);
    EXPECT_EQ(ToHex(std::string(bytes, 4)), "01020909"); // what there was
    EXPECT_FALSE(part.MoreToRead());
    EXPECT_EQ(FailureOf([&] { part.Insert(L"", 1.0); }), L"Error writing to an invalid buffer");
    WBinarySerializer label = Reader("02000000 6100");
    label.RetrieveEx(L"", bytes, 0);
    EXPECT_FALSE(label.MoreToRead());
}

TEST(Binary, FailedWriteMakesTheStreamBad) {
    struct Opened : WBinarySerializer {
        Opened() : WBinarySerializer(false, false) {}
        using WBinarySerializer::Read;
        using WBinarySerializer::Write;
    } s;
    char bytes[4] = {1, 2, 3, 4};
    EXPECT_EQ(s.Write(bytes, 4), 4U);
    EXPECT_EQ(s.Read(bytes, 2), 2U);
    EXPECT_THROW(s.Write(bytes, 0xFFFFFFFFU), std::length_error); // over 4 GiB in all
    EXPECT_FALSE(s.MoreToRead());
    EXPECT_THROW(s.Write(bytes, 1), std::length_error);
    EXPECT_EQ(FailureOf([&] { s.Read(bytes, 1); }), L"Error reading from an invalid buffer");
    EXPECT_EQ(s.Size(), 4U);
    EXPECT_EQ(s.GetBufferSize(), 4U);
    Sample sample;
    EXPECT_THROW(sample.Write(&s, 0, true), bss::WNEDataIOError);
}

template <class Element>
void ExpectPointerFormRefuses(const std::string& hex) {
    WBinarySerializer s = Reader(hex);
    auto* data = reinterpret_cast<Element*>(&s);
    long count = 5;
    EXPECT_THROW(s.Retrieve(L"", data, count), std::bad_alloc) << hex;
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(count, 0);
}

/// `left`: how many of two elements the value has afterwards
template <class Value>
void ExpectValueRefuses(const std::string& hex, std::size_t left) {
    WBinarySerializer s = Reader(hex);
    Value value;
    value.resize(2);
    EXPECT_THROW(s.Retrieve(L"", value), std::bad_alloc) << hex;
    EXPECT_EQ(value.size(), left);
}

TEST(Binary, LyingCountsAreRefusedWithoutMemory) {
    for (const std::string count : {"FFFFFFFF", "00000080", "FFFFFF7F"}) {
        const std::string hex = "00000000" + count + "0102";
        ExpectPointerFormRefuses<unsigned char>(hex);
        ExpectPointerFormRefuses<bool>(hex);
        ExpectPointerFormRefuses<long>(hex);
        ExpectPointerFormRefuses<double>(hex);
        ExpectPointerFormRefuses<std::wstring>(hex);
        ExpectValueRefuses<std::string>(hex, 2);
        ExpectValueRefuses<std::wstring>(hex, 2);
        ExpectValueRefuses<std::vector<bool>>(hex, 2);
        ExpectValueRefuses<std::vector<double>>(hex, 2);
        ExpectValueRefuses<std::vector<std::string>>(hex, 0);
        ExpectValueRefuses<std::vector<std::wstring>>(hex, 0);
        ExpectValueRefuses<std::list<int>>(hex, 0);
    }
    ExpectValueRefuses<std::string>("FFFFFF7F 0102", 2); // a label
    // 16 MiB over what is left pass, one element more does not.
    ExpectPointerFormRefuses<double>("00000000 02002000 0000000000000000");
    std::vector<double> expected(0x200001);
    expected[0] = 2.5;
    EXPECT_TRUE(ReadInto(std::vector<double>(), "00000000 01002000 0000000000000440") == expected);
}

TEST(Binary, SmallLiesGiveZerosAlsoInWhatIsUsedAgain) {
    EXPECT_EQ(ReadInto(std::vector<double>(4, 9.0), "00000000 03000000 0000000000000440"),
              (std::vector<double>{2.5, 0.0, 0.0}));
    EXPECT_EQ(ReadInto(std::wstring(L"zzzz"), "00000000 03000000 6100"), std::wstring(L"a\0\0", 3));
    EXPECT_EQ(ReadInto(std::vector<std::string>(5, "z"), "00000000 03000000 00000000 01000000 61"),
              (std::vector<std::string>{"a", "", ""}));
    // What is no bool is true.
    EXPECT_EQ(ReadInto(std::vector<bool>(), "00000000 02000000 00FF"), (std::vector<bool>{false, true}));
    EXPECT_TRUE(ReadInto(false, "00000000 07"));
}

// The label of the first might be taken for a length.
TEST(Binary, LabelsInsideArraysOfStringsAreSkipped) {
    EXPECT_EQ(ReadInto(std::vector<std::string>(),
                       "00000000 02000000  02000000 01000000 02000000 6162  00000000 01000000 63"),
              (std::vector<std::string>{"ab", "c"}));
    EXPECT_EQ(ReadInto(std::vector<std::wstring>(),
                       "00000000 02000000  00000000 01000000 6100  02000000 78007900 01000000 6200"),
              (std::vector<std::wstring>{L"a", L"b"}));
}

TEST(Binary, ConstructorsMakeTheirStreams) {
    WBinarySerializer fixed(10U, false);
    fixed.Insert(L"", 1L);
    EXPECT_EQ(ToHex(fixed.GetBuffer()), "00000000010000000000");
    EXPECT_EQ(fixed.Size(), 8U);
    fixed.Insert(L"", 1.0); // over the end
    EXPECT_EQ(fixed.GetBufferSize(), 20U);

    WBinarySerializer whole(std::string("abcdefgh"), false);
    whole.SetIsSizing(true);
    whole.Insert(L"", true);
    EXPECT_EQ(whole.GetBufferSize(), 13U); // with what was there
    EXPECT_EQ(whole.GetBuffer(), "abcdefgh");
    EXPECT_EQ(whole.Size(), 0U);

    WBinarySerializer bytes("abcdefgh", 3, false);
    char block[] = "----";
    auto* target = reinterpret_cast<unsigned char*>(block);
    bytes.WriteToBuffer(target);
    EXPECT_EQ(std::string(block), "abc-");
    EXPECT_EQ(static_cast<void*>(target), block);
    bytes.SetIsSizing(true);
    EXPECT_EQ(bytes.GetBufferSize(), 0U);
    EXPECT_EQ(WBinarySerializer(nullptr, 3, false).GetBuffer() +
                  WBinarySerializer("abc", 0, false).GetBuffer(),
              "");
}

TEST(Binary, LabelsAreReadAsTheyWereWritten) {
    struct Opened : WBinarySerializer {
        Opened() : WBinarySerializer(false, true) {}
        using WBinarySerializer::ReadLabel;
        using WBinarySerializer::WriteLabel;
    } s;
    const std::wstring label = L"\u03B1\U0001F600";
    EXPECT_EQ(s.WriteLabel(label), 10U);
    EXPECT_EQ(s.WriteLabel(L""), 4U);
    std::wstring read = L"x";
    EXPECT_EQ(s.ReadLabel(read), 10U);
    EXPECT_EQ(read, label);
    EXPECT_EQ(s.ReadLabel(read), 4U);
    EXPECT_TRUE(read.empty());
}

} // namespace
