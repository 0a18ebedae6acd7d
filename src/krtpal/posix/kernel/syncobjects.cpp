#include "krtpal/error.h"
#include "krtpal/posix/kernel/waitable.h"
#include "krtpal/sync.h"

namespace krtpal {

namespace {

using posix::KernelObject;
using posix::LockedState;
using posix::ObjectKind;
using posix::ObjectName;
using posix::Reference;
using posix::UsedHandle;
using posix::Waitable;
using posix::WaitState;

HANDLE Fail(DWORD error) {
    SetLastError(error);
    return nullptr;
}

// Sets the last error to 0, ERROR_ALREADY_EXISTS or the reason of the failure.
HANDLE Create(ObjectKind kind, const SECURITY_ATTRIBUTES* attributes, const WaitState& initial,
              LPCWSTR name) {
    if (attributes != nullptr && attributes->lpSecurityDescriptor != nullptr) {
        return Fail(ERROR_NOT_SUPPORTED);
    }
    if (name == nullptr || *name == L'\0') {
        Reference<KernelObject> object = Waitable::Make(kind, initial);
        if (!object) {
            return Fail(ERROR_NOT_ENOUGH_MEMORY);
        }
        const HANDLE handle = OpenHandle(std::move(object));
        if (handle != nullptr) {
            SetLastError(ERROR_SUCCESS);
        }
        return handle;
    }
    ObjectName parsed;
    if (const DWORD error = posix::ParseObjectName(name, &parsed); error != ERROR_SUCCESS) {
        return Fail(error);
    }
    HANDLE handle = nullptr;
    SetLastError(Waitable::Open(kind, parsed, &initial, &handle));
    return handle;
}

HANDLE OpenNamed(ObjectKind kind, LPCWSTR name) {
    if (name == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (*name == L'\0') {
        return Fail(ERROR_INVALID_NAME);
    }
    ObjectName parsed;
    if (const DWORD error = posix::ParseObjectName(name, &parsed); error != ERROR_SUCCESS) {
        return Fail(error);
    }
    HANDLE handle = nullptr;
    const DWORD error = Waitable::Open(kind, parsed, nullptr, &handle);
    return handle == nullptr ? Fail(error) : handle;
}

// Runs an operation on the state of an object of this kind.
template <typename Operation>
BOOL WithState(HANDLE handle, ObjectKind kind, Operation operation) {
    const UsedHandle used(handle);
    if (used.Object() == nullptr || used.Object()->Kind() != kind) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    LockedState state(static_cast<Waitable&>(*used.Object()));
    return operation(state);
}

} // namespace

HANDLE CreateEventW(SECURITY_ATTRIBUTES* attributes, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    WaitState initial{};
    initial.manual = manualReset != FALSE ? 1 : 0;
    initial.maximum = 1;
    initial.available = initialState != FALSE ? 1 : 0;
    return Create(ObjectKind::Event, attributes, initial, name);
}

HANDLE OpenEventW(DWORD /*access*/, BOOL /*inheritHandle*/, LPCWSTR name) {
    return OpenNamed(ObjectKind::Event, name);
}

BOOL SetEvent(HANDLE event) {
    return WithState(event, ObjectKind::Event, [](LockedState& state) {
        if (state->manual != 0) {
            state.ReleaseAll();
        } else {
            state.AddUnits(1);
        }
        return TRUE;
    });
}

BOOL ResetEvent(HANDLE event) {
    return WithState(event, ObjectKind::Event, [](LockedState& state) {
        state->available = 0;
        return TRUE;
    });
}

BOOL PulseEvent(HANDLE event) {
    return WithState(event, ObjectKind::Event, [](LockedState& state) {
        state.Pulse();
        return TRUE;
    });
}

HANDLE CreateMutexW(SECURITY_ATTRIBUTES* attributes, BOOL initialOwner, LPCWSTR name) {
    WaitState initial{};
    initial.maximum = 1;
    if (initialOwner != FALSE) {
        initial.owner = posix::CurrentThread();
        initial.recursion = 1;
    } else {
        initial.available = 1;
    }
    return Create(ObjectKind::Mutex, attributes, initial, name);
}

HANDLE OpenMutexW(DWORD /*access*/, BOOL /*inheritHandle*/, LPCWSTR name) {
    return OpenNamed(ObjectKind::Mutex, name);
}

BOOL ReleaseMutex(HANDLE mutex) {
    return WithState(mutex, ObjectKind::Mutex, [](LockedState& state) {
        if (!state.Release()) {
            SetLastError(ERROR_NOT_OWNER);
            return FALSE;
        }
        return TRUE;
    });
}

HANDLE CreateSemaphoreW(SECURITY_ATTRIBUTES* attributes, LONG initialCount, LONG maximumCount, LPCWSTR name) {
    if (maximumCount <= 0 || initialCount < 0 || initialCount > maximumCount) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    WaitState initial{};
    initial.maximum = maximumCount;
    initial.available = initialCount;
    return Create(ObjectKind::Semaphore, attributes, initial, name);
}

HANDLE OpenSemaphoreW(DWORD /*access*/, BOOL /*inheritHandle*/, LPCWSTR name) {
    return OpenNamed(ObjectKind::Semaphore, name);
}

BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previous) {
    if (count <= 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    return WithState(semaphore, ObjectKind::Semaphore, [&](LockedState& state) {
        if (state->available > state->maximum - count) {
            SetLastError(ERROR_TOO_MANY_POSTS);
            return FALSE;
        }
        if (previous != nullptr) {
            *previous = state->available;
        }
        state.AddUnits(count);
        return TRUE;
    });
}

} // namespace krtpal
