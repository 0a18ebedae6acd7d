#include "krtpal/posix/kernel/waitable.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <functional>
#include <map>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace krtpal::posix {

namespace {

constexpr std::uint32_t kMagic = 0x314F4B6B; // "kKO1"
constexpr std::uint32_t kLayoutVersion = 1;

void MakeLock(pthread_mutex_t* lock, bool shared) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    if (shared) {
        pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    }
    pthread_mutex_init(lock, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void Initialise(WaitState* state, const WaitState& initial, bool shared) {
    state->manual = initial.manual;
    state->maximum = initial.maximum;
    state->available = initial.available;
    state->owner = initial.owner;
    state->recursion = initial.recursion;
    MakeLock(&state->lock, shared);
}

// The named objects that this process has open: two handles of one name share one object, file and mapping.
struct NameList {
    std::mutex mutex;
    std::map<std::wstring, Waitable*> objects;
};

// Never destroyed, like the table of handles.
NameList& Names() {
    static auto* const names = new NameList;
    return *names;
}

// Releases the names at the normal end of the process, which closes handles on Windows too. The memory stays
// for threads that still run.
struct NamesAtExit {
    NamesAtExit() = default;
    NamesAtExit(const NamesAtExit&) = delete;
    NamesAtExit& operator=(const NamesAtExit&) = delete;
    ~NamesAtExit() { Waitable::LeaveAllNames(); }
} g_namesAtExit;

// The mutexes that a thread owns, with a reference to each. They are abandoned when the thread ends.
class HeldMutexes {
public:
    HeldMutexes() = default;
    HeldMutexes(const HeldMutexes&) = delete;
    HeldMutexes& operator=(const HeldMutexes&) = delete;
    ~HeldMutexes() {
        for (Waitable* const mutex : m_mutexes) {
            {
                LockedState state(*mutex);
                if (state->owner == CurrentThread()) {
                    state.Abandon();
                }
            }
            mutex->DropReference();
        }
        m_hasEnded = true;
    }

    static void Add(Waitable& mutex) {
        if (m_hasEnded) {
            return; // acquired by a thread after this object's end: waiters notice that it has ended
        }
        try {
            Mine().m_mutexes.push_back(&mutex);
            mutex.AddReference();
        } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): as above
        }
    }
    static void Remove(Waitable& mutex) {
        if (m_hasEnded) {
            return;
        }
        std::vector<Waitable*>& mutexes = Mine().m_mutexes;
        // Usually the mutex acquired last is released first.
        const auto found = std::find(mutexes.rbegin(), mutexes.rend(), &mutex);
        if (found != mutexes.rend()) {
            mutexes.erase(std::next(found).base());
            mutex.DropReference(); // the caller's handle holds another one
        }
    }

private:
    static HeldMutexes& Mine() {
        thread_local HeldMutexes held;
        return held;
    }
    static thread_local bool m_hasEnded;
    std::vector<Waitable*> m_mutexes;
};

thread_local bool HeldMutexes::m_hasEnded = false;

} // namespace

Reference<KernelObject> Waitable::Make(ObjectKind kind, const WaitState& initial) {
    try {
        std::unique_ptr<WaitState> state(new WaitState{});
        Initialise(state.get(), initial, false);
        Reference<KernelObject> object(new Waitable(kind));
        static_cast<Waitable&>(*object).m_state = state.release();
        if (initial.owner.IsSet()) {
            HeldMutexes::Add(static_cast<Waitable&>(*object));
        }
        return object;
    } catch (const std::bad_alloc&) {
        return Reference<KernelObject>();
    }
}

