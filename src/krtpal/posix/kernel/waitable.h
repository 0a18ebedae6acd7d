// The state of events, mutexes and semaphores, and how waiters take from it.
//
// Every object is a count of units that waits take: an event has one while it is signalled (taken by the wait
// that it releases, unless it is of manual reset), a mutex one while it is free, a semaphore as many as its
// count. A unit that comes while threads wait is granted to them: nobody who comes later takes it. So each
// signal releases a thread that waited, as the system has it.
//
// The state of a named object lies in memory shared by processes, any of which may be killed at any
// instruction. Its lock is robust: who gets it from a dead owner repairs the counts. Waiters are entered with
// their identity, so that units granted to the dead are found; owners of mutexes likewise.

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

/// The waiters of a named object that units are granted to; more can wait, but take what is left.
inline constexpr std::size_t kMostNamedWaiters = 100;

/// What every object holds, in the process or in shared memory.
struct WaitState {
    pthread_mutex_t lock;   ///< guards all but the sequence, which is also read without it
    FutexWord sequence;     ///< changes with every change that may end a wait
    std::int32_t manual;    ///< an event that waits leave as it is
    std::int32_t maximum;   ///< of what a release may make `available`
    std::int32_t available; ///< units that anybody may take
    std::int32_t granted;   ///< units kept for the entered waiters; at most one each
    std::int32_t entered;   ///< waiters that units are granted to
    std::int32_t watching;  ///< waiters that are only told of changes
    std::uint32_t releases; ///< how often a manual-reset event has let everybody go who waited
    std::int32_t recursion; ///< of a mutex
    std::int32_t abandoned; ///< the last owner of a mutex ended without releasing it
    ThreadIdentity owner;   ///< of a mutex
};

/// The file of a named object.
struct NamedState {
    std::uint32_t magic;
    std::uint32_t version;
    ObjectKind kind;
    std::uint32_t nameUnits;
    std::uint16_t name[MAX_PATH * 2]; ///< the whole name, in UTF-16
    WaitState state;
    ThreadIdentity waiters[kMostNamedWaiters];
};

enum class Taken { No, Yes, FromDead };

/// An event, a mutex or a semaphore.
class Waitable final : public KernelObject {
public:
    /// An object of this process. Null if there is no memory.
    static Reference<KernelObject> Make(ObjectKind kind, const WaitState& initial);
    /// A handle to the object of a name: made from `initial`, or the one that exists; with `initial` null
    /// that one only. ERROR_SUCCESS where it was made, ERROR_ALREADY_EXISTS where it was opened; otherwise
    /// the handle is null.
    static DWORD Open(ObjectKind kind, const ObjectName& name, const WaitState* initial, HANDLE* handle);

    /// Of all objects that are open.
    static void LeaveAllNames();

    void AddHandle() override;
    void DropHandle() override;

    WaitState& State() { return *m_state; }
    bool IsShared() const { return m_file != nullptr; }
    /// In an order of locks that all processes agree on, `this` comes before the other.
    bool IsBefore(const Waitable& other) const;

private:
    explicit Waitable(ObjectKind kind) : KernelObject(kind) {}
    ~Waitable() override;

    friend class LockedState;
    WaitState* m_state = nullptr;
    NamedState* m_named = nullptr; ///< null without a name
    std::unique_ptr<SharedFile> m_file;
    std::wstring m_key;
    std::atomic<std::uint32_t> m_handles{0};
};

/// Where a waiter stands with one object between two looks at it.
struct Standing {
    Waitable* object = nullptr;
    std::uint32_t sequence = 0;
    std::uint32_t releases = 0;
    int entry = -1; ///< in the list of a named object
    bool entered = false;
    bool watching = false;
};

/// An object under its lock. All changes of its state are made here; the wake-ups that they call for follow
/// when the lock is left.
class LockedState {
public:
    explicit LockedState(Waitable& object);
    LockedState(const LockedState&) = delete;
    LockedState& operator=(const LockedState&) = delete;
    ~LockedState();

    WaitState* operator->() const { return &m_state; }

    /// Adds units: to the waiters first, and what is left for anybody.
    void AddUnits(std::int32_t count);
    /// Lets one or all of those go who wait now, and leaves the event clear.
    void Pulse();
    /// Manual-reset event: lets everybody go.
    void ReleaseAll();
    /// The calling thread gives one of its holds of a mutex back. False if it has none.
    bool Release();
    /// The mutex is free, its owner having ended.
    void Abandon();
    /// Makes anybody's what an owner of the mutex, or waiters that units were granted to, left behind by
    /// ending.
    void ReclaimFromDead();

    /// Whether `TryTake` would take a unit.
    bool CanTake(const Standing& standing) const;
    Taken TryTake(Standing& standing);

    /// The calling thread waits from now on, until it took a unit or left.
    void Enter(Standing& standing);
    void Watch(Standing& standing);
    void Leave(Standing& standing);
    /// What changes after this ends a wait on the object's word.
    void Look(Standing& standing) const;

private:
    void Repair();
    void DropDeadWaiters();
    void SettleGrants();
    void TellChange(std::int32_t released);

    Waitable* m_object;
    WaitState& m_state;
    int m_wake = 0; ///< how many to wake
};

} // namespace krtpal::posix

#endif
