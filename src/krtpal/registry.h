// The registry: keys and values.
//
//     HKEY key = nullptr;
//     if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
//                         nullptr, &key, nullptr) == ERROR_SUCCESS) {
//         RegSetValueExW(key, L"TypesSupported", 0, REG_DWORD, bytes, 4);
//         RegCloseKey(key);
//     }
//
// On Linux only keys of the event log's sources are accepted, since programs create them when they register a
// source. Nothing is stored: the log needs no such keys.
//
// Errors are returned; the last error is unchanged.
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_REGISTRY_H
#define KRTPAL_REGISTRY_H

#include "krtpal/export.h"
#include "krtpal/security.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// An open key. It is not a kernel handle.
struct HKEY__;
using HKEY = HKEY__*;
/// ERROR_SUCCESS or an error of krtpal/error.h.
using LSTATUS = LONG;
/// The root of the machine's keys. It must not be closed.
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000002));
/// Rights, options and types of values. They are accepted and ignored.
inline constexpr DWORD KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_DWORD = 4;

/// Returns ERROR_SUCCESS and sets `*made` to an open key, to be closed by RegCloseKey, for paths below
/// HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Eventlog. The other arguments are ignored;
/// `*disposition` is unchanged.
/// REQUIRES: `made` is not null.
/// Fails with ERROR_NOT_SUPPORTED for every other key.
KRTPAL_API LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR keyClass,
                                          DWORD options, DWORD access, SECURITY_ATTRIBUTES* attributes,
                                          HKEY* made, LPDWORD disposition);
/// Returns ERROR_SUCCESS and stores nothing. Fails with ERROR_INVALID_HANDLE if the key is not open.
KRTPAL_API LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                                         DWORD bytes);
/// Returns ERROR_SUCCESS. Fails with ERROR_INVALID_HANDLE if the key is not open.
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
