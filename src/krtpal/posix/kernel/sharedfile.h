// Memory that processes share by name, for as long as any of them holds it.
//
// A name is a file in a folder of shared memory: one folder a user for "Local\" names, one for the machine
// for "Global\" names. Each holder has the file locked (flock, shared) for as long as it holds it; who gets
// the exclusive lock is alone, so what the file holds is left over from processes that died, and is made
// anew. The last holder removes the file, and the folder when it is empty. Opening and closing are serialised
// by a lock on the folder itself, since a lock can't be turned from exclusive to shared in one step.

#ifndef KRTPAL_POSIX_KERNEL_SHAREDFILE_H
#define KRTPAL_POSIX_KERNEL_SHAREDFILE_H

#include "krtpal/types.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace krtpal::posix {

/// A name of a kernel object, split up.
struct ObjectName {
    bool global = false;
    std::wstring rest; ///< without prefix; not empty

    /// The key that tells names of this process apart.
    std::wstring Key() const { return (global ? L"G" : L"L") + rest; }
};

/// ERROR_SUCCESS, or what is wrong with the name: ERROR_INVALID_NAME without characters behind a prefix,
/// ERROR_PATH_NOT_FOUND for a backslash in it, ERROR_FILENAME_EXCED_RANGE above 260 characters.
DWORD ParseObjectName(const wchar_t* name, ObjectName* parsed);

class SharedFile {
public:
    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;
    /// Gives the file up; removes it if nobody else holds it.
    ~SharedFile();

    /// Opens the file of a name; if nobody holds it and `fill` is given, makes it with `bytes` zero bytes,
    /// which `fill` puts in order before anybody else sees them. What others hold, `check` looks at: its
    /// answer other than ERROR_SUCCESS refuses it. Also ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, and others
    /// by errno.
    static DWORD Open(const ObjectName& name, std::size_t bytes, const std::function<void(void*)>& fill,
                      const std::function<DWORD(const void*, std::size_t)>& check,
                      std::unique_ptr<SharedFile>* file);

    void* Memory() const { return m_memory; }
    std::size_t Size() const { return m_size; }
    bool WasMade() const { return m_made; }
    /// Gives the name up while the memory stays, so that the name is free for others when nobody holds it.
    void LeaveName();

private:
    SharedFile() = default;
    DWORD Map(std::size_t bytes);
    /// Under the lock of the folder.
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
