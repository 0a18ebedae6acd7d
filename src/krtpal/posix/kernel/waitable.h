// The state of events, mutexes and semaphores, and how waiters take from it.
//
// Every object is a number of units that waits take. An event has one unit while it is signalled, which the
// released wait takes unless the event is of manual reset. A mutex has one unit while it is free, a semaphore
// as many as its count. A unit that is added while threads wait is granted to them: no thread that comes
// later takes it. So each signal releases a thread that waited, as on Windows.
//
// The state of a named object lies in memory shared by processes, any of which may be killed at any
// instruction. Its lock is robust: the process that acquires it from a dead owner repairs the counts. Waiters
// are registered with their identity, so that units granted to dead waiters are found; so are owners of
// mutexes.

#ifndef KRTPAL_POSIX_KERNEL_WAITABLE_H
#define KRTPAL_POSIX_KERNEL_WAITABLE_H

#include "krtpal/posix/kernel/futex.h"
#include "krtpal/posix/kernel/handle.h"
#include "krtpal/posix/kernel/sharedfile.h"
#include "krtpal/posix/kernel/thread.h"

#include <cstdint>
#include <memory>
#include <pthread.h>
#include <string>

namespace krtpal::posix {

/// Maximum number of registered waiters of a named object. Further waiters are not granted units but take
/// available ones.
inline constexpr std::size_t kMostNamedWaiters = 100;

/// The state of every object, in the process or in shared memory.
struct WaitState {
    pthread_mutex_t lock;   ///< guards all members; the sequence is also read without it
    FutexWord sequence;     ///< changes with every change that can end a wait
    std::int32_t manual;    ///< 1 for an event of manual reset
    std::int32_t maximum;   ///< upper limit of `available`
    std::int32_t available; ///< units that any thread may take
    std::int32_t granted;   ///< units reserved for registered waiters, at most one each
    std::int32_t entered;   ///< number of registered waiters
    std::int32_t watching;  ///< number of waiters that are only woken by changes
    std::uint32_t releases; ///< number of times that a manual-reset event released all waiters
    std::int32_t recursion; ///< acquisitions by the owner of a mutex
    std::int32_t abandoned; ///< 1 if the last owner of a mutex ended without releasing it
    ThreadIdentity owner;   ///< owner of a mutex
};

/// The contents of the file of a named object.
struct NamedState {
    std::uint32_t magic;
    std::uint32_t version;
    ObjectKind kind;
    std::uint32_t nameUnits;
    std::uint16_t name[MAX_PATH * 2]; ///< the name without its prefix, in UTF-16
    WaitState state;
    ThreadIdentity waiters[kMostNamedWaiters];
};

enum class Taken { No, Yes, FromDead };

/// An event, a mutex or a semaphore.
class Waitable final : public KernelObject {
public:
    /// Returns an unnamed object, or null if there is no memory.
    static Reference<KernelObject> Make(ObjectKind kind, const WaitState& initial);
    /// Sets `*handle` to a handle of the named object, which is created from `initial` if it does not exist
    /// and `initial` is not null. Returns ERROR_SUCCESS if it was created and ERROR_ALREADY_EXISTS if it
    /// existed; every other result is a failure with a null handle.
    static DWORD Open(ObjectKind kind, const ObjectName& name, const WaitState* initial, HANDLE* handle);

    /// Releases the names of all open objects.
    static void LeaveAllNames();

    void AddHandle() override;
    void DropHandle() override;

    WaitState& State() { return *m_state; }
    bool IsShared() const { return m_file != nullptr; }
    /// Returns whether this object is locked before the other one. All processes agree on the order.
    bool IsBefore(const Waitable& other) const;

private:
    explicit Waitable(ObjectKind kind) : KernelObject(kind) {}
    ~Waitable() override;

    friend class LockedState;
    WaitState* m_state = nullptr;
    NamedState* m_named = nullptr; ///< null for an unnamed object
    std::unique_ptr<SharedFile> m_file;
    std::wstring m_key;
    std::atomic<std::uint32_t> m_handles{0};
};

/// A waiter's view of one object between two looks at it.
struct Standing {
    Waitable* object = nullptr;
    std::uint32_t sequence = 0;
    std::uint32_t releases = 0;
    int entry = -1; ///< index in the list of a named object
    bool entered = false;
    bool watching = false;
};

/// An object whose lock is held. All changes of its state are made here. The necessary wake-ups follow when
/// the lock is released.
class LockedState {
public:
    explicit LockedState(Waitable& object);
    LockedState(const LockedState&) = delete;
    LockedState& operator=(const LockedState&) = delete;
    ~LockedState();

    WaitState* operator->() const { return &m_state; }

    /// Adds units: grants them to registered waiters first and makes the others available.
    void AddUnits(std::int32_t count);
    /// Releases one waiter, or all of a manual-reset event, and clears the event.
    void Pulse();
    /// Signals a manual-reset event and releases all waiters.
    void ReleaseAll();
    /// Gives back one acquisition of a mutex. Returns false if the calling thread does not own it.
    bool Release();
    /// Frees a mutex whose owner has ended.
    void Abandon();
    /// Frees a mutex whose owner has ended, and makes units available that were granted to waiters that have
    /// ended.
    void ReclaimFromDead();

    /// Returns whether TryTake would take a unit.
    bool CanTake(const Standing& standing) const;
    Taken TryTake(Standing& standing);

    /// Registers the calling thread as a waiter, until it takes a unit or leaves. Enter falls back to Watch
    /// if the list of a named object is full.
    void Enter(Standing& standing);
    void Watch(Standing& standing);
    void Leave(Standing& standing);
    /// Records the state: a later change ends a wait on the object's word.
    void Look(Standing& standing) const;

private:
    void Repair();
    void DropDeadWaiters();
    void SettleGrants();
    void TellChange(std::int32_t released);

    Waitable* m_object;
    WaitState& m_state;
    int m_wake = 0; ///< number of waiters to wake
};

} // namespace krtpal::posix

#endif
