// bss::base64: bytes to text in the alphabet A-Z a-z 0-9 + / and back (RFC 4648).
//
//     char text[...];                                            // EncodeGetRequiredLength(length, 0)
//     int room = sizeof(text);
//     bss::base64::Encode(bytes, length, text, &room, 0);        // room: the length of the text, without NUL
//
// Lines have 76 characters and end with CR LF. The rest after the last full line has no line end.
//
// `targetLength` is the size of the target on entry and the number of bytes written on return. Nothing is
// written beyond that size. Both operations return false, with a length of 0, for a null pointer, a negative
// length or a target that is too small; a decoder's target may then hold a part of the data.
//
// Threads: all operations may be used from any thread.

#ifndef BSS_SYSTEM_BASE64_H
#define BSS_SYSTEM_BASE64_H

#include "bss/Export.h"

namespace bss::base64 {

/// Flag of the encoder: the last group is not filled up with "=".
inline constexpr unsigned long NoPadding = 1;
/// Flag of the encoder: the text has no line ends.
inline constexpr unsigned long NoLineBreaks = 2;

/// Returns the length of the text of `length` bytes, line ends included. Returns 0 for a negative length, and
/// the largest int for a text that is longer.
KRTBSS_API int EncodeGetRequiredLength(int length, unsigned long flags);
/// Encodes `length` bytes. The text has no terminating NUL. Returns true on success.
KRTBSS_API bool Encode(const unsigned char* source, int length, char* target, int* targetLength,
                       unsigned long flags);

/// Returns `length`, which is more bytes than a text of that length can hold.
KRTBSS_API int DecodeGetRequiredLength(int length);
/// Decodes `length` characters. Characters outside the alphabet, "=" included, are skipped anywhere. In an
/// incomplete last group, two characters give one byte, three give two, and one gives none.
/// Returns true on success.
KRTBSS_API bool Decode(const char* source, int length, unsigned char* target, int* targetLength);

} // namespace bss::base64

#endif
