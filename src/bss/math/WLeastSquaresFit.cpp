#include "bss/math/WLeastSquaresFit.h"

#include "bss/math/WFunction.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace bss {

namespace {

bool isInside(long index, std::size_t size) {
    return index >= 0 && static_cast<std::size_t>(index) < size;
}

// The right-hand side of an elimination: one column or several.
struct Column {
    std::vector<double>& values;

    void SwapRows(std::size_t i, std::size_t j) { std::swap(values[i], values[j]); }
    void ScaleRow(std::size_t i, double factor) { values[i] *= factor; }
    void SubtractRow(std::size_t from, std::size_t row, double factor) {
        values[from] -= values[row] * factor;
    }
};

struct Columns {
    WLeastSquaresFit::matrix& values;
    std::size_t count;

    void SwapRows(std::size_t i, std::size_t j) {
        if (count > 0) {
            values[i].swap(values[j]);
        }
    }
    void ScaleRow(std::size_t i, double factor) {
        for (std::size_t k = 0; k < count; ++k) {
            values[i][k] *= factor;
        }
    }
    void SubtractRow(std::size_t from, std::size_t row, double factor) {
        for (std::size_t k = 0; k < count; ++k) {
            values[from][k] -= values[row][k] * factor;
        }
    }
};

struct PivotIndices {
    std::vector<std::int32_t>& count;
    std::vector<std::int32_t>& row;
    std::vector<std::int32_t>& column;
};

constexpr int kSingular = 2;

// Finds the largest entry of the rows and columns without a pivot, the last of equal ones. Returns false if
// there is none or if a column was a pivot twice.
bool findPivot(const WLeastSquaresFit::matrix& a, std::size_t n, const std::vector<std::int32_t>& count,
               std::size_t& pivotRow, std::size_t& pivotColumn) {
    double best = 0.0;
    bool found = false;
    for (std::size_t row = 0; row < n; ++row) {
        if (count[row] == 1) {
            continue;
        }
        for (std::size_t column = 0; column < n; ++column) {
            if (count[column] > 1) {
                return false;
            }
            if (count[column] == 0 && std::fabs(a[row][column]) >= best) {
                best = std::fabs(a[row][column]);
                pivotRow = row;
                pivotColumn = column;
                found = true;
            }
        }
    }
    return found; // false if every candidate is NaN
}

template <class RightHandSide>
int eliminate(WLeastSquaresFit::matrix& a, std::size_t n, RightHandSide b, PivotIndices pivots) {
    pivots.count.assign(n, 0);
    pivots.row.assign(n, 0);
    pivots.column.assign(n, 0);
    for (std::size_t pass = 0; pass < n; ++pass) {
        std::size_t row = 0;
        std::size_t column = 0;
        if (!findPivot(a, n, pivots.count, row, column)) {
            return kSingular;
        }
        ++pivots.count[column];
        if (row != column) {
            a[row].swap(a[column]);
            b.SwapRows(row, column);
        }
        pivots.row[pass] = static_cast<std::int32_t>(row);
        pivots.column[pass] = static_cast<std::int32_t>(column);

        std::vector<double>& pivotRow = a[column];
        if (std::fabs(pivotRow[column]) <= 1e-31) {
            return kSingular;
        }
        const double inverse = 1.0 / pivotRow[column];
        pivotRow[column] = 1.0;
        for (std::size_t k = 0; k < n; ++k) {
            pivotRow[k] *= inverse;
        }
        b.ScaleRow(column, inverse);

        for (std::size_t other = 0; other < n; ++other) {
            if (other == column) {
                continue;
            }
            std::vector<double>& target = a[other];
            const double factor = target[column];
            target[column] = 0.0;
            for (std::size_t k = 0; k < n; ++k) {
                target[k] -= pivotRow[k] * factor;
            }
            b.SubtractRow(other, column, factor);
        }
    }
    for (std::size_t pass = n; pass-- > 0;) {
        const auto row = static_cast<std::size_t>(pivots.row[pass]);
        const auto column = static_cast<std::size_t>(pivots.column[pass]);
        if (row != column) {
            for (std::size_t k = 0; k < n; ++k) {
                std::swap(a[k][row], a[k][column]);
            }
        }
    }
    return 0;
}

} // namespace

WLeastSquaresFit::WLeastSquaresFit() = default;
WLeastSquaresFit::WLeastSquaresFit(const WLeastSquaresFit& other) = default;
WLeastSquaresFit& WLeastSquaresFit::operator=(const WLeastSquaresFit& other) = default;
WLeastSquaresFit::~WLeastSquaresFit() = default;

