#include "Verify.h"

#include "Binary.h"
#include "RowSum.h"
#include "Text.h"
#include "common/Failure.h"

#include "bss/serial/WVersion.h"
#include "krtpal/console.h"
#include "krtpal/unqualified.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace krtstore {

using tools::Failure;

namespace {

constexpr char kSumDiffers[] = "the checksum differs: the row was changed or damaged";

const char* NameOf(Kind kind) {
    switch (kind) {
    case Kind::Bit:
        return "a flag";
    case Kind::Integer:
        return "an integer";
    case Kind::Double:
        return "a number";
    case Kind::Text:
        return "text";
    case Kind::Binary:
        return "binary data";
    case Kind::Guid:
        return "a GUID";
    case Kind::Other:
        break;
    }
    return "something else";
}

Kind KindOf(Cell::Form form) {
    switch (form) {
    case Cell::Form::Integer:
        return Kind::Integer;
    case Cell::Form::Double:
        return Kind::Double;
    case Cell::Form::Text:
        return Kind::Text;
    case Cell::Form::Binary:
        return Kind::Binary;
    case Cell::Form::Guid:
        return Kind::Guid;
    case Cell::Form::Null:
        break;
    }
    return Kind::Other;
}

bool Fits(Kind kind, Cell::Form form) {
    const Kind stored = KindOf(form);
    return kind == Kind::Other || kind == stored || (kind == Kind::Bit && stored == Kind::Integer) ||
           (kind == Kind::Double && stored == Kind::Integer);
}

/// What is wrong with a number; empty if nothing is.
std::string NumberFault(const Cell& cell, const Column& column) {
    if (column.kind == Kind::Bit && cell.integer != 0 && cell.integer != 1) {
        return "its flag is " + std::to_string(cell.integer) + ", neither 0 nor 1";
    }
    if (column.kind == Kind::Integer && (cell.integer < std::numeric_limits<std::int32_t>::min() ||
                                         cell.integer > std::numeric_limits<std::int32_t>::max())) {
        return "its number " + std::to_string(cell.integer) + " has more than 32 bits";
    }
    if (column.name == L"m_nVersion" && cell.integer <= bss::WVersion::GetVersion(5, 0, 0, 0)) {
        return "its version " + VersionText(cell.integer) + " is not above 5.0.0.0: the row counts as none";
    }
    return {};
}

bool IsFixed(const std::wstring& column) {
    return column == L"RecID" || column == L"m_nVersion" || column == L"groupID" || column == L"objectID" ||
           column == L"checkSum";
}

bool TellsSizes(const Table& table, const Row& row, std::size_t binaryColumn) {
    const auto sizes = FindSizeColumns(table, binaryColumn);
    return sizes && !row[sizes->stored].IsNull() &&
           VersionOf(table, row).value_or(kFirstWithFrames) < kFirstWithFrames;
}

/// What is wrong with a value; empty if nothing is.
std::string ValueFault(const Table& table, const Row& row, std::size_t index) {
    const Column& column = table.columns[index];
    const Cell& cell = row[index];
    if (cell.IsNull()) {
        // Without a value of an older row its sizes have to be 0.
        return IsFixed(column.name) ? "it is empty"
               : column.kind == Kind::Binary && TellsSizes(table, row, index)
                   ? DecodeBinary(table, row, index).fault
                   : "";
    }
    if (column.kind == Kind::Guid && cell.form == Cell::Form::Text) {
        return "its text " + Quote(cell.text) + " is no GUID";
    }
    if (!Fits(column.kind, cell.form)) {
        return std::string("it has ") + NameOf(KindOf(cell.form)) + ", where " + NameOf(column.kind) +
               " belongs";
    }
    if (cell.form == Cell::Form::Integer) {
        return NumberFault(cell, column);
    }
    if (!cell.isDecodable) {
        return "its text cannot be decoded";
    }
    return column.kind == Kind::Binary ? DecodeBinary(table, row, index).fault : "";
}

// A bar that tells how far a long walk has come. Without a terminal nothing is drawn. Clear it before
// anything else is printed.
class Progress {
public:
    Progress(std::ostream* terminal, std::size_t total) : m_pTerminal(terminal), m_nTotal(total) {}
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // One step further. The bar is drawn when the percentage changes.
    void Advance(const std::string& what);
    // The next step draws it again.
    void Clear();

private:
    std::ostream* m_pTerminal;
    std::size_t m_nTotal;
    std::size_t m_nDone = 0;
    std::size_t m_nPercent = 101; // none was drawn
    std::size_t m_nWidth = 0;     // of what is on the terminal
};

void Progress::Advance(const std::string& what) {
    ++m_nDone;
    // Rows may come while they are read.
    const std::size_t percent =
        std::min<std::size_t>(100, m_nDone * 100 / std::max<std::size_t>(m_nTotal, 1));
    if (m_pTerminal == nullptr || percent == m_nPercent) {
        return;
    }
    Clear();
    constexpr std::size_t kWidth = 40;
    const std::string done(percent * kWidth / 100, '#');
    const std::string line = "[" + PadRight(done, kWidth) + "] " + PadLeft(std::to_string(percent), 3) +
                             " % " + what.substr(0, 30);
    *m_pTerminal << line << std::flush;
    m_nPercent = percent;
    m_nWidth = line.size();
}

void Progress::Clear() {
    if (m_pTerminal != nullptr && m_nWidth != 0) {
        *m_pTerminal << '\r' << std::string(m_nWidth, ' ') << '\r' << std::flush;
        m_nWidth = 0;
        m_nPercent = 101;
    }
}

class TableCheck {
public:
    TableCheck(Connection& connection, const Table& table, std::ostream& output, Progress& progress,
               Findings& findings)
        : m_Connection(connection), m_Table(table), m_sName(Utf8(table.name)), m_Output(output),
          m_Progress(progress), m_Findings(findings) {}

