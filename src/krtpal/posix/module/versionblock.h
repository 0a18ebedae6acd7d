// Version blocks. In a file a block is a tree of nodes with 16-bit lengths and UTF-16 text; what callers hold
// has the same tree, and behind it the texts once more in wchar_t, since answers are pointers into the block.

#ifndef KRTPAL_POSIX_MODULE_VERSIONBLOCK_H
#define KRTPAL_POSIX_MODULE_VERSIONBLOCK_H

#include <string_view>
#include <vector>

namespace krtpal::posix {

/// The callers' form of a block as it stands in a file; empty for bytes that are no block.
std::vector<unsigned char> ExpandVersionBlock(const std::vector<unsigned char>& stored);

struct VersionValue {
    const void* data; ///< in the block; null if there is no such value
    unsigned length;  ///< characters with NUL for texts, bytes for all else
};

/// `block` is what ExpandVersionBlock made.
VersionValue FindVersionValue(const void* block, std::wstring_view name);

} // namespace krtpal::posix

#endif
