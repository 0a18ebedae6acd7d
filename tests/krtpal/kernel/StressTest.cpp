// Random operations of several threads on several objects, beside a model of what each object can have given.

#include "Support.h"

#include "support/Threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr int kThreads = 4;
constexpr std::size_t kObjects = 6;
enum Index : std::size_t { First, Second, Manual, Lock, Small, Large };
constexpr LONG kLargeStart = 5;

/// A unit is counted in before it is given and out after it was taken, so that at no moment more can have
/// come out.
struct World {
    Handle objects[kObjects] = {AutoEvent(), AutoEvent(),     ManualEvent(),
                                Mutex(),     Semaphore(0, 3), Semaphore(kLargeStart, 50)};
    std::atomic<long> in[kObjects] = {0, 0, 0, 0, 0, kLargeStart};
    std::atomic<long> out[kObjects] = {};
    int inside = 0; ///< which thread has the mutex; no atomic: the mutex has to guard it
};

class Actor {
public:
    Actor(World& world, int number, unsigned seed) : m_world(world), m_number(number), m_random(seed) {}

    void Run(long steps) {
        for (long i = 0; i < steps && !testing::Test::HasFailure(); ++i) {
            Step();
        }
        while (m_held > 0) {
            Release();
        }
    }

private:
    std::size_t Below(std::size_t bound) { return m_random() % bound; }

    void Step() {
        const std::size_t step = Below(10);
        if (step < 2) {
            const std::size_t index = Below(2) == 0 ? First : Second;
            ++m_world.in[index];
            EXPECT_TRUE(SetEvent(m_world.objects[index]));
        } else if (step == 2) {
            Below(2) == 0 ? SetEvent(m_world.objects[Manual]) : ResetEvent(m_world.objects[Manual]);
        } else if (step == 3) {
            Post(Small, 1 + static_cast<LONG>(Below(2)));
        } else if (step == 4) {
            Post(Large, 1 + static_cast<LONG>(Below(5)));
        } else if (step == 5) {
            Release();
        } else {
            Take();
        }
    }

    void Post(std::size_t index, LONG count) {
        m_world.in[index] += count;
        if (!ReleaseSemaphore(m_world.objects[index], count, nullptr)) {
            EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
            m_world.in[index] -= count;
        }
    }

    void Release() {
        if (m_held == 0) {
            EXPECT_FALSE(ReleaseMutex(m_world.objects[Lock]));
            return;
        }
        EXPECT_EQ(m_world.inside, m_number);
        if (--m_held == 0) {
            m_world.inside = 0;
        }
        EXPECT_TRUE(ReleaseMutex(m_world.objects[Lock]));
    }

    void Took(std::size_t index) {
        if (index == Lock) {
            EXPECT_EQ(m_world.inside, m_held == 0 ? 0 : m_number);
            m_world.inside = m_number;
            ++m_held;
        } else if (index != Manual) {
            const long out = ++m_world.out[index];
            EXPECT_LE(out, m_world.in[index]) << "object " << index;
        }
    }

    /// Any or all of some objects, in most cases at once or not at all.
    void Take() {
        std::vector<std::size_t> indices;
        std::vector<HANDLE> handles;
        for (std::size_t i = 0; i < kObjects; ++i) {
            if (Below(2) == 0) {
                indices.push_back(i);
                handles.push_back(m_world.objects[i]);
            }
        }
        if (handles.empty()) {
            return;
        }
        const bool all = Below(2) == 0;
        const auto count = static_cast<DWORD>(handles.size());
        const DWORD result =
            WaitForMultipleObjects(count, handles.data(), all ? TRUE : FALSE, Below(64) == 0 ? 2 : 0);
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

TEST(Stress, ObjectsGiveWhatWasPutInAndNothingIsLost) {
    const long steps = CountFrom("KRTBSS_TEST_STEPS", 100'000, 1'000'000);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    World world;
    RunInThreads(kThreads, [&](int number) {
        Actor(world, number + 1, seed + static_cast<unsigned>(number)).Run(steps / kThreads);
    });
    EXPECT_EQ(world.inside, 0);
    EXPECT_EQ(Poll(world.objects[Lock]), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(world.objects[Lock]));
    for (const std::size_t index : {First, Second, Small, Large}) {
        LONG left = 0;
        while (Poll(world.objects[index]) == WAIT_OBJECT_0) {
            ++left;
        }
        if (index < Manual) {
            EXPECT_LE(left, 1) << index; // signals that found an event set are lost
        } else {
            EXPECT_EQ(left, world.in[index] - world.out[index]) << index;
        }
        EXPECT_GT(world.out[index], 0) << index;
    }
}

} // namespace
