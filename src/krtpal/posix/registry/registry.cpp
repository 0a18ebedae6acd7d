#include "krtpal/registry.h"

#include "krtpal/error.h"

#include <string_view>

namespace krtpal {

namespace {

constexpr std::wstring_view kSourcesKey = L"SYSTEM\\CurrentControlSet\\Services\\Eventlog\\";
const HKEY kSourceKey = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80001000));

} // namespace

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD /*reserved*/, LPWSTR /*keyClass*/, DWORD /*options*/,
                        DWORD /*access*/, SECURITY_ATTRIBUTES* /*attributes*/, HKEY* made,
                        LPDWORD /*disposition*/) {
    const std::wstring_view wanted = path == nullptr ? L"" : path;
    if (key != HKEY_LOCAL_MACHINE || wanted.substr(0, kSourcesKey.size()) != kSourcesKey) {
        return ERROR_NOT_SUPPORTED;
    }
    *made = kSourceKey;
    return ERROR_SUCCESS;
}

LSTATUS RegSetValueExW(HKEY key, LPCWSTR /*name*/, DWORD /*reserved*/, DWORD /*type*/, const BYTE* /*data*/,
                       DWORD /*bytes*/) {
    return key == kSourceKey ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LSTATUS RegCloseKey(HKEY key) {
    return key == kSourceKey ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

} // namespace krtpal
