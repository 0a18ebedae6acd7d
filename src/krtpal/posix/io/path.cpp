#include "krtpal/path.h"

#include "krtpal/error.h"
#include "krtpal/posix/io/pathbytes.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <sys/stat.h>

namespace krtpal {

namespace {

struct Part {
    std::wstring_view text;
    LPWSTR buffer;
    SIZE_T room;
};

} // namespace

// NOLINTNEXTLINE(bugprone-reserved-identifier)
int _wsplitpath_s(LPCWSTR path, LPWSTR drive, SIZE_T driveRoom, LPWSTR folder, SIZE_T folderRoom, LPWSTR name,
                  SIZE_T nameRoom, LPWSTR extension, SIZE_T extensionRoom) {
    const std::wstring_view whole(path == nullptr ? L"" : path);
    const std::size_t nameAt = whole.rfind(L'/') + 1; // 0 without a slash
    const std::size_t point = whole.rfind(L'.');
    const bool hasExtension = point != std::wstring_view::npos && point >= nameAt;
    const std::size_t extensionAt = hasExtension ? point : whole.size();
    const Part parts[] = {{{}, drive, driveRoom},
                          {whole.substr(0, nameAt), folder, folderRoom},
                          {whole.substr(nameAt, extensionAt - nameAt), name, nameRoom},
                          {whole.substr(extensionAt), extension, extensionRoom}};
    int result = path == nullptr ? EINVAL : 0;
    for (const Part& part : parts) {
        if ((part.buffer == nullptr) != (part.room == 0)) {
            result = EINVAL;
        } else if (part.buffer != nullptr && part.text.size() >= part.room && result == 0) {
            result = ERANGE;
        }
    }
    for (const Part& part : parts) {
        if (part.buffer != nullptr && part.room != 0) {
            LPWSTR end = part.buffer;
            if (result == 0) {
                end = std::copy(part.text.begin(), part.text.end(), part.buffer);
            }
            *end = L'\0';
        }
    }
    if (result != 0) {
        errno = result;
    }
    return result;
}

DWORD GetShortPathNameW(LPCWSTR path, LPWSTR shortPath, DWORD room) {
    if (path == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    struct stat status {};
    if (stat(posix::PathBytes(path).c_str(), &status) != 0) {
        SetLastError(ErrorFromErrno(errno));
        return 0;
    }
    const std::wstring_view text(path);
    if (shortPath == nullptr || room <= text.size()) {
        return static_cast<DWORD>(text.size() + 1);
    }
    *std::copy(text.begin(), text.end(), shortPath) = L'\0';
    return static_cast<DWORD>(text.size());
}

} // namespace krtpal
