// Handles, waits, events, mutexes, semaphores and critical sections.
//
//     HANDLE event = CreateEventW(nullptr, FALSE, FALSE, L"Local\\data ready");
//     const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
//     switch (WaitForSingleObject(event, 500)) {
//     case WAIT_OBJECT_0: ...                 // signalled; an auto-reset event is clear again
//     case WAIT_TIMEOUT: ...
//     }
//     CloseHandle(event);
//
// Which object?  event: one thread tells others.  mutex: one owner at a time, told when an owner died.
// semaphore: so many units.  critical section: the fast lock inside one process.
//
// Names. Objects with a name are shared by all processes of one user ("Local\" or no prefix), or by those of
// the machine that may open them ("Global\"). They live as long as any handle to them. All kinds share one
// name space.
//
// Threads: all calls may be used from any thread. Time-outs are milliseconds of the monotonic clock; INFINITE
// waits for ever.

#ifndef KRTPAL_SYNC_H
#define KRTPAL_SYNC_H

#include "krtpal/error.h"
#include "krtpal/export.h"
#include "krtpal/security.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

inline constexpr DWORD WAIT_OBJECT_0 = 0;
/// The wait took a mutex whose owner ended without releasing it.
inline constexpr DWORD WAIT_ABANDONED = 0x80;
inline constexpr DWORD WAIT_ABANDONED_0 = 0x80;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

inline constexpr DWORD SYNCHRONIZE = 0x00100000;
inline constexpr DWORD EVENT_MODIFY_STATE = 0x0002;
inline constexpr DWORD EVENT_ALL_ACCESS = 0x001F0003;
inline constexpr DWORD MUTEX_MODIFY_STATE = 0x0001;
inline constexpr DWORD MUTEX_ALL_ACCESS = 0x001F0001;
inline constexpr DWORD SEMAPHORE_MODIFY_STATE = 0x0002;
inline constexpr DWORD SEMAPHORE_ALL_ACCESS = 0x001F0003;

/// TRUE when the handle was open and is no more. Waits that run on it go on; a name goes with the last
/// handle.
KRTPAL_API BOOL WINAPI CloseHandle(HANDLE handle);

inline constexpr DWORD DUPLICATE_SAME_ACCESS = 2;
/// A second handle to an object, to be closed by itself. Both processes are the calling one
/// (GetCurrentProcess()), and the option DUPLICATE_SAME_ACCESS.
KRTPAL_API BOOL WINAPI DuplicateHandle(HANDLE sourceProcess, HANDLE source, HANDLE targetProcess,
                                       HANDLE* target, DWORD access, BOOL inheritHandle, DWORD options);

/// Null and the last error on failure: ERROR_INVALID_HANDLE if the name belongs to an object of another kind.
/// Where an object of that name exists it is opened, the other arguments are ignored, and the last error is
/// ERROR_ALREADY_EXISTS; it is 0 where the object was made.
KRTPAL_API HANDLE WINAPI CreateEventW(SECURITY_ATTRIBUTES* attributes, BOOL manualReset, BOOL initialState,
                                      LPCWSTR name);
/// Null and ERROR_FILE_NOT_FOUND if there is no object of that name. `access` counts for nothing.
KRTPAL_API HANDLE WINAPI OpenEventW(DWORD access, BOOL inheritHandle, LPCWSTR name);
KRTPAL_API BOOL WINAPI SetEvent(HANDLE event);
KRTPAL_API BOOL WINAPI ResetEvent(HANDLE event);
/// Lets those go who wait now (one of them, for an auto-reset event) and leaves the event clear.
KRTPAL_API BOOL WINAPI PulseEvent(HANDLE event);

/// As CreateEventW. With `initialOwner` the calling thread owns a mutex that was made, not one that existed.
KRTPAL_API HANDLE WINAPI CreateMutexW(SECURITY_ATTRIBUTES* attributes, BOOL initialOwner, LPCWSTR name);
KRTPAL_API HANDLE WINAPI OpenMutexW(DWORD access, BOOL inheritHandle, LPCWSTR name);
/// FALSE and ERROR_NOT_OWNER if the calling thread does not own the mutex.
KRTPAL_API BOOL WINAPI ReleaseMutex(HANDLE mutex);

