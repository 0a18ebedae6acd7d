// WCompression: blocks in memory in zlib's format, and files in gzip's.
//
//     unsigned long length = bss::WCompression::CompressBound(size);
//     std::vector<unsigned char> packed(length);
//     bss::WCompression::Compress(packed.data(), &length, data, size);
//
//     bss::WCompression::CompressFile(L"run.log", L"run.log.gz");
//     bss::WCompression::UncompressFile(L"run.log.gz", L"run.log");
//
// All failures are WNECompressionFile, with the reason as text. Files and buffers are released before it is
// thrown; a target that was begun stays as far as it went.
//
// Threads: all operations may be used from any thread. A file should not be given to two calls at once.

#ifndef BSS_SYSTEM_WCOMPRESSION_H
#define BSS_SYSTEM_WCOMPRESSION_H

#include "bss/Export.h"

#include <cstdio>
#include <string>

namespace bss {

class KRTBSS_API WCompression {
public:
    WCompression() = default;
    WCompression(const WCompression&) = default;
    WCompression& operator=(const WCompression&) = default;
    virtual ~WCompression();

    /// Packs `sourceLen` bytes into a zlib stream of stored blocks: quick, and a little longer than the data.
    /// `*destLen` is the room at `dest`, at least CompressBound(sourceLen), and then the length that was
    /// used.
    static void Compress(unsigned char* dest, unsigned long* destLen, const unsigned char* source,
                         unsigned long sourceLen);

    /// Unpacks a whole zlib stream of any level. `*destLen` is the room at `dest`, and then the length of the
    /// data. Fails if the room does not do, or the stream is damaged or cut.
    static void Uncompress(unsigned char* dest, unsigned long* destLen, const unsigned char* source,
                           unsigned long sourceLen);

    /// The room that Compress wants for so many bytes, where 0 counts as 1.
    static unsigned long CompressBound(unsigned long sourceLen);

    /// Writes `source` to the gzip file `target`, which is replaced. Files may have any size; they are moved
    /// in pieces of 16384 bytes. The target's path has to have a form in the narrow code page (UTF-8 on
    /// Linux). The two must be different files.
    static void CompressFile(const std::wstring& source, const std::wstring& target);

    /// Likewise from the gzip file `source`, whose path has to have a narrow form, to `target`. A file that
    /// is not compressed is copied. A file that ends too early gives what there is, and then the failure.
    static void UncompressFile(const std::wstring& source, const std::wstring& target);

protected:
    /// The text of errno; without an error that of lack of memory.
    static std::wstring GetError();
    /// The text of a result of zlib.
    static std::wstring GetError(int zlibCode);
    /// The text of errno for a stream.
    static std::wstring GetError(std::FILE* file);
    /// zlib's text for a gzip file, or that of errno where the system failed.
    static std::wstring GetError(void*& gzFile);
};

} // namespace bss

#endif
