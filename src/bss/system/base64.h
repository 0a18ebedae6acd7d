// bss::base64: bytes to text in the alphabet A-Z a-z 0-9 + / and back (RFC 4648).
//
//     char text[...];                                            // EncodeGetRequiredLength(length, 0)
//     int room = sizeof(text);
//     bss::base64::Encode(bytes, length, text, &room, 0);        // room: the length of the text, without NUL
//
// Lines have 76 characters, each ended by CR LF; what follows the last full line has no line end.
//
// Target lengths are the room of the target on entry and what was written on return. Nothing is written
// beyond the room. All operations answer false, with a length of 0 where there is one, for null pointers,
// negative lengths and targets that are too small (a decoder's target may then hold a part).
//
// Threads: no state.

#ifndef BSS_SYSTEM_BASE64_H
#define BSS_SYSTEM_BASE64_H

#include "bss/Export.h"

namespace bss::base64 {

/// Flags of the encoder
inline constexpr unsigned long NoPadding = 1;
inline constexpr unsigned long NoLineBreaks = 2;

/// The length of the text for so many bytes, line ends included; 0 for a negative length. Saturates at the
/// largest int.
KRTBSS_API int EncodeGetRequiredLength(int length, unsigned long flags);
KRTBSS_API bool Encode(const unsigned char* source, int length, char* target, int* targetLength,
                       unsigned long flags);

/// `length`: more bytes than a text of that length can hold.
KRTBSS_API int DecodeGetRequiredLength(int length);
/// Characters outside the alphabet, "=" too, are skipped wherever they stand. Of a last group, two characters
/// give one byte and three give two; a single one gives none.
KRTBSS_API bool Decode(const char* source, int length, unsigned char* target, int* targetLength);

} // namespace bss::base64

#endif
