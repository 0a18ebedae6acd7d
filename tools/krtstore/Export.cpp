#include "Export.h"

#include "Binary.h"
#include "Failure.h"
#include "Text.h"

#include "bss/system/base64.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <span>
#include <system_error>

namespace krtstore {

namespace {

/// In pieces, which join to one text as each but the last has a multiple of 3 bytes.
void WriteBase64(std::span<const unsigned char> bytes, std::ostream& output) {
    constexpr std::size_t piece = 49'152;
    constexpr unsigned long flags = bss::base64::NoLineBreaks;
    output << '"';
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        const auto part = bytes.subspan(at, std::min(piece, bytes.size() - at));
        const auto size = static_cast<int>(part.size());
        int length = bss::base64::EncodeGetRequiredLength(size, flags);
        std::string text(static_cast<std::size_t>(length), '\0');
        bss::base64::Encode(part.data(), size, text.data(), &length, flags);
        output.write(text.data(), length);
    }
    output << '"';
}

void WriteBinary(const Table& table, const Row& row, std::size_t column, std::ostream& output) {
    const std::vector<unsigned char>& bytes = row[column].bytes;
    const BinaryValue value = table.IsOfStore() ? DecodeBinary(table, row, column) : BinaryValue();
    if (table.IsOfStore() && value.fault.empty()) {
        output << "{\"data\": ";
        WriteBase64(value.payload, output);
    } else {
        output << "{\"stored\": ";
        WriteBase64(bytes, output);
    }
    output << (value.fault.empty() ? "" : ", \"fault\": " + JsonText(Wide(value.fault))) << '}';
}

void WriteValue(const Table& table, const Row& row, std::size_t column, std::ostream& output) {
    const Cell& cell = row[column];
    switch (cell.form) {
    case Cell::Form::Null:
        output << "null";
        break;
    case Cell::Form::Integer:
        output << cell.integer;
        break;
    case Cell::Form::Double:
        output << JsonNumber(cell.real);
        break;
    case Cell::Form::Text:
        output << (table.IsOfStore() && table.columns[column].name == L"checkSum"
                       ? "\"" + UnitDigits(cell.text) + "\""
                       : JsonText(cell.text));
        break;
    case Cell::Form::Binary:
        WriteBinary(table, row, column, output);
        break;
    case Cell::Form::Guid:
        output << '"' << GuidText(cell.guid) << '"';
        break;
    }
}

void WriteTable(Connection& connection, const Table& table, std::ostream& output) {
    output << "    {\n      \"table\": " << JsonText(table.name) << ",\n      \"columns\": [";
    const char* separator = "";
    for (const Column& column : table.columns) {
        output << separator << "{\"name\": " << JsonText(column.name)
               << ", \"type\": " << JsonText(column.type) << '}';
        separator = ", ";
    }
    output << "],\n      \"rows\": [";
    separator = "\n        {";
    connection.ForEachRow(table, {}, [&](const Row& row) {
        output << separator;
        for (std::size_t i = 0; i < row.size(); ++i) {
            output << (i == 0 ? "" : ", ") << JsonText(table.columns[i].name) << ": ";
            WriteValue(table, row, i, output);
        }
        output << '}';
        separator = ",\n        {";
    });
    output << "\n      ]\n    }";
}

} // namespace

void Export(Connection& connection, const std::vector<Table>& tables, std::ostream& output) {
    output << "{\n  \"tables\": [";
    const char* separator = "\n";
    for (const Table& table : tables) {
        output << separator;
        WriteTable(connection, table, output);
        separator = ",\n";
    }
    output << "\n  ]\n}\n" << std::flush;
}

void WriteWhole(const std::string& file, const std::function<void(std::ostream&)>& write) {
    const std::filesystem::path target = PathOf(file);
    std::error_code failure;
    if (std::filesystem::is_directory(target, failure)) {
        throw Failure("Cannot write " + Quote(file) + ": it is a folder.");
    }
    std::filesystem::path part = target;
    part += "." + std::to_string(std::random_device{}()) + ".part";
    std::ofstream stream(part, std::ios::binary);
    const bool isOpen = stream.is_open();
    if (!isOpen) {
        throw Failure("Cannot write " + Quote(file) + ": no file can be made in that folder.");
    }
    try {
        write(stream);
        stream.close();
        if (!stream) {
            throw Failure("Cannot write " + Quote(file) + ": the disk does not take it.");
        }
        std::filesystem::rename(part, target, failure);
        if (failure) {
            throw Failure("Cannot write " + Quote(file) + ": " + failure.message() + ".");
        }
    } catch (...) {
        stream.close();
        std::error_code ignored;
        std::filesystem::remove(part, ignored);
        throw;
    }
}

} // namespace krtstore
