// Threads that do the same at the same time.

#ifndef TESTS_SUPPORT_THREADS_H
#define TESTS_SUPPORT_THREADS_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

/// Opens when this many threads have arrived. In place of `std::latch`, which loses wake-ups in libstdc++ 12
/// where the system has no futex: its waiter compares the value outside the lock under which it then waits.
class Gate {
public:
    explicit Gate(int count) : m_missing(count) {}
    void ArriveAndWait() {
        std::unique_lock lock(m_mutex);
        if (--m_missing == 0) {
            m_opened.notify_all();
        }
        m_opened.wait(lock, [this] { return m_missing <= 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    int m_missing;
};

/// Calls `step(number)` in this many threads, which start together, and returns after the last one has ended.
template <class Step>
void RunInThreads(int count, const Step& step) {
    Gate start(count);
    std::vector<std::jthread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            start.ArriveAndWait();
            step(number);
        });
    }
}

#endif
