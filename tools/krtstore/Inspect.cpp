#include "Inspect.h"

#include "Binary.h"
#include "Text.h"
#include "common/Failure.h"

#include <algorithm>
#include <array>

namespace krtstore {

using tools::Failure;

namespace {

constexpr std::size_t kFirstBytes = 16;
/// Stands behind each text of an array.
constexpr wchar_t kDelimiter = 0xFAB5;

std::string Versions(const Row& counts) {
    const Cell& lowest = counts[1];
    const Cell& highest = counts[2];
    if (lowest.form != Cell::Form::Integer || highest.form != Cell::Form::Integer) {
        return "-";
    }
    const std::string from = VersionText(lowest.integer);
    return lowest.integer == highest.integer ? from : from + ".." + VersionText(highest.integer);
}

std::string Remark(const Table& table) {
    if (!table.IsOfStore()) {
        return "none of the store's";
    }
    std::string names;
    for (const std::wstring& column : table.MissingColumns()) {
        names += (names.empty() ? "lacks " : ", ") + Utf8(column);
    }
    return names;
}

std::string FirstBytes(std::span<const unsigned char> bytes) {
    return bytes.empty() ? ""
                         : ": " + ByteDigits(bytes.first(std::min(bytes.size(), kFirstBytes))) +
                               (bytes.size() > kFirstBytes ? " ..." : "");
}

std::string BinaryText(const Table& table, const Row& row, std::size_t column) {
    const std::vector<unsigned char>& bytes = row[column].bytes;
    std::string text = "binary, " + Count(bytes.size(), "byte") + "; ";
    if (!table.IsOfStore()) {
        return text.substr(0, text.size() - 2) + FirstBytes(bytes);
    }
    const BinaryValue value = DecodeBinary(table, row, column);
    text += value.form == BinaryValue::Form::Frame ? "frame" : "sizes in front";
    if (!value.fault.empty()) {
        return text + ", damaged (" + value.fault + ")" + FirstBytes(bytes);
    }
    return text + (value.isCompressed ? ", compressed, " : ", not compressed, ") +
           Count(value.payload.size(), "byte") + " of data" + FirstBytes(value.payload);
}

/// The texts of an array, if the column in front has their number.
std::string ArrayText(const Table& table, const Row& row, std::size_t column) {
    const std::wstring& text = row[column].text;
    const auto count = table.Find(table.columns[column].name + L"L");
    const auto delimiters = std::count(text.begin(), text.end(), kDelimiter);
    if (!count || delimiters == 0 || row[*count].integer != delimiters || text.back() != kDelimiter) {
        return JsonText(text);
    }
    std::string list;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find(kDelimiter, at);
        list += (list.empty() ? "[" : ", ") + JsonText(text.substr(at, end - at));
        at = end + 1;
    }
    return list + "]";
}

std::string ValueText(const Table& table, const Row& row, std::size_t column) {
    const Cell& cell = row[column];
    const std::wstring& name = table.columns[column].name;
    switch (cell.form) {
    case Cell::Form::Null:
        return "-";
    case Cell::Form::Integer:
        return table.IsOfStore() && name == L"m_nVersion"
                   ? VersionText(cell.integer) + " (" + std::to_string(cell.integer) + ")"
                   : std::to_string(cell.integer);
    case Cell::Form::Double: {
        const std::string number = JsonNumber(cell.real);
        return number[0] == '"' ? number.substr(1, number.size() - 2) : number;
    }
    case Cell::Form::Text:
        return !cell.isDecodable     ? "damaged text: " + JsonText(cell.text)
               : name == L"checkSum" ? UnitDigits(cell.text)
                                     : ArrayText(table, row, column);
    case Cell::Form::Binary:
        return BinaryText(table, row, column);
    case Cell::Form::Guid:
        return GuidText(cell.guid);
    }
    return {};
}

} // namespace

void List(Connection& connection, std::ostream& output) {
    using Line = std::array<std::string, 5>;
    std::vector<Line> lines = {{"table", "rows", "versions", "columns", ""}};
    for (const Table& table : connection.Tables()) {
        const std::string columns = std::to_string(table.columns.size());
        try {
            const Row counts = connection.CountRows(table);
            lines.push_back({Utf8(table.name), std::to_string(counts[0].integer), Versions(counts), columns,
                             Remark(table)});
        } catch (const Failure& e) {
            // The other tables are to be seen.
            lines.push_back({Utf8(table.name), "?", "?", columns, "cannot be read: " + e.Reason()});
        }
    }
    if (lines.size() == 1) {
        output << "There are no tables in " << connection.Name() << ".\n";
        return;
    }
    std::array<std::size_t, 4> widths{};
    for (const Line& line : lines) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], Width(line[i]));
        }
    }
    for (const Line& line : lines) {
        output << PadRight(line[0], widths[0]) << "  " << PadLeft(line[1], widths[1]) << "  "
               << PadRight(line[2], widths[2]) << "  " << PadLeft(line[3], widths[3])
               << (line[4].empty() ? "" : "  ") << line[4] << '\n';
    }
}

void Show(Connection& connection, const Table& table, const Connection::Key& key, std::ostream& output) {
    if (key.group && !table.HasKey()) {
        throw Failure("Table " + Quote(table.name) + " is none of the store's: it has no groups.");
    }
    std::size_t width = 0;
    for (const Column& column : table.columns) {
        width = std::max(width, Width(Utf8(column.name)));
    }
    std::size_t rows = 0;
    connection.ForEachRow(table, key, [&](const Row& row) {
        output << (rows == 0 ? "" : "\n") << Utf8(table.name) << ' '
               << (table.HasKey() ? KeyText(table, row) : "row " + std::to_string(rows + 1)) << '\n';
        ++rows;
        for (std::size_t i = 0; i < row.size(); ++i) {
            output << "  " << PadRight(Utf8(table.columns[i].name), width) << "  " << ValueText(table, row, i)
                   << '\n';
        }
    });
    if (rows == 0 && key.group) {
        throw Failure(
            "There is no row of " +
            (key.object ? "object (" + std::to_string(*key.group) + ", " + std::to_string(*key.object) + ")"
                        : "group " + std::to_string(*key.group)) +
            " in table " + Quote(table.name) + ".");
    }
}

} // namespace krtstore
