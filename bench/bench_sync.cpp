// Measures locks and signals against those of the standard library, Boost.Interprocess and a bare futex.
//
// Covers lock and unlock with and without contention, reader-writer locks, and a ping-pong by events between
// two threads and between two processes, for which the program starts itself again. Linux only.
//
//     bench_sync [--benchmark_... options]

#include "bss/thread/WEvent.h"
#include "bss/thread/WReadWriteLock.h"
#include "bss/thread/WSingleLock.h"

#include <benchmark/benchmark.h>
#include <boost/interprocess/sync/interprocess_semaphore.hpp>

#include <atomic>
#include <climits>
#include <csignal>
#include <cstring>
#include <functional>
#include <linux/futex.h>
#include <memory>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <string>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using bss::sync::WCriticalSection;
using bss::sync::WEvent;
using bss::sync::WReadWriteLock;

template <typename Operation>
void Repeat(benchmark::State& state, Operation operation) {
    for (auto step : state) {
        static_cast<void>(step);
        operation();
        benchmark::ClobberMemory();
    }
}

WCriticalSection g_section;
std::recursive_mutex g_recursiveMutex;
WReadWriteLock g_readWrite;
std::shared_mutex g_sharedMutex;
int g_counter = 0;

void LockSection(benchmark::State& state) {
    Repeat(state, [] {
        g_section.Lock();
        ++g_counter;
        g_section.Unlock();
    });
}
void LockRecursiveMutex(benchmark::State& state) {
    Repeat(state, [] {
        g_recursiveMutex.lock();
        ++g_counter;
        g_recursiveMutex.unlock();
    });
}
void Read(benchmark::State& state) {
    Repeat(state, [] {
        g_readWrite.AcquireReadLock();
        g_readWrite.Unlock();
    });
}
void ReadShared(benchmark::State& state) {
    Repeat(state, [] {
        g_sharedMutex.lock_shared();
        g_sharedMutex.unlock_shared();
    });
}
void Write(benchmark::State& state) {
    Repeat(state, [] {
        g_readWrite.AcquireWriteLock();
        g_readWrite.Unlock();
    });
}
void WriteShared(benchmark::State& state) {
    Repeat(state, [] {
        g_sharedMutex.lock();
        g_sharedMutex.unlock();
    });
}

// An auto-reset signal that uses only the system call.
class BareFutex {
public:
    void Set() {
        m_word.store(1, std::memory_order_release);
        syscall(SYS_futex, &m_word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    }
    void Wait() {
        std::uint32_t set = 1;
        while (!m_word.compare_exchange_strong(set, 0, std::memory_order_acquire)) {
            syscall(SYS_futex, &m_word, FUTEX_WAIT, 0, nullptr, nullptr, 0);
            set = 1;
        }
    }

private:
    std::atomic<std::uint32_t> m_word{0};
};

class BoostSemaphore {
public:
    void Set() { m_semaphore.post(); }
    void Wait() { m_semaphore.wait(); }

private:
    boost::interprocess::interprocess_semaphore m_semaphore{0};
};

class LibraryEvent {
public:
    explicit LibraryEvent(const wchar_t* name = nullptr) : m_event(false, false, name) {}
    void Set() { m_event.SetEvent(); }
    void Wait() { m_event.Lock(0xFFFFFFFF); }

private:
    WEvent m_event;
};

template <typename Signal>
struct Pair {
    Signal ping;
    Signal pong;
};

template <typename Signal>
void PingPong(benchmark::State& state, Signal& ping, Signal& pong) {
    Repeat(state, [&] {
        ping.Set();
        pong.Wait();
    });
}

template <typename Signal>
void BetweenThreads(benchmark::State& state) {
    Pair<Signal> pair;
    std::atomic<bool> ends{false};
    std::thread other([&] {
        for (;;) {
            pair.ping.Wait();
            if (ends) {
                return;
            }
            pair.pong.Set();
        }
    });
    PingPong(state, pair.ping, pair.pong);
    ends = true;
    pair.ping.Set();
    other.join();
}

template <typename Signal>
[[noreturn]] void Answer(Signal& ping, Signal& pong) {
    for (;;) {
        ping.Wait();
        pong.Set();
    }
}

void Kill(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

// Measures the ping-pong with signals in memory shared with a forked child.
template <typename Signal>
void BetweenProcesses(benchmark::State& state) {
    void* const memory =
        mmap(nullptr, sizeof(Pair<Signal>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* const pair = new (memory) Pair<Signal>;
    const pid_t child = fork();
    if (child == 0) {
        Answer(pair->ping, pair->pong);
    }
    PingPong(state, pair->ping, pair->pong);
    Kill(child);
    munmap(memory, sizeof(Pair<Signal>));
}

constexpr wchar_t kPing[] = L"krtbss-bench-ping";
constexpr wchar_t kPong[] = L"krtbss-bench-pong";

void EventsBetweenProcesses(benchmark::State& state) {
    LibraryEvent ping(kPing);
    LibraryEvent pong(kPong);
    const pid_t child = fork();
    if (child == 0) {
        execl("/proc/self/exe", "bench_sync", "--answer", nullptr);
        _exit(1);
    }
    PingPong(state, ping, pong);
    Kill(child);
}

void Register(const std::string& name, void (*function)(benchmark::State&), int threads) {
    auto* const added = benchmark::RegisterBenchmark(name.c_str(), function);
    if (threads > 1) {
        added->Threads(threads)->UseRealTime();
    }
    added->Repetitions(9);
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--answer") == 0) {
        LibraryEvent ping(kPing);
        LibraryEvent pong(kPong);
        Answer(ping, pong);
    }
    for (const int threads : {1, 2}) {
        const std::string how = threads == 1 ? ", uncontended/" : ", 2 threads/";
        Register("Locks/exclusive" + how + "krtbss", &LockSection, threads);
        Register("Locks/exclusive" + how + "std::recursive_mutex", &LockRecursiveMutex, threads);
        Register("Locks/read" + how + "krtbss", &Read, threads);
        Register("Locks/read" + how + "std::shared_mutex", &ReadShared, threads);
        Register("Locks/write" + how + "krtbss", &Write, threads);
        Register("Locks/write" + how + "std::shared_mutex", &WriteShared, threads);
    }
    const std::string threads = "Event round trip/between threads/";
    Register(threads + "krtbss", &BetweenThreads<LibraryEvent>, 1);
    Register(threads + "bare futex", &BetweenThreads<BareFutex>, 1);
    Register(threads + "Boost.Interprocess semaphore", &BetweenThreads<BoostSemaphore>, 1);
    const std::string processes = "Event round trip/between processes/";
    Register(processes + "krtbss", &EventsBetweenProcesses, 1);
    Register(processes + "bare futex", &BetweenProcesses<BareFutex>, 1);
    Register(processes + "Boost.Interprocess semaphore", &BetweenProcesses<BoostSemaphore>, 1);

    // Interleaved, so that other load affects all alike.
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::string minimum = "--benchmark_min_time=0.1";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, {interleaved.data(), minimum.data()});
    auto count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
