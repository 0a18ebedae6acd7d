// WChecksum: the CRC-32 of zlib and gzip.
//
//     unsigned long sum = bss::WChecksum::GetCheckSum(data, length, 0);
//     sum = bss::WChecksum::GetCheckSum(more, moreLength, sum);    // continues with more data
//
// Threads: may be called from any thread.

#ifndef BSS_SERIAL_DATABASE_WCHECKSUM_H
#define BSS_SERIAL_DATABASE_WCHECKSUM_H

#include "bss/Export.h"

namespace bss {

/// The operations of this header, all static.
class KRTBSS_API WChecksum {
public:
    WChecksum() = default;
    WChecksum(const WChecksum&) = default;
    WChecksum& operator=(const WChecksum&) = default;
    virtual ~WChecksum();

    /// Returns the CRC-32 of the UTF-16 code units of `count` characters, two bytes each, low byte first.
    /// `seed` is 0, or the result for the preceding data. Returns 0 for null.
    static unsigned long GetCheckSum(const wchar_t* text, unsigned long count, unsigned long seed);
    /// Returns the CRC-32 of `length` bytes, which are not changed. `seed` is 0, or the result for the
    /// preceding data. Returns 0 for null.
    static unsigned long GetCheckSum(unsigned char* const data, unsigned long length, unsigned long seed);
};

} // namespace bss

#endif
