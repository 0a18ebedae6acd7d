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
// Choose an event if one thread notifies others, a mutex if one thread at a time may own something and its
// death has to be noticed, a semaphore for a number of equal units, a critical section for a fast lock inside
// one process.
//
// Handles are numbers, multiples of 4, and name kernel objects of the calling process. A handle that is
// closed, invented or of another kind is rejected by every call with ERROR_INVALID_HANDLE. A handle may be
// closed while waits use it: the waits continue, and the object lives until they end.
//
// Names. Processes share an object by its name. "Local\" names (or names without prefix) belong to one
// user, "Global\" names to the machine; only processes of the user who created an object can open it. The
// object lives as long as any handle to it; its state does not survive a crash of its last holder. Names
// are case-sensitive, have at most 260 characters including the prefix, and no backslash after it. All
// kinds of objects share one name space. An empty name means an unnamed object.
//
// Fairness. A unit that is released while threads wait goes to one of them, never to a thread that comes
// later. The order among waiting threads is not defined.
//
// Threads: all calls may be used from any thread. Time-outs are in milliseconds of the monotonic clock, which
// changes of the date do not affect; INFINITE never ends.

#ifndef KRTPAL_SYNC_H
#define KRTPAL_SYNC_H

#include "krtpal/error.h"
#include "krtpal/export.h"
#include "krtpal/security.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// The wait took the object, or the object of index result - WAIT_OBJECT_0.
inline constexpr DWORD WAIT_OBJECT_0 = 0;
/// The wait took a mutex whose owner ended without releasing it. The caller owns the mutex now.
inline constexpr DWORD WAIT_ABANDONED = 0x80;
/// As WAIT_ABANDONED, for the mutex of index result - WAIT_ABANDONED_0.
inline constexpr DWORD WAIT_ABANDONED_0 = 0x80;
/// The wait failed; the last error has the reason.
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
/// Most handles of one wait.
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

/// Access rights of the Open calls. They are accepted and ignored: whoever can open an object can use it.
inline constexpr DWORD SYNCHRONIZE = 0x00100000;
inline constexpr DWORD EVENT_MODIFY_STATE = 0x0002;
inline constexpr DWORD EVENT_ALL_ACCESS = 0x001F0003;
inline constexpr DWORD MUTEX_MODIFY_STATE = 0x0001;
inline constexpr DWORD MUTEX_ALL_ACCESS = 0x001F0001;
inline constexpr DWORD SEMAPHORE_MODIFY_STATE = 0x0002;
inline constexpr DWORD SEMAPHORE_ALL_ACCESS = 0x001F0003;

/// Returns TRUE if the handle was open; it is now closed. The object ends after its last handle, the last
/// wait that uses it and, for a mutex, the thread that owns it. Its name is free after the last handle in any
/// process and the waits that use it.
/// Fails with ERROR_INVALID_HANDLE if the handle is not open.
KRTPAL_API BOOL WINAPI CloseHandle(HANDLE handle);

/// The only option of DuplicateHandle.
inline constexpr DWORD DUPLICATE_SAME_ACCESS = 2;
/// Returns TRUE and sets `*target` to a second handle of the object, which the caller closes by CloseHandle.
/// REQUIRES: both processes are GetCurrentProcess(), and `options` is DUPLICATE_SAME_ACCESS. `access` and
/// `inheritHandle` are ignored.
/// Fails with null in `*target` and ERROR_INVALID_HANDLE if the handle is not open or a process is another
/// one, ERROR_NOT_SUPPORTED for other options, ERROR_NOT_ENOUGH_MEMORY if there are too many handles. Unlike
/// Windows, GetCurrentProcess() and GetCurrentThread() can't be duplicated.
KRTPAL_API BOOL WINAPI DuplicateHandle(HANDLE sourceProcess, HANDLE source, HANDLE targetProcess,
                                       HANDLE* target, DWORD access, BOOL inheritHandle, DWORD options);

/// Returns a handle, to be closed by CloseHandle, to a new event or to the existing event of that name. The
/// last error is 0 if the event is new and ERROR_ALREADY_EXISTS if it existed; the other arguments are then
/// ignored.
/// A wait clears an auto-reset event (`manualReset` FALSE) and leaves a manual-reset event unchanged.
/// REQUIRES: `attributes` is null or has no security descriptor. Handles are never inherited.
/// Fails with null and ERROR_INVALID_HANDLE if the name belongs to an object of another kind,
/// ERROR_ACCESS_DENIED if it belongs to another user's object, ERROR_NOT_SUPPORTED for a security descriptor,
/// ERROR_NOT_ENOUGH_MEMORY if there are too many handles. Errors of names: ERROR_INVALID_NAME if no character
/// follows the prefix, ERROR_PATH_NOT_FOUND for a backslash, ERROR_FILENAME_EXCED_RANGE if the name is too
/// long.
KRTPAL_API HANDLE WINAPI CreateEventW(SECURITY_ATTRIBUTES* attributes, BOOL manualReset, BOOL initialState,
                                      LPCWSTR name);
/// Returns a handle to the existing event of that name, to be closed by CloseHandle. `access` and
/// `inheritHandle` are ignored.
/// Fails with null and ERROR_FILE_NOT_FOUND if no object has the name, ERROR_INVALID_PARAMETER for a null
/// name, ERROR_INVALID_NAME for an empty one, otherwise as CreateEventW.
KRTPAL_API HANDLE WINAPI OpenEventW(DWORD access, BOOL inheritHandle, LPCWSTR name);
/// Returns TRUE. Signals the event. An auto-reset event releases one waiting thread, or stays signalled until
/// a wait takes it; each of several calls in a row releases a thread. A manual-reset event releases all
/// threads that wait at this moment, even if it is reset at once.
/// Fails with ERROR_INVALID_HANDLE if the handle is not that of an event, as do the next two calls.
KRTPAL_API BOOL WINAPI SetEvent(HANDLE event);
/// Returns TRUE. Clears the event.
KRTPAL_API BOOL WINAPI ResetEvent(HANDLE event);
/// Returns TRUE. Releases the threads that wait now (one of them, for an auto-reset event) and leaves the
/// event clear. A wait for several objects at once is released only if the others are available when it
/// looks.
KRTPAL_API BOOL WINAPI PulseEvent(HANDLE event);

