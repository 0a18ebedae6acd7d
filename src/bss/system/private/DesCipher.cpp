#include "bss/system/private/DesCipher.h"

#include "bss/system/private/DesTables.h"

#include <algorithm>
#include <bit>

namespace bss::des {

namespace {

struct Halves {
    std::uint32_t left;
    std::uint32_t right;
};

std::uint32_t LoadBigEndian(const unsigned char* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 24U | static_cast<std::uint32_t>(bytes[1]) << 16U |
           static_cast<std::uint32_t>(bytes[2]) << 8U | bytes[3];
}

void StoreBigEndian(std::uint32_t value, unsigned char* bytes) {
    bytes[0] = static_cast<unsigned char>(value >> 24U);
    bytes[1] = static_cast<unsigned char>(value >> 16U);
    bytes[2] = static_cast<unsigned char>(value >> 8U);
    bytes[3] = static_cast<unsigned char>(value);
}

// Exchanges the bits of `b` under the mask with the bits of `a` that are `shift` places higher.
void SwapBits(std::uint32_t& a, std::uint32_t& b, unsigned shift, std::uint32_t mask) {
    const std::uint32_t difference = (a >> shift ^ b) & mask;
    b ^= difference;
    a ^= difference << shift;
}

// The initial permutation. Both halves are rotated left by 1, as the tables require.
Halves InitialPermutation(const unsigned char* block) {
    Halves h{LoadBigEndian(block), LoadBigEndian(block + 4)};
    SwapBits(h.left, h.right, 4, 0x0F0F0F0F);
    SwapBits(h.left, h.right, 16, 0x0000FFFF);
    SwapBits(h.right, h.left, 2, 0x33333333);
    SwapBits(h.right, h.left, 8, 0x00FF00FF);
    h.right = std::rotl(h.right, 1);
    SwapBits(h.left, h.right, 0, 0xAAAAAAAA);
    h.left = std::rotl(h.left, 1);
    return h;
}

// The inverse of InitialPermutation.
void FinalPermutation(Halves h, unsigned char* block) {
    h.left = std::rotr(h.left, 1);
    SwapBits(h.left, h.right, 0, 0xAAAAAAAA);
    h.right = std::rotr(h.right, 1);
    SwapBits(h.right, h.left, 8, 0x00FF00FF);
    SwapBits(h.right, h.left, 2, 0x33333333);
    SwapBits(h.left, h.right, 16, 0x0000FFFF);
    SwapBits(h.left, h.right, 4, 0x0F0F0F0F);
    StoreBigEndian(h.left, block);
    StoreBigEndian(h.right, block + 4);
}

// The cipher function f. The choice of bits does the expansion E; the tables include the permutation P.
inline std::uint32_t F(std::uint32_t half, const std::uint32_t* keys) {
    const std::uint32_t odd = std::rotr(half, 4) ^ keys[0];
    const std::uint32_t even = half ^ keys[1];
    return (kSPBoxes[0][odd >> 24U & 63U] ^ kSPBoxes[2][odd >> 16U & 63U]) ^
           (kSPBoxes[4][odd >> 8U & 63U] ^ kSPBoxes[6][odd & 63U]) ^
           ((kSPBoxes[1][even >> 24U & 63U] ^ kSPBoxes[3][even >> 16U & 63U]) ^
            (kSPBoxes[5][even >> 8U & 63U] ^ kSPBoxes[7][even & 63U]));
}

// The 16 rounds, with the halves exchanged after the last.
template <std::size_t blocks>
inline void Pass(const Schedule& keys, Halves (&h)[blocks]) {
    for (std::size_t round = 0; round < 16; round += 2) {
        const std::uint32_t* const words = &keys[2 * round];
        for (Halves& block : h) {
            block.left ^= F(block.right, words);
        }
        for (Halves& block : h) {
            block.right ^= F(block.left, words + 2);
        }
    }
    for (Halves& block : h) {
        std::swap(block.left, block.right);
    }
}

// Permuted choice 1, which drops the parity bits. Returns 56 bits; the upper 28 are the left half.
std::uint64_t PermutedChoice1(const unsigned char* key) {
    // PC-1 reads the key's bits by columns, from the last byte up: transpose the 8 by 8 matrix of bits.
    std::uint64_t x = 0;
    for (std::size_t i = 0; i < kBlockSize; ++i) {
        x |= static_cast<std::uint64_t>(key[i]) << (8 * i);
    }
    std::uint64_t t = (x ^ x >> 7U) & 0x00AA00AA00AA00AA;
    x ^= t ^ t << 7U;
    t = (x ^ x >> 14U) & 0x0000CCCC0000CCCC;
    x ^= t ^ t << 14U;
    t = (x ^ x >> 28U) & 0x00000000F0F0F0F0;
    x ^= t ^ t << 28U;
    // The left half is columns 1, 2, 3 and half of 4, the right half columns 7, 6, 5 and the rest of 4.
    const std::uint64_t left = x >> 36U;
    const std::uint64_t right =
        (x >> 8U & 0xFFU) << 20U | (x >> 16U & 0xFFU) << 12U | (x >> 24U & 0xFFU) << 4U | (x >> 32U & 0xFU);
    return left << 28U | right;
}

std::uint32_t RotateHalf(std::uint32_t half, unsigned shift) {
    return (half << shift | half >> (28U - shift)) & 0x0FFFFFFFU;
}

std::uint32_t PermutedChoice2(std::size_t side, std::uint32_t half) {
    const auto& tables = kChoices[side];
    return tables[0][half >> 21U] | tables[1][half >> 14U & 127U] | tables[2][half >> 7U & 127U] |
           tables[3][half & 127U];
}

} // namespace

Schedule OneKeySchedule(const unsigned char* key, Mode mode) {
    const std::uint64_t chosen = PermutedChoice1(key);
    auto left = static_cast<std::uint32_t>(chosen >> 28U);
    auto right = static_cast<std::uint32_t>(chosen & 0x0FFFFFFFU);
    Schedule keys;
    for (std::size_t round = 0; round < 16; ++round) {
        left = RotateHalf(left, kKeyShifts[round]);
        right = RotateHalf(right, kKeyShifts[round]);
        const std::uint32_t ofLeft = PermutedChoice2(0, left);
        const std::uint32_t ofRight = PermutedChoice2(1, right);
        const std::size_t place = mode == Mode::Encrypt ? round : 15 - round;
        keys[2 * place] = (ofLeft & 0xFFFF0000U) | ofRight >> 16U;
        keys[2 * place + 1] = ofLeft << 16U | (ofRight & 0xFFFFU);
    }
    return keys;
}

TripleSchedule TwoKeySchedule(const unsigned char* key, Mode mode) {
    const Schedule outer = OneKeySchedule(key, mode);
    return {outer, OneKeySchedule(key + kBlockSize, OppositeOf(mode)), outer};
}

TripleSchedule ThreeKeySchedule(const unsigned char* key, Mode mode) {
    const unsigned char* const last = key + 2 * kBlockSize;
    const bool encrypts = mode == Mode::Encrypt;
    return {OneKeySchedule(encrypts ? key : last, mode), OneKeySchedule(key + kBlockSize, OppositeOf(mode)),
            OneKeySchedule(encrypts ? last : key, mode)};
}

void CryptOnce(const Schedule& keys, const unsigned char* from, unsigned char* into) {
    Halves h[1] = {InitialPermutation(from)};
    Pass(keys, h);
    FinalPermutation(h[0], into);
}

template <std::size_t blocks>
void CryptBlocks(const TripleSchedule& keys, const unsigned char* from, unsigned char* into) {
    Halves h[blocks];
    for (std::size_t i = 0; i < blocks; ++i) {
        h[i] = InitialPermutation(from + i * kBlockSize);
    }
    // Between two passes the final and the initial permutation cancel out.
    for (const Schedule& pass : keys) {
        Pass(pass, h);
    }
    for (std::size_t i = 0; i < blocks; ++i) {
        FinalPermutation(h[i], into + i * kBlockSize);
    }
}

template void CryptBlocks<1>(const TripleSchedule&, const unsigned char*, unsigned char*);
template void CryptBlocks<2>(const TripleSchedule&, const unsigned char*, unsigned char*);
template void CryptBlocks<4>(const TripleSchedule&, const unsigned char*, unsigned char*);

} // namespace bss::des
