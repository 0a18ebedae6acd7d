#include "krtpal/file.h"

#include "krtpal/posix/io/pathbytes.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace krtpal {

namespace {

errno_t Fail(errno_t error) {
    errno = error;
    return error;
}

// Returns the mode for fopen, or an empty string for an unsupported mode.
std::string ModeBytes(LPCWSTR mode) {
    const std::wstring_view wide(mode);
    if (wide.empty() || std::wstring_view(L"rwa").find(wide[0]) == std::wstring_view::npos ||
        wide.find_first_not_of(L"+b", 1) != std::wstring_view::npos) {
        return {};
    }
    return std::string(wide.begin(), wide.end()) + "e"; // closed in started programs
}

bool IsFolder(std::FILE* file) {
    struct stat status {};
    return fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode);
}

const char* ErrorText(int number) {
    const char* const text = strerrordesc_np(number);
    return text == nullptr ? "Unknown error" : text;
}

template <class Character>
errno_t CopyErrorText(Character* buffer, SIZE_T size, int number) {
    if (buffer == nullptr || size == 0) {
        return Fail(EINVAL);
    }
    const std::string_view text = std::string_view(ErrorText(number)).substr(0, size - 1);
    *std::copy(text.begin(), text.end(), buffer) = 0;
    return 0;
}

} // namespace

errno_t _wfopen_s(std::FILE** file, LPCWSTR path, LPCWSTR mode) {
    if (file == nullptr) {
        return Fail(EINVAL);
    }
    *file = nullptr;
    if (path == nullptr || mode == nullptr) {
        return Fail(EINVAL);
    }
    const std::string modeBytes = ModeBytes(mode);
    if (modeBytes.empty()) {
        return Fail(EINVAL);
    }
    const std::string pathBytes = posix::PathBytes(path);
    if (pathBytes.empty() && *path != L'\0') {
        return Fail(EILSEQ);
    }
    *file = std::fopen(pathBytes.c_str(), modeBytes.c_str());
    if (*file == nullptr) {
        return Fail(errno == EISDIR ? EACCES : errno);
    }
    // fopen opens a folder for reading.
    if (IsFolder(*file)) {
        std::fclose(*file);
        *file = nullptr;
        return Fail(EACCES);
    }
    return 0;
}

errno_t _wcserror_s(LPWSTR buffer, SIZE_T size, int number) {
    return CopyErrorText(buffer, size, number);
}

errno_t strerror_s(LPSTR buffer, SIZE_T size, int number) {
    return CopyErrorText(buffer, size, number);
}

} // namespace krtpal