DWORD Waitable::Open(ObjectKind kind, const ObjectName& name, const WaitState* initial, HANDLE* handle) {
    *handle = nullptr;
    const std::wstring key = name.Key();
    const std::lock_guard lock(Names().mutex);
    if (const auto found = Names().objects.find(key); found != Names().objects.end()) {
        Waitable& object = *found->second;
        if (object.Kind() != kind) {
            return ERROR_INVALID_HANDLE;
        }
        object.AddReference();
        *handle = OpenHandle(Reference<KernelObject>(&object));
        return *handle == nullptr ? ERROR_NOT_ENOUGH_MEMORY : ERROR_ALREADY_EXISTS;
    }

    const Utf16String units = EncodeUtf16(name.rest);
    const auto fill = [&](void* memory) {
        auto* const named = new (memory) NamedState{};
        named->version = kLayoutVersion;
        named->kind = kind;
        named->nameUnits = static_cast<std::uint32_t>(units.size());
        std::copy(units.begin(), units.end(), named->name);
        Initialise(&named->state, *initial, true);
        named->magic = kMagic;
    };
    const auto check = [&](const void* memory, std::size_t bytes) -> DWORD {
        const auto* const named = static_cast<const NamedState*>(memory);
        if (bytes != sizeof(NamedState) || named->magic != kMagic || named->version != kLayoutVersion ||
            named->nameUnits != units.size() || !std::equal(units.begin(), units.end(), named->name) ||
            named->kind != kind) {
            return ERROR_INVALID_HANDLE;
        }
        return ERROR_SUCCESS;
    };
    std::unique_ptr<SharedFile> file;
    const DWORD error = SharedFile::Open(
        name, sizeof(NamedState), initial == nullptr ? std::function<void(void*)>() : fill, check, &file);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    const bool made = file->WasMade();
    auto* const object = new Waitable(kind);
    Reference<KernelObject> reference(object);
    object->m_named = static_cast<NamedState*>(file->Memory());
    object->m_state = &object->m_named->state;
    object->m_file = std::move(file);
    object->m_key = key;
    Names().objects.emplace(key, object);
    *handle = OpenHandle(std::move(reference));
    if (*handle == nullptr) {
        Names().objects.erase(key);
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    if (made && initial->owner.IsSet()) {
        HeldMutexes::Add(*object);
    }
    return made ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS;
}

void Waitable::LeaveAllNames() {
    const std::lock_guard lock(Names().mutex);
    for (const auto& [key, object] : Names().objects) {
        object->m_file->LeaveName();
    }
}

void Waitable::AddHandle() {
    m_handles.fetch_add(1, std::memory_order_relaxed);
}

void Waitable::DropHandle() {
    if (!IsShared()) {
        m_handles.fetch_sub(1, std::memory_order_relaxed);
        return;
    }
    // Opening a name takes this lock too, so that no handle is added after the last one was dropped.
    const std::lock_guard lock(Names().mutex);
    if (m_handles.fetch_sub(1, std::memory_order_relaxed) == 1) {
        Names().objects.erase(m_key);
        m_file->LeaveName();
    }
}

Waitable::~Waitable() {
    if (!IsShared()) {
        pthread_mutex_destroy(&m_state->lock);
        delete m_state;
    }
}

bool Waitable::IsBefore(const Waitable& other) const {
    if (IsShared() != other.IsShared()) {
        return IsShared();
    }
    return IsShared() ? m_key < other.m_key : std::less<>()(this, &other);
}

LockedState::LockedState(Waitable& object) : m_object(&object), m_state(*object.m_state) {
    if (pthread_mutex_lock(&m_state.lock) == EOWNERDEAD) {
        Repair();
        pthread_mutex_consistent(&m_state.lock);
    }
}

LockedState::~LockedState() {
    const int wake = m_wake;
    pthread_mutex_unlock(&m_state.lock);
    if (wake != 0) {
        WakeWaiters(m_state.sequence, wake, m_object->IsShared());
    }
}

void LockedState::TellChange(std::int32_t released) {
    if (m_state.entered + m_state.watching <= 0) {
        return;
    }
    m_state.sequence.fetch_add(1, std::memory_order_relaxed);
    // The woken thread may be one that only watches and can't take the unit.
    m_wake = m_state.watching > 0 ? INT_MAX : std::max(m_wake, static_cast<int>(released));
}

void LockedState::AddUnits(std::int32_t count) {
    const std::int32_t granted = std::min(count, m_state.entered - m_state.granted);
    const std::int32_t left = count - granted;
    m_state.granted += granted;
    m_state.available = m_object->Kind() == ObjectKind::Semaphore ? m_state.available + left
                                                                  : std::min(1, m_state.available + left);
    TellChange(count);
}

void LockedState::ReleaseAll() {
    if (m_state.available == 0) {
        m_state.available = 1;
        ++m_state.releases;
        TellChange(INT_MAX);
    }
}

void LockedState::Pulse() {
    if (m_state.manual != 0) {
        ++m_state.releases;
        TellChange(INT_MAX);
    } else if (m_state.entered > m_state.granted) {
        ++m_state.granted;
        TellChange(1);
    }
    m_state.available = 0;
}

bool LockedState::Release() {
    if (!(m_state.owner == CurrentThread())) {
        return false;
    }
    if (--m_state.recursion == 0) {
        m_state.owner = {};
        HeldMutexes::Remove(*m_object);
        AddUnits(1);
    }
    return true;
}

void LockedState::Abandon() {
    m_state.abandoned = 1;
    m_state.recursion = 0;
    m_state.owner = {};
    AddUnits(1);
}

void LockedState::ReclaimFromDead() {
    if (m_state.owner.IsSet() && !(m_state.owner == CurrentThread()) && !IsAlive(m_state.owner)) {
        Abandon();
    }
    if (m_state.granted > 0 && m_object->IsShared()) {
        DropDeadWaiters();
    }
}

bool LockedState::CanTake(const Standing& standing) const {
    if (m_state.manual != 0) {
        const bool waits = standing.entered || standing.watching;
        return m_state.available > 0 || (waits && m_state.releases != standing.releases);
    }
    return m_state.available > 0 || (standing.entered && m_state.granted > 0) ||
           (m_state.owner.IsSet() && m_state.owner == CurrentThread());
}

Taken LockedState::TryTake(Standing& standing) {
    if (!CanTake(standing)) {
        return Taken::No;
    }
    Taken taken = Taken::Yes;
    if (m_object->Kind() == ObjectKind::Mutex && m_state.owner.IsSet()) {
        ++m_state.recursion;
    } else if (m_state.manual == 0) {
        if (m_object->Kind() == ObjectKind::Mutex) {
            m_state.owner = CurrentThread();
            m_state.recursion = 1;
            taken = std::exchange(m_state.abandoned, 0) != 0 ? Taken::FromDead : Taken::Yes;
            HeldMutexes::Add(*m_object);
        }
        --(standing.entered && m_state.granted > 0 ? m_state.granted : m_state.available);
    }
    Leave(standing);
    return taken;
}

void LockedState::Look(Standing& standing) const {
    standing.sequence = m_state.sequence.load(std::memory_order_relaxed);
    standing.releases = m_state.releases;
}

void LockedState::Enter(Standing& standing) {
    if (NamedState* const named = m_object->m_named) {
        ThreadIdentity* const free =
            std::find_if(std::begin(named->waiters), std::end(named->waiters),
                         [](const ThreadIdentity& waiter) { return !waiter.IsSet(); });
        if (free == std::end(named->waiters)) {
            Watch(standing);
            return;
        }
        *free = CurrentThread();
        standing.entry = static_cast<int>(free - named->waiters);
    }
    ++m_state.entered;
    standing.entered = true;
    Look(standing);
}

void LockedState::Watch(Standing& standing) {
    ++m_state.watching;
    standing.watching = true;
    Look(standing);
}

void LockedState::Leave(Standing& standing) {
    if (standing.watching) {
        standing.watching = false;
        --m_state.watching;
    }
    if (standing.entered) {
        standing.entered = false;
        if (m_object->m_named != nullptr) {
            m_object->m_named->waiters[standing.entry] = {};
        }
        --m_state.entered;
        SettleGrants();
        if (m_state.granted > 0) {
            TellChange(m_state.granted); // this thread may have been the one that was woken for the unit
        }
    }
}

// Makes units available that were granted to waiters that left. A semaphore can exceed its maximum for a
// while; losing a unit would be worse.
void LockedState::SettleGrants() {
    const std::int32_t surplus = m_state.granted - m_state.entered;
    if (surplus > 0) {
        m_state.granted -= surplus;
        AddUnits(surplus);
    }
}

void LockedState::DropDeadWaiters() {
    std::int32_t alive = 0;
    for (ThreadIdentity& waiter : m_object->m_named->waiters) {
        if (waiter.IsSet() && !IsAlive(waiter)) {
            waiter = {};
        }
        alive += waiter.IsSet() ? 1 : 0;
    }
    m_state.entered = alive;
    SettleGrants();
}

// The process that held the lock was killed during a change.
void LockedState::Repair() {
    if (m_object->Kind() == ObjectKind::Mutex) {
        if (m_state.owner.IsSet() && m_state.recursion > 0) {
            m_state.available = 0;
            m_state.granted = 0;
        } else {
            // It was being acquired or released.
            m_state.owner = {};
            m_state.recursion = 0;
            m_state.abandoned = 1;
            m_state.available = 1;
            m_state.granted = 0;
        }
    }
    m_state.granted = std::max(m_state.granted, 0);
    m_state.available = std::max(m_state.available, 0);
    DropDeadWaiters();
    m_state.sequence.fetch_add(1, std::memory_order_relaxed);
    m_wake = INT_MAX;
}

} // namespace krtpal::posix
