// Memory that processes share by name, as long as any of them holds it.
//
// A name is a file in a folder of shared memory: one folder for each user's "Local\" names, one for the
// machine's "Global\" names. Each holder locks the file (flock, shared) as long as it holds it. The process
// that gets the exclusive lock is alone, so the contents are left over from processes that died, and are
// created again. The last holder removes the file, and the folder if it is empty. A lock on the folder
// serialises opening and closing, since a lock can't be converted from exclusive to shared in one step.

#ifndef KRTPAL_POSIX_KERNEL_SHAREDFILE_H
#define KRTPAL_POSIX_KERNEL_SHAREDFILE_H

#include "krtpal/types.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace krtpal::posix {

/// The parts of a kernel object's name.
struct ObjectName {
    bool global = false;
    std::wstring rest; ///< the name without its prefix; not empty

    /// Returns a key that is unique for the name in this process.
    std::wstring Key() const { return (global ? L"G" : L"L") + rest; }
};

/// Returns ERROR_SUCCESS, ERROR_INVALID_NAME if no character follows a prefix, ERROR_PATH_NOT_FOUND for a
/// backslash after it, ERROR_FILENAME_EXCED_RANGE above 260 characters.
DWORD ParseObjectName(const wchar_t* name, ObjectName* parsed);

class SharedFile {
public:
    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;
    /// Releases the file; removes it if no other process holds it.
    ~SharedFile();

    /// Opens the file of a name. If no process holds it and `fill` is given, creates it with `bytes` zero
    /// bytes, which `fill` initialises before any other process sees them. If a process holds it, `check`
    /// accepts the contents by ERROR_SUCCESS or rejects them by an error.
    /// Returns ERROR_SUCCESS, the error of `check`, ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, or the error
    /// of errno.
    static DWORD Open(const ObjectName& name, std::size_t bytes, const std::function<void(void*)>& fill,
                      const std::function<DWORD(const void*, std::size_t)>& check,
                      std::unique_ptr<SharedFile>* file);

    void* Memory() const { return m_memory; }
    std::size_t Size() const { return m_size; }
    bool WasMade() const { return m_made; }
    /// Releases the name; the memory stays mapped. The name is free if no other process holds it.
    void LeaveName();

private:
    SharedFile() = default;
    DWORD Map(std::size_t bytes);
    /// REQUIRES: the lock of the folder.
    void GiveUp(int folder);

    bool m_machine = false;

    std::string m_folder;
    std::string m_file;
    void* m_memory = nullptr;
    std::size_t m_size = 0;
    int m_descriptor = -1;
    bool m_made = false;
};

} // namespace krtpal::posix

#endif
