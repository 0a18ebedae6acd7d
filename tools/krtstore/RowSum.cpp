#include "RowSum.h"

#include "bss/serial/WVersionInfo.h"
#include "bss/serial/database/WChecksum.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/system/WGuid.h"
#include "krtpal/common/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace krtstore {

namespace {

/// The labels that a class gives its members, in the order in which it serializes them: a database that only
/// listens.
class MemberOrder : public bss::WDatabase {
public:
    explicit MemberOrder(bss::WPersistentObject& object) { object.Write(this, 0, false); }

    const std::vector<std::wstring>& Labels() const { return m_Labels; }

    using WDatabase::Insert;
    void Insert(const std::wstring& key, const std::wstring& /*value*/) override { m_Labels.push_back(key); }
    void Insert(const std::wstring& key, long /*value*/) override { m_Labels.push_back(key); }
    void Insert(const std::wstring& key, short /*value*/) override { m_Labels.push_back(key); }
    void Write(bss::WPersistentObject& object, bool /*bDeep*/) override { object.Serialize(false); }

private:
    std::vector<std::wstring> m_Labels;
};

/// Opens what every WDatabase has for itself.
struct Sums : bss::WDatabase {
    using WDatabase::CalculateCheckSum;
    using WDatabase::EscapeString;
};

std::wstring BinarySum(const std::vector<unsigned char>& bytes, std::int64_t version) {
    if (bytes.empty()) {
        return {};
    }
    auto* data = const_cast<unsigned char*>(bytes.data()); // is only read
    auto length = static_cast<unsigned long>(bytes.size());
    std::vector<unsigned char> escaped;
    if (version < bss::WVersion::GetVersion(5, 3, 0, 9)) {
        escaped.resize(2 * bytes.size() + 1);
        length = static_cast<unsigned long>(
            Sums::EscapeString(escaped.data(), data, static_cast<long>(bytes.size())));
        data = escaped.data();
    }
    return std::to_wstring(bss::WChecksum::GetCheckSum(data, length, 0));
}

std::wstring DoubleText(double value) {
    value = std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value; // without a sign
    char text[32];
    const std::to_chars_result end =
        std::to_chars(std::begin(text), std::end(text), value, std::chars_format::scientific, 4);
    return {static_cast<const char*>(text), static_cast<const char*>(end.ptr)};
}

std::wstring CellText(const Cell& cell, Kind kind, std::int64_t version) {
    switch (cell.form) {
    case Cell::Form::Null:
        return {};
    case Cell::Form::Integer:
        return kind == Kind::Double ? DoubleText(static_cast<double>(cell.integer))
                                    : std::to_wstring(cell.integer);
    case Cell::Form::Double:
        return DoubleText(cell.real);
    case Cell::Form::Text:
        return cell.text;
    case Cell::Form::Binary:
        return BinarySum(cell.bytes, version);
    case Cell::Form::Guid:
        return bss::WGuid::GetAsText(cell.guid);
    }
    return {};
}

/// The code units, with `~` for each zero, which would end the text in its column. Two units that happen to
/// be a surrogate pair may be one character of the text or two.
krtpal::Utf16String StoredUnits(const std::wstring& text) {
    krtpal::Utf16String units(krtpal::Utf16FromWide(text));
    std::replace(units.begin(), units.end(), krtpal::Utf16Unit{0}, static_cast<krtpal::Utf16Unit>('~'));
    return units;
}

bool HasAll(const std::vector<bool>& members, const std::vector<bool>& of) {
    for (std::size_t i = 0; i < of.size(); ++i) {
        if (of[i] && !members[i]) {
            return false;
        }
    }
    return true;
}

} // namespace

RowSum::RowSum(const Table& table)
    : m_Table(table), m_nGroup(*table.Find(L"groupID")), m_nObject(*table.Find(L"objectID")),
      m_nCheckSum(*table.Find(L"checkSum")) {
    std::vector<std::wstring> names = {L"m_nVersion", L"groupID", L"objectID"};
    bss::WVersionInfo info;
    m_bKnown = info.GetNameOfClass() == table.name;
    if (m_bKnown) {
        names = MemberOrder(info).Labels();
    } else {
        for (const Column& column : table.columns) {
            const bool isFixed =
                column.name == L"RecID" || column.name == L"checkSum" ||
                std::find(names.begin(), names.begin() + 3, column.name) != names.begin() + 3;
            if (!isFixed) {
                names.push_back(column.name);
            }
        }
    }
    // The columns of sizes come with their binary column, wherever they stand.
    std::vector<bool> isSize(table.columns.size());
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const auto sizes = table.columns[i].kind == Kind::Binary ? FindSizeColumns(table, i) : std::nullopt;
        if (sizes) {
            isSize[sizes->stored] = isSize[sizes->length] = true;
        }
    }
    for (const std::wstring& name : names) {
        const auto column = table.Find(name);
        if (column && !isSize[*column]) {
            const bool isBinary = table.columns[*column].kind == Kind::Binary;
            m_Order.push_back({*column, isBinary ? FindSizeColumns(table, *column) : std::nullopt});
        }
    }
}

std::vector<bool> RowSum::Members(const Row& row) const {
    std::vector<bool> members(row.size());
    for (const Member& member : m_Order) {
        members[member.column] = !row[member.column].IsNull();
    }
    return members;
}

std::wstring RowSum::TextOf(const Row& row) const {
    const std::int64_t version = VersionOf(m_Table, row).value_or(0);
    std::wstring text =
        CellText(row[m_nGroup], Kind::Integer, version) + CellText(row[m_nObject], Kind::Integer, version);
    for (const Member& member : m_Order) {
        if (member.sizes && version < kFirstWithFrames) {
            text += CellText(row[member.sizes->stored], Kind::Integer, version) +
                    CellText(row[member.sizes->length], Kind::Integer, version);
        }
        text += CellText(row[member.column], m_Table.columns[member.column].kind, version);
    }
    return text;
}

bool RowSum::Agrees(const Row& row) const {
    static const Sums& sums = *new Sums; // never destroyed
    return StoredUnits(sums.CalculateCheckSum(TextOf(row))) == StoredUnits(row[m_nCheckSum].text);
}

void SumJudge::AddAgreeing(std::int64_t version, const std::vector<bool>& members) {
    ++m_Rows[version];
    m_Agreeing[version].insert(members);
}

void SumJudge::AddDiffering(std::int64_t version, const std::vector<bool>& members, const std::string& key) {
    ++m_Rows[version];
    m_Differing.push_back({version, &*m_Different.insert(members).first, key});
}

SumJudge::Verdict SumJudge::Judge() const {
    Verdict verdict;
    for (const Differing& row : m_Differing) {
        if (IsDamaged(row)) {
            verdict.damaged.push_back(row.key);
        } else {
            ++verdict.untested;
        }
    }
    return verdict;
}

bool SumJudge::IsDamaged(const Differing& row) const {
    const bool isAlone = m_Rows.at(row.version) == 1;
    return std::any_of(m_Agreeing.begin(), m_Agreeing.end(), [&](const auto& agreeing) {
        return (isAlone || agreeing.first == row.version) &&
               std::any_of(agreeing.second.begin(), agreeing.second.end(),
                           [&](const Members& members) { return HasAll(members, *row.members); });
    });
}

} // namespace krtstore
