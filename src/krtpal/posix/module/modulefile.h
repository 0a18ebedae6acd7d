// The files of modules, read piece by piece. All offsets and sizes may be lies of a damaged file: what lies
// outside reads as a failure.

#ifndef KRTPAL_POSIX_MODULE_MODULEFILE_H
#define KRTPAL_POSIX_MODULE_MODULEFILE_H

#include "krtpal/types.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace krtpal::posix {

/// A file that is open for reading.
class ModuleFile {
public:
    /// Opens a regular file; ask IsOpen, and the last error if it is not.
    explicit ModuleFile(LPCWSTR path);
    ~ModuleFile();
    ModuleFile(const ModuleFile&) = delete;
    ModuleFile& operator=(const ModuleFile&) = delete;

    bool IsOpen() const { return m_descriptor >= 0; }
    /// All `size` bytes from `offset`, or false.
    bool Read(std::uint64_t offset, void* target, std::size_t size) const;
    /// A structure of plain bytes.
    template <class Structure>
    bool Read(std::uint64_t offset, Structure* target) const {
        return Read(offset, target, sizeof(Structure));
    }

private:
    int m_descriptor;
};

/// Version blocks count their length in 16 bits.
inline constexpr std::size_t kLargestVersionBlock = 0xFFFF;

/// The version block of an ELF module of either width; empty if it has none.
std::vector<unsigned char> ReadElfVersionBlock(const ModuleFile& file);
/// The version resource of a PE module of either width; empty if it has none.
std::vector<unsigned char> ReadPeVersionBlock(const ModuleFile& file);

} // namespace krtpal::posix

#endif
