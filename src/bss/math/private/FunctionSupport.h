// Internal helpers of the function classes: coefficients, derivatives, copies, error bars.
//
// Threads: no state.

#ifndef BSS_MATH_PRIVATE_FUNCTIONSUPPORT_H
#define BSS_MATH_PRIVATE_FUNCTIONSUPPORT_H

#include "bss/math/WFunction.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <vector>

namespace bss::detail {

/// Constants that several functions have.
constexpr double kPi = 3.141592653589793;
constexpr double kPiSquared = 9.869604401089358;
constexpr double kSqrtPi = 1.772453850905516;
constexpr double kSqrt2 = 1.4142135623730951;
constexpr double kLn2 = 0.6931471805599453;
/// Stands for a width or a time constant of 0, by which functions divide.
constexpr double kTiny = 1e-100;

/// The first N coefficients of a vector, read in place. SetCoefficients accepts a vector of any length: a
/// missing coefficient is 0.0, as for WFunction::GetCoefficient. REQUIRES: the vector outlives the object,
/// unchanged.
template <std::size_t N>
class Coefficients {
public:
    /// Refers to the vector, or copies it if it is shorter than N.
    explicit Coefficients(const std::vector<double>& coefficients) : m_pFirst(coefficients.data()) {
        if (coefficients.size() < N) [[unlikely]] {
            m_Padded.fill(0.0);
            std::copy(coefficients.begin(), coefficients.end(), m_Padded.begin());
            m_pFirst = m_Padded.data();
        }
    }
    /// Not copyable: the object may point into itself.
    Coefficients(const Coefficients&) = delete;
    Coefficients& operator=(const Coefficients&) = delete;

    /// Returns a coefficient. REQUIRES: index < N.
    double operator[](std::size_t index) const { return m_pFirst[index]; }

private:
    const double* m_pFirst;
    std::array<double, N> m_Padded; // set only if m_pFirst points to it
};

/// Resizes `derivatives` to `count` and stores the values, followed by 0.0. Drops values beyond `count`.
template <std::size_t N>
inline void StoreDerivatives(std::vector<double>& derivatives, std::size_t count,
                             const std::array<double, N>& values) {
    if (derivatives.size() != count) [[unlikely]] {
        derivatives.resize(count);
    }
    if (count >= N) [[likely]] {
        // Stored one by one: a block copy would wait for the values just computed to reach memory.
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

/// Returns a copy on the heap, null if memory is short for the object or its members.
template <class Function>
Function* CloneOrNull(const Function& function) {
    try {
        return new Function(function);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Returns the standard error for the derivatives and the function's covariance, by the formula of
/// WFunction::Evaluate(x, y, sigma).
double ErrorBar(const WFunction& function, const std::vector<double>& derivatives);

} // namespace bss::detail

#endif
