// Integer, handle and result types of the Win32 API, with the widths that they have on Windows.
//
// On Windows these are the system's own. On Linux they live in namespace krtpal and are visible everywhere,
// so that one source reads the same on both:
//
//     DWORD error = GetLastError();           // exactly 32 bits, on every target
//     LONGLONG ticks = 10'000'000;            // always long long
//
// There are no A and W macros: the wide names are the names. A program that wants the names unqualified
// outside bss includes krtpal/unqualified.h. Headers of ODBC may be included before or after: of their
// macros, BOOL is put aside here.

#ifndef KRTPAL_TYPES_H
#define KRTPAL_TYPES_H

#ifdef _WIN32
#include <windows.h>

namespace krtpal {
// For declarations outside of bss, which name these types in the same way on both systems.
using ::BOOL, ::DWORD, ::HANDLE, ::HINSTANCE, ::HMODULE, ::LPVOID;
} // namespace krtpal
#else
#include <cstddef>
#include <cstdint>

#pragma push_macro("BOOL")
#pragma push_macro("TRUE")
#pragma push_macro("FALSE")
#undef BOOL
#undef TRUE
#undef FALSE

#define WINAPI
#define CALLBACK
#define APIENTRY
#define STDAPICALLTYPE

namespace krtpal {

using BOOL = int;
using BOOLEAN = unsigned char;
using CHAR = char;
using UCHAR = unsigned char;
using BYTE = unsigned char;
using SHORT = short;
using USHORT = unsigned short;
using WORD = unsigned short;
using WCHAR = wchar_t;
using INT = int;
using UINT = unsigned int;
using LONG = int;
using ULONG = unsigned int;
using DWORD = unsigned int;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using FLOAT = float;

using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPBOOL = BOOL*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using LPLONG = LONG*;
using LPSTR = char*;
using PSTR = char*;
using LPCSTR = const char*;
using PCSTR = const char*;
using LPCCH = const char*;
using LPWSTR = wchar_t*;
using PWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using PCWSTR = const wchar_t*;
using LPCWCH = const wchar_t*;

/// A kernel object or a standard stream.
using HANDLE = void*;
/// A loaded module: the address of its entry in the dynamic linker's list, which is also what dlopen gives.
struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;

using LANGID = WORD;
using LCID = DWORD;

using HRESULT = LONG;
using SCODE = LONG;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr DWORD MAX_PATH = 260;
/// Time-outs of all bits set mean for ever.
inline constexpr DWORD INFINITE = 0xFFFFFFFF;

/// What calls that open something give on failure, where null could be a value.
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004U);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFU);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005U);
inline constexpr HRESULT E_HANDLE = static_cast<HRESULT>(0x80070006U);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005U);
inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008U);
inline constexpr HRESULT DISP_E_OVERFLOW = static_cast<HRESULT>(0x8002000AU);
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = static_cast<HRESULT>(0x8002000DU);

constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}
constexpr WORD LOWORD(DWORD_PTR value) {
    return static_cast<WORD>(value & 0xFFFF);
}
constexpr WORD HIWORD(DWORD_PTR value) {
    return static_cast<WORD>((value >> 16) & 0xFFFF);
}
constexpr BYTE LOBYTE(DWORD_PTR value) {
    return static_cast<BYTE>(value & 0xFF);
}
constexpr BYTE HIBYTE(DWORD_PTR value) {
    return static_cast<BYTE>((value >> 8) & 0xFF);
}

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::BOOL, krtpal::BOOLEAN, krtpal::CHAR, krtpal::UCHAR, krtpal::BYTE, krtpal::SHORT,           \
        krtpal::USHORT, krtpal::WORD, krtpal::WCHAR, krtpal::INT, krtpal::UINT, krtpal::LONG, krtpal::ULONG, \
        krtpal::DWORD, krtpal::LONGLONG, krtpal::ULONGLONG, krtpal::FLOAT, krtpal::INT_PTR,                  \
        krtpal::UINT_PTR, krtpal::LONG_PTR, krtpal::ULONG_PTR, krtpal::DWORD_PTR, krtpal::SIZE_T,            \
        krtpal::PVOID, krtpal::LPVOID, krtpal::LPCVOID, krtpal::LPBOOL, krtpal::LPBYTE, krtpal::LPDWORD,     \
        krtpal::LPLONG, krtpal::LPSTR, krtpal::PSTR, krtpal::LPCSTR, krtpal::PCSTR, krtpal::LPCCH,           \
        krtpal::LPWSTR, krtpal::PWSTR, krtpal::LPCWSTR, krtpal::PCWSTR, krtpal::LPCWCH, krtpal::HANDLE,      \
        krtpal::HINSTANCE, krtpal::HMODULE, krtpal::LANGID, krtpal::LCID, krtpal::HRESULT, krtpal::SCODE,    \
        krtpal::FALSE, krtpal::TRUE, krtpal::MAX_PATH, krtpal::INFINITE, krtpal::INVALID_HANDLE_VALUE,       \
        krtpal::S_OK, krtpal::S_FALSE, krtpal::E_NOTIMPL, krtpal::E_NOINTERFACE, krtpal::E_POINTER,          \
        krtpal::E_ABORT, krtpal::E_FAIL, krtpal::E_UNEXPECTED, krtpal::E_ACCESSDENIED, krtpal::E_HANDLE,     \
        krtpal::E_OUTOFMEMORY, krtpal::E_INVALIDARG, krtpal::DISP_E_TYPEMISMATCH, krtpal::DISP_E_BADVARTYPE, \
        krtpal::DISP_E_OVERFLOW, krtpal::DISP_E_ARRAYISLOCKED, krtpal::SUCCEEDED, krtpal::FAILED,            \
        krtpal::LOWORD, krtpal::HIWORD, krtpal::LOBYTE, krtpal::HIBYTE
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES

#pragma pop_macro("BOOL")
#pragma pop_macro("TRUE")
#pragma pop_macro("FALSE")
#endif

namespace krtpal {

static_assert(sizeof(BOOL) == 4 && sizeof(INT) == 4 && sizeof(UINT) == 4);
static_assert(sizeof(BYTE) == 1 && sizeof(CHAR) == 1);
static_assert(sizeof(SHORT) == 2 && sizeof(USHORT) == 2 && sizeof(WORD) == 2);
static_assert(sizeof(LONG) == 4 && sizeof(ULONG) == 4 && sizeof(DWORD) == 4 && sizeof(HRESULT) == 4);
static_assert(sizeof(LONGLONG) == 8 && sizeof(ULONGLONG) == 8);
static_assert(sizeof(FLOAT) == 4);
static_assert(sizeof(HANDLE) == sizeof(void*) && sizeof(DWORD_PTR) == sizeof(void*));

} // namespace krtpal

#endif
