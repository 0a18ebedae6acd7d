// A thread that is expected to wait: told apart from one that went on.

#ifndef TESTS_SUPPORT_BLOCKED_H
#define TESTS_SUPPORT_BLOCKED_H

#include "krtpal/sync.h"

#include <atomic>
#include <cstdlib>
#include <functional>
#include <thread>

class Blocked {
public:
    explicit Blocked(std::function<void()> step)
        : m_thread([this, step = std::move(step)] {
              m_started = true;
              step();
              m_ended = true;
          }) {
        while (!m_started) {
            Sleep(1);
        }
        Sleep(100); // nothing tells that it reached its wait
    }
    /// A thread that waits on and on can't be joined: it ends the program.
    ~Blocked() {
        if (!EndsSoon()) {
            std::abort();
        }
    }
    bool HasEnded() const { return m_ended; }
    bool EndsSoon() const {
        for (int i = 0; i < 20'000 && !m_ended; ++i) {
            Sleep(1);
        }
        return m_ended;
    }

private:
    std::atomic<bool> m_started{false};
    std::atomic<bool> m_ended{false};
    std::jthread m_thread;
};

#endif