    void Run() {
        CheckColumns();
        const auto missing = m_Table.MissingColumns();
        if (!missing.empty() && missing != std::vector<std::wstring>{L"RecID"}) {
            return; // the rows cannot be understood
        }
        m_Sum.emplace(m_Table);
        try {
            for (const Row& row : m_Connection.RepeatedKeys(m_Table)) {
                Fault(" (" + std::to_string(row[0].integer) + ", " + std::to_string(row[1].integer) + ")",
                      std::to_string(row[2].integer) + " rows have this key");
            }
            m_Connection.ForEachRow(m_Table, {}, [this](const Row& row) { CheckRow(row); });
        } catch (const Failure& e) {
            // What SQLite says of a damaged file is a finding; all else keeps from finding anything.
            if (e.Reason().find("malformed") == std::string::npos) {
                throw;
            }
            Fault("",
                  "its rows cannot be read behind the first " + std::to_string(m_nRows) + ": " + e.Reason());
        }
        const SumJudge::Verdict verdict = m_Judge.Judge();
        for (const std::string& key : verdict.damaged) {
            Fault(key + " checkSum", kSumDiffers);
        }
        if (verdict.untested != 0) {
            Print(m_sName + ": checksums of " + Count(verdict.untested, "row") +
                  " not tested: the order of its members is not known");
        }
    }

private:
    void CheckColumns() {
        const auto missing = m_Table.MissingColumns();
        for (const std::wstring& column : missing) {
            Fault("", "column " + Utf8(column) + " is missing");
        }
        if (missing.empty() && !m_Table.HasOrder()) {
            Fault("", "RecID, m_nVersion, groupID, objectID and checkSum are not its first columns");
        }
    }

    void CheckRow(const Row& row) {
        ++m_nRows;
        ++m_Findings.rows;
        m_Progress.Advance(m_sName);
        bool isSound = true;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string fault = ValueFault(m_Table, row, i);
            if (!fault.empty()) {
                isSound = false;
                Fault(" " + KeyText(m_Table, row) + " " + Utf8(m_Table.columns[i].name), fault);
            }
        }
        if (isSound) {
            CheckSum(row);
        }
    }

    void CheckSum(const Row& row) {
        const std::int64_t version = *VersionOf(m_Table, row);
        if (m_Sum->Agrees(row)) {
            m_Judge.AddAgreeing(version, m_Sum->Members(row));
        } else if (m_Sum->IsKnownClass()) {
            Fault(" " + KeyText(m_Table, row) + " checkSum", kSumDiffers);
        } else {
            m_Judge.AddDiffering(version, m_Sum->Members(row), " " + KeyText(m_Table, row));
        }
    }

    void Fault(const std::string& where, const std::string& what) {
        ++m_Findings.faults;
        Print(m_sName + where + ": " + what);
    }

    void Print(const std::string& line) {
        m_Progress.Clear();
        m_Output << line << std::endl;
    }

    Connection& m_Connection;
    const Table& m_Table;
    std::string m_sName;
    std::ostream& m_Output;
    Progress& m_Progress;
    Findings& m_Findings;
    std::optional<RowSum> m_Sum;
    SumJudge m_Judge;
    std::size_t m_nRows = 0;
};

} // namespace

Findings Verify(Connection& connection, const std::vector<Table>& tables, std::ostream& output,
                std::ostream* terminal) {
    std::size_t total = 0;
    for (const Table& table : tables) {
        total += table.IsOfStore() && terminal != nullptr
                     ? static_cast<std::size_t>(connection.CountRows(table)[0].integer)
                     : 0;
    }
    Findings findings;
    Progress progress(terminal, total);
    for (const Table& table : tables) {
        if (table.IsOfStore()) {
            TableCheck(connection, table, output, progress, findings).Run();
        }
    }
    return findings;
}

bool HasTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace krtstore
