// The registry: keys and values.
//
//     HKEY key = nullptr;
//     if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
//     nullptr,
//                         &key, nullptr) == ERROR_SUCCESS) {
//         RegSetValueExW(key, L"TypesSupported", 0, REG_DWORD, bytes, 4);
//         RegCloseKey(key);
//     }
//
// On Linux only the keys of the event log's sources are accepted, and nothing is stored: the log needs none.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_REGISTRY_H
#define KRTPAL_REGISTRY_H

#include "krtpal/export.h"
#include "krtpal/security.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

struct HKEY__;
using HKEY = HKEY__*;
using LSTATUS = LONG;
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000002));
inline constexpr DWORD KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_DWORD = 4;

/// Sources of the log need no key here: one below the log's own place is made and forgotten; any other is
/// refused with ERROR_NOT_SUPPORTED.
KRTPAL_API LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR keyClass,
                                          DWORD options, DWORD access, SECURITY_ATTRIBUTES* attributes,
                                          HKEY* made, LPDWORD disposition);
KRTPAL_API LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                                         DWORD bytes);
KRTPAL_API LSTATUS WINAPI RegCloseKey(HKEY key);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::HKEY, krtpal::LSTATUS, krtpal::HKEY_LOCAL_MACHINE, krtpal::KEY_ALL_ACCESS,                 \
        krtpal::REG_OPTION_NON_VOLATILE, krtpal::REG_SZ, krtpal::REG_DWORD, krtpal::RegCreateKeyExW,         \
        krtpal::RegSetValueExW, krtpal::RegCloseKey
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
