#include "krtpal/process.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/posix/kernel/handle.h"
#include "krtpal/posix/module/modulelist.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <set>
#include <string>
#include <unistd.h>
#include <utility>

namespace krtpal {

namespace {

// Size of a module handle.
constexpr auto kHandleSize = static_cast<DWORD>(sizeof(void*));

// Owns a file descriptor, or none (-1).
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (m_number >= 0) {
            close(m_number);
        }
    }
    explicit operator bool() const { return m_number >= 0; }
    int Number() const { return m_number; }

private:
    int m_number;
};

// A process, represented by its folder below /proc. After the process has ended nothing can be read there,
// even if its number is used again.
class Process final : public posix::KernelObject {
public:
    explicit Process(Descriptor folder)
        : KernelObject(posix::ObjectKind::Process), m_folder(std::move(folder)) {}
    void AddHandle() override {}
    void DropHandle() override {}
    int Folder() const { return m_folder.Number(); }

private:
    Descriptor m_folder;
};

// The folder of the process that a handle names, during the lifetime of this object.
class FolderOf {
public:
    explicit FolderOf(HANDLE process)
        : m_used(process),
          m_own(process == GetCurrentProcess() ? open("/proc/self", O_PATH | O_DIRECTORY | O_CLOEXEC) : -1),
          m_number(m_own.Number()) {
        if (m_used.Object() != nullptr && m_used.Object()->Kind() == posix::ObjectKind::Process) {
            m_number = static_cast<const Process*>(m_used.Object())->Folder();
        }
    }
    // Returns -1 if the handle is not that of a process.
    int Number() const { return m_number; }

private:
    posix::UsedHandle m_used;
    Descriptor m_own;
    int m_number;
};

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

std::string ProgramOf(int folder) {
    char path[PATH_MAX];
    const ssize_t length = readlinkat(folder, "exe", path, sizeof(path));
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}

// Reads the paths of the files that a process has mapped. Returns false, with errno set, if they can't be
// read.
bool ReadMappedFiles(int folder, std::set<std::string>* files) {
    const Descriptor file(openat(folder, "maps", O_RDONLY | O_CLOEXEC));
    if (!file) {
        return false;
    }
    std::string text;
    char piece[16'384];
    for (ssize_t length = 0; (length = read(file.Number(), piece, sizeof(piece))) != 0;) {
        if (length < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        text.append(piece, static_cast<std::size_t>(length));
    }
    // A line ends with the file's path, the only field that contains a slash.
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::size_t path = text.find('/', start);
        if (path < end) {
            files->insert(text.substr(path, end - path));
        }
        start = end + 1;
    }
    return true;
}

// Resolves symbolic links, as the kernel does: the linker's name may contain them.
std::string ResolvedPath(const std::string& file) {
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(file.c_str(), nullptr), &std::free);
    return path == nullptr ? std::string() : std::string(path.get());
}

DWORD CopyPath(const std::string& file, LPWSTR path, DWORD size) {
    const std::wstring wide = WideFromUtf8(file);
    if (wide.empty() || path == nullptr || size == 0) {
        SetLastError(wide.empty() ? ERROR_INVALID_HANDLE : ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    const auto copied = static_cast<DWORD>(std::min<std::size_t>(wide.size(), size - 1));
    std::copy_n(wide.begin(), copied, path);
    path[copied] = L'\0';
    if (copied < wide.size()) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return size;
    }
    return copied;
}

} // namespace

HANDLE OpenProcess(DWORD access, BOOL /*inheritHandle*/, DWORD number) {
    if ((access & ~(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ)) != 0) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    Descriptor folder(open(("/proc/" + std::to_string(number)).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (number == 0 || !folder) {
        SetLastError(number == 0 || errno == ENOENT ? ERROR_INVALID_PARAMETER : ErrorFromErrno(errno));
        return nullptr;
    }
    if (const Descriptor maps(openat(folder.Number(), "maps", O_RDONLY | O_CLOEXEC)); !maps) {
        SetLastError(errno == EACCES || errno == EPERM ? ERROR_ACCESS_DENIED : ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return posix::OpenHandle(posix::Reference<posix::KernelObject>(new Process(std::move(folder))));
}

BOOL K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, DWORD* needed) {
    const FolderOf folder(process);
    if (folder.Number() < 0) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    std::set<std::string> files;
    if (!ReadMappedFiles(folder.Number(), &files)) {
        return Fail(ErrorFromErrno(errno));
    }
    DWORD count = 0;
    for (const posix::ListedModule& module : posix::ListModules()) {
        if (files.count(ResolvedPath(module.file)) == 0) {
            continue;
        }
        if (count < size / kHandleSize) {
            modules[count] = module.handle;
        }
        ++count;
    }
    *needed = count * kHandleSize;
    return TRUE;
}

DWORD K32GetModuleFileNameExW(HANDLE process, HMODULE module, LPWSTR path, DWORD size) {
    const FolderOf folder(process);
    if (folder.Number() < 0) {
        return static_cast<DWORD>(Fail(ERROR_INVALID_HANDLE));
    }
    const auto modules = posix::ListModules();
    if (module == nullptr || (!modules.empty() && module == modules.front().handle)) {
        return CopyPath(ProgramOf(folder.Number()), path, size);
    }
    std::set<std::string> files;
    for (const posix::ListedModule& listed : modules) {
        if (listed.handle == module && ReadMappedFiles(folder.Number(), &files) &&
            files.count(ResolvedPath(listed.file)) != 0) {
            return CopyPath(listed.file, path, size);
        }
    }
    return static_cast<DWORD>(Fail(ERROR_INVALID_HANDLE));
}

} // namespace krtpal
