#include "krtpal/posix/module/modulefile.h"

#include "krtpal/error.h"
#include "krtpal/posix/io/pathbytes.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace krtpal::posix {

ModuleFile::ModuleFile(LPCWSTR path) : m_descriptor(-1) {
    const std::string bytes = path == nullptr ? std::string() : PathBytes(path);
    if (bytes.empty()) {
        SetLastError(path == nullptr ? ERROR_INVALID_PARAMETER : ERROR_INVALID_NAME);
        return;
    }
    // O_NONBLOCK: opening a pipe must not block.
    m_descriptor = open(bytes.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    if (m_descriptor < 0) {
        SetLastError(ErrorFromErrno(errno));
    } else if (fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(m_descriptor);
        m_descriptor = -1;
        SetLastError(ERROR_ACCESS_DENIED);
    }
}

ModuleFile::~ModuleFile() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

bool ModuleFile::Read(std::uint64_t offset, void* target, std::size_t size) const {
    auto* at = static_cast<char*>(target);
    while (size != 0) {
        if (offset > static_cast<std::uint64_t>(INT64_MAX)) {
            return false;
        }
        const ssize_t count = pread(m_descriptor, at, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        at += count;
        offset += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace krtpal::posix
