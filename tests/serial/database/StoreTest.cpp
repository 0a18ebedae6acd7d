#include "Everything.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

class Store : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::remove(m_path);
        database.ConnectFile(L"", L"", m_path.wstring());
    }
    std::filesystem::path m_path = std::filesystem::absolute("store-test.db");
    bss::WDatabase database;
};

TEST_F(Store, EveryKindOfValueComesBack) {
    Everything written;
    written.Fill();
    Everything empty(2);
    try {
    written.Write(&database, 0, true);
    empty.Write(&database, 0, true);
    Everything read;
    read.Read(&database, 0, true);
    EXPECT_TRUE(read.IsSame(written));
    Everything other(2);
    other.Fill();
    other.Read(&database, 0, true);
    EXPECT_TRUE(other.IsSame(empty));
    } catch (const bss::WNestedException& e) {
        ADD_FAILURE() << platform::NarrowText(e.AsString(false));
    }
}

} // namespace
