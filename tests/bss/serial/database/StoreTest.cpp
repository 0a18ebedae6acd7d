// Objects in a database: what is written comes back, whatever it is and whichever version wrote it, and a
// write is whole or not there.

#include "Everything.h"
#include "Fixture.h"
#include "Tree.h"

#include "bss/exception/WExceptionCatalogue.h"

#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>

namespace {

/// A text and a block first, in the middle and last.
class Long : public Persistent {
public:
    Long() : Persistent(1, 1) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        for (std::size_t i = 0; i < 3; ++i) {
            const std::wstring key = std::to_wstring(i);
            Pass(bRead, L"t" + key, texts[i]);
            Pass(bRead, L"b" + key, blocks[i]);
            Pass(bRead, L"n" + key, numbers[i]);
        }
    }
    std::wstring texts[3];
    std::string blocks[3] = {" ", " ", " "};
    double numbers[3] = {1, 2, 3};
};

class Store : public BackendTest {
protected:
    void ExpectToComeBack(Long& written) {
        ASSERT_EQ(FailureOf([&] { written.Write(&m_database, 0, true); }), "");
        Long read;
        ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(read.texts[i] == written.texts[i]) << i;
            EXPECT_TRUE(read.blocks[i] == written.blocks[i]) << i;
            // Bit by bit: zero has a sign. NaN has none in most back-ends.
            const bool isNan = std::isnan(written.numbers[i]) && std::isnan(read.numbers[i]);
            EXPECT_TRUE(isNan || std::bit_cast<std::uint64_t>(read.numbers[i]) ==
                                     std::bit_cast<std::uint64_t>(written.numbers[i]))
                << written.numbers[i] << ' ' << read.numbers[i];
        }
    }
};

INSTANTIATE_TEST_SUITE_P(On, Store, testing::ValuesIn(kBackends), testing::PrintToStringParamName());

TEST_P(Store, EveryKindOfValueComesBackInEveryStoredForm) {
    for (const long version : {bss::WVersion::GetVersion(5, 3, 0, 0), bss::WVersion::GetVersion(5, 3, 1, 0),
                               bss::WVersion::GetVersion(5, 3, 2, 0)}) {
        SCOPED_TRACE(version);
        Everything written(version);
        written.Fill();
        if (version < bss::WVersion::GetVersion(5, 3, 2, 0)) {
            written.series = {0.5, 1e30F}; // singles in the older forms
        }
        ASSERT_EQ(FailureOf([&] { written.Write(&m_database, version, true); }), "");
        Everything read(version);
        ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
        EXPECT_TRUE(read.IsSame(written));
        EXPECT_EQ(read.GetVersion(), version);

        // Again, over the row that is there, with nothing in it.
        Everything empty(version);
        ASSERT_EQ(FailureOf([&] { empty.Write(&m_database, version, true); }), "");
        ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
        EXPECT_TRUE(read.IsSame(empty));
    }
    EXPECT_EQ(m_database.GetRowCount(L"Everything"), 3);
}

TEST_P(Store, LongValuesComeBackFromEveryPlaceInTheRow) {
    for (const std::size_t size : {0, 511, 512, 1000, 1001}) {
        SCOPED_TRACE(size);
        Long written;
        for (int i = 0; i < 3; ++i) {
            written.texts[i] = std::wstring(size, static_cast<wchar_t>(L'\u20AC' + i));
            written.blocks[i] = size == 0 ? " " : std::string(size, static_cast<char>('\xF0' + i));
        }
        ExpectToComeBack(written);
        // The frame tells whether its payload is compressed.
        const std::string frame = Ask(L"SELECT [b2] FROM [Long]", krtpal::odbc::kCBinary);
        EXPECT_EQ(frame.substr(4, 4) == std::string(4, '\0'), size <= 1000);
    }
    const std::size_t most = std::getenv("KRTBSS_TEST_LONG") != nullptr ? 64 << 20 : 1 << 20; // bytes each
    Long large;
    large.texts[1].assign(most / sizeof(krtpal::Utf16Unit), L'\u20AC');
    large.blocks[1].resize(most);
    std::minstd_rand random(1);
    std::generate(large.blocks[1].begin(), large.blocks[1].end(),
                  [&random] { return static_cast<char>(random() >> 8); });
    ExpectToComeBack(large);
}

