/* DES and Triple DES with one key schedule for the whole process, for C and C++.

       unsigned char key[24] = ..., block[8] = ...;
       des3key(key, 0);        key set-up for encryption
       Ddes(block, block);     one block, in place
       des3key(key, 1);        and back
       Ddes(block, block);

   The state of the process is three key schedules of 32 words of 32 bits each: the first for the first DES
   pass, the second for the middle, the third for the last. Before a key is set they are all zeros. Each word
   of a saved schedule stands in an unsigned long, whatever its width.

   A mode is 0 for encryption and 1 for decryption. Blocks and keys are in big-endian order, as the standard
   (FIPS 46-3) has it; the lowest bit of each byte of a key, its parity, does not count.

   Threads: the schedules are not locked. A program that calls these from several threads has to serialize the
   calls from setting the key to the last block. WEncryption does not touch this state.

   Strength: DES falls to a search of its keys; use this for compatibility only. */

#ifndef BSS_SYSTEM_DES_H
#define BSS_SYSTEM_DES_H

#include "bss/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Sets the first schedule from one key. */
KRTBSS_API void deskey(unsigned char key[8], short mode);
/* Sets all three: the outer passes by the first key, the middle one by the second with the opposite mode. */
KRTBSS_API void des2key(unsigned char key[16], short mode);
/* Sets all three: the keys in order, for decryption from the last to the first, the middle pass with the
   opposite mode. Three equal keys act as one key with single DES. */
KRTBSS_API void des3key(unsigned char key[24], short mode);

/* Save and restore the first schedule. */
KRTBSS_API void cpkey(unsigned long into[32]);
KRTBSS_API void usekey(unsigned long from[32]);
/* Save and restore all three. */
KRTBSS_API void cp3key(unsigned long into[96]);
KRTBSS_API void use3key(unsigned long from[96]);

/* One block of 8 bytes, or two independent ones, through the three passes. `from` and `into` may be the same.
 */
KRTBSS_API void Ddes(unsigned char from[8], unsigned char into[8]);
KRTBSS_API void D2des(unsigned char from[16], unsigned char into[16]);

/* Make a key from a pass phrase, which is overwritten with zeros: starting from a fixed key, the lower seven
   bits of each character are mixed in, and the key is encrypted under the fixed one after each stretch of its
   length (an empty phrase: once). 8 bytes go through one DES pass; 16 and 24 bytes as two and three
   independent blocks through the three passes. The process's schedules stay what they are. */
KRTBSS_API void makekey(char* text, unsigned char key[8]);
KRTBSS_API void make2key(char* text, unsigned char key[16]);
KRTBSS_API void make3key(char* text, unsigned char key[24]);

#ifdef __cplusplus
}
#endif

#endif
