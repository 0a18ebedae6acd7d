#include "Table.h"

#include "Text.h"

#include <algorithm>

namespace krtstore {

namespace {

constexpr const wchar_t* kFixedColumns[] = {L"RecID", L"m_nVersion", L"groupID", L"objectID", L"checkSum"};

/// A table that lacks more than so many is another program's.
constexpr std::size_t kMostMissing = 2;

std::string NumberText(const Table& table, const Row& row, const wchar_t* column) {
    const auto index = table.Find(column);
    if (!index || row[*index].IsNull()) {
        return "-";
    }
    const Cell& cell = row[*index];
    return cell.form == Cell::Form::Integer ? std::to_string(cell.integer)
           : cell.form == Cell::Form::Text  ? Quote(cell.text)
                                            : "?";
}

} // namespace

std::optional<std::size_t> Table::Find(const std::wstring& column) const {
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const Column& each) { return each.name == column; });
    return found == columns.end() ? std::nullopt
                                  : std::optional(static_cast<std::size_t>(found - columns.begin()));
}

std::vector<std::wstring> Table::MissingColumns() const {
    std::vector<std::wstring> missing;
    std::copy_if(std::begin(kFixedColumns), std::end(kFixedColumns), std::back_inserter(missing),
                 [this](const std::wstring& each) { return !Find(each); });
    return missing;
}

bool Table::IsOfStore() const {
    return MissingColumns().size() <= kMostMissing;
}

bool Table::HasKey() const {
    return Find(L"groupID") && Find(L"objectID");
}

bool Table::HasOrder() const {
    for (std::size_t i = 0; i < std::size(kFixedColumns); ++i) {
        if (i >= columns.size() || columns[i].name != kFixedColumns[i]) {
            return false;
        }
    }
    return true;
}

std::string KeyText(const Table& table, const Row& row) {
    return "(" + NumberText(table, row, L"groupID") + ", " + NumberText(table, row, L"objectID") + ")";
}

} // namespace krtstore