TEST_P(Store, AnyTextComesBack) {
    const std::wstring texts[] = {
        L"\U0001F600\U0010FFFF",
        std::wstring(1, static_cast<wchar_t>(0xD800)) + L"x",
        L"x" + std::wstring(1, static_cast<wchar_t>(0xDC00)),
        L"\uFFFE",
        std::wstring(L"a\0b", 3),
        L"\uFFFE0041",
    };
    for (const std::wstring& text : texts) {
        SCOPED_TRACE(krtpal::Utf8FromWide(text));
        Long written;
        written.texts[0] = text;
        ExpectToComeBack(written);
    }
}

TEST_P(Store, AnyDoubleComesBack) {
    using Limits = std::numeric_limits<double>;
    const double nan = Limits::quiet_NaN();
    std::vector<double> numbers = {0.1, 1.0 / 3, Limits::denorm_min(), -Limits::min(), Limits::max()};
    numbers.insert(numbers.end(), {Limits::lowest(), Limits::infinity(), -0.0, nan, -nan});
    std::minstd_rand random(1);
    for (int i = 0; i < 100; ++i) {
        numbers.push_back(
            std::ldexp(static_cast<double>(random()) / 3, static_cast<int>(random() % 2000) - 1060));
    }
    for (const double number : numbers) {
        Long written;
        written.numbers[1] = number;
        ExpectToComeBack(written);
    }
}

TEST_P(Store, GuidsLieInColumnsWithTheirOwnBytes) {
    Everything written;
    written.Fill();
    written.Write(&m_database, 0, true);
    std::string text = Ask(L"SELECT [m_10] FROM [Everything]");
    std::erase_if(text, [](char c) { return c == '{' || c == '}'; });
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return static_cast<char>(std::toupper(c)); });
    EXPECT_EQ(text, "01234567-89AB-CDEF-0102-030405060708");
}

// Its checksum holds both halves of a surrogate pair, which come back as one character.
TEST_P(Store, AnyChecksumIsFoundAgain) {
    Tree tree(910, 0, 0);
    ASSERT_EQ(FailureOf([&] { tree.Write(&m_database, 0, true); }), "");
    EXPECT_EQ(FailureOf([&] { tree.Read(&m_database, 0, true); }), "");
}

TEST_P(Store, DeepWritesReadsAndDeletesReachAllParts) {
    Tree tree(1, 2, 2);
    long value = 0;
    tree.ForEach([&](Tree& each) { each.value = ++value; });
    ASSERT_EQ(FailureOf([&] { tree.Write(&m_database, 0, true); }), "");
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), 7);
    Tree read(1, 2, 2);
    ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
    value = 0;
    read.ForEach([&](Tree& each) { EXPECT_EQ(each.value, ++value); });

    // What a failure in the last part leaves is the state before.
    tree.ForEach([](Tree& each) {
        each.value = -1;
        each.failsInDataPass = each.GetObjectID() == 122;
    });
    EXPECT_NE(FailureOf([&] { tree.Write(&m_database, 0, true); }), "");
    ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
    value = 0;
    read.ForEach([&](Tree& each) { EXPECT_EQ(each.value, ++value); });

    ASSERT_EQ(FailureOf([&] { tree.Delete(&m_database, 0, true); }), "");
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), 0);
    EXPECT_EQ(FailureOf([&] { tree.Delete(&m_database, 0, true); }), ""); // what is not there
}

