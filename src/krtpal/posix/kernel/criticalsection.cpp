#include "krtpal/posix/kernel/futex.h"
#include "krtpal/process.h"
#include "krtpal/sync.h"

#include <atomic>
#include <unistd.h>

namespace krtpal {

namespace {

// Values of LockCount. The owner of an awaited lock wakes a waiter when it leaves.
constexpr LONG kFree = 0;
constexpr LONG kHeld = 1;
constexpr LONG kAwaited = 2;

// Attempts before a thread waits, on a machine where the owner may run on another processor.
constexpr ULONG_PTR kSpins = 100;

using Count = std::atomic_ref<LONG>;
using Owner = std::atomic_ref<HANDLE>;

HANDLE Myself() {
    return reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(GetCurrentThreadId()));
}

void Relax() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

posix::FutexWord& WordOf(CRITICAL_SECTION* section) {
    static_assert(sizeof(posix::FutexWord) == sizeof(section->LockCount));
    return reinterpret_cast<posix::FutexWord&>(section->LockCount);
}

bool TryHold(CRITICAL_SECTION* section) {
    LONG expected = kFree;
    return Count(section->LockCount)
        .compare_exchange_strong(expected, kHeld, std::memory_order_acquire, std::memory_order_relaxed);
}

[[gnu::noinline]] void HoldWithWait(CRITICAL_SECTION* section) {
    const Count count(section->LockCount);
    for (ULONG_PTR i = 0; i < section->SpinCount; ++i) {
        if (count.load(std::memory_order_relaxed) == kFree && TryHold(section)) {
            return;
        }
        Relax();
    }
    const posix::ExpectedWord awaited{&WordOf(section), kAwaited, false};
    while (count.exchange(kAwaited, std::memory_order_acquire) != kFree) {
        posix::WaitOnWords(&awaited, 1, posix::Deadline::Never());
    }
}

void BecomeOwner(CRITICAL_SECTION* section, HANDLE me) {
    Owner(section->OwningThread).store(me, std::memory_order_relaxed);
    section->RecursionCount = 1;
}

} // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    InitializeCriticalSectionAndSpinCount(section, kSpins);
}

BOOL InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD spinCount) {
    // The upper byte has flags of the system. On one processor the owner can't run during a spin. sysconf
    // takes microseconds, so its result is cached.
    static const bool several = sysconf(_SC_NPROCESSORS_ONLN) > 1;
    *section = {nullptr, kFree, 0, nullptr, nullptr, several ? (spinCount & 0x00FFFFFF) : 0};
    return TRUE;
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    const HANDLE me = Myself();
    // Relaxed: only the thread itself stores its number.
    if (Owner(section->OwningThread).load(std::memory_order_relaxed) == me) {
        ++section->RecursionCount;
        return;
    }
    if (!TryHold(section)) {
        HoldWithWait(section);
    }
    BecomeOwner(section, me);
}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* section) {
    const HANDLE me = Myself();
    if (Owner(section->OwningThread).load(std::memory_order_relaxed) == me) {
        ++section->RecursionCount;
        return TRUE;
    }
    if (!TryHold(section)) {
        return FALSE;
    }
    BecomeOwner(section, me);
    return TRUE;
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    if (--section->RecursionCount != 0) {
        return;
    }
    Owner(section->OwningThread).store(nullptr, std::memory_order_relaxed);
    if (Count(section->LockCount).exchange(kFree, std::memory_order_release) == kAwaited) {
        posix::WakeWaiters(WordOf(section), 1, false);
    }
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    *section = {nullptr, kFree, 0, nullptr, nullptr, 0};
}

} // namespace krtpal
