// The code of FftPasses.h, compiled once per kind of processor. All of it has internal linkage, so the linker
// does not merge the variants.

#ifndef BSS_MATH_PRIVATE_FFTPASSESCODE_H
#define BSS_MATH_PRIVATE_FFTPASSESCODE_H

#include "bss/math/private/FftPasses.h"

#include <cstring>

namespace bss::fft {

namespace {

// Two complex numbers. The compiler splits the operations for processors with narrower vector units.
using Pair = double __attribute__((vector_size(32)));

[[gnu::always_inline]] inline Pair Load(const double* from) {
    Pair pair;
    std::memcpy(&pair, from, sizeof(pair));
    return pair;
}
[[gnu::always_inline]] inline void Store(double* to, Pair pair) {
    std::memcpy(to, &pair, sizeof(pair));
}

// Factors of two adjacent butterflies.
struct Factors {
    Pair cosine; // c, c of each
    Pair sine;   // s, -s of each
};

// Returns q times the conjugate of the factor: (q.re c + q.im s, q.im c - q.re s).
[[gnu::always_inline]] inline Pair Turn(Pair q, const Factors& factors) {
    const Pair swapped = __builtin_shufflevector(q, q, 1, 0, 3, 2);
    return q * factors.cosine + swapped * factors.sine;
}

[[gnu::always_inline]] inline void Butterfly(Pair& p, Pair& q, const Factors& factors) {
    const Pair turned = Turn(q, factors);
    q = p - turned;
    p = p + turned;
}

template <bool inverse>
[[gnu::always_inline]] inline Factors FactorsOf(const double* twiddle) {
    const double c = twiddle[0];
    const double s = inverse ? -twiddle[1] : twiddle[1];
    return {Pair{c, c, c, c}, Pair{s, -s, s, -s}};
}

// Returns the factors of two adjacent blocks.
template <bool inverse>
[[gnu::always_inline]] inline Factors FactorsOfTwo(const double* twiddles) {
    const Pair both = Load(twiddles);
    const Pair sine = __builtin_shufflevector(both, both, 1, 1, 3, 3);
    const Pair sign = inverse ? Pair{-1.0, 1.0, -1.0, 1.0} : Pair{1.0, -1.0, 1.0, -1.0};
    return {__builtin_shufflevector(both, both, 0, 0, 2, 2), sine * sign};
}

// Executes two stages of one block, 4 * quarter elements from `data` on. REQUIRES: `quarter` is even.
inline void PassOfTwo(double* data, std::size_t quarter, const Factors& whole, const Factors& low,
                      const Factors& high) {
    const std::size_t step = 2 * quarter;
    for (std::size_t j = 0; j < step; j += 4) {
        double* const at = data + j;
        Pair x0 = Load(at);
        Pair x1 = Load(at + step);
        Pair x2 = Load(at + 2 * step);
        Pair x3 = Load(at + 3 * step);
        Butterfly(x0, x2, whole);
        Butterfly(x1, x3, whole);
        Butterfly(x0, x1, low);
        Butterfly(x2, x3, high);
        Store(at, x0);
        Store(at + step, x1);
        Store(at + 2 * step, x2);
        Store(at + 3 * step, x3);
    }
}

// Executes the last two stages of `count` blocks of 4 elements, starting with block m.
template <bool inverse>
void LastPass(double* data, std::size_t m, std::size_t count, const double* twiddles) {
    for (std::size_t i = 0; i < count; ++i, data += 8) {
        const Factors whole = FactorsOf<inverse>(twiddles + 2 * (m + i));
        const Factors parts = FactorsOfTwo<inverse>(twiddles + 4 * (m + i));
        Pair a = Load(data);     // elements 0 and 1
        Pair b = Load(data + 4); // elements 2 and 3
        Butterfly(a, b, whole);
        Pair p = __builtin_shufflevector(a, b, 0, 1, 4, 5);
        Pair q = __builtin_shufflevector(a, b, 2, 3, 6, 7);
        Butterfly(p, q, parts);
        Store(data, __builtin_shufflevector(p, q, 0, 1, 4, 5));
        Store(data + 4, __builtin_shufflevector(p, q, 2, 3, 6, 7));
    }
}

// Executes one stage of block 0, for an odd number of stages. REQUIRES: `half` is even.
inline void FirstStage(double* data, std::size_t half, const Factors& factors) {
    for (std::size_t j = 0; j < 2 * half; j += 4) {
        Pair p = Load(data + j);
        Pair q = Load(data + 2 * half + j);
        Butterfly(p, q, factors);
        Store(data + j, p);
        Store(data + 2 * half + j, q);
    }
}

// Executes the stages of 2^log2 elements, which are block m of their stage. REQUIRES: log2 is even and not 0.
template <bool inverse>
void RunStages(Data data, int log2, std::size_t m, const double* twiddles) {
    // Blocks that fit the cache go stage by stage; a larger block is split after two stages, and each part is
    // completed before the next.
    const std::size_t length = std::size_t{1} << log2;
    constexpr int kCachedLog2 = 10; // 16 KiB
    if (log2 > kCachedLog2) {
        const std::size_t quarter = length / 4;
        const Factors whole = FactorsOf<inverse>(twiddles + 2 * m);
        const Factors low = FactorsOf<inverse>(twiddles + 4 * m);
        const Factors high = FactorsOf<inverse>(twiddles + 4 * m + 2);
        PassOfTwo(data.first, quarter, whole, low, high);
        if (data.second != nullptr) {
            PassOfTwo(data.second, quarter, whole, low, high);
        }
        for (std::size_t part = 0; part < 4; ++part) {
            const std::size_t offset = 2 * quarter * part;
            RunStages<inverse>({data.first + offset, data.second == nullptr ? nullptr : data.second + offset},
                               log2 - 2, 4 * m + part, twiddles);
        }
        return;
    }
    std::size_t blocks = 1;
    for (std::size_t quarter = length / 4; quarter > 1; quarter /= 4, blocks *= 4) {
        for (std::size_t block = 0; block < blocks; ++block) {
            const std::size_t index = m * blocks + block;
            const std::size_t offset = 8 * quarter * block;
            const Factors whole = FactorsOf<inverse>(twiddles + 2 * index);
            const Factors low = FactorsOf<inverse>(twiddles + 4 * index);
            const Factors high = FactorsOf<inverse>(twiddles + 4 * index + 2);
            PassOfTwo(data.first + offset, quarter, whole, low, high);
            if (data.second != nullptr) {
                PassOfTwo(data.second + offset, quarter, whole, low, high);
            }
        }
    }
    LastPass<inverse>(data.first, m * blocks, blocks, twiddles);
    if (data.second != nullptr) {
        LastPass<inverse>(data.second, m * blocks, blocks, twiddles);
    }
}

// Transforms two elements: one butterfly.
template <bool inverse>
void RunOne(double* data, const double* twiddle) {
    const double s = inverse ? -twiddle[1] : twiddle[1];
    const double u = data[2] * twiddle[0] + data[3] * s;
    const double v = data[3] * twiddle[0] - data[2] * s;
    data[2] = data[0] - u;
    data[3] = data[1] - v;
    data[0] = data[0] + u;
    data[1] = data[1] + v;
}

template <bool inverse>
void RunAll(Data data, int log2, const double* twiddles) {
    if (log2 == 1) {
        RunOne<inverse>(data.first, twiddles);
        if (data.second != nullptr) {
            RunOne<inverse>(data.second, twiddles);
        }
        return;
    }
    if (log2 % 2 == 0) {
        RunStages<inverse>(data, log2, 0, twiddles);
        return;
    }
    const std::size_t half = std::size_t{1} << (log2 - 1);
    const Factors factors = FactorsOf<inverse>(twiddles);
    FirstStage(data.first, half, factors);
    if (data.second != nullptr) {
        FirstStage(data.second, half, factors);
    }
    for (std::size_t part = 0; part < 2; ++part) {
        const std::size_t offset = 2 * half * part;
        RunStages<inverse>({data.first + offset, data.second == nullptr ? nullptr : data.second + offset},
                           log2 - 1, part, twiddles);
    }
}

} // namespace

} // namespace bss::fft

#endif
