#include "krtpal/posix/kernel/wait.h"

#include "krtpal/error.h"
#include "krtpal/posix/kernel/waitable.h"
#include "krtpal/sync.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace krtpal {

namespace posix {

namespace {

// Interval at which waiters check whether the owner of a mutex is alive.
constexpr DWORD kReclaimMs = 100;

class Wait {
public:
    Wait(std::size_t count, DWORD timeoutMs, const InputSource* input)
        : m_count(count), m_input(input), m_poll(timeoutMs == 0), m_deadline(Deadline::After(timeoutMs)),
          m_nextReclaim(Deadline::Never()) {}

    void SetObject(std::size_t index, Waitable* object) {
        m_standings[index].object = object;
        m_mayReclaim = m_mayReclaim || object->IsShared() || object->Kind() == ObjectKind::Mutex;
    }

    DWORD ForAny();
    DWORD ForAll();

private:
    // Returns nothing if object `index` is not available.
    std::optional<DWORD> TryTake(LockedState& state, std::size_t index) {
        const Taken taken = state.TryTake(m_standings[index]);
        if (taken == Taken::No) {
            return std::nullopt;
        }
        return (taken == Taken::FromDead ? WAIT_ABANDONED_0 : WAIT_OBJECT_0) + static_cast<DWORD>(index);
    }
    std::optional<DWORD> TakeFirst(bool reclaim);
    std::optional<DWORD> EnterAll();
    std::optional<DWORD> LeaveAll(bool take);
    bool HasInput() const { return m_input != nullptr && m_input->HasArrived(); }
    void WaitForChange();
    // Returns true once per interval.
    bool IsTimeToReclaim();

