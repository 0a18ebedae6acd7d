// Which of a table's checksums that do not agree tell of a damaged row, and which of an order of members that
// is not known.
//
// The order of the columns is that of the members if it gives the checksums of other rows. A row is damaged,
// then, if there is one that agrees, of its version, which has all the members that it has. (A later version
// may have put a member between the others, where its column is the last one.) The version itself may be what
// is damaged: where no other row has it, rows of all versions count.

#ifndef TOOLS_KRTSTORE_SUMJUDGE_H
#define TOOLS_KRTSTORE_SUMJUDGE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace krtstore {

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