/// Returns a handle to a mutex; names, last error and failures as CreateEventW. With `initialOwner` the
/// calling thread owns a new mutex; an existing one is unchanged.
/// The owner may take the mutex again, and releases it as often. If the owning thread or process ends without
/// releasing it, the next wait returns WAIT_ABANDONED. The death of a process is noticed by a poll at once
/// and by waiting threads within 100 ms.
KRTPAL_API HANDLE WINAPI CreateMutexW(SECURITY_ATTRIBUTES* attributes, BOOL initialOwner, LPCWSTR name);
/// Returns a handle to the existing mutex of that name. Otherwise as OpenEventW.
KRTPAL_API HANDLE WINAPI OpenMutexW(DWORD access, BOOL inheritHandle, LPCWSTR name);
/// Returns TRUE. Gives back one acquisition; after the last one the mutex is free.
/// Fails with ERROR_NOT_OWNER if the calling thread does not own the mutex, ERROR_INVALID_HANDLE.
KRTPAL_API BOOL WINAPI ReleaseMutex(HANDLE mutex);

/// Returns a handle to a semaphore; names, last error and failures as CreateEventW. Each wait takes one unit.
/// REQUIRES: 0 <= initialCount <= maximumCount and maximumCount > 0; otherwise fails with
/// ERROR_INVALID_PARAMETER.
KRTPAL_API HANDLE WINAPI CreateSemaphoreW(SECURITY_ATTRIBUTES* attributes, LONG initialCount,
                                          LONG maximumCount, LPCWSTR name);
/// Returns a handle to the existing semaphore of that name. Otherwise as OpenEventW.
KRTPAL_API HANDLE WINAPI OpenSemaphoreW(DWORD access, BOOL inheritHandle, LPCWSTR name);
/// Returns TRUE, adds `count` units and sets `*previous`, unless it is null, to the count before.
/// Fails without effect with ERROR_TOO_MANY_POSTS if the count would exceed the maximum,
/// ERROR_INVALID_PARAMETER if `count` is below 1, ERROR_INVALID_HANDLE.
KRTPAL_API BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previous);

/// Waits for an event, mutex or semaphore. Returns WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_TIMEOUT or
/// WAIT_FAILED. A time-out of 0 polls.
/// Fails with ERROR_INVALID_HANDLE if the handle is not that of such an object. Unlike Windows, there are no
/// waits on processes and threads.
KRTPAL_API DWORD WINAPI WaitForSingleObject(HANDLE handle, DWORD timeoutMs);
/// Waits for 1 to 64 objects. For any: takes the available object of the lowest index and returns that index
/// added to WAIT_OBJECT_0 or WAIT_ABANDONED_0. For all: takes all objects at once, or none; returns
/// WAIT_OBJECT_0, or WAIT_ABANDONED_0 if any mutex was abandoned. Otherwise returns WAIT_TIMEOUT or
/// WAIT_FAILED.
/// Fails with ERROR_INVALID_PARAMETER for another count, a null array or, in a wait for all, an object that
/// occurs twice, ERROR_INVALID_HANDLE as above.
KRTPAL_API DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll,
                                               DWORD timeoutMs);

/// A recursive lock inside one process. The fields are the system's; GetOwnerThread of the library reads
/// OwningThread, which has the number of the owning thread.
struct _RTL_CRITICAL_SECTION { // NOLINT(bugprone-reserved-identifier): the system's name
                               // NOLINT(bugprone-reserved-identifier): the system's name
    PVOID DebugInfo;           ///< always null
    LONG LockCount;            ///< 0 free, 1 held, 2 held and possibly waited for
    LONG RecursionCount;       ///< acquisitions of the owner that are not given back
    HANDLE OwningThread;       ///< the number of the owning thread, or null
    HANDLE LockSemaphore;      ///< always null
    ULONG_PTR SpinCount;       ///< attempts before a thread waits
};
using RTL_CRITICAL_SECTION = _RTL_CRITICAL_SECTION;
using CRITICAL_SECTION = _RTL_CRITICAL_SECTION;
using PCRITICAL_SECTION = CRITICAL_SECTION*;
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

/// Initialises a section, with 100 spins. It must not be moved or copied afterwards.
KRTPAL_API void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section);
/// Returns TRUE always. Initialises a section that is tried `spinCount` times before a thread waits. The
/// upper byte of the count is ignored; on a machine with one processor the count is 0.
KRTPAL_API BOOL WINAPI InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD spinCount);
/// Acquires the section, waiting without limit. The owner may enter again.
KRTPAL_API void WINAPI EnterCriticalSection(CRITICAL_SECTION* section);
/// Returns TRUE if the section was acquired, also again by its owner, FALSE if another thread owns it.
KRTPAL_API BOOL WINAPI TryEnterCriticalSection(CRITICAL_SECTION* section);
/// Gives back one acquisition.
/// REQUIRES: the calling thread owns the section; this is not checked.
KRTPAL_API void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section);
/// Ends a section, which can be initialised again.
/// REQUIRES: no thread owns it or waits for it.
KRTPAL_API void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section);

/// Blocks the calling thread for this time. INFINITE never returns. Unlike Windows, 0 returns at once without
/// giving up the processor.
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
