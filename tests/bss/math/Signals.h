// Signals without a pattern, the same on every target.

#ifndef TESTS_BSS_MATH_SIGNALS_H
#define TESTS_BSS_MATH_SIGNALS_H

#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

using Complex = std::complex<double>;
using Signal = std::vector<Complex>;

/// Numbers between -1 and 1 (a linear congruential generator: Knuth's MMIX).
inline Signal MakeSignal(std::size_t length, std::uint64_t state) {
    const auto next = [&state] {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<double>(static_cast<std::int64_t>(state) >> 11) / 4503599627370496.0;
    };
    Signal signal(length);
    for (Complex& value : signal) {
        const double re = next();
        value = {re, next()};
    }
    return signal;
}

#endif
