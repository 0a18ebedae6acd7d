// Objects in a database: what is written comes back, whatever it is and whichever version wrote it, and a
// write is whole or not there.

#include "Everything.h"
#include "Fixture.h"
#include "Tree.h"

#include "bss/exception/WExceptionCatalogue.h"

namespace {

/// A text and a block first, in the middle and last.
class Long : public bss::WPersistentObject {
public:
    Long() : WPersistentObject(1, 1, bss::WVersion(5, 3, 2, 0)) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        for (std::size_t i = 0; i < 3; ++i) {
            const std::wstring key = std::to_wstring(i);
            auto& database = static_cast<bss::WDatabase&>(*m_pSerializer);
            bRead ? database.Retrieve(L"t" + key, texts[i]) : database.Insert(L"t" + key, texts[i]);
            bRead ? database.Retrieve(L"b" + key, blocks[i]) : database.Insert(L"b" + key, blocks[i]);
            bRead ? database.Retrieve(L"n" + key, numbers[i]) : database.Insert(L"n" + key, numbers[i]);
        }
    }
    std::wstring texts[3];
    std::string blocks[3] = {" ", " ", " "};
    long numbers[3] = {1, 2, 3};
};

using Store = DatabaseTest;

TEST_F(Store, EveryKindOfValueComesBackInEveryStoredForm) {
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

TEST_F(Store, LongValuesComeBackFromEveryPlaceInTheRow) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{511}, std::size_t{512}, std::size_t{1000},
                                   std::size_t{1001}, std::size_t{16} << 20}) {
        SCOPED_TRACE(size);
        Long written;
        for (int i = 0; i < 3; ++i) {
            written.texts[i] = std::wstring(size, static_cast<wchar_t>(L'\u20AC' + i));
            written.blocks[i] = size == 0 ? " " : std::string(size, static_cast<char>('\xF0' + i));
        }
        ASSERT_EQ(FailureOf([&] { written.Write(&m_database, 0, true); }), "");
        Long read;
        ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(read.texts[i] == written.texts[i]) << i;
            EXPECT_TRUE(read.blocks[i] == written.blocks[i]) << i;
        }
        EXPECT_EQ(read.numbers[2], 3);
    }
}

TEST_F(Store, AnyTextComesBack) {
    const std::wstring texts[] = {
        L"\U0001F600\U0010FFFF",
        std::wstring(1, static_cast<wchar_t>(0xD800)) + L"x",
        L"x" + std::wstring(1, static_cast<wchar_t>(0xDC00)),
        L"\uFFFE",
        std::wstring(L"a\0b", 3),
        L"\uFFFE0041",
    };
    for (const std::wstring& text : texts) {
        Long written;
        written.texts[0] = text;
        ASSERT_EQ(FailureOf([&] { written.Write(&m_database, 0, true); }), "");
        Long read;
        ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
        EXPECT_EQ(read.texts[0], text);
    }
}

