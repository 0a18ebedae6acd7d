#include "bss/thread/WReadWriteLock.h"
#include "bss/thread/WReadWritePtrEx.h"

#include "support/Blocked.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace {

using namespace bss::sync;

TEST(ReadWriteLock, WriterGoesBeforeReadersThatCameAfterItAndTheseGoTogether) {
    WReadWriteLock lock;
    lock.AcquireReadLock();
    Blocked other([&] { lock.AcquireReadLock(); }); // a second reader, nobody waits
    ASSERT_TRUE(other.EndsSoon());
    std::atomic<int> reading{0};
    WEvent together(false, true);
    Blocked writer([&] { lock.AcquireWriteLock(); });
    EXPECT_FALSE(writer.HasEnded());
    std::vector<std::unique_ptr<Blocked>> readers;
    for (int i = 0; i < 3; ++i) {
        readers.push_back(std::make_unique<Blocked>([&] {
            lock.AcquireReadLock();
            // Nobody goes on before all are in.
            if (++reading == 3) {
                together.SetEvent();
            }
            EXPECT_TRUE(together.Lock(60'000));
            lock.Unlock();
        }));
    }
    EXPECT_EQ(reading, 0); // although the lock is held for reading
    lock.Unlock();
    EXPECT_FALSE(writer.HasEnded());
    lock.Unlock();
    EXPECT_TRUE(writer.EndsSoon());
    EXPECT_EQ(reading, 0);
    lock.Unlock(); // the writer's
    for (const auto& reader : readers) {
        EXPECT_TRUE(reader->EndsSoon());
    }
    lock.AcquireWriteLock(); // all have gone
    Blocked secondWriter([&] { lock.AcquireWriteLock(); });
    EXPECT_FALSE(secondWriter.HasEnded());
    lock.Unlock();
    EXPECT_TRUE(secondWriter.EndsSoon());
    lock.Unlock();
}

TEST(ReadWriteLock, GuardsDataUnderLoad) {
    WReadWriteLock lock;
    long value = 0; // no atomic: the lock has to guard it
    long copy = 0;
    RunInThreads(4, [&](int number) {
        for (int i = 0; i < 2000; ++i) {
            if ((number + i) % 4 == 0) {
                const WSingleLockReadWrite writing(&lock, WSingleLockReadWrite::WriteLock);
                ++value;
                ++copy;
            } else {
                const WSingleLockReadWrite reading(&lock, WSingleLockReadWrite::ReadLock);
                EXPECT_EQ(value, copy);
            }
        }
    });
    EXPECT_EQ(value, 2000);
}

TEST(SingleLockReadWrite, HoldsAndUnlocksOnceAtItsEnd) {
    WReadWriteLock lock;
    {
        WSingleLockReadWrite holder(&lock, WSingleLockReadWrite::WriteLock);
        EXPECT_TRUE(holder.IsLocked());
        holder.Unlock();
        EXPECT_FALSE(holder.IsLocked());
        holder.AcquireReadLock();
        EXPECT_TRUE(holder.IsLocked());
    }
    lock.AcquireWriteLock();
    lock.Unlock();
    {
        // A holder that took nothing gives back all the same: a reader that is none stays behind, so that a
        // writer waits until somebody unlocks once more.
        const WSingleLockReadWrite holder(&lock, static_cast<WSingleLockReadWrite::e_lockstate>(3));
        EXPECT_FALSE(holder.IsLocked());
    }
    Blocked writer([&] { lock.AcquireWriteLock(); });
    EXPECT_FALSE(writer.HasEnded());
    lock.Unlock();
    EXPECT_TRUE(writer.EndsSoon());
    lock.Unlock();

    WSingleLockReadWrite nothing(nullptr, WSingleLockReadWrite::ReadLock);
    nothing.AcquireWriteLock();
    EXPECT_FALSE(nothing.IsLocked());
    nothing.Unlock();
}

TEST(ReadWritePtrEx, FirstReaderTakesAndLastOneGivesBack) {
    WReadWritePtrEx lock;
    EXPECT_FALSE(lock.CanRead());
    EXPECT_FALSE(lock.CanWrite()); // it could be taken: reported as false
    EXPECT_TRUE(lock.AcquireReadLock());
    std::thread([&] { EXPECT_TRUE(lock.AcquireReadLock()); }).join();
    EXPECT_TRUE(lock.CanRead());
    EXPECT_FALSE(lock.CanWrite());        // several readers: at once
    EXPECT_FALSE(lock.ReleaseReadLock()); // not the last one
    EXPECT_TRUE(lock.ReleaseReadLock());

    EXPECT_TRUE(lock.AcquireWriteLock());
    Blocked writer([&] { EXPECT_TRUE(lock.AcquireWriteLock()); });
    EXPECT_FALSE(writer.HasEnded());
    EXPECT_TRUE(lock.ReleaseWriteLock());
    EXPECT_TRUE(writer.EndsSoon());
    EXPECT_TRUE(lock.ReleaseWriteLock());
    EXPECT_FALSE(lock.ReleaseWriteLock()); // nobody held it: no failure is thrown
}

TEST(ReadWritePtrEx, CanWriteWaitsForAReaderAndKeepsNothing) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "CanWrite looks at the count of readers without its guard";
#endif
    WReadWritePtrEx lock;
    EXPECT_TRUE(lock.AcquireReadLock());
    Blocked question([&] { EXPECT_FALSE(lock.CanWrite()); });
    EXPECT_FALSE(question.HasEnded());
    EXPECT_TRUE(lock.ReleaseReadLock());
    EXPECT_TRUE(question.EndsSoon());
    EXPECT_TRUE(lock.AcquireWriteLock());
    EXPECT_TRUE(lock.ReleaseWriteLock());
}

TEST(ReadWritePtrEx, WaitsEndAfterTwoSecondsAndCountTheReaderAllTheSame) {
    WReadWritePtrEx lock;
    EXPECT_TRUE(lock.AcquireWriteLock());
    std::thread writer([&] { EXPECT_FALSE(lock.AcquireWriteLock()); });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(lock.AcquireReadLock());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1950));
    writer.join();
    EXPECT_TRUE(lock.CanRead());
    EXPECT_TRUE(lock.AcquireReadLock()); // the second reader does not look at the data any more
    EXPECT_TRUE(lock.ReleaseWriteLock());
    EXPECT_FALSE(lock.ReleaseReadLock());
    EXPECT_FALSE(lock.ReleaseReadLock()); // the last one finds nothing to give back
}

TEST(ReadWritePtrEx, EndWaitsForWhoHoldsTheData) {
    std::optional<WReadWritePtrEx> lock(std::in_place);
    EXPECT_TRUE(lock->AcquireReadLock());
    Blocked end([&] { lock.reset(); });
    EXPECT_FALSE(end.HasEnded());
    EXPECT_TRUE(lock->ReleaseReadLock());
    EXPECT_TRUE(end.EndsSoon());
}

} // namespace
