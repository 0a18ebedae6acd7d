// Processes that are killed while they write, and processes that write at once, leave every object whole.

#include "Fixture.h"
#include "Tree.h"

#include "support/ChildProcess.h"

#include <chrono>
#include <cstdlib>
#include <random>
#include <sstream>
#include <thread>

namespace {

class Crash : public DatabaseTest {
protected:
    /// Each object reads with its checksum, and all are of one write, whose value is the answer.
    long ExpectWhole(bss::WDatabase& database) {
        Tree read(1, 1, 2);
        EXPECT_EQ(FailureOf([&] { read.Read(&database, 0, true); }), "");
        read.ForEach([&](Tree& each) { EXPECT_EQ(each.value, read.value); });
        return read.value;
    }
};

TEST_F(Crash, KilledWritersLeaveTheOldOrTheNewState) {
    Tree tree(1, 1, 2);
    tree.Write(&m_database, 0, true);
    const char* const rounds = std::getenv("KRTBSS_TEST_KILLS"); // fewer where processes start slowly
    const int kills = rounds == nullptr ? 200 : std::atoi(rounds);
    std::minstd_rand random(1);
    int changes = 0;
    long former = 0;
    for (int i = 0; i < kills && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        ChildProcess child(DATABASE_CHILD, {"loop", m_path.string()});
        ASSERT_EQ(child.ReadLine(), "ready");
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20'000));
        child.Kill();
        ASSERT_EQ(child.Wait(), ChildProcess::killed);
        const long value = ExpectWhole(m_database);
        changes += value == former ? 0 : 1;
        former = value;
    }
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), 3);
    EXPECT_GT(changes, kills / 10) << "the children were killed before they wrote";
}

TEST_F(Crash, WritersAtOnceTakeTurnsOrAreTold) {
    Tree tree(1, 1, 2);
    tree.Write(&m_database, 0, true);
    constexpr int writes = 20;
    ChildProcess first(DATABASE_CHILD, {"times", m_path.string(), std::to_string(writes)});
    ChildProcess second(DATABASE_CHILD, {"times", m_path.string(), std::to_string(writes)});
    for (ChildProcess* const child : {&first, &second}) {
        ASSERT_EQ(child->ReadLine(), "ready");
        std::istringstream result(child->ReadLine());
        int written = 0;
        int failed = 0;
        result >> written >> failed;
        EXPECT_EQ(written + failed, writes);
        EXPECT_GT(written, 0);
        EXPECT_EQ(child->Wait(), 0);
    }
    ExpectWhole(m_database);
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), 3);
}

} // namespace