TEST_F(Store, DeepWritesReadsAndDeletesReachAllParts) {
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

TEST_F(Store, UpdateKeepsTheRecordsIdentifier) {
    Tree tree(1, 0, 0);
    tree.Write(&m_database, 0, true);
    ASSERT_TRUE(Execute(L"CREATE TABLE Kept AS SELECT RecID AS id FROM Tree"));
    tree.value = 2;
    tree.Write(&m_database, 0, true);
    EXPECT_EQ(m_database.GetLongFromQuery(L"SELECT COUNT(*) FROM Kept, Tree WHERE id = RecID AND value = 2"),
              1);
    long version = 0;
    EXPECT_TRUE(m_database.Exists(tree, &version));
    EXPECT_EQ(version, bss::WVersion::GetVersion(5, 3, 2, 0));
    ASSERT_TRUE(Execute(L"UPDATE Tree SET m_nVersion = 83886080"));
    EXPECT_FALSE(m_database.Exists(tree, nullptr)); // a version as old as that counts as none
}

TEST_F(Store, ChangesByOthersAreFoundAndTheirColumnsKept) {
    Everything written;
    written.Fill();
    written.Write(&m_database, 0, true);
    ASSERT_TRUE(Execute(L"ALTER TABLE Everything ADD remark TEXT"));
    ASSERT_TRUE(Execute(L"UPDATE Everything SET remark = 'by hand'"));
    bss::WDatabase later;
    Connect(later);
    Everything read;
    EXPECT_EQ(FailureOf([&] { read.Read(&later, 0, true); }), "");
    written.Write(&later, 0, true);
    EXPECT_EQ(later.GetLongFromQuery(L"SELECT COUNT(*) FROM Everything WHERE remark = 'by hand'"), 1);

    for (const wchar_t* const change :
         {L"m_1 = 0", L"m_2 = 1", L"m_4 = 4", L"m_6 = 1e-299", L"m_7 = 'other'", L"m_8 = x'00'",
          L"m_9 = '2004-03-02 03:04:06'", L"m_10 = '{00000000-0000-0000-0000-000000000000}'", L"m_11L = 2",
          L"m_14 = substr(m_14, 1, 40)", L"checkSum = 'x'", L"m_7 = NULL", L"m_14 = NULL", L"m_10 = NULL"}) {
        SCOPED_TRACE(platform::NarrowText(change));
        written.Write(&m_database, 0, true);
        ASSERT_TRUE(Execute(std::wstring(L"UPDATE Everything SET ") + change));
        EXPECT_NE(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
    }
    written.Write(&m_database, 0, true);
    ASSERT_TRUE(Execute(L"UPDATE Everything SET m_4 = 5"));
    EXPECT_NE(FailureOf([&] { read.Read(&m_database, 0, true); }).find("Data corrupted."), std::string::npos);
}

} // namespace

namespace first {

class Grown : public bss::WPersistentObject {
public:
    Grown() : WPersistentObject(1, 1, bss::WVersion(5, 3, 2, 0)) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        bRead ? m_pSerializer->Retrieve(L"one", one) : m_pSerializer->Insert(L"one", one);
    }
    long one = 1;
};

} // namespace first

namespace second {

/// The same table, later.
class Grown : public bss::WPersistentObject {
public:
    Grown() : WPersistentObject(1, 1, bss::WVersion(5, 4, 0, 0)) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        bRead ? m_pSerializer->Retrieve(L"one", one) : m_pSerializer->Insert(L"one", one);
        if (m_nVersion >= bss::WVersion::GetVersion(5, 4, 0, 0)) {
            bRead ? m_pSerializer->Retrieve(L"two", two) : m_pSerializer->Insert(L"two", two);
            bRead ? m_pSerializer->Retrieve(L"three", three) : m_pSerializer->Insert(L"three", three);
        }
    }
    long one = 0;
    std::wstring two = L"new";
    double three = 3.0;
};

} // namespace second

namespace {

TEST_F(Store, TablesGrowWithTheirClasses) {
    first::Grown old;
    old.Write(&m_database, 0, true);
    second::Grown grown;
    ASSERT_EQ(FailureOf([&] { grown.Read(&m_database, 0, true); }), "");
    EXPECT_EQ(grown.one, 1);
    grown.two = L"changed";
    ASSERT_EQ(FailureOf([&] { grown.Write(&m_database, bss::WVersion::GetVersion(5, 4, 0, 0), true); }), "");
    EXPECT_TRUE(m_database.HasColumn(L"Grown", L"three"));
    second::Grown read;
    ASSERT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
    EXPECT_EQ(read.two, L"changed");
    const std::string failure = FailureOf([&] { old.Read(&m_database, 0, true); });
    EXPECT_NE(failure.find("requires an upgrade of your software"), std::string::npos) << failure;
}

TEST_F(Store, OnlyTheOutermostLevelReachesTheDatabase) {
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

TEST_F(Store, FailuresSayWhatAndWhere) {
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

} // namespace