TEST_P(Store, UpdateKeepsTheRecordsIdentifier) {
    Tree tree(1, 0, 0);
    tree.Write(&m_database, 0, true);
    const std::string identifier = Ask(L"SELECT [RecID] FROM [Tree]");
    EXPECT_GE(identifier.size(), 36U);
    tree.value = 2;
    tree.Write(&m_database, 0, true);
    EXPECT_EQ(Ask(L"SELECT [RecID] FROM [Tree] WHERE [value] = 2"), identifier);
    long version = 0;
    EXPECT_TRUE(m_database.Exists(tree, &version));
    EXPECT_EQ(version, bss::WVersion::GetVersion(5, 3, 2, 0));
    ASSERT_TRUE(Execute(L"UPDATE [Tree] SET [m_nVersion] = 83886080"));
    EXPECT_FALSE(m_database.Exists(tree, nullptr)); // a version as old as that counts as none
}

TEST_P(Store, ColumnsOfOthersAreKept) {
    Everything written;
    written.Fill();
    written.Write(&m_database, 0, true);
    ASSERT_TRUE(Execute(std::wstring(L"ALTER TABLE [Everything] ADD [remark] ") + m_backend.textType));
    ASSERT_TRUE(Execute(L"UPDATE [Everything] SET [remark] = 'by hand'"));
    bss::WDatabase later;
    Connect(later);
    for (bss::WDatabase* const database : {&m_database, &later}) {
        Everything read;
        EXPECT_EQ(FailureOf([&] { read.Read(database, 0, true); }), "");
        EXPECT_TRUE(read.IsSame(written));
        EXPECT_EQ(FailureOf([&] { written.Write(database, 0, true); }), "");
        EXPECT_EQ(Ask(L"SELECT [remark] FROM [Everything]"), "by hand");
    }
}

TEST_P(Store, ChangesByOthersAreFoundInEveryColumn) {
    const char* const corrupted = "Data corrupted.";
    const char* const unreadable = "Unexpected error reading data";
    const char* const missing = "Everything (7,1).*"; // no such row
    const char* const damaged = "Cannot uncompress data.";
    struct Damage {
        std::wstring columns; ///< separated by blanks
        const wchar_t* value; ///< null: another last byte
        const char* failure;
        const char* failureOfNull; ///< null: the column takes none
    };
    const Damage damages[] = {
        {L"m_nVersion", L"83886081", "No data found for table (3) Everything and column m_8L", nullptr},
        {L"m_nVersion", L"84083201", "requires an upgrade of your software", nullptr},
        {L"groupID objectID", L"8", missing, nullptr},
        {L"checkSum", L"'x'", corrupted, nullptr},
        {L"m_1", L"'0'", corrupted, corrupted},
        {L"m_2 m_3 m_4 m_11L", L"2", corrupted, corrupted},
        {L"m_5", L"-0.50001", corrupted, corrupted},
        {L"m_6", L"0.0", corrupted, corrupted},
        {L"m_7 m_11", L"'other'", corrupted, corrupted},
        {L"m_9", L"'2004-03-02 03:04:06'", corrupted, corrupted},
        {L"m_10", L"?", corrupted, "Unable to read corrupt data."},
        {L"m_12 m_14", nullptr, damaged, unreadable},
        {L"m_8 m_13 m_15 m_16 m_17 m_18 m_series", nullptr, corrupted, unreadable},
    };
    const Damage damagesOfOldForm[] = {
        {L"m_8L", L"1", "Corrupt data for table", corrupted},
        {L"m_8LU", L"1", corrupted, corrupted},
        {L"m_8", L"?", "Corrupt data for table", "No data found for table (6)"},
        {L"m_14LU", L"2000", damaged, corrupted},
    };
    Everything written;
    written.Fill();
    long version = 0;
    const auto expectFailure = [&](const std::wstring& change, const Value& value, const char* failure) {
        SCOPED_TRACE(krtpal::NarrowText(change));
        ASSERT_TRUE(Execute(L"UPDATE [Everything] SET " + change, value));
        Everything read;
        const std::string found = FailureOf([&] { read.Read(&m_database, 0, true); });
        EXPECT_NE(found.find(failure), std::string::npos) << found;
        ASSERT_TRUE(Execute(L"DELETE FROM [Everything]"));
        ASSERT_EQ(FailureOf([&] { written.Write(&m_database, version, true); }), "");
    };
    written.Write(&m_database, 0, true);
    for (const Damage& damage : damages) {
        std::wistringstream names(damage.columns);
        for (std::wstring name; names >> name;) {
            const std::wstring column = L"[" + name + L"]";
            if (damage.value == nullptr) {
                std::string bytes = Ask(L"SELECT " + column + L" FROM [Everything]", krtpal::odbc::kCBinary);
                ASSERT_GE(bytes.size(), 16U);
                bytes.back() = static_cast<char>(bytes.back() ^ 1);
                expectFailure(column + L" = ?", Binary(bytes), damage.failure);
                bytes.resize(15);
                expectFailure(column + L" = ?", Binary(bytes), unreadable); // less than a frame
            } else {
                expectFailure(column + L" = " + damage.value,
                              damage.value == std::wstring(L"?") ? Guid(GUID{}) : Value{}, damage.failure);
            }
            if (damage.failureOfNull != nullptr) {
                expectFailure(column + L" = NULL", {}, damage.failureOfNull);
            }
        }
    }
    version = bss::WVersion::GetVersion(5, 3, 1, 0);
    written.Write(&m_database, version, true);
    for (const Damage& damage : damagesOfOldForm) {
        const std::wstring column = L"[" + damage.columns + L"]";
        expectFailure(column + L" = " + damage.value,
                      damage.value == std::wstring(L"?") ? Binary("x") : Value{}, damage.failure);
        expectFailure(column + L" = NULL", {}, damage.failureOfNull);
    }
}

