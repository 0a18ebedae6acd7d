// DES and Triple DES (FIPS 46-3) with key schedules that the caller owns.
//
//     const bss::des::TripleSchedule keys = bss::des::ThreeKeySchedule(key, bss::des::Mode::Encrypt);
//     bss::des::CryptBlocks<1>(keys, from, into);
//
// Threads: all operations may be used from any thread; there is no global state.

#ifndef BSS_SYSTEM_PRIVATE_DESCIPHER_H
#define BSS_SYSTEM_PRIVATE_DESCIPHER_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace bss::des {

/// The size of a block and of a single key, in bytes.
inline constexpr std::size_t kBlockSize = 8;

/// The direction of the cipher.
enum class Mode { Encrypt, Decrypt };

/// Returns the other mode.
constexpr Mode OppositeOf(Mode mode) {
    return mode == Mode::Encrypt ? Mode::Decrypt : Mode::Encrypt;
}

/// The sub-keys of one pass: two words a round, in the order of use. The bytes of the first word, high to
/// low, hold six bits each for the S-boxes 1, 3, 5 and 7; those of the second word for 2, 4, 6 and 8.
using Schedule = std::array<std::uint32_t, 32>;

/// The sub-keys of the first, the middle and the last pass.
using TripleSchedule = std::array<Schedule, 3>;

/// Returns the sub-keys of a key of 8 bytes. The lowest bit of each byte (the parity) is ignored.
Schedule OneKeySchedule(const unsigned char* key, Mode mode);

/// Returns the sub-keys of a key of 16 bytes: the first 8 for the first and the last pass, the second 8 with
/// the opposite mode for the middle pass.
TripleSchedule TwoKeySchedule(const unsigned char* key, Mode mode);

/// Returns the sub-keys of a key of 24 bytes: the three keys in order, for decryption in reverse order. The
/// middle pass has the opposite mode.
TripleSchedule ThreeKeySchedule(const unsigned char* key, Mode mode);

/// Passes one block through one DES. `from` and `into` have 8 bytes and may be the same.
void CryptOnce(const Schedule& keys, const unsigned char* from, unsigned char* into);

/// Passes 1, 2 or 4 independent blocks through the three passes. `from` and `into` may be the same. More
/// blocks at a time use more of the processor's units.
template <std::size_t blocks>
void CryptBlocks(const TripleSchedule& keys, const unsigned char* from, unsigned char* into);

extern template void CryptBlocks<1>(const TripleSchedule&, const unsigned char*, unsigned char*);
extern template void CryptBlocks<2>(const TripleSchedule&, const unsigned char*, unsigned char*);
extern template void CryptBlocks<4>(const TripleSchedule&, const unsigned char*, unsigned char*);

} // namespace bss::des

#endif
