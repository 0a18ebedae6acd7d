// Signals to transform, the same on every target.

#ifndef TESTS_BSS_MATH_SIGNALS_H
#define TESTS_BSS_MATH_SIGNALS_H

#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

using Complex = std::complex<double>;
using Signal = std::vector<Complex>;

/// Numbers between -1 and 1 without a pattern (a linear congruential generator: Knuth's MMIX).
class Noise {
public:
    explicit Noise(std::uint64_t seed) : m_state(seed) {}
    double Next() {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<double>(static_cast<std::int64_t>(m_state) >> 11) / 4503599627370496.0;
    }

private:
    std::uint64_t m_state;
};

inline Signal MakeSignal(std::size_t length, std::uint64_t seed) {
    Noise noise(seed);
    Signal signal(length);
    for (Complex& value : signal) {
        const double re = noise.Next();
        value = {re, noise.Next()};
    }
    return signal;
}

inline double Energy(const Signal& signal) {
    double energy = 0.0;
    for (const Complex& value : signal) {
        energy += std::norm(value);
    }
    return energy;
}

/// The root of the mean squared difference.
inline double Distance(const Signal& a, const Signal& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += std::norm(a[i] - b[i]);
    }
    return std::sqrt(sum / static_cast<double>(a.size()));
}

#endif