/// A class, and itself later.
class Grown : public Persistent {
public:
    Grown(long object, bool isLater)
        : Persistent(1, object, bss::WVersion(5, isLater ? 4 : 3, isLater ? 0 : 2, 0)) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Pass(bRead, L"one", one);
        if (m_nVersion >= bss::WVersion::GetVersion(5, 4, 0, 0)) {
            Pass(bRead, L"two", two);
            Pass(bRead, L"three", three);
        }
    }
    long one = 1;
    std::wstring two = L"new";
    double three = 3.0;
};

TEST_P(Store, TablesGrowWithTheirClasses) {
    Grown old(1, false);
    Grown other(2, false);
    old.Write(&m_database, 0, true);
    other.Write(&m_database, 0, true);
    Grown grown(1, true);
    grown.one = 0;
    ASSERT_EQ(FailureOf([&] { grown.Read(&m_database, 0, true); }), "");
    EXPECT_EQ(grown.one, 1);
    grown.two = L"changed";
    ASSERT_EQ(FailureOf([&] { grown.Write(&m_database, bss::WVersion::GetVersion(5, 4, 0, 0), true); }), "");
    EXPECT_TRUE(m_database.HasColumn(L"Grown", L"three"));
    Grown read(1, true);
    read.one = 0;
    ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
    EXPECT_EQ(read.two, L"changed");
    const std::string failure = FailureOf([&] { old.Read(&m_database, 0, true); });
    EXPECT_NE(failure.find("requires an upgrade of your software"), std::string::npos) << failure;
    // A row that has nothing in the new columns, for either class.
    Grown former(2, true);
    former.one = 0;
    EXPECT_EQ(FailureOf([&] { former.Read(&m_database, 0, true); }), "");
    EXPECT_EQ(former.two, L"new");
    EXPECT_EQ(FailureOf([&] { other.Read(&m_database, 0, true); }), "");
}

TEST_P(Store, OnlyTheOutermostLevelReachesTheDatabase) {
    Tree tree(1, 0, 0);
    tree.Write(&m_database, 0, true);
    m_database.SetTransactionMode(bss::WDatabase::transactionManual);
    tree.value = 2;
    EXPECT_EQ(FailureOf([&] { tree.Write(&m_database, 0, true); }), ""); // nothing, in a level of the caller
    m_database.SetTransactionMode(bss::WDatabase::transactionManual);
    m_database.Transact(bss::WDatabase::transactionRollback);
    m_database.Transact(bss::WDatabase::transactionCommit);
    m_database.Transact(bss::WDatabase::transactionCommit); // without a level
    Tree read(1, 0, 0);
    read.Read(&m_database, 0, true);
    EXPECT_EQ(read.value, 0);
}

