// DES and Triple DES (FIPS 46-3) with the key schedules in the caller's hand.
//
//     const bss::des::TripleSchedule keys = bss::des::ThreeKeySchedule(key, bss::des::Mode::Encrypt);
//     bss::des::CryptBlocks<1>(keys, from, into);
//
// Threads: nothing here has a state of its own.

#ifndef BSS_SYSTEM_PRIVATE_DESCIPHER_H
#define BSS_SYSTEM_PRIVATE_DESCIPHER_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace bss::des {

inline constexpr std::size_t BlockSize = 8;

enum class Mode { Encrypt, Decrypt };

constexpr Mode OppositeOf(Mode mode) {
    return mode == Mode::Encrypt ? Mode::Decrypt : Mode::Encrypt;
}

/// The sub-keys of one pass: two words a round, in the order of use. The bytes of the first, high to low, are
/// the six bits each for the S-boxes 1, 3, 5 and 7, those of the second for 2, 4, 6 and 8.
using Schedule = std::array<std::uint32_t, 32>;

/// The sub-keys of the first, the middle and the last pass.
using TripleSchedule = std::array<Schedule, 3>;

/// Of 8 bytes, of which the lowest bit (the parity) does not count.
Schedule OneKeySchedule(const unsigned char* key, Mode mode);

/// Of 16 bytes: the first key for the outer passes, the second with the opposite mode for the middle one.
TripleSchedule TwoKeySchedule(const unsigned char* key, Mode mode);

/// Of 24 bytes: the keys in order, or for decryption from the last to the first.
TripleSchedule ThreeKeySchedule(const unsigned char* key, Mode mode);

/// One block through one pass. `from` and `into` have 8 bytes and may be the same.
void CryptOnce(const Schedule& keys, const unsigned char* from, unsigned char* into);

/// 1, 2 or 4 independent blocks through the three passes. `from` and `into` may be the same. More blocks at a
/// time keep more of the processor busy.
template <std::size_t blocks>
void CryptBlocks(const TripleSchedule& keys, const unsigned char* from, unsigned char* into);

extern template void CryptBlocks<1>(const TripleSchedule&, const unsigned char*, unsigned char*);
extern template void CryptBlocks<2>(const TripleSchedule&, const unsigned char*, unsigned char*);
extern template void CryptBlocks<4>(const TripleSchedule&, const unsigned char*, unsigned char*);

} // namespace bss::des

#endif