/// As CreateEventW; ERROR_INVALID_PARAMETER unless 0 <= initialCount <= maximumCount and maximumCount > 0.
KRTPAL_API HANDLE WINAPI CreateSemaphoreW(SECURITY_ATTRIBUTES* attributes, LONG initialCount,
                                          LONG maximumCount, LPCWSTR name);
KRTPAL_API HANDLE WINAPI OpenSemaphoreW(DWORD access, BOOL inheritHandle, LPCWSTR name);
/// FALSE and ERROR_TOO_MANY_POSTS, without effect, if the count would pass the maximum; `previous` is set on
/// success only and may be null.
KRTPAL_API BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previous);

/// WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_TIMEOUT; WAIT_FAILED and the last error.
KRTPAL_API DWORD WINAPI WaitForSingleObject(HANDLE handle, DWORD timeoutMs);
/// On 1 to 64 objects. Any: the lowest index that could be taken, added to WAIT_OBJECT_0 or WAIT_ABANDONED_0.
/// All: none is taken before all can be taken at once; no handle may stand twice.
KRTPAL_API DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll,
                                               DWORD timeoutMs);

/// A lock inside one process that its owner can take again. The fields are the system's; GetOwnerThread of
/// the library reads OwningThread, which holds the owner's thread number.
struct _RTL_CRITICAL_SECTION { // NOLINT(bugprone-reserved-identifier): the system's name
    PVOID DebugInfo;
    LONG LockCount; ///< 0 free, 1 held, 2 held and perhaps waited for
    LONG RecursionCount;
    HANDLE OwningThread;
    HANDLE LockSemaphore;
    ULONG_PTR SpinCount;
};
using RTL_CRITICAL_SECTION = _RTL_CRITICAL_SECTION;
using CRITICAL_SECTION = _RTL_CRITICAL_SECTION;
using PCRITICAL_SECTION = CRITICAL_SECTION*;
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

KRTPAL_API void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section);
/// Always TRUE.
KRTPAL_API BOOL WINAPI InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD spinCount);
KRTPAL_API void WINAPI EnterCriticalSection(CRITICAL_SECTION* section);
KRTPAL_API BOOL WINAPI TryEnterCriticalSection(CRITICAL_SECTION* section);
/// By the owner only.
KRTPAL_API void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section);
/// Of a section that nobody holds.
KRTPAL_API void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section);

/// INFINITE never returns.
KRTPAL_API void WINAPI Sleep(DWORD timeMs);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::WAIT_OBJECT_0, krtpal::WAIT_ABANDONED, krtpal::WAIT_ABANDONED_0, krtpal::WAIT_FAILED,      \
        krtpal::MAXIMUM_WAIT_OBJECTS, krtpal::SYNCHRONIZE, krtpal::EVENT_MODIFY_STATE,                       \
        krtpal::EVENT_ALL_ACCESS, krtpal::MUTEX_MODIFY_STATE, krtpal::MUTEX_ALL_ACCESS,                      \
        krtpal::SEMAPHORE_MODIFY_STATE, krtpal::SEMAPHORE_ALL_ACCESS, krtpal::CloseHandle,                   \
        krtpal::DUPLICATE_SAME_ACCESS, krtpal::DuplicateHandle, krtpal::CreateEventW, krtpal::OpenEventW,    \
        krtpal::SetEvent, krtpal::ResetEvent, krtpal::PulseEvent, krtpal::CreateMutexW, krtpal::OpenMutexW,  \
        krtpal::ReleaseMutex, krtpal::CreateSemaphoreW, krtpal::OpenSemaphoreW, krtpal::ReleaseSemaphore,    \
        krtpal::WaitForSingleObject, krtpal::WaitForMultipleObjects, krtpal::_RTL_CRITICAL_SECTION,          \
        krtpal::RTL_CRITICAL_SECTION, krtpal::CRITICAL_SECTION, krtpal::PCRITICAL_SECTION,                   \
        krtpal::LPCRITICAL_SECTION, krtpal::InitializeCriticalSection,                                       \
        krtpal::InitializeCriticalSectionAndSpinCount, krtpal::EnterCriticalSection,                         \
        krtpal::TryEnterCriticalSection, krtpal::LeaveCriticalSection, krtpal::DeleteCriticalSection,        \
        krtpal::Sleep
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
