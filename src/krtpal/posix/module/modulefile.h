// Files of modules, read piece by piece. A read outside the file fails, so offsets and sizes of a damaged
// file need no other check.

#ifndef KRTPAL_POSIX_MODULE_MODULEFILE_H
#define KRTPAL_POSIX_MODULE_MODULEFILE_H

#include "krtpal/types.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace krtpal::posix {

/// A file opened for reading.
class ModuleFile {
public:
    /// Opens a regular file. On failure IsOpen returns false and the last error has the reason.
    explicit ModuleFile(LPCWSTR path);
    ~ModuleFile();
    ModuleFile(const ModuleFile&) = delete;
    ModuleFile& operator=(const ModuleFile&) = delete;

    bool IsOpen() const { return m_descriptor >= 0; }
    /// Returns true if all `size` bytes from `offset` were read.
    bool Read(std::uint64_t offset, void* target, std::size_t size) const;
    /// Reads a trivially copyable structure.
    template <class Structure>
    bool Read(std::uint64_t offset, Structure* target) const {
        return Read(offset, target, sizeof(Structure));
    }

private:
    int m_descriptor;
};

/// Largest version block, whose length has 16 bits.
inline constexpr std::size_t kLargestVersionBlock = 0xFFFF;

/// Returns the version block of an ELF module of either width, or nothing.
std::vector<unsigned char> ReadElfVersionBlock(const ModuleFile& file);
/// Returns the version resource of a PE module of either width, or nothing.
std::vector<unsigned char> ReadPeVersionBlock(const ModuleFile& file);

} // namespace krtpal::posix

#endif
