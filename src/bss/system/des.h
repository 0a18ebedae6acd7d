// DES and Triple DES (FIPS 46-3) with one key schedule for the whole process, for C and C++.
//
//     unsigned char key[24] = ..., block[8] = ...;
//     des3key(key, 0);        // schedule for encryption
//     Ddes(block, block);     // one block, in place
//     des3key(key, 1);        // schedule for decryption
//     Ddes(block, block);
//
// The state of the process is three key schedules of 32 words of 32 bits: for the first, the middle and the
// last DES pass. They are all zeros until a key is set. A saved schedule has one word in each unsigned long,
// whatever the width of that type.
//
// A mode is 0 for encryption and 1 for decryption. Blocks and keys are in big-endian order. The lowest bit of
// each byte of a key, its parity, is ignored.
//
// Threads: the schedules are not locked. Threads that call these functions must serialize the calls, from
// setting the key to the last block. WEncryption does not use this state.
//
// Strength: an exhaustive search breaks DES; use it for compatibility only.

#ifndef BSS_SYSTEM_DES_H
#define BSS_SYSTEM_DES_H

#include "bss/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Sets the first schedule from one key.
KRTBSS_API void deskey(unsigned char key[8], short mode);
/// Sets all three schedules: the first and the last pass from the first key, the middle pass from the second
/// key with the opposite mode.
KRTBSS_API void des2key(unsigned char key[16], short mode);
/// Sets all three schedules from three keys in order, for decryption in reverse order; the middle pass has
/// the opposite mode. With three equal keys the result is single DES.
KRTBSS_API void des3key(unsigned char key[24], short mode);

/// Copies the first schedule to `into`.
KRTBSS_API void cpkey(unsigned long into[32]);
/// Sets the first schedule to `from`.
KRTBSS_API void usekey(unsigned long from[32]);
/// Copies all three schedules to `into`.
KRTBSS_API void cp3key(unsigned long into[96]);
/// Sets all three schedules to `from`.
KRTBSS_API void use3key(unsigned long from[96]);

/// Passes one block of 8 bytes through the three passes. `from` and `into` may be the same.
KRTBSS_API void Ddes(unsigned char from[8], unsigned char into[8]);
/// Passes two independent blocks of 8 bytes through the three passes. `from` and `into` may be the same.
KRTBSS_API void D2des(unsigned char from[16], unsigned char into[16]);

/// Makes a key of 8 bytes from a pass phrase, which is overwritten with zeros. Starts from a fixed key. XORs
/// the low seven bits of up to 8 characters into the key, encrypts it by single DES under the fixed key, and
/// repeats this until the phrase is used up; an empty phrase makes one round. The schedules of the process
/// are unchanged.
/// REQUIRES: `text` is writable and ends with NUL.
KRTBSS_API void makekey(char* text, unsigned char key[8]);
/// Makes a key of 16 bytes. See makekey: rounds of 16 characters, encrypted as two independent blocks by
/// Triple DES with two keys.
KRTBSS_API void make2key(char* text, unsigned char key[16]);
/// Makes a key of 24 bytes. See makekey: rounds of 24 characters, encrypted as three independent blocks by
/// Triple DES with three keys.
KRTBSS_API void make3key(char* text, unsigned char key[24]);

#ifdef __cplusplus
}
#endif

#endif
