// Loaded modules: programs and shared libraries.
//
//     HMODULE module = nullptr;
//     constexpr DWORD flags =
//         GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
//     GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&SomeFunction), &module);
//     wchar_t path[MAX_PATH];
//     GetModuleFileNameW(module, path, MAX_PATH);
//
// On Linux a handle is the address of the module's entry in the dynamic linker's list. After a module has
// been unloaded, its handle can become that of another module.
//
// The library's own entry routine,
//
//     extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved);
//
// is called with DLL_PROCESS_ATTACH after the library's static objects have been constructed and with
// DLL_PROCESS_DETACH before they are destroyed, at dlclose and at the end of the process. Its result is
// ignored, `reserved` is null, and threads are not reported.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_MODULE_H
#define KRTPAL_MODULE_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// Reasons of DllMain. The reasons of threads do not occur on Linux.
inline constexpr DWORD DLL_PROCESS_DETACH = 0;
inline constexpr DWORD DLL_PROCESS_ATTACH = 1;
inline constexpr DWORD DLL_THREAD_ATTACH = 2;
inline constexpr DWORD DLL_THREAD_DETACH = 3;

/// Flags of GetModuleHandleExW.
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 1;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;

/// Address of an exported function, to be cast to the function's type.
using FARPROC = INT_PTR (*)();

/// Returns TRUE and sets `*module` to the module that contains an address, or to the program for a null
/// address. The handle is not owned: no reference is counted.
/// REQUIRES: both FROM_ADDRESS and UNCHANGED_REFCOUNT.
/// Fails with null in `*module` and ERROR_MOD_NOT_FOUND if no module contains the address,
/// ERROR_NOT_SUPPORTED for fewer flags or PIN, ERROR_INVALID_PARAMETER for unknown flags or a null `module`.
KRTPAL_API BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module);
/// Returns the number of characters, without the NUL, of the path of a module's file; null means the program.
/// A path that does not fit is cut, with a NUL; the result is then `size` and the last error
/// ERROR_INSUFFICIENT_BUFFER.
/// Fails with 0 and ERROR_MOD_NOT_FOUND if there is no such module, ERROR_INSUFFICIENT_BUFFER for a null
/// path.
/// On Linux a relative path that the linker was given is completed by the current folder, which may have
/// changed since the module was loaded.
KRTPAL_API DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);
/// Returns the address of a function or object that the module itself exports by this name. Exports of the
/// libraries that it needs are not found.
/// Fails with null and ERROR_PROC_NOT_FOUND if there is none, ERROR_MOD_NOT_FOUND if there is no such module,
/// ERROR_INVALID_PARAMETER for a null name, ERROR_NOT_SUPPORTED for an ordinal.
KRTPAL_API FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);

/// Returns a handle of a shared library, loading it if it is not loaded yet. The caller owns one reference
/// and releases it by FreeLibrary. All symbols are bound at once and are not visible to other modules. A name
/// without a slash is searched for by the dynamic linker.
/// Fails with null and ERROR_MOD_NOT_FOUND if there is no such file, ERROR_BAD_EXE_FORMAT if the file exists
/// and can't be loaded, ERROR_INVALID_PARAMETER for null.
KRTPAL_API HMODULE WINAPI LoadLibraryW(LPCWSTR path);
/// Returns TRUE and releases one reference. The last release unloads the module, unless it was linked to
/// stay.
/// Fails with ERROR_MOD_NOT_FOUND for null or if there is no such module.
KRTPAL_API BOOL WINAPI FreeLibrary(HMODULE module);

/// A text of a module's string table. Linux only: Windows has string tables in resources.
struct StringTableEntry {
    UINT number;         ///< number of the text; each occurs once
    const wchar_t* text; ///< null in the last entry
};

/// Returns the length, without the NUL, of a text of the module's own string table, which it exports as
/// krtbss_string_table; null means the program. A text that does not fit into `count` characters is cut, with
/// a NUL, and the result is the length of the copy.
/// With a count of 0, `text` is the address of a pointer, which is set to the text in the module. That text
/// is not owned and lives as long as the module.
/// Fails with 0 and ERROR_RESOURCE_DATA_NOT_FOUND if the module has no table, ERROR_RESOURCE_NAME_NOT_FOUND
/// if the table has no such number, ERROR_MOD_NOT_FOUND if there is no such module, ERROR_INVALID_PARAMETER
/// for a null text or a negative count.
KRTPAL_API int WINAPI LoadStringW(HINSTANCE module, UINT number, LPWSTR text, int count);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::DLL_PROCESS_DETACH, krtpal::DLL_PROCESS_ATTACH, krtpal::DLL_THREAD_ATTACH,                 \
        krtpal::DLL_THREAD_DETACH, krtpal::GET_MODULE_HANDLE_EX_FLAG_PIN,                                    \
        krtpal::GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,                                                \
        krtpal::GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, krtpal::FARPROC, krtpal::GetModuleHandleExW,         \
        krtpal::GetModuleFileNameW, krtpal::GetProcAddress, krtpal::LoadLibraryW, krtpal::FreeLibrary,       \
        krtpal::LoadStringW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES

/// String table of a module, defined by each module that has texts for LoadStringW. Entries are in any order;
/// the last one has a null text.
extern "C" KRTPAL_API const krtpal::StringTableEntry krtbss_string_table[];
#endif

#endif
