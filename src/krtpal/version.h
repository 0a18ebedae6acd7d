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
// On Linux the file is an ELF module with the block in a note (owner "krtbss", type 1; the CMake function
// krtbss_version_resource adds it) or a PE module of Windows with its resource, of 32 or 64 bits. Of several
// resources in a PE module the one with number 1, else the first, is used, and of several languages neutral,
// English (United States), else the first.
//
// All lengths inside a block are checked against its size: a damaged block has fewer values, or none. On
// Linux the block has the strings a second time as wchar_t, so it must not be written to a file.
//
// Threads: all calls may be used from any thread. Any number of threads may read one block.

#ifndef KRTPAL_VERSION_H
#define KRTPAL_VERSION_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifndef _WIN32

namespace krtpal {

/// The fixed part of a version resource, in the layout of the file.
struct VS_FIXEDFILEINFO {
    DWORD dwSignature; ///< VS_FFI_SIGNATURE
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;    ///< first number in the high word, second in the low word
    DWORD dwFileVersionLS;    ///< third and fourth number
    DWORD dwProductVersionMS; ///< as the file version
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags; ///< VS_FF_ bits that dwFileFlagsMask declares valid
    DWORD dwFileOS;
    DWORD dwFileType; ///< 1 program, 2 shared library
    DWORD dwFileSubtype;
    DWORD dwFileDateMS; ///< high half of a FILETIME
    DWORD dwFileDateLS;
};

/// First member of every valid VS_FIXEDFILEINFO.
inline constexpr DWORD VS_FFI_SIGNATURE = 0xFEEF04BD;

/// Returns the size in bytes of the version block of a file. Sets `*handle`, unless it is null, to 0.
/// Fails with 0 and ERROR_RESOURCE_DATA_NOT_FOUND if the file has no version resource, ERROR_ACCESS_DENIED if
/// it is not a regular file, ERROR_INVALID_PARAMETER for a null path, ERROR_INVALID_NAME for a path that is
/// empty or has no form in UTF-8, otherwise with the code of errno.
KRTPAL_API DWORD WINAPI GetFileVersionInfoSizeW(LPCWSTR path, DWORD* handle);
/// Returns TRUE and stores the version block, reading the file again. `handle` is ignored.
/// Fails with ERROR_INSUFFICIENT_BUFFER, and nothing stored, if `size` bytes are too few, ERROR_INVALID_DATA
/// for a null block, otherwise as GetFileVersionInfoSizeW. Unlike Windows, a block is never cut.
KRTPAL_API BOOL WINAPI GetFileVersionInfoW(LPCWSTR path, DWORD handle, DWORD size, LPVOID block);
/// Returns TRUE and sets `*value` to a value in the block, which lives as long as the block. The name is "\"
/// for the fixed part, otherwise keys after backslashes, in any case. `*length`, unless it is null, is in
/// characters with the NUL for strings, in bytes for all other values.
/// REQUIRES: a block of GetFileVersionInfoW.
/// Fails with ERROR_RESOURCE_TYPE_NOT_FOUND, and a length of 0, if there is no such value,
/// ERROR_INVALID_PARAMETER for null arguments.
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
