// The tables of DES, computed by the compiler from those of the standard (FIPS 46-3).

#ifndef BSS_SYSTEM_PRIVATE_DESTABLES_H
#define BSS_SYSTEM_PRIVATE_DESTABLES_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace bss::des {

/// The substitutions S1 to S8, each as four rows of 16.
inline constexpr unsigned char kSBoxes[8][64] = {
    {14, 4,  13, 1, 2,  15, 11, 8, 3, 10, 6, 12, 5,  9,  0,  7,  0,  15, 7,  4,  14, 2,
     13, 1,  10, 6, 12, 11, 9,  5, 3, 8,  4, 1,  14, 8,  13, 6,  2,  11, 15, 12, 9,  7,
     3,  10, 5,  0, 15, 12, 8,  2, 4, 9,  1, 7,  5,  11, 3,  14, 10, 0,  6,  13},
    {15, 1,  8,  14, 6,  11, 3,  4, 9,  7,  2, 13, 12, 0,  5,  10, 3,  13, 4,  7, 15, 2,
     8,  14, 12, 0,  1,  10, 6,  9, 11, 5,  0, 14, 7,  11, 10, 4,  13, 1,  5,  8, 12, 6,
     9,  3,  2,  15, 13, 8,  10, 1, 3,  15, 4, 2,  11, 6,  7,  12, 0,  5,  14, 9},
    {10, 0,  9,  14, 6, 3,  15, 5,  1,  13, 12, 7, 11, 4,  2,  8,  13, 7, 0,  9, 3, 4,
     6,  10, 2,  8,  5, 14, 12, 11, 15, 1,  13, 6, 4,  9,  8,  15, 3,  0, 11, 1, 2, 12,
     5,  10, 14, 7,  1, 10, 13, 0,  6,  9,  8,  7, 4,  15, 14, 3,  11, 5, 2,  12},
    {7, 13, 14, 3, 0, 6,  9, 10, 1,  2, 8,  5, 11, 12, 4,  15, 13, 8,  11, 5, 6, 15,
     0, 3,  4,  7, 2, 12, 1, 10, 14, 9, 10, 6, 9,  0,  12, 11, 7,  13, 15, 1, 3, 14,
     5, 2,  8,  4, 3, 15, 0, 6,  10, 1, 13, 8, 9,  4,  5,  11, 12, 7,  2,  14},
    {2,  12, 4, 1,  7,  10, 11, 6, 8, 5,  3, 15, 13, 0,  14, 9,  14, 11, 2,  12, 4,  7,
     13, 1,  5, 0,  15, 10, 3,  9, 8, 6,  4, 2,  1,  11, 10, 13, 7,  8,  15, 9,  12, 5,
     6,  3,  0, 14, 11, 8,  12, 7, 1, 14, 2, 13, 6,  15, 0,  9,  10, 4,  5,  3},
    {12, 1,  10, 15, 9,  2,  6, 8,  0, 13, 3,  4,  14, 7,  5, 11, 10, 15, 4, 2, 7, 12,
     9,  5,  6,  1,  13, 14, 0, 11, 3, 8,  9,  14, 15, 5,  2, 8,  12, 3,  7, 0, 4, 10,
     1,  13, 11, 6,  4,  3,  2, 12, 9, 5,  15, 10, 11, 14, 1, 7,  6,  0,  8, 13},
    {4, 11, 2,  14, 15, 0,  8,  13, 3, 12, 9,  7, 5,  10, 6,  1,  13, 0,  11, 7,  4, 9,
     1, 10, 14, 3,  5,  12, 2,  15, 8, 6,  1,  4, 11, 13, 12, 3,  7,  14, 10, 15, 6, 8,
     0, 5,  9,  2,  6,  11, 13, 8,  1, 4,  10, 7, 9,  5,  0,  15, 14, 2,  3,  12},
    {13, 2, 8,  4, 6, 15, 11, 1,  10, 9,  3, 14, 5,  0,  12, 7,  1,  15, 13, 8, 10, 3,
     7,  4, 12, 5, 6, 11, 0,  14, 9,  2,  7, 11, 4,  1,  9,  12, 14, 2,  0,  6, 10, 13,
     15, 3, 5,  8, 2, 1,  14, 7,  4,  10, 8, 13, 15, 12, 9,  0,  3,  5,  6,  11},
};

/// The permutation P after the S-boxes: bit i of the result (1 is the highest) is bit kP[i - 1] of the
/// argument.
inline constexpr unsigned char kP[32] = {16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23, 26, 5,  18, 31, 10,
                                         2,  8, 24, 14, 32, 27, 3,  9,  19, 13, 30, 6,  22, 11, 4,  25};

/// Permuted choice 2: the 48 of the key's 56 bits (1 is the highest) that form a round's sub-key.
inline constexpr unsigned char kPC2[48] = {14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
                                           26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
                                           51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};

/// The number of places by which the halves of the key are rotated left before each round.
inline constexpr unsigned char kKeyShifts[16] = {1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};

/// The S-boxes followed by P: entry [box][six input bits] is the contribution of the box to the 32 bits,
/// rotated left by 1 as the halves are between the initial and the final permutation.
using SPBoxes = std::array<std::array<std::uint32_t, 64>, 8>;

constexpr SPBoxes MakeSPBoxes() {
    SPBoxes boxes{};
    for (std::size_t box = 0; box < 8; ++box) {
        for (std::size_t input = 0; input < 64; ++input) {
            // The outer two bits choose the row.
            const std::size_t row = (input >> 4U & 2U) | (input & 1U);
            const std::uint32_t value = kSBoxes[box][row * 16 + (input >> 1U & 15U)];
            const std::uint32_t substituted = value << (28 - 4 * box);
            std::uint32_t permuted = 0;
            for (std::size_t i = 0; i < 32; ++i) {
                permuted |= (substituted >> (32U - kP[i]) & 1U) << (31 - i);
            }
            boxes[box][input] = std::rotl(permuted, 1);
        }
    }
    return boxes;
}

alignas(64) inline constexpr SPBoxes kSPBoxes = MakeSPBoxes();

/// Permuted choice 2 of seven bits at a time: entry [half][group][seven bits]. The left half gives the bits
/// for the S-boxes 1 to 4: for 1 and 3 in the upper 16 bits, for 2 and 4 in the lower 16. The right half
/// gives those for 5 to 8 likewise.
using ChoiceTable = std::array<std::array<std::array<std::uint32_t, 128>, 4>, 2>;

constexpr ChoiceTable MakeChoices() {
    ChoiceTable choices{};
    for (std::size_t i = 0; i < 48; ++i) {
        const std::size_t half = i / 24;
        const std::size_t bitOfHalf = kPC2[i] - 1U - 28 * half; // 0 is the highest
        const std::size_t box = i / 6 % 4;
        const std::size_t shift = (box % 2 == 0 ? 24U : 8U) - box / 2 * 8 + (5 - i % 6);
        for (std::size_t bits = 0; bits < 128; ++bits) {
            if ((bits >> (6 - bitOfHalf % 7) & 1U) != 0) {
                choices[half][bitOfHalf / 7][bits] |= 1U << shift;
            }
        }
    }
    return choices;
}

inline constexpr ChoiceTable kChoices = MakeChoices();

} // namespace bss::des

#endif
