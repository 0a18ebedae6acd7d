#include "bss/system/WCompression.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "krtpal/common/text.h"
#include "krtpal/debug.h"
#include "krtpal/file.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <zlib.h>

namespace bss {

namespace {

constexpr unsigned kPieceSize = 16384;
constexpr const wchar_t* kPrefix = L"\nError Message:  ";

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

struct GzipCloser {
    void operator()(gzFile file) const { gzclose(file); }
};
using GzipFile = std::unique_ptr<gzFile_s, GzipCloser>;

// Returns the path, or null if it has an embedded NUL, which would truncate it.
const wchar_t* PathOf(const std::wstring& path) {
    return path.find(L'\0') == std::wstring::npos ? path.c_str() : nullptr;
}

// Returns the path in the narrow code page, if it has a form there.
std::optional<std::string> NarrowPath(const std::wstring& path) {
    std::string narrow = krtpal::NarrowText(path);
    if (PathOf(path) == nullptr || krtpal::WidenText(narrow) != path) {
        return {};
    }
    return narrow;
}

errno_t OpenFile(File& file, const std::wstring& path, const wchar_t* mode) {
    if (PathOf(path) == nullptr) {
        return EINVAL;
    }
    std::FILE* opened = nullptr;
    const errno_t error = _wfopen_s(&opened, PathOf(path), mode);
    file.reset(opened);
    return error;
}

GzipFile OpenGzip(const std::wstring& path, const char* mode) {
    const std::optional<std::string> narrow = NarrowPath(path);
    errno = narrow ? 0 : EILSEQ;
    return GzipFile(narrow ? gzopen(narrow->c_str(), mode) : nullptr);
}

// Opening the target truncates it: a target that is the source itself has to be detected before.
bool IsSameFile(const std::wstring& source, const std::wstring& target) {
    const std::optional<std::string> first = NarrowPath(source);
    const std::optional<std::string> second = NarrowPath(target);
    std::error_code none;
    return first && second && std::filesystem::equivalent(*first, *second, none);
}

void Tell(const std::wstring& text) {
    OutputDebugStringW(text.c_str());
}

} // namespace

WCompression::~WCompression() = default;

void WCompression::Compress(unsigned char* dest, unsigned long* destLen, const unsigned char* source,
                            unsigned long sourceLen) {
    if (destLen == nullptr) {
        throw WNECompressionFile(L"Unable to compress data: destination buffer zero length.");
    }
    if (*destLen < compressBound(sourceLen)) {
        throw WNECompressionFile(L"Unable to compress data: destination buffer too small.");
    }
    if (compress2(dest, destLen, source, sourceLen, Z_NO_COMPRESSION) != Z_OK) {
        throw WNECompressionFile(L"Cannot compress data.");
    }
}

void WCompression::Uncompress(unsigned char* dest, unsigned long* destLen, const unsigned char* source,
                              unsigned long sourceLen) {
    if (destLen == nullptr || uncompress(dest, destLen, source, sourceLen) != Z_OK) {
        throw WNECompressionFile(L"Cannot uncompress data.");
    }
}

unsigned long WCompression::CompressBound(unsigned long sourceLen) {
    return compressBound(std::max(sourceLen, 1UL));
}

void WCompression::CompressFile(const std::wstring& source, const std::wstring& target) {
    const auto cannotOpen = [](const std::wstring& path) {
        const std::wstring text = L"Cannot open file:" + path + L" for compression." + GetError();
        Tell(L"WCompression::CompressFile: " + text);
        return WNECompressionFile(text);
    };
    File input;
    if (OpenFile(input, source, L"rb") != 0) {
        throw WNECompressionFile(L"Failed to open compressed file.");
    }
    if (input == nullptr) {
        throw cannotOpen(source);
    }
    if (IsSameFile(source, target)) {
        errno = EACCES;
        throw cannotOpen(target);
    }
    GzipFile output = OpenGzip(target, "wb6 ");
    if (output == nullptr) {
        throw cannotOpen(target);
    }

    const auto buffer = std::make_unique<unsigned char[]>(kPieceSize);
    errno = 0;
    while (const std::size_t size = std::fread(buffer.get(), 1, kPieceSize, input.get())) {
        errno = 0;
        if (gzwrite(output.get(), buffer.get(), static_cast<unsigned>(size)) < static_cast<int>(size)) {
            const std::wstring text = L"Cannot write file:" + target + L" for compression." + GetError();
            Tell(text);
            throw WNECompressionFile(text);
        }
        errno = 0;
    }
    if (std::ferror(input.get()) != 0) {
        const std::wstring text =
            L"Cannot read file:" + source + L" during compression." + GetError(input.get());
        Tell(text);
        throw WNECompressionFile(text);
    }

    // All input has been read: a failure to close it loses no data.
    if (std::fclose(input.release()) != 0) {
        Tell(L"WCompression::CompressFile:  Error closing input location: "
             L"Error closing uncompressed input file: " +
             GetError());
    }
    if (const int result = gzclose(output.release()); result != Z_OK) {
        const std::wstring text = L"Error closing compressed output file: " + GetError(result);
        Tell(L"WCompression::CompressFile:  " + text);
        throw WNECompressionFile(text);
    }
}

void WCompression::UncompressFile(const std::wstring& source, const std::wstring& target) {
    GzipFile input = OpenGzip(source, "rb");
    if (input == nullptr) {
        const std::wstring text = L"Cannot open file:" + source + L" for uncompression." + GetError();
        Tell(L"WCompression::UncompressFile: " + text);
        throw WNECompressionFile(text);
    }
    File output;
    if (IsSameFile(source, target) || OpenFile(output, target, L"wb") != 0) {
        throw WNECompressionFile(L"Failed to open uncompression target file.");
    }

    const auto buffer = std::make_unique<unsigned char[]>(kPieceSize);
    for (;;) {
        const int size = gzread(input.get(), buffer.get(), kPieceSize);
        if (size < 0) {
            void* file = input.get();
            const std::wstring text =
                L"Cannot read file:" + source + L" during uncompression." + GetError(file);
            Tell(text);
            throw WNECompressionFile(text);
        }
        if (size == 0) {
            break;
        }
        const auto count = static_cast<std::size_t>(size);
        if (std::fwrite(buffer.get(), 1, count, output.get()) < count) {
            const std::wstring text =
                L"Cannot write file:" + target + L"Error writing uncompresed output file.";
            Tell(text);
            throw WNECompressionFile(text);
        }
    }

    errno = 0;
    const bool targetClosed = std::fclose(output.release()) == 0;
    std::wstring text;
    if (!targetClosed) {
        text = L"Error closing uncompressed output file: " + GetError();
    }
    // gzclose reports a truncated source.
    const int result = gzclose(input.release());
    if (targetClosed && result != Z_OK) {
        text = L"Error closing compressed input file: " + GetError(result);
    }
    if (!text.empty()) {
        Tell(L"WCompression::UncompressFile:  " + text);
        throw WNECompressionFile(text);
    }
}

std::wstring WCompression::GetError() {
    if (errno == 0) {
        return std::wstring(kPrefix) + L"Out of memory.";
    }
    wchar_t text[260] = {};
    _wcserror_s(text, std::size(text), errno);
    return kPrefix + std::wstring(text);
}

std::wstring WCompression::GetError(int zlibCode) {
    // Results 2 to -6, in descending order.
    static constexpr const wchar_t* kTexts[] = {
        L"need dictionary",     L"stream end",   L"",
        L"file error",          L"stream error", L"data error",
        L"insufficient memory", L"buffer error", L"incompatible version"};
    if (zlibCode <= Z_NEED_DICT && zlibCode >= Z_VERSION_ERROR) {
        return std::wstring(kPrefix) + kTexts[Z_NEED_DICT - zlibCode];
    }
    wchar_t text[260] = {};
    _wcserror_s(text, std::size(text), errno);
    return kPrefix + std::wstring(text);
}

std::wstring WCompression::GetError(std::FILE*) {
    wchar_t text[260] = {};
    return _wcserror_s(text, std::size(text), errno) == 0 ? kPrefix + std::wstring(text) : std::wstring();
}

std::wstring WCompression::GetError(void*& gzFile) {
    // gzerror may change errno: read its text first.
    char system[260] = {};
    strerror_s(system, std::size(system), errno);
    int code = Z_OK;
    const char* const text = gzerror(static_cast<gzFile_s*>(gzFile), &code);
    if (code == Z_ERRNO) {
        return kPrefix + krtpal::WidenText(system);
    }
    return kPrefix + (text == nullptr ? std::wstring() : krtpal::WidenText(text));
}

} // namespace bss
