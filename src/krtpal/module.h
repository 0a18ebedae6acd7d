// Loaded modules: programs and shared libraries.
//
//     HMODULE module = nullptr;
//     constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
//     GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT; GetModuleHandleExW(flags,
//     reinterpret_cast<LPCWSTR>(&SomeFunction), &module); wchar_t path[MAX_PATH]; GetModuleFileNameW(module,
//     path, MAX_PATH);
//
// A handle is the module's entry in the dynamic linker's list. The library's own entry routine,
//
//     extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved);
//
// is called after the library's static objects have been made (DLL_PROCESS_ATTACH) and before they are
// destroyed (DLL_PROCESS_DETACH).
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_MODULE_H
#define KRTPAL_MODULE_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

inline constexpr DWORD DLL_PROCESS_DETACH = 0;
inline constexpr DWORD DLL_PROCESS_ATTACH = 1;
inline constexpr DWORD DLL_THREAD_ATTACH = 2;
inline constexpr DWORD DLL_THREAD_DETACH = 3;

inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 1;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;

/// To be cast to the function's own type.
using FARPROC = INT_PTR (*)();

/// The module that an address belongs to, or the program for a null address. Both flags are needed, and no
/// others are supported: nothing is counted. FALSE, a null module and ERROR_MOD_NOT_FOUND if the address is
/// in none.
KRTPAL_API BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module);
/// The path of a module's file; null means the program. The count without NUL; `size` and
/// ERROR_INSUFFICIENT_BUFFER if the path had to be cut; 0 and ERROR_MOD_NOT_FOUND if there is no such module.
KRTPAL_API DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);
/// A function or object that the module itself exports by name. Null and ERROR_PROC_NOT_FOUND if there is
/// none.
KRTPAL_API FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);

/// Loads a shared library, or counts one more holder of it. A name without a slash is looked for where the
/// dynamic linker looks. Null and ERROR_MOD_NOT_FOUND if there is none, ERROR_BAD_EXE_FORMAT if the file is
/// there and can't be loaded.
KRTPAL_API HMODULE WINAPI LoadLibraryW(LPCWSTR path);
/// Gives up one hold; the last one unloads the module.
KRTPAL_API BOOL WINAPI FreeLibrary(HMODULE module);

/// One text of a module's table of strings.
struct StringTableEntry {
    UINT number;
    const wchar_t* text;
};

/// A text of the module's own table of strings, which it exports under the name krtbss_string_table; null
/// means the program. The length without NUL; texts that do not fit are cut. With count 0, `text` is taken as
/// the address of a pointer, which is set to the text in the module, and the length is the whole one's. 0,
/// ERROR_RESOURCE_DATA_NOT_FOUND if the module has no table, ERROR_RESOURCE_NAME_NOT_FOUND if that has no
/// such number, ERROR_MOD_NOT_FOUND if there is no such module.
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

/// What a module defines that has texts to be loaded: rows in any order, the last one with a null text.
extern "C" KRTPAL_API const krtpal::StringTableEntry krtbss_string_table[];
#endif

#endif
