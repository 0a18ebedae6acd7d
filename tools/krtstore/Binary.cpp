#include "Binary.h"

#include "Text.h"

#include "bss/exception/WNestedException.h"
#include "bss/system/WCompression.h"

#include <cstring>
#include <new>

namespace krtstore {

namespace {

/// From so many bytes on a payload without a frame is compressed.
constexpr std::size_t kCompressed = 1001;
/// No byte of zlib's format expands to more.
constexpr std::size_t kMostExpansion = 1032;

std::string Bytes(std::size_t number) {
    return Count(number, "byte");
}

void Unpack(std::span<const unsigned char> stream, std::size_t length, BinaryValue* value) {
    value->isCompressed = true;
    if (length / kMostExpansion > stream.size()) {
        value->fault = "its " + Bytes(stream.size()) + " of compressed data cannot hold the " +
                       Bytes(length) + " that are told";
        return;
    }
    try {
        value->unpacked.resize(length);
        auto room = static_cast<unsigned long>(length);
        bss::WCompression::Uncompress(value->unpacked.data(), &room, stream.data(),
                                      static_cast<unsigned long>(stream.size()));
        if (room != length) {
            value->fault =
                "its compressed data hold " + Bytes(room) + ", where " + std::to_string(length) + " are told";
        }
        value->unpacked.resize(room);
        value->payload = value->unpacked;
    } catch (const bss::WNestedException&) {
        value->fault = "its compressed data are damaged";
    } catch (const std::bad_alloc&) {
        value->fault = "there is no memory to unpack the " + Bytes(length) + " that are told";
    }
}

BinaryValue DecodeFrame(std::span<const unsigned char> bytes) {
    BinaryValue value;
    struct {
        std::uint32_t total;
        std::uint32_t compressed;
        std::uint32_t length;
        std::uint32_t lengthAgain;
    } header{};
    if (bytes.size() < sizeof(header)) {
        value.fault = "it has " + Bytes(bytes.size()) + ", where a frame's header alone has 16";
        return value;
    }
    std::memcpy(&header, bytes.data(), sizeof(header));
    const auto payload = bytes.subspan(sizeof(header));
    value.isCompressed = header.compressed != 0;
    const std::size_t told = value.isCompressed ? header.compressed : header.length;
    if (header.total != bytes.size()) {
        value.fault =
            "its frame tells " + Bytes(header.total) + ", the column has " + std::to_string(bytes.size());
    } else if (header.length != header.lengthAgain) {
        value.fault = "its frame tells two lengths, " + std::to_string(header.length) + " and " +
                      Bytes(header.lengthAgain);
    } else if (told != payload.size()) {
        value.fault = "its frame tells " + Bytes(told) +
                      (value.isCompressed ? " of compressed data" : " of data") + ", behind the header are " +
                      std::to_string(payload.size());
    } else if (value.isCompressed) {
        Unpack(payload, header.length, &value);
    } else {
        value.payload = payload;
    }
    return value;
}

std::string SizeText(const Cell& cell) {
    return cell.form == Cell::Form::Integer ? std::to_string(cell.integer) : "nothing";
}

BinaryValue DecodeSized(const Table& table, const Row& row, std::size_t column) {
    BinaryValue value;
    value.form = BinaryValue::Form::SizesInFront;
    const std::span<const unsigned char> bytes = row[column].bytes;
    const auto sizes = FindSizeColumns(table, column);
    if (!sizes) {
        value.fault = "the two columns of its sizes are missing";
        return value;
    }
    const Cell& stored = row[sizes->stored];
    const Cell& length = row[sizes->length];
    if (stored.form != Cell::Form::Integer || stored.integer != static_cast<std::int64_t>(bytes.size())) {
        value.fault = "column " + Utf8(table.columns[sizes->stored].name) + " tells " + SizeText(stored) +
                      ", it has " + Bytes(bytes.size());
        return value;
    }
    const bool isPlausible = length.form == Cell::Form::Integer && length.integer >= 0 &&
                             length.integer <= 0x7FFFFFFF && (length.integer == 0) == bytes.empty();
    const auto told = isPlausible ? static_cast<std::size_t>(length.integer) : 0;
    if (!isPlausible || (told < kCompressed && told != bytes.size())) {
        value.fault = "column " + Utf8(table.columns[sizes->length].name) + " tells " + SizeText(length) +
                      ", it has " + Bytes(bytes.size());
        return value;
    }
    if (told < kCompressed) {
        value.payload = bytes;
    } else {
        Unpack(bytes, told, &value);
    }
    return value;
}

} // namespace

std::optional<std::int64_t> VersionOf(const Table& table, const Row& row) {
    const auto column = table.Find(L"m_nVersion");
    return column && row[*column].form == Cell::Form::Integer ? std::optional(row[*column].integer)
                                                              : std::nullopt;
}

std::optional<SizeColumns> FindSizeColumns(const Table& table, std::size_t binaryColumn) {
    const auto stored = table.Find(table.columns[binaryColumn].name + L"L");
    const auto length = table.Find(table.columns[binaryColumn].name + L"LU");
    return stored && length ? std::optional(SizeColumns{*stored, *length}) : std::nullopt;
}

BinaryValue DecodeBinary(const Table& table, const Row& row, std::size_t column) {
    return VersionOf(table, row).value_or(kFirstWithFrames) >= kFirstWithFrames
               ? DecodeFrame(row[column].bytes)
               : DecodeSized(table, row, column);
}

} // namespace krtstore