void WLeastSquaresFit::SetFunction(WFunction* function) {
    m_pFunction = function;
    m_pCoefficients = nullptr;
    m_Covariance.clear();
    m_abFixed.clear();
    if (function != nullptr) {
        m_pCoefficients = function->GetCoefficientsVectorPtr();
        const std::size_t n = m_pCoefficients->size();
        m_Covariance.assign(n, std::vector<double>(n, 0.0));
        m_abFixed.assign(n, false);
    }
}

void WLeastSquaresFit::InitializeFit() {
    m_dChiSquared = 0.0;
    m_dReducedChiSquared = 0.0;
    m_dStdError = 0.0;
    m_dRSquared = 0.0;
    m_dAdjustedRSquared = 0.0;
    m_Covariance.clear();
    if (m_pFunction != nullptr) {
        m_pCoefficients = m_pFunction->GetCoefficientsVectorPtr();
        const std::size_t n = m_pCoefficients->size();
        m_Covariance.assign(n, std::vector<double>(n, 0.0));
    }
}

unsigned WLeastSquaresFit::GetNumberOfCoefficients() const {
    return m_pCoefficients == nullptr ? 0U : static_cast<unsigned>(m_pCoefficients->size());
}

double WLeastSquaresFit::GetCoefficient(long index) const {
    return isInside(index, GetNumberOfCoefficients()) ? (*m_pCoefficients)[static_cast<std::size_t>(index)]
                                                      : 0.0;
}

void WLeastSquaresFit::SetCoefficient(long index, double value) {
    if (isInside(index, GetNumberOfCoefficients())) {
        (*m_pCoefficients)[static_cast<std::size_t>(index)] = value;
    }
}

bool WLeastSquaresFit::GetCoefficientFixed(long index) const {
    return isInside(index, GetNumberOfCoefficients()) && isInside(index, m_abFixed.size()) &&
           m_abFixed[static_cast<std::size_t>(index)];
}

void WLeastSquaresFit::SetCoefficientFixed(long index, bool fixed) {
    const std::size_t n = GetNumberOfCoefficients();
    if (!isInside(index, n)) {
        return;
    }
    // The function may have gained coefficients since SetFunction.
    if (!isInside(index, m_abFixed.size())) {
        m_abFixed.resize(n, false);
    }
    m_abFixed[static_cast<std::size_t>(index)] = fixed;
}

double WLeastSquaresFit::GetCovariance(long row, long column) const {
    if (!isInside(row, m_Covariance.size())) {
        return 0.0;
    }
    const std::vector<double>& cells = m_Covariance[static_cast<std::size_t>(row)];
    return isInside(column, cells.size()) ? cells[static_cast<std::size_t>(column)] : 0.0;
}

int WLeastSquaresFit::GaussJ(matrix& a, unsigned n, std::vector<double>& b) const {
    return eliminate(a, n, Column{b}, {m_aPivotCount, m_aPivotRow, m_aPivotColumn});
}

int WLeastSquaresFit::GaussJ(matrix& a, unsigned n, matrix& b, unsigned m) const {
    return eliminate(a, n, Columns{b, m}, {m_aPivotCount, m_aPivotRow, m_aPivotColumn});
}

double WLeastSquaresFit::WeightedMean(const std::vector<double>& y, const std::vector<double>* sigma) {
    if (sigma == nullptr || sigma->size() != y.size()) {
        return y.empty() ? 0.0 : std::accumulate(y.begin(), y.end(), 0.0) / static_cast<double>(y.size());
    }
    double weighted = 0.0;
    double weights = 0.0;
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double s = (*sigma)[i];
        if (s != 0.0) {
            weighted += y[i] / (s * s);
            weights += 1.0 / (s * s);
        }
    }
    return weights != 0.0 ? weighted / weights : 0.0;
}

std::size_t WLeastSquaresFit::GetNumberOfPoints() const {
    return m_pX == nullptr || m_pY == nullptr ? 0 : std::min(m_pX->size(), m_pY->size());
}

bool WLeastSquaresFit::HasWholeData() const {
    return m_pX != nullptr && m_pY != nullptr && m_pY->size() >= m_pX->size() &&
           (m_pSigY == nullptr || m_pSigY->size() >= m_pX->size());
}

bool WLeastSquaresFit::IsFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

bool WLeastSquaresFit::IsFinite(const matrix& values) {
    return std::all_of(values.begin(), values.end(),
                       [](const std::vector<double>& row) { return IsFinite(row); });
}

} // namespace bss
