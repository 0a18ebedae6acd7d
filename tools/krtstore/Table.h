// A table as the driver tells of it, and a row of it.

#ifndef TOOLS_KRTSTORE_TABLE_H
#define TOOLS_KRTSTORE_TABLE_H

#include "krtpal/guid.h"
#include "krtpal/unqualified.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace krtstore {

enum class Kind { Bit, Integer, Double, Text, Binary, Guid, Other };

struct Column {
    std::wstring name;
    std::wstring type; // the back-end's name of it
    Kind kind = Kind::Other;
};

struct Table {
    std::wstring name;
    std::vector<Column> columns;

    std::optional<std::size_t> Find(const std::wstring& column) const;
    // Those of the five columns of every table of the store that this one does not have.
    std::vector<std::wstring> MissingColumns() const;
    // Whether it has most of the five: it is a table of the store then, if maybe a damaged one.
    bool IsOfStore() const;
    bool HasKey() const;
    // Whether the five stand in front, in their order.
    bool HasOrder() const;
};

// A value. It has the form of what is stored, which need not be that of its column's kind.
struct Cell {
    enum class Form { Null, Integer, Double, Text, Binary, Guid };

    Form form = Form::Null;
    std::int64_t integer = 0;
    double real = 0.0;
    std::wstring text;       // decoded
    bool isDecodable = true; // whether the stored text was whole; `text` is what could be made of it
    std::vector<unsigned char> bytes;
    GUID guid{};

    bool IsNull() const { return form == Form::Null; }
};

// In the order of the table's columns.
using Row = std::vector<Cell>;

// "(3, 4)": group and object number of a row; what is no number as its text.
std::string KeyText(const Table& table, const Row& row);

} // namespace krtstore

#endif