TEST_P(Store, FailuresSayWhatAndWhere) {
    Tree tree(1, 0, 0);
    EXPECT_NE(FailureOf([&] { tree.Read(&m_database, 0, true); }), ""); // no table
    tree.Write(&m_database, 0, true);
    Tree missing(2, 0, 0);
    const std::string failure = FailureOf([&] { missing.Read(&m_database, 0, true); });
    EXPECT_NE(failure.find("Tree (5,2).*"), std::string::npos) << failure;
    EXPECT_EQ(m_database.GetRowCount(L"NoSuchTable"), 0);
    EXPECT_EQ(m_database.GetEntryIDs(L"Tree"), (std::vector<long>{5, 5})); // the last one once more
    tree.value = 1L << 30;
    EXPECT_EQ(FailureOf([&] { tree.Write(&m_database, 0, true); }), "");
    if constexpr (sizeof(long) > 4) {
        tree.value = static_cast<long>(1LL << 32);
        EXPECT_NE(FailureOf([&] { tree.Write(&m_database, 0, true); }).find("cannot write column 'value'"),
                  std::string::npos);
    }
}

/// Owns parts with the numbers up to a count.
class Family : public Persistent {
public:
    explicit Family(long parts) : Persistent(5, 0), m_parts(parts) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        if (!bRead && isInvalid) {
            m_pSerializer->SetIsValid(false);
        }
    }
    void SerializeComponents(bool bRead) override {
        for (long i = 1; !bRead && i <= m_parts; ++i) {
            Tree(i, 0, 0).Write(m_pSerializer, m_nVersion, true);
        }
    }
    void DeleteComponents() override {
        if (failsToDelete) {
            throw std::runtime_error("no");
        }
        for (long i = 1; i <= 9; ++i) {
            Tree(i, 0, 0).Delete(m_pSerializer, m_nVersion, true);
        }
    }
    bool isInvalid = false;
    bool failsToDelete = false;

private:
    long m_parts;
};

TEST_P(Store, ComponentsThatWentAwayGoFromSourcesAndStayInFiles) {
    for (const long parts : {3, 1}) {
        Family family(parts);
        ASSERT_EQ(FailureOf([&] { family.Write(&m_database, 0, true); }), "");
    }
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), IsFile() ? 3 : 1);
    Family stubborn(2);
    stubborn.failsToDelete = true;
    EXPECT_EQ(FailureOf([&] { stubborn.Write(&m_database, 0, true); }), "");
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), IsFile() ? 3 : 2);
    stubborn.isInvalid = true;
    const std::string failure = FailureOf([&] { stubborn.Write(&m_database, 0, true); });
    EXPECT_NE(failure.find("Serializer is in an invalid state."), std::string::npos) << failure;
}

TEST_P(Store, TablesOfOtherConnectionsAreFound) {
    bss::WDatabase other;
    Connect(other);
    Tree(1, 0, 0).Write(&m_database, 0, true);
    EXPECT_FALSE(other.HasTable(L"Tree"));
    EXPECT_EQ(FailureOf([&] { Tree(2, 0, 0).Write(&other, 0, true); }), "");
    EXPECT_EQ(other.GetRowCount(L"Tree"), 2);
}

TEST_P(Store, NothingIsLeftAfterDisconnect) {
    Tree(1, 0, 0).Write(&m_database, 0, true);
    m_database.SetTransactionMode(bss::WDatabase::transactionManual);
    m_database.Disconnect();
    m_database.Disconnect();
    EXPECT_FALSE(m_database.IsConnected());
    EXPECT_FALSE(m_database.HasTable(L"Tree"));
    EXPECT_EQ(m_database.GetDataSource() + m_database.GetUser() + m_database.GetDatabasePath(), L"");
    Connect(m_database);
    EXPECT_EQ(FailureOf([&] { Tree(2, 0, 0).Write(&m_database, 0, true); }), "");
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), 2);
}

using Directory = BackendTest;

