// Version blocks. In a file a block is a tree of nodes with 16-bit lengths and UTF-16 text. The callers' form
// has the same tree and, after it, the texts as wchar_t, since callers get pointers into the block.

#ifndef KRTPAL_POSIX_MODULE_VERSIONBLOCK_H
#define KRTPAL_POSIX_MODULE_VERSIONBLOCK_H

#include <string_view>
#include <vector>

namespace krtpal::posix {

/// Returns the callers' form of a block of a file; nothing if the bytes are not a block.
std::vector<unsigned char> ExpandVersionBlock(const std::vector<unsigned char>& stored);

struct VersionValue {
    const void* data; ///< in the block; null if there is no such value
    unsigned length;  ///< in characters with the NUL for texts, in bytes for all other values
};

/// REQUIRES: a block of ExpandVersionBlock.
VersionValue FindVersionValue(const void* block, std::wstring_view name);

} // namespace krtpal::posix

#endif
