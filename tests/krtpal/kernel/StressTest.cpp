// Random operations of several threads on several objects, beside a model of what each object can have given.

#include "Support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 4;
constexpr std::size_t kObjects = 6;
enum Index : std::size_t { First, Second, Manual, Lock, Small, Large };
constexpr LONG kSmallMaximum = 3;
constexpr LONG kLargeMaximum = 50;
constexpr LONG kLargeStart = 5;

/// What was put in and taken out. A unit is counted in before it is given and out after it was taken, so that
/// at no moment more can have come out.
struct Account {
    std::atomic<long> in{0};
    std::atomic<long> out{0};
};

class World {
public:
    World() {
        m_objects[First] = AutoEvent();
        m_objects[Second] = AutoEvent();
        m_objects[Manual] = ManualEvent();
        m_objects[Lock] = Mutex();
        m_objects[Small] = Semaphore(0, kSmallMaximum);
        m_objects[Large] = Semaphore(kLargeStart, kLargeMaximum);
        accounts[Large].in = kLargeStart;
    }
    HANDLE operator[](std::size_t index) const { return m_objects[index]; }

    Account accounts[kObjects];
    int inside = 0; ///< which thread has the mutex; no atomic: the mutex has to guard it

private:
    Handle m_objects[kObjects];
};

class Actor {
public:
    Actor(World& world, int number, unsigned seed) : m_world(world), m_number(number), m_random(seed) {}

    void Run(long steps) {
        for (long i = 0; i < steps && !testing::Test::HasFailure(); ++i) {
            Step();
        }
        while (m_held > 0) {
            Release(Lock);
        }
    }

private:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }

    void Step() {
        switch (Below(10)) {
        case 0:
        case 1:
            Give(Below(2) == 0 ? First : Second);
            break;
        case 2:
            Below(2) == 0 ? SetEvent(m_world[Manual]) : ResetEvent(m_world[Manual]);
            break;
        case 3:
            Post(Small, 1 + Below(2));
            break;
        case 4:
            Post(Large, 1 + Below(5));
            break;
        case 5:
            Release(Lock);
            break;
        case 6:
            TakeOne(static_cast<std::size_t>(Below(kObjects)));
            break;
        default:
            TakeSeveral(Below(2) == 0);
        }
    }

    void Give(std::size_t index) {
        ++m_world.accounts[index].in;
        EXPECT_TRUE(SetEvent(m_world[index]));
    }
    void Post(std::size_t index, LONG count) {
        m_world.accounts[index].in += count;
        LONG previous = -1;
        if (!ReleaseSemaphore(m_world[index], count, &previous)) {
            EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
            m_world.accounts[index].in -= count;
        } else {
            EXPECT_GE(previous, 0);
        }
    }
    void Release(std::size_t index) {
        if (m_held == 0) {
            EXPECT_FALSE(ReleaseMutex(m_world[index]));
            return;
        }
        EXPECT_EQ(m_world.inside, m_number);
        if (--m_held == 0) {
            m_world.inside = 0;
        }
        EXPECT_TRUE(ReleaseMutex(m_world[index]));
    }

    void Took(std::size_t index) {
        if (index == Lock) {
            EXPECT_EQ(m_world.inside, m_held == 0 ? 0 : m_number);
            m_world.inside = m_number;
            ++m_held;
        } else if (index != Manual) {
            const long out = ++m_world.accounts[index].out;
            EXPECT_LE(out, m_world.accounts[index].in) << "object " << index;
        }
    }

    DWORD TimeoutMs() { return Below(64) == 0 ? 2 : 0; }

    void TakeOne(std::size_t index) {
        const DWORD result = WaitForSingleObject(m_world[index], TimeoutMs());
        if (result == WAIT_OBJECT_0) {
            Took(index);
        } else {
            EXPECT_EQ(result, WAIT_TIMEOUT);
        }
    }

    void TakeSeveral(bool all) {
        std::size_t indices[kObjects];
        HANDLE handles[kObjects];
        DWORD count = 0;
        for (std::size_t i = 0; i < kObjects; ++i) {
            if (Below(2) == 0) {
                indices[count] = i;
                handles[count++] = m_world[i];
            }
        }
        if (count == 0) {
            return;
        }
        const DWORD result = WaitForMultipleObjects(count, handles, all ? TRUE : FALSE, TimeoutMs());
        if (result == WAIT_TIMEOUT) {
            return;
        }
        ASSERT_LT(result, WAIT_OBJECT_0 + count);
        for (DWORD i = 0; i < count; ++i) {
            if (all || i == result) {
                Took(indices[i]);
            }
        }
    }

    World& m_world;
    int m_number;
    int m_held = 0;
    std::minstd_rand m_random;
};

LONG DrainCount(HANDLE object) {
    LONG count = 0;
    while (Poll(object) == WAIT_OBJECT_0) {
        ++count;
    }
    return count;
}

TEST(Stress, ObjectsGiveWhatWasPutInAndNothingIsLost) {
    const char* const wanted = std::getenv("KRTBSS_TEST_STEPS"); // fewer where an emulator runs the steps
    const long steps = wanted == nullptr ? 200'000 : std::atol(wanted);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    World world;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&world, i, steps, seed] {
            Actor(world, i + 1, seed + static_cast<unsigned>(i)).Run(steps / kThreads);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(world.inside, 0);
    EXPECT_EQ(Poll(world[Lock]), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(world[Lock]));
    for (const std::size_t index : {Small, Large}) {
        const LONG left = DrainCount(world[index]);
        EXPECT_EQ(left, world.accounts[index].in - world.accounts[index].out) << index;
        EXPECT_GT(world.accounts[index].out, 0) << index;
    }
    for (const std::size_t index : {First, Second}) {
        EXPECT_LE(DrainCount(world[index]), 1) << index;
        EXPECT_GT(world.accounts[index].out, 0) << index;
    }

    // Whoever waits is found, on objects that have been through all that.
    threads.clear();
    std::atomic<int> out{0};
    const HANDLE all[] = {world[Small], world[Lock]};
    const HANDLE any[] = {world[First], world[Large]};
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            if (i % 2 == 0) {
                EXPECT_EQ(WaitForMultipleObjects(2, all, TRUE, kLongMs), WAIT_OBJECT_0);
                EXPECT_TRUE(ReleaseMutex(world[Lock]));
            } else {
                EXPECT_LT(WaitForMultipleObjects(2, any, FALSE, kLongMs), WAIT_OBJECT_0 + 2);
            }
            ++out;
        });
    }
    SetEvent(world[First]);
    ReleaseSemaphore(world[Small], 1, nullptr);
    ReleaseSemaphore(world[Large], 1, nullptr);
    ReleaseSemaphore(world[Small], 1, nullptr);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(out, kThreads);
}

} // namespace
