// The checksum of a row, made again from its columns, and the verdict on those that differ.
//
// The sum runs over the members in the order in which their class serializes them. The library's own class in
// a database, WVersionInfo, is asked for its order. That of any other class is taken to be the order of the
// columns, as it is in a table that one version of the class has made.

#ifndef TOOLS_KRTSTORE_ROWSUM_H
#define TOOLS_KRTSTORE_ROWSUM_H

#include "Binary.h"
#include "Table.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace krtstore {

class RowSum {
public:
    // The table has to have its key, versions and checksums, and to outlive the object.
    explicit RowSum(const Table& table);

    // Whether the class is the library's, so that the order is certain.
    bool IsKnownClass() const { return m_bKnown; }
    // Which of the table's columns have a value of the row's object. A column that is NULL belongs to other
    // versions of the class; columns of sizes go with their binary columns.
    std::vector<bool> Members(const Row& row) const;
    // Whether the stored checksum is that of the row.
    bool Agrees(const Row& row) const;

private:
    struct Member {
        std::size_t column;
        std::optional<SizeColumns> sizes; // in front of a binary column, below version 5.3.2.0
    };

    std::wstring TextOf(const Row& row) const;

    const Table& m_Table;
    bool m_bKnown = false;
    std::vector<Member> m_Order;
    std::size_t m_nGroup;
    std::size_t m_nObject;
    std::size_t m_nCheckSum;
};

// Which of a table's checksums that do not agree tell of a damaged row, and which of an order of members that
// is not known.
//
// The order of the columns is that of the members if it gives the checksums of other rows. A row is damaged,
// then, if there is one that agrees, of its version, which has all the members that it has. (A later version
// may have put a member between the others, where its column is the last one.) The version itself may be what
// is damaged: where no other row has it, rows of all versions count.
class SumJudge {
public:
    void AddAgreeing(std::int64_t version, const std::vector<bool>& members);
    void AddDiffering(std::int64_t version, const std::vector<bool>& members, const std::string& key);

    struct Verdict {
        std::vector<std::string> damaged; // keys, in the order in which they came
        std::size_t untested = 0;
    };
    // Over all rows that were added.
    Verdict Judge() const;

private:
    using Members = std::vector<bool>;
    struct Differing {
        std::int64_t version;
        const Members* members;
        std::string key;
    };

    bool IsDamaged(const Differing& row) const;

    std::map<std::int64_t, std::set<Members>> m_Agreeing; // by version
    std::map<std::int64_t, std::size_t> m_Rows;
    std::set<Members> m_Different;
    std::vector<Differing> m_Differing;
};

} // namespace krtstore

#endif
