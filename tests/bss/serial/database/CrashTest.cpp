// Processes that are killed while they write, and processes that write at once, leave every object whole.

#include "Fixture.h"
#include "Tree.h"

#include "support/ChildProcess.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <random>
#include <sstream>
#include <thread>

namespace {

class Crash : public BackendTest {
protected:
    ChildProcess Start(const std::string& work, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments = Arguments();
        arguments.insert(arguments.begin(), work);
        arguments.insert(arguments.end(), more.begin(), more.end());
        return ChildProcess(DATABASE_CHILD, arguments);
    }

    /// Each object reads with its checksum, and all are of one write, whose value is the answer.
    long ExpectWhole() {
        // A server may still be at the last statements of a process that is gone.
        while (IsPostgresql() && m_database.GetLongFromQuery(L"SELECT COUNT(*) FROM pg_stat_activity WHERE "
                                                             L"datname = current_database()") > 1) {
            std::this_thread::yield();
        }
        return ExpectOneWrite();
    }

    long ExpectOneWrite() {
        Tree read(1, 1, 2);
        EXPECT_EQ(FailureOf([&] { read.Read(&m_database, 0, true); }), "");
        read.ForEach([&](Tree& each) { EXPECT_EQ(each.value, read.value); });
        return read.value;
    }
};

INSTANTIATE_TEST_SUITE_P(On, Crash, testing::Values(kSqlite, kPostgresql), testing::PrintToStringParamName());

TEST_P(Crash, KilledWritersLeaveTheOldOrTheNewState) {
    Tree tree(1, 1, 2);
    tree.Write(&m_database, 0, true);
    const int kills = std::getenv("KRTBSS_TEST_LONG") == nullptr ? 10 : IsFile() ? 200 : 50;
    std::minstd_rand random(1);
    long latest = 20'000; // microseconds
    int changes = 0;
    long former = 0;
    for (int i = 0; i < kills && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        ChildProcess child = Start("loop", {std::to_string(1000L * i + 1000)});
        ASSERT_EQ(child.ReadLine(), "ready");
        std::this_thread::sleep_for(std::chrono::microseconds(static_cast<long>(random()) % latest));
        child.Kill();
        ASSERT_EQ(child.Wait(), ChildProcess::killed);
        const long value = ExpectWhole();
        // About every second one is to come as far as to the end of a write, however slow the machine is.
        changes += value == former ? 0 : 1;
        latest = value == former ? std::min(2 * latest, 1'000'000L) : std::max(latest / 2, 1'000L);
        former = value;
    }
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), 3);
    EXPECT_GT(changes, kills / 10) << "the children were killed before they wrote";
}

TEST_P(Crash, WritersAtOnceTakeTurnsOrAreTold) {
    Tree tree(1, 1, 2);
    tree.Write(&m_database, 0, true);
    ChildProcess first = Start("times", {"20", "1000"});
    ChildProcess second = Start("times", {"20", "2000"});
    std::vector<long> lastValues;
    long bushes = 0;
    for (ChildProcess* const child : {&first, &second}) {
        ASSERT_EQ(child->ReadLine(), "ready");
    }
    for (int i = 0; i < 50 && !HasFailure(); ++i) {
        ExpectOneWrite();
    }
    for (ChildProcess* const child : {&first, &second}) {
        std::istringstream result(child->ReadLine());
        int written = 0;
        int failed = 0;
        long last = 0;
        int added = 0;
        result >> written >> failed >> last >> added;
        EXPECT_EQ(written + failed, 2 * 20);
        EXPECT_GT(last, 0);
        if (IsFile()) {
            EXPECT_EQ(failed, 0) << "the file is not waited for";
        }
        lastValues.push_back(last);
        bushes += added;
        EXPECT_EQ(child->Wait(), 0);
    }
    // What was told to be written is there.
    EXPECT_EQ(std::count(lastValues.begin(), lastValues.end(), ExpectWhole()), 1);
    EXPECT_EQ(m_database.GetRowCount(L"Tree"), 3);
    EXPECT_EQ(m_database.GetRowCount(L"Bush"), bushes);
}

} // namespace
