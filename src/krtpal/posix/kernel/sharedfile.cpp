#include "krtpal/posix/kernel/sharedfile.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <string_view>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace krtpal::posix {

namespace {

constexpr mode_t kOwnFolderMode = 0700;
// Every user creates files there and removes only their own.
constexpr mode_t kMachineFolderMode = 01777;
constexpr mode_t kFileMode = 0600;
constexpr std::size_t kLongestFileName = 200;

class Descriptor {
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() {
        if (m_number != -1) {
            close(m_number);
        }
    }
    int Number() const { return m_number; }
    int Release() { return std::exchange(m_number, -1); }

private:
    int m_number;
};

// Returns 0 or an errno value.
int LockFile(int descriptor, int operation) {
    while (flock(descriptor, operation) != 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

std::string FolderOf(const ObjectName& name) {
    return name.global ? "/dev/shm/krtbss" : "/dev/shm/krtbss-" + std::to_string(geteuid());
}

// Returns false if another user owns our folder, or users can write to it who must not.
bool IsTrusted(const struct stat& status, bool machine) {
    const bool ours = status.st_uid == geteuid();
    return machine ? (status.st_mode & 07777) == kMachineFolderMode || ours
                   : ours && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Opens and locks the folder: no other process opens or closes a name in it until the descriptor is closed.
DWORD LockFolder(const std::string& folder, bool machine, bool make, Descriptor* locked) {
    for (;;) {
        const bool made = make && mkdir(folder.c_str(), kOwnFolderMode) == 0;
        if (make && !made && errno != EEXIST) {
            return ErrorFromErrno(errno);
        }
        Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (descriptor.Number() == -1) {
            if (errno == ENOENT && make) {
                continue; // the last holder of a name has just removed it
            }
            return ErrorFromErrno(errno);
        }
        if (made && machine && fchmod(descriptor.Number(), kMachineFolderMode) != 0) {
            return ErrorFromErrno(errno);
        }
        if (const int error = LockFile(descriptor.Number(), LOCK_EX); error != 0) {
            return ErrorFromErrno(error);
        }
        struct stat held {};
        struct stat named {};
        if (fstat(descriptor.Number(), &held) != 0) {
            return ErrorFromErrno(errno);
        }
        if (stat(folder.c_str(), &named) != 0 || held.st_ino != named.st_ino || held.st_dev != named.st_dev) {
            continue; // it was removed, and possibly created again, during the wait
        }
        if (!IsTrusted(held, machine)) {
            return ERROR_ACCESS_DENIED;
        }
        *locked = std::move(descriptor);
        return ERROR_SUCCESS;
    }
}

// Returns the name with every character except letters, digits, - and _ escaped as %XX or %uXXXX. A long
// name is cut and gets its FNV-1a hash as suffix; the contents of the file have the whole name.
std::string FileNameOf(const ObjectName& name) {
    std::string file;
    std::uint64_t hash = 0xCBF29CE484222325;
    // UTF-16 code units give lone surrogates a form, too.
    for (const Utf16Unit unit : EncodeUtf16(name.rest)) {
        hash = (hash ^ unit) * 0x100000001B3;
        const bool plain = (unit >= '0' && unit <= '9') || (unit >= 'A' && unit <= 'Z') ||
                           (unit >= 'a' && unit <= 'z') || unit == '-' || unit == '_';
        if (plain) {
            file += static_cast<char>(unit);
        } else {
            char escape[8];
            std::snprintf(escape, sizeof(escape), unit < 0x100 ? "%%%02X" : "%%u%04X", unsigned{unit});
            file += escape;
        }
    }
    if (file.size() > kLongestFileName) {
        char suffix[24];
        std::snprintf(suffix, sizeof(suffix), "~%016llx", static_cast<unsigned long long>(hash));
        file = file.substr(0, kLongestFileName) + suffix;
    }
    return file;
}

// Removes files of dead processes from a locked folder.
void Sweep(int folder) {
    const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const entries = copy == -1 ? nullptr : fdopendir(copy);
    if (entries == nullptr) {
        return;
    }
    while (const dirent* const entry = readdir(entries)) {
        const Descriptor file(openat(folder, entry->d_name, O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
        if (file.Number() != -1 && LockFile(file.Number(), LOCK_EX | LOCK_NB) == 0) {
            unlinkat(folder, entry->d_name, 0);
        }
    }
    closedir(entries);
}

// Sweeps each folder once per process.
void SweepOnce(int folder, bool machine) {
    static std::once_flag own;
    static std::once_flag ofMachine;
    std::call_once(machine ? ofMachine : own, &Sweep, folder);
}

} // namespace

DWORD ParseObjectName(const wchar_t* name, ObjectName* parsed) {
    constexpr std::wstring_view kGlobal = L"Global\\";
    constexpr std::wstring_view kLocal = L"Local\\";
    std::wstring_view rest = name;
    if (rest.size() > MAX_PATH) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    parsed->global = rest.substr(0, kGlobal.size()) == kGlobal;
    if (parsed->global) {
        rest.remove_prefix(kGlobal.size());
    } else if (rest.substr(0, kLocal.size()) == kLocal) {
        rest.remove_prefix(kLocal.size());
    }
    if (rest.empty()) {
        return ERROR_INVALID_NAME;
    }
    if (rest.find(L'\\') != std::wstring_view::npos) {
        return ERROR_PATH_NOT_FOUND;
    }
    parsed->rest = rest;
    return ERROR_SUCCESS;
}

DWORD SharedFile::Open(const ObjectName& name, std::size_t bytes, const std::function<void(void*)>& fill,
                       const std::function<DWORD(const void*, std::size_t)>& check,
                       std::unique_ptr<SharedFile>* file) {
    const bool make = static_cast<bool>(fill);
    std::unique_ptr<SharedFile> opened(new SharedFile);
    opened->m_folder = FolderOf(name);
    opened->m_machine = name.global;
    Descriptor folder;
    if (const DWORD error = LockFolder(opened->m_folder, name.global, make, &folder);
        error != ERROR_SUCCESS) {
        return error;
    }
    SweepOnce(folder.Number(), name.global);
    const std::string path = FileNameOf(name);
    const int flags = O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | (make ? O_CREAT : 0);
    Descriptor descriptor(openat(folder.Number(), path.c_str(), flags, kFileMode));
    if (descriptor.Number() == -1) {
        return ErrorFromErrno(errno);
    }
    const int alone = LockFile(descriptor.Number(), LOCK_EX | LOCK_NB);
    if (alone != 0 && alone != EWOULDBLOCK) {
        return ErrorFromErrno(alone);
    }
    if (alone == 0) {
        // From here on this process removes the file on failure.
        opened->m_file = path;
        opened->m_descriptor = descriptor.Release();
        if (!make) {
            return opened->GiveUp(folder.Number()), ERROR_FILE_NOT_FOUND;
        }
        DWORD error = ERROR_SUCCESS;
        if (ftruncate(opened->m_descriptor, 0) != 0) {
            error = ErrorFromErrno(errno);
        } else if (const int full = posix_fallocate(opened->m_descriptor, 0, static_cast<off_t>(bytes))) {
            error = ErrorFromErrno(full);
        } else {
            error = opened->Map(bytes);
        }
        if (error != ERROR_SUCCESS) {
            return opened->GiveUp(folder.Number()), error;
        }
        fill(opened->m_memory);
        opened->m_made = true;
        LockFile(opened->m_descriptor, LOCK_SH);
        *file = std::move(opened);
        return ERROR_SUCCESS;
    }
    if (const int error = LockFile(descriptor.Number(), LOCK_SH); error != 0) {
        return ErrorFromErrno(error);
    }
    struct stat status {};
    if (fstat(descriptor.Number(), &status) != 0) {
        return ErrorFromErrno(errno);
    }
    opened->m_file = path;
    opened->m_descriptor = descriptor.Release();
    DWORD error = opened->Map(static_cast<std::size_t>(status.st_size));
    if (error == ERROR_SUCCESS) {
        error = check(opened->m_memory, opened->m_size);
    }
    if (error != ERROR_SUCCESS) {
        return opened->GiveUp(folder.Number()), error;
    }
    *file = std::move(opened);
    return ERROR_SUCCESS;
}

DWORD SharedFile::Map(std::size_t bytes) {
    void* const memory =
        bytes == 0 ? nullptr : mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
    if (memory == MAP_FAILED) {
        return ErrorFromErrno(errno);
    }
    m_memory = memory;
    m_size = bytes;
    return ERROR_SUCCESS;
}

void SharedFile::GiveUp(int folder) {
    if (LockFile(m_descriptor, LOCK_EX | LOCK_NB) == 0) {
        unlinkat(folder, m_file.c_str(), 0);
        rmdir(m_folder.c_str()); // succeeds if it is empty
    }
    close(std::exchange(m_descriptor, -1));
}

void SharedFile::LeaveName() {
    if (m_descriptor == -1) {
        return;
    }
    Descriptor folder;
    if (LockFolder(m_folder, m_machine, false, &folder) == ERROR_SUCCESS) {
        GiveUp(folder.Number());
    } else {
        close(std::exchange(m_descriptor, -1));
    }
}

SharedFile::~SharedFile() {
    LeaveName();
    if (m_memory != nullptr) {
        munmap(m_memory, m_size);
    }
}

} // namespace krtpal::posix
