// The calling process and thread, other processes, and the modules that they have loaded.
//
//     if (const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, number)) {
//         HMODULE modules[256];
//         DWORD needed = 0;
//         if (K32EnumProcessModules(process, modules, sizeof(modules), &needed)) { ... }
//         CloseHandle(process);
//     }
//
// On Linux a module handle names a module of the calling process. A module of another process is reported by
// the caller's handle for the same file; files that the caller has not loaded are left out, including the
// other process's program if it differs. Files are compared by their resolved path, so modules below another
// root (containers) or replaced on disk since are left out.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_PROCESS_H
#define KRTPAL_PROCESS_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifdef _WIN32
#include <psapi.h>
#else

namespace krtpal {

/// Access rights of OpenProcess.
inline constexpr DWORD PROCESS_VM_READ = 0x0010;
inline constexpr DWORD PROCESS_QUERY_INFORMATION = 0x0400;

/// Returns the kernel's number of the calling thread, by which the system's tools list it. It is never 0.
KRTPAL_API DWORD WINAPI GetCurrentThreadId();
/// Returns the kernel's number of the calling process. After a fork the child has its own.
KRTPAL_API DWORD WINAPI GetCurrentProcessId();
/// Returns a pseudo-handle of the calling process. It is a constant and must not be closed. OpenProcessToken,
/// DuplicateHandle and the calls below take it; waits do not.
KRTPAL_API HANDLE WINAPI GetCurrentProcess();
/// Returns a pseudo-handle of the calling thread. It is a constant and must not be closed. OpenThreadToken
/// takes it.
KRTPAL_API HANDLE WINAPI GetCurrentThread();

/// Returns a handle to a running process, to be closed by CloseHandle. It never refers to a later process of
/// the same number. `inheritHandle` is ignored.
/// Fails with null and ERROR_INVALID_PARAMETER if there is no such process, ERROR_ACCESS_DENIED if its
/// modules may not be read, ERROR_NOT_SUPPORTED for other rights than the two.
KRTPAL_API HANDLE WINAPI OpenProcess(DWORD access, BOOL inheritHandle, DWORD number);
/// Returns TRUE and stores as many module handles as fit into `size` bytes, the program first, in the order
/// of the caller's list of modules. `*needed` is the size of all of them in bytes. Handles are not owned.
/// Mapped files count as loaded.
/// REQUIRES: `needed` is not null.
/// Fails with ERROR_INVALID_HANDLE if the handle is not that of a process, with the code of errno if the
/// process has ended.
KRTPAL_API BOOL WINAPI K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, DWORD* needed);
/// Returns the number of characters, without the NUL, of the path of a module of the process. Null and the
/// handle of the caller's program mean the process's program. A path that does not fit is cut, with a NUL;
/// the result is then `size` and the last error ERROR_INSUFFICIENT_BUFFER.
/// Fails with 0 and ERROR_INVALID_HANDLE if the process has ended or has not loaded the module,
/// ERROR_INSUFFICIENT_BUFFER for a null path or a size of 0.
KRTPAL_API DWORD WINAPI K32GetModuleFileNameExW(HANDLE process, HMODULE module, LPWSTR path, DWORD size);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::PROCESS_VM_READ, krtpal::PROCESS_QUERY_INFORMATION, krtpal::GetCurrentThreadId,            \
        krtpal::GetCurrentProcessId, krtpal::GetCurrentProcess, krtpal::GetCurrentThread,                    \
        krtpal::OpenProcess, krtpal::K32EnumProcessModules, krtpal::K32GetModuleFileNameExW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
