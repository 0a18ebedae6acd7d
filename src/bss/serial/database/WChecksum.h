// WChecksum: the CRC-32 of zlib and gzip.
//
//     unsigned long sum = bss::WChecksum::GetCheckSum(data, length, 0);
//     sum = bss::WChecksum::GetCheckSum(more, moreLength, sum);    // goes on with it
//
// Threads: may be called from any thread.

#ifndef BSS_SERIAL_DATABASE_WCHECKSUM_H
#define BSS_SERIAL_DATABASE_WCHECKSUM_H

#include "bss/Export.h"

namespace bss {

class KRTBSS_API WChecksum {
public:
    WChecksum() = default;
    WChecksum(const WChecksum&) = default;
    WChecksum& operator=(const WChecksum&) = default;
    virtual ~WChecksum();

    /// Over the UTF-16 code units of `count` characters, two bytes each, low one first. 0 for null.
    static unsigned long GetCheckSum(const wchar_t* text, unsigned long count, unsigned long seed);
    /// Over `length` bytes. 0 for null.
    static unsigned long GetCheckSum(unsigned char* const data, unsigned long length, unsigned long seed);
};

} // namespace bss

#endif
