// What a binary column holds, in the form that the row's version has.

#ifndef TOOLS_KRTSTORE_BINARY_H
#define TOOLS_KRTSTORE_BINARY_H

#include "Table.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace krtstore {

// From version 5.3.2.0 on a binary column has a frame of its own; below it, two columns in front.
inline constexpr std::int64_t kFirstWithFrames = 0x05030200;

// The row's version if it is a number.
std::optional<std::int64_t> VersionOf(const Table& table, const Row& row);

// The two columns of sizes that rows below version 5.3.2.0 have for a binary column: its name with L and with
// LU behind. Nothing if the table does not have both.
struct SizeColumns {
    std::size_t stored;
    std::size_t length;
};
std::optional<SizeColumns> FindSizeColumns(const Table& table, std::size_t binaryColumn);

struct BinaryValue {
    enum class Form { Frame, SizesInFront };

    Form form = Form::Frame;
    bool isCompressed = false;
    std::string fault;                      // what is wrong with it; then there may be no payload
    std::span<const unsigned char> payload; // in the cell or in `unpacked`
    std::vector<unsigned char> unpacked;
};

// Takes a binary value apart, which has to live as long as the result. The cell may be NULL if the row tells
// that nothing is stored.
BinaryValue DecodeBinary(const Table& table, const Row& row, std::size_t column);

} // namespace krtstore

#endif
