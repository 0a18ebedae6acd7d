// WCompression: blocks in memory in zlib's format (RFC 1950), and files in gzip's (RFC 1952).
//
//     unsigned long length = bss::WCompression::CompressBound(size);
//     std::vector<unsigned char> packed(length);
//     bss::WCompression::Compress(packed.data(), &length, data, size);
//
//     bss::WCompression::CompressFile(L"run.log", L"run.log.gz");
//     bss::WCompression::UncompressFile(L"run.log.gz", L"run.log");
//
// All failures are thrown as WNECompressionFile with the reason as text. Files and buffers are released
// first. A target file that was begun remains, incomplete.
//
// Threads: all operations may be used from any thread. Two calls at once must not use the same file.

#ifndef BSS_SYSTEM_WCOMPRESSION_H
#define BSS_SYSTEM_WCOMPRESSION_H

#include "bss/Export.h"

#include <cstdio>
#include <string>

namespace bss {

/// The operations of this header, all static. Derived classes can use the error texts.
class KRTBSS_API WCompression {
public:
    WCompression() = default;
    WCompression(const WCompression&) = default;
    WCompression& operator=(const WCompression&) = default;
    virtual ~WCompression();

    /// Packs `sourceLen` bytes into a zlib stream of stored blocks (level 0): fast, and a little longer than
    /// the data.
    /// REQUIRES: `*destLen` is the size of `dest` in bytes. It receives the length of the stream.
    /// Throws WNECompressionFile if `destLen` is null or `*destLen` is below CompressBound(sourceLen), even
    /// if the stream would fit.
    static void Compress(unsigned char* dest, unsigned long* destLen, const unsigned char* source,
                         unsigned long sourceLen);

    /// Unpacks a whole zlib stream of any level.
    /// REQUIRES: `*destLen` is the size of `dest` in bytes. It receives the length of the data.
    /// Throws WNECompressionFile if `dest` is too small, or if the stream is damaged or truncated.
    static void Uncompress(unsigned char* dest, unsigned long* destLen, const unsigned char* source,
                           unsigned long sourceLen);

    /// Returns the number of bytes that Compress requires for `sourceLen` bytes. 0 is treated as 1.
    static unsigned long CompressBound(unsigned long sourceLen);

    /// Compresses the file `source` (level 6) to the gzip file `target`, which is replaced. Files may have
    /// any size; they are moved in pieces of 16384 bytes. REQUIRES: the path of the target has a form in the
    /// narrow code page (UTF-8 on Linux). Throws WNECompressionFile if a file can't be opened, read, written
    /// or closed, or if both are the same file. A failure to close the source is only written to the
    /// debugger's output.
    static void CompressFile(const std::wstring& source, const std::wstring& target);

    /// Unpacks the gzip file `source` to the file `target`, which is replaced. A file that is not compressed
    /// is copied. REQUIRES: the path of the source has a form in the narrow code page (UTF-8 on Linux).
    /// Throws WNECompressionFile as CompressFile does, and if the source is damaged or truncated; the data
    /// before the damage are written first.
    static void UncompressFile(const std::wstring& source, const std::wstring& target);

protected:
    /// Returns the text of errno; with errno 0, the text for lack of memory.
    static std::wstring GetError();
    /// Returns the text of a result of zlib, or the text of errno if zlib has no such result.
    static std::wstring GetError(int zlibCode);
    /// Returns the text of errno, empty if there is none. The stream is ignored.
    static std::wstring GetError(std::FILE* file);
    /// Returns zlib's text for a gzip file, or the text of errno if the system failed.
    static std::wstring GetError(void*& gzFile);
};

} // namespace bss

#endif