INSTANTIATE_TEST_SUITE_P(On, Directory, testing::Values(kSqlite, kPostgresql),
                         testing::PrintToStringParamName());

TEST_P(Directory, EntriesAreCountedAndMissingOnesListed) {
    for (const wchar_t* const sql :
         {L"CREATE TABLE [WExperiment] ([groupID] INTEGER, [m_sPath] VARCHAR(99), [m_sName] VARCHAR(99))",
          L"CREATE TABLE [WDirectoryEntry] ([m_nVersion] INTEGER, [m_nDirectoryID] INTEGER, "
          L"[m_sDirectoryClassName] VARCHAR(99))",
          L"INSERT INTO [WExperiment] VALUES (3, '/c', 'C'), (1, '/a', 'A'), (2, '/b', 'B')",
          L"INSERT INTO [WDirectoryEntry] VALUES (1, 2, 'WExperiment'), (1, 1, 'WOther'), (1, 3, "
          L"'WOther')"}) {
        ASSERT_TRUE(Execute(sql));
    }
    EXPECT_EQ(m_database.GetDirectoryEntryCount(L"WExperiment"), 1);
    EXPECT_EQ(m_database.GetDirectoryEntryCount(L"WOther"), 2);
    std::wstring found;
    for (const bss::WDatabase::entryInfo& each : m_database.GetMissingExperimentDirectoryInfo()) {
        found += std::to_wstring(each.group) + each.path + each.name + L' ';
    }
    EXPECT_EQ(found, L"1/aA 3/cC 3/cC "); // the last one once more
}

using StoreFile = DatabaseTest;

TEST_F(StoreFile, WhatCannotBeOpenedIsToldOf) {
    bss::WDatabase other;
    EXPECT_THROW(other.ConnectFile(L"", L"", L"/there/is/no/such/folder/x.db"), bss::WNEODBCError);
    EXPECT_FALSE(other.IsConnected());
    EXPECT_EQ(
        FailureOf([&] { other.ConnectFile(L"", L"", L"a;b.db"); }),
        "ODBC Error: cannot open the database file 'a;b.db': its driver takes no name with a semicolon\n");
    EXPECT_THROW(other.Connect(L"", L"", L"no such data source"), bss::WNEODBCError);
    other.Disconnect();
    EXPECT_EQ(other.GetUser(), L"");
}

class Labelled : public bss::WPersistentObject {
public:
    Labelled() : WPersistentObject(1, 1, bss::WVersion(5, 3, 2, 0)) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        bRead ? m_pSerializer->Retrieve(kLabel, value) : m_pSerializer->Insert(kLabel, value);
    }
    static constexpr const wchar_t* kLabel = L"m_\u00B5\u20AC";
    long value = 1;
};

// This program has set no locale, which the driver manager of Linux would go by.
TEST_P(Store, LabelsMayHaveAnyLetters) {
    if (RunsUnderWine()) {
        GTEST_SKIP() << "Wine hands names to the drivers of Linux in its own encoding";
    }
    Labelled written;
    ASSERT_EQ(FailureOf([&] { written.Write(&m_database, 0, true); }), "");
    bss::WDatabase later;
    Connect(later);
    EXPECT_TRUE(later.HasColumn(L"Labelled", Labelled::kLabel));
    written.value = 2;
    ASSERT_EQ(FailureOf([&] { written.Write(&later, 0, true); }), "");
    Labelled read;
    EXPECT_EQ(FailureOf([&] { read.Read(&later, 0, true); }), "");
    EXPECT_EQ(read.value, 2);
}

using FileName = DatabaseTest;

TEST_F(FileName, MayHaveAnyLetters) {
    if (RunsUnderWine()) {
        GTEST_SKIP() << "Wine hands names to the drivers of Linux in its own encoding";
    }
    bss::WDatabase database;
    database.ConnectFile(L"", L"", L"database-50%-\u00E9\u65E5.db");
    Tree tree(1, 0, 0);
    tree.Write(&database, 0, true);
    database.Disconnect();
    EXPECT_TRUE(std::filesystem::remove(u8"database-50%-\u00E9\u65E5.db"));
}

} // namespace
