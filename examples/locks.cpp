// Threads that share a counter and hand over work, and two processes that share a mutex by its name.

#include "bss/system/WExclusion.h"
#include "bss/thread/WCriticalSection.h"
#include "bss/thread/WEvent.h"
#include "bss/thread/WSingleLock.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr wchar_t kMutex[] = L"Local\\krtbss example locks";
constexpr wchar_t kProgram[] = L"krtbss example locks, one at a time";

// The other process: it can neither be the only one, nor have the mutex.
int Second() {
    bss::WExclusion single;
    const bool isFirst = single.SetExclusion(kProgram, bss::WExclusion::User);
    bss::sync::WMutex mutex(false, kMutex);
    const bool hasMutex = mutex.Lock(50);
    std::printf("second process: %s, %s\n", isFirst ? "the only one" : "another one runs",
                hasMutex ? "has the mutex" : "the mutex is taken");
    return isFirst || hasMutex ? 1 : 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count > 1) {
        return Second();
    }
    bss::sync::WCriticalSection section;
    bss::sync::WEvent go(false, true); // stays set: all threads go on
    bss::sync::WSemaphore done(0, 4);
    long counter = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            go.Lock(10'000);
            for (int k = 0; k < 10'000; ++k) {
                const bss::sync::WSingleLock guard(&section, true);
                ++counter;
            }
            done.Unlock();
        });
    }
    std::printf("before the start: %ld\n", counter);
    go.SetEvent();
    bool areDone = true;
    for (int i = 0; i < 4; ++i) {
        areDone = done.Lock(10'000) && areDone;
    }
    std::printf("%s: %ld\n", areDone ? "all done" : "not done in time", counter);
    for (std::thread& thread : threads) {
        thread.join();
    }

    bss::WExclusion single;
    const bool isFirst = single.SetExclusion(kProgram, bss::WExclusion::User);
    bss::sync::WMutex mutex(true, kMutex); // owned from the beginning
    std::printf("first process: %s\n", isFirst ? "the only one" : "another one runs");
    std::fflush(stdout);
    const std::string self = std::string("\"") + arguments[0] + "\"";
    const int status = std::system((self + " second").c_str());
    mutex.Unlock();
    return status == 0 ? 0 : 1;
}
