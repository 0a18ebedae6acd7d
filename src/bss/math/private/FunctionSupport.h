// What the function classes share and no client sees.

#ifndef BSS_MATH_PRIVATE_FUNCTIONSUPPORT_H
#define BSS_MATH_PRIVATE_FUNCTIONSUPPORT_H

#include "bss/math/WFunction.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <vector>

namespace bss::detail {

// The first N coefficients, read in place. SetCoefficients takes a vector of any length, so one may be
// missing: it counts as 0.0, as WFunction::GetCoefficient has it.
template <std::size_t N>
class Coefficients {
public:
    explicit Coefficients(const std::vector<double>& coefficients) : m_pFirst(coefficients.data()) {
        if (coefficients.size() < N) [[unlikely]] {
            m_Padded.fill(0.0);
            std::copy(coefficients.begin(), coefficients.end(), m_Padded.begin());
            m_pFirst = m_Padded.data();
        }
    }
    Coefficients(const Coefficients&) = delete;
    Coefficients& operator=(const Coefficients&) = delete;

    double operator[](std::size_t index) const { return m_pFirst[index]; }

private:
    const double* m_pFirst;
    std::array<double, N> m_Padded; // set only where m_pFirst points to it
};

// Makes derivatives as long as there are coefficients: the values first, 0.0 behind them.
template <std::size_t N>
inline void StoreDerivatives(std::vector<double>& derivatives, std::size_t count,
                             const std::array<double, N>& values) {
    if (derivatives.size() != count) [[unlikely]] {
        derivatives.resize(count);
    }
    if (count >= N) [[likely]] {
        // One by one: a copy would go through memory, and wait there for the values just computed.
        double* const first = derivatives.data();
#pragma GCC unroll 8
        for (std::size_t i = 0; i < N; ++i) {
            first[i] = values[i];
        }
        std::fill(derivatives.begin() + N, derivatives.end(), 0.0);
    } else {
        std::copy_n(values.begin(), count, derivatives.begin());
    }
}

// A copy on the heap, or null where memory runs out, for the object or for what it holds.
template <class Function>
Function* CloneOrNull(const Function& function) {
    try {
        return new Function(function);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// The standard error that derivatives and the function's covariance give, as WFunction::Evaluate(x, y, sigma)
// tells.
double ErrorBar(const WFunction& function, const std::vector<double>& derivatives);

} // namespace bss::detail

#endif
