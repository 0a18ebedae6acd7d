#include "krtpal/version.h"

#include "krtpal/error.h"
#include "krtpal/posix/module/modulefile.h"
#include "krtpal/posix/module/versionblock.h"

#include <cstring>
#include <new>

namespace krtpal {

namespace {

// Returns the version block of a file in the callers' form, or nothing and the last error.
std::vector<unsigned char> ReadVersionBlock(LPCWSTR path) {
    const posix::ModuleFile file(path);
    if (!file.IsOpen()) {
        return {};
    }
    std::vector<unsigned char> stored = posix::ReadElfVersionBlock(file);
    if (stored.empty()) {
        stored = posix::ReadPeVersionBlock(file);
    }
    std::vector<unsigned char> block = posix::ExpandVersionBlock(stored);
    if (block.empty()) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
    }
    return block;
}

} // namespace

DWORD GetFileVersionInfoSizeW(LPCWSTR path, DWORD* handle) {
    if (handle != nullptr) {
        *handle = 0;
    }
    return static_cast<DWORD>(ReadVersionBlock(path).size());
}

BOOL GetFileVersionInfoW(LPCWSTR path, DWORD /*handle*/, DWORD size, LPVOID block) {
    if (block == nullptr) {
        SetLastError(ERROR_INVALID_DATA);
        return FALSE;
    }
    const std::vector<unsigned char> found = ReadVersionBlock(path);
    if (found.empty()) {
        return FALSE;
    }
    if (found.size() > size) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(block, found.data(), found.size());
    return TRUE;
}

BOOL VerQueryValueW(LPCVOID block, LPCWSTR name, LPVOID* value, UINT* length) {
    if (block == nullptr || name == nullptr || value == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const posix::VersionValue found = posix::FindVersionValue(block, name);
    if (length != nullptr) {
        *length = found.length;
    }
    if (found.data == nullptr) {
        SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
        return FALSE;
    }
    *value = const_cast<void*>(found.data);
    return TRUE;
}

} // namespace krtpal
