#include "Export.h"

#include "Binary.h"
#include "Text.h"
#include "common/Json.h"

#include "bss/system/base64.h"

#include <algorithm>
#include <span>
#include <string>

namespace krtstore {

namespace {

using tools::Json;

/// In pieces, as the encoder counts in 32 bits; they join to one text since each but the last has a multiple
/// of 3 bytes.
Json Base64(std::span<const unsigned char> bytes) {
    constexpr std::size_t kPiece = 49'152;
    constexpr unsigned long kFlags = bss::base64::NoLineBreaks;
    std::string all;
    for (std::size_t at = 0; at < bytes.size(); at += kPiece) {
        const auto part = bytes.subspan(at, std::min(kPiece, bytes.size() - at));
        const auto size = static_cast<int>(part.size());
        int length = bss::base64::EncodeGetRequiredLength(size, kFlags);
        std::string text(static_cast<std::size_t>(length), '\0');
        bss::base64::Encode(part.data(), size, text.data(), &length, kFlags);
        all.append(text, 0, static_cast<std::size_t>(length));
    }
    return all;
}

Json JsonBinary(const Table& table, const Row& row, std::size_t column) {
    if (!table.IsOfStore()) {
        return {{"stored", Base64(row[column].bytes)}};
    }
    const BinaryValue value = DecodeBinary(table, row, column);
    return value.fault.empty() ? Json{{"data", Base64(value.payload)}}
                               : Json{{"stored", Base64(row[column].bytes)}, {"fault", value.fault}};
}

Json JsonValue(const Table& table, const Row& row, std::size_t column) {
    const Cell& cell = row[column];
    switch (cell.form) {
    case Cell::Form::Null:
        return nullptr;
    case Cell::Form::Integer:
        return cell.integer;
    case Cell::Form::Double:
        return tools::Token(JsonNumber(cell.real));
    case Cell::Form::Text:
        if (table.IsOfStore() && table.columns[column].name == L"checkSum") {
            return UnitDigits(cell.text);
        }
        return tools::Token(JsonText(cell.text));
    case Cell::Form::Binary:
        return JsonBinary(table, row, column);
    case Cell::Form::Guid:
        return GuidText(cell.guid);
    }
    return nullptr;
}

void WriteTable(Connection& connection, const Table& table, std::ostream& output) {
    Json columns = Json::array();
    for (const Column& column : table.columns) {
        columns.push_back({{"name", Utf8(column.name)}, {"type", Utf8(column.type)}});
    }
    output << "    {\n      \"table\": " << tools::OneLine(Utf8(table.name))
           << ",\n      \"columns\": " << tools::OneLine(columns) << ",\n      \"rows\": [";
    const char* separator = "\n        ";
    connection.ForEachRow(table, {}, [&](const Row& row) {
        Json members = Json::object();
        for (std::size_t i = 0; i < row.size(); ++i) {
            members.push_back({Utf8(table.columns[i].name), JsonValue(table, row, i)});
        }
        output << separator << tools::OneLine(members);
        separator = ",\n        ";
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

} // namespace krtstore
