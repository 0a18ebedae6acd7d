// The checksum of a row, made anew from its columns.
//
// The sum runs over the members in the order in which their class serializes them. Of the classes of this
// project that order is known; that of others is taken to be the order of the columns, as it is in a table
// that one version of the class has made.

#ifndef TOOLS_KRTSTORE_ROWSUM_H
#define TOOLS_KRTSTORE_ROWSUM_H

#include "Binary.h"
#include "Table.h"

#include <optional>
#include <string>
#include <vector>

namespace krtstore {

class RowSum {
public:
    // The table has to have its key, versions and checksums, and to outlive the object.
    explicit RowSum(const Table& table);

    // Whether the class is one whose order is known.
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

} // namespace krtstore

#endif