    std::size_t m_count;
    const InputSource* m_input;
    bool m_poll;
    bool m_mayReclaim = false;
    Deadline m_deadline;
    Deadline m_nextReclaim;
    std::uint32_t m_inputSeen = 0;
    Standing m_standings[MAXIMUM_WAIT_OBJECTS];
};

std::optional<DWORD> Wait::TakeFirst(bool reclaim) {
    for (std::size_t i = 0; i < m_count; ++i) {
        Standing& standing = m_standings[i];
        LockedState state(*standing.object);
        if (reclaim) {
            state.ReclaimFromDead();
        }
        if (const auto result = TryTake(state, i)) {
            return result;
        }
        state.Look(standing);
    }
    return std::nullopt;
}

std::optional<DWORD> Wait::EnterAll() {
    for (std::size_t i = 0; i < m_count; ++i) {
        LockedState state(*m_standings[i].object);
        if (const auto result = TryTake(state, i)) {
            return result;
        }
        state.Enter(m_standings[i]);
    }
    return std::nullopt;
}

// With `take`, takes a unit that was granted at the last moment.
std::optional<DWORD> Wait::LeaveAll(bool take) {
    std::optional<DWORD> result;
    for (std::size_t i = 0; i < m_count; ++i) {
        Standing& standing = m_standings[i];
        if (!standing.entered && !standing.watching) {
            continue;
        }
        LockedState state(*standing.object);
        if (take && !result) {
            result = TryTake(state, i);
        }
        state.Leave(standing);
    }
    return result;
}

void Wait::WaitForChange() {
    ExpectedWord words[MAXIMUM_WAIT_OBJECTS + 1];
    std::size_t count = 0;
    for (; count < m_count; ++count) {
        const Standing& standing = m_standings[count];
        words[count] = {&standing.object->State().sequence, standing.sequence, standing.object->IsShared()};
    }
    if (m_input != nullptr) {
        words[count++] = {&m_input->Word(), m_inputSeen, false};
    }
    if (m_mayReclaim && m_nextReclaim.IsNever()) {
        m_nextReclaim = Deadline::After(kReclaimMs);
    }
    WaitOnWords(words, count, Deadline::Earlier(m_deadline, m_nextReclaim));
}

bool Wait::IsTimeToReclaim() {
    if (!m_nextReclaim.HasPassed()) {
        return false;
    }
    m_nextReclaim = Deadline::After(kReclaimMs);
    return true;
}

DWORD Wait::ForAny() {
    const DWORD inputResult = WAIT_OBJECT_0 + static_cast<DWORD>(m_count);
    if (m_poll) {
        if (const auto result = TakeFirst(false)) {
            return *result;
        }
        if (HasInput()) {
            return inputResult;
        }
        return (m_mayReclaim ? TakeFirst(true) : std::nullopt).value_or(WAIT_TIMEOUT);
    }
    std::optional<DWORD> result = EnterAll();
    while (!result) {
        if (m_input != nullptr) {
            m_inputSeen = m_input->Word().load(std::memory_order_acquire);
            if (HasInput()) {
                return LeaveAll(true).value_or(inputResult);
            }
        }
        WaitForChange();
        const bool isLast = m_deadline.HasPassed();
        result = TakeFirst(isLast ? m_mayReclaim : IsTimeToReclaim());
        if (!result && isLast) {
            return LeaveAll(true).value_or(WAIT_TIMEOUT);
        }
    }
    LeaveAll(false);
    return *result;
}

DWORD Wait::ForAll() {
    std::size_t order[MAXIMUM_WAIT_OBJECTS] = {};
    std::iota(order, order + m_count, std::size_t{0});
    std::sort(order, order + m_count, [this](std::size_t a, std::size_t b) {
        return m_standings[a].object->IsBefore(*m_standings[b].object);
    });
    for (std::size_t i = 1; i < m_count; ++i) {
        if (m_standings[order[i]].object == m_standings[order[i - 1]].object) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return WAIT_FAILED;
        }
    }
    bool reclaim = false;
    for (bool isFirst = true;; isFirst = false) {
        const bool isLast = m_poll || m_deadline.HasPassed();
        if (m_input != nullptr) {
            m_inputSeen = m_input->Word().load(std::memory_order_acquire);
        }
        {
            std::optional<LockedState> states[MAXIMUM_WAIT_OBJECTS];
            bool canTake = m_input == nullptr || HasInput();
            for (std::size_t i = 0; i < m_count; ++i) {
                Standing& standing = m_standings[order[i]];
                LockedState& state = states[order[i]].emplace(*standing.object);
                if (reclaim || (isLast && m_mayReclaim)) {
                    state.ReclaimFromDead();
                }
                canTake = canTake && state.CanTake(standing);
            }
            if (canTake) {
                DWORD result = WAIT_OBJECT_0;
                for (std::size_t i = 0; i < m_count; ++i) {
                    if (states[i]->TryTake(m_standings[i]) == Taken::FromDead) {
                        result = WAIT_ABANDONED_0;
                    }
                }
                return result;
            }
            for (std::size_t i = 0; i < m_count; ++i) {
                if (isLast) {
                    states[i]->Leave(m_standings[i]);
                } else if (isFirst) {
                    states[i]->Watch(m_standings[i]);
                } else {
                    states[i]->Look(m_standings[i]);
                }
            }
        }
        if (isLast) {
            return WAIT_TIMEOUT;
        }
        WaitForChange();
        reclaim = IsTimeToReclaim();
    }
}

} // namespace

DWORD WaitForHandles(const HANDLE* handles, std::size_t count, bool all, DWORD timeoutMs,
                     const InputSource* input) {
    std::optional<UsedHandle> used[MAXIMUM_WAIT_OBJECTS];
    Wait wait(count, timeoutMs, input);
    for (std::size_t i = 0; i < count; ++i) {
        KernelObject* const object = used[i].emplace(handles[i]).Object();
        if (object == nullptr || !IsWaitable(object->Kind())) {
            SetLastError(ERROR_INVALID_HANDLE);
            return WAIT_FAILED;
        }
        wait.SetObject(i, static_cast<Waitable*>(object));
    }
    return all && count + (input == nullptr ? 0 : 1) > 1 ? wait.ForAll() : wait.ForAny();
}

} // namespace posix

DWORD WaitForSingleObject(HANDLE handle, DWORD timeoutMs) {
    return posix::WaitForHandles(&handle, 1, false, timeoutMs, nullptr);
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll, DWORD timeoutMs) {
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || handles == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    return posix::WaitForHandles(handles, count, waitAll != FALSE, timeoutMs, nullptr);
}

} // namespace krtpal
