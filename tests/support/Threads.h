// Threads that do the same at the same time.

#ifndef TESTS_SUPPORT_THREADS_H
#define TESTS_SUPPORT_THREADS_H

#include <latch>
#include <thread>
#include <vector>

/// Calls `step(number)` in this many threads, which start together, and returns after the last one has ended.
template <class Step>
void RunInThreads(int count, const Step& step) {
    std::latch start(count);
    std::vector<std::jthread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            start.arrive_and_wait();
            step(number);
        });
    }
}

#endif
