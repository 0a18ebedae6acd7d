// The calling process and thread, and other processes: whether one runs, and which modules it has loaded.
//
//     if (const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, number)) {
//         HMODULE modules[256];
//         DWORD needed = 0;
//         if (K32EnumProcessModules(process, modules, sizeof(modules), &needed)) { ... }
//         CloseHandle(process);
//     }
//
// On Linux a module handle means a module of the calling process: what the other process has loaded is told
// by the calling process's own handles for the same files, and files that the caller has not loaded are not
// told.
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

inline constexpr DWORD PROCESS_VM_READ = 0x0010;
inline constexpr DWORD PROCESS_QUERY_INFORMATION = 0x0400;

/// The numbers by which the system's tools list threads and processes; a thread's is never 0.
KRTPAL_API DWORD WINAPI GetCurrentThreadId();
KRTPAL_API DWORD WINAPI GetCurrentProcessId();
/// Return handles that mean the calling process and the calling thread. They are not to be closed.
KRTPAL_API HANDLE WINAPI GetCurrentProcess();
KRTPAL_API HANDLE WINAPI GetCurrentThread();

/// A handle to a running process, by its number, to be closed by CloseHandle; it never means a later process
/// of the same number. Null and ERROR_INVALID_PARAMETER if there is none, ERROR_ACCESS_DENIED if its modules
/// may not be looked at, ERROR_NOT_SUPPORTED for other rights than the two.
KRTPAL_API HANDLE WINAPI OpenProcess(DWORD access, BOOL inheritHandle, DWORD number);
/// As many of the modules as `size` bytes hold, the program first; `needed` gets the bytes that all of them
/// need. FALSE and the last error if the process has ended.
KRTPAL_API BOOL WINAPI K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, DWORD* needed);
/// The path of a module of the process; null, or the handle of the caller's program, means the process's
/// program. The count without NUL, or `size` if the path had to be cut; 0 and ERROR_INVALID_HANDLE if the
/// process has not loaded the module.
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
