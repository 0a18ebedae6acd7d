// Version resources of module files.
//
//     DWORD unused = 0;
//     if (const DWORD size = GetFileVersionInfoSizeW(path, &unused); size != 0) {
//         std::vector<unsigned char> block(size);
//         void* value = nullptr;
//         UINT length = 0;
//         if (GetFileVersionInfoW(path, 0, size, block.data()) &&
//             VerQueryValueW(block.data(), L"\\StringFileInfo\\040904b0\\ProductName", &value, &length)) {
//             // `value` is text of `length` characters with its NUL, and lies in the block.
//         }
//     }
//
// On Linux the file may be an ELF module that carries the block as a note ("krtbss", type 1; the CMake
// function krtbss_version_resource puts it there) or a PE module of Windows with its resource. What a block
// says of its own lengths is checked against its size: a damaged one has fewer values, or none.
//
// Threads: all calls may be used from any thread; a block serves any number of readers.

#ifndef KRTPAL_VERSION_H
#define KRTPAL_VERSION_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// The fixed part of a version resource, as it stands in the file.
struct VS_FIXEDFILEINFO {
    DWORD dwSignature; ///< VS_FFI_SIGNATURE
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS; ///< first number in the high word, second in the low word
    DWORD dwFileVersionLS; ///< third and fourth number
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS; ///< high half of a FILETIME
    DWORD dwFileDateLS;
};

inline constexpr DWORD VS_FFI_SIGNATURE = 0xFEEF04BD;

/// The size of what GetFileVersionInfoW writes for a file; sets `*handle` (which may be null) to 0. 0 and the
/// last error if the file can't be read or has no version resource (ERROR_RESOURCE_DATA_NOT_FOUND).
KRTPAL_API DWORD WINAPI GetFileVersionInfoSizeW(LPCWSTR path, DWORD* handle);
/// Writes the file's version block. `handle` counts for nothing. FALSE and ERROR_INSUFFICIENT_BUFFER, with
/// nothing written, if `size` bytes are too few.
KRTPAL_API BOOL WINAPI GetFileVersionInfoW(LPCWSTR path, DWORD handle, DWORD size, LPVOID block);
/// A value of a block: "\" for the fixed part, else names behind backslashes, without regard to case. The
/// value lies in the block; the length is in characters for texts, in bytes for all else. FALSE and
/// ERROR_RESOURCE_TYPE_NOT_FOUND if there is none.
KRTPAL_API BOOL WINAPI VerQueryValueW(LPCVOID block, LPCWSTR name, LPVOID* value, UINT* length);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::VS_FIXEDFILEINFO, krtpal::VS_FFI_SIGNATURE, krtpal::GetFileVersionInfoSizeW,               \
        krtpal::GetFileVersionInfoW, krtpal::VerQueryValueW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#else
#include <winver.h>
#endif

namespace krtpal {
static_assert(sizeof(VS_FIXEDFILEINFO) == 52);
}

#endif
