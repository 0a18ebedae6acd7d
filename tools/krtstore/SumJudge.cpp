#include "SumJudge.h"

#include <algorithm>

namespace krtstore {

namespace {

bool HasAll(const std::vector<bool>& members, const std::vector<bool>& of) {
    for (std::size_t i = 0; i < of.size(); ++i) {
        if (of[i] && !members[i]) {
            return false;
        }
    }
    return true;
}

} // namespace

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
