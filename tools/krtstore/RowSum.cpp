#include "RowSum.h"

#include "bss/serial/WVersion.h"
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

struct KnownClass {
    const wchar_t* name;
    std::vector<const wchar_t*> members; // those of the class itself, in the order of serialization
};

/// A wide-text array counts as one: the column of its number goes in front of it.
const std::vector<KnownClass>& KnownClasses() {
    static const std::vector<KnownClass> classes = {
        {L"WVersionInfo",
         {L"m_sModuleName", L"m_sModuleVersion", L"m_sDescriptor", L"m_sFileDate", L"m_sKRTFileVer",
          L"m_sKRTIOVer", L"m_nProductVersion", L"m_nMajorVersion", L"m_nMinorVersion", L"m_nBuild"}},
        {L"StoredAnalysis",
         {L"m_sFile", L"m_Time", L"m_nFirst", L"m_nCount", L"m_nFits", L"m_aConditions", L"m_aDerived",
          L"m_aLag", L"m_aSignal", L"m_aSigma"}},
        {L"StoredFit",
         {L"m_sName", L"m_sStopTest", L"m_sNote", L"m_sFailure", L"m_nIterations", L"m_asNamesL",
          L"m_asNames", L"m_asMeaningsL", L"m_asMeanings", L"m_aStarts", L"m_aValues", L"m_aErrors",
          L"m_aQuality", L"m_abResults", L"m_aResults", L"m_aCurve"}},
    };
    return classes;
}

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

} // namespace

RowSum::RowSum(const Table& table)
    : m_Table(table), m_nGroup(*table.Find(L"groupID")), m_nObject(*table.Find(L"objectID")),
      m_nCheckSum(*table.Find(L"checkSum")) {
    std::vector<std::wstring> names = {L"m_nVersion", L"groupID", L"objectID"};
    const auto known = std::find_if(KnownClasses().begin(), KnownClasses().end(),
                                    [&](const KnownClass& each) { return each.name == table.name; });
    m_bKnown = known != KnownClasses().end();
    if (m_bKnown) {
        names.insert(names.end(), known->members.begin(), known->members.end());
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

} // namespace krtstore
