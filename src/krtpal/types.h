// Integer, pointer, handle and result types of the Win32 API, with the widths that they have on Windows.
//
//     DWORD error = GetLastError();           // exactly 32 bits on every target
//     LONGLONG ticks = 10'000'000;            // always long long
//
// On Windows these are the system's own types. On Linux this header and its neighbours declare them in
// namespace krtpal, so that the global namespace of a client stays clean:
//
//     bss, hss    have every name by a using-declaration at the end of each header
//     a client    writes krtpal::DWORD, or includes krtpal/unqualified.h and writes DWORD
//
// There are no A and W macros: the wide names (CreateEventW) are the only names.
//
// ODBC's headers may be included before or after the headers of this layer. Macros BOOL, TRUE and FALSE are
// put aside while this header declares those names, and restored at its end.
//
// Each call of this layer documents its Linux implementation, in this order: what it returns, what it
// requires, the last-error codes of its failures, its differences from Windows. CONTRACT.md, beside this
// header, has the same promises as tables.
//
// Threads: types and constants only.

#ifndef KRTPAL_TYPES_H
#define KRTPAL_TYPES_H

#ifdef _WIN32
#include <windows.h>

namespace krtpal {
/// Names for declarations outside bss and hss, so that krtpal::DWORD and its relatives are spelled alike on
/// both systems.
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

/// Calling conventions. Linux has only one, so these are empty; they stay in declarations because Windows
/// needs them.
#define WINAPI
#define CALLBACK
#define APIENTRY
#define STDAPICALLTYPE

namespace krtpal {

/// Integers and characters. Widths are those of Windows and are asserted below. LONG, ULONG and DWORD have 32
/// bits although long has 64 bits on Linux. BOOL is FALSE or any other value; calls of this layer return
/// TRUE.
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

/// Integers with the width of a pointer.
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;

/// Pointers. LPSTR and its relatives point to UTF-8 on Linux, LPWSTR and its relatives to UTF-32.
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

/// Names a kernel object, a standard stream or the process's heap. Handles of kernel objects are numbers, not
/// addresses; each call that opens one states which call closes it. A handle is valid in its own process
/// only.
using HANDLE = void*;
/// Names a loaded module. On Linux it is the address of the module's entry in the dynamic linker's list,
/// which dlopen returns too. It is not a kernel handle: FreeLibrary releases it, CloseHandle rejects it.
struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;

/// Language and locale identifiers. The neutral and the English ones are supported.
using LANGID = WORD;
using LCID = DWORD;

/// Results of the OLE calls. Negative values are failures; the last error is not set.
using HRESULT = LONG;
using SCODE = LONG;

/// The values of BOOL.
inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
/// Size of a path buffer in characters, including the NUL. Linux has longer paths: calls that fill such a
/// buffer report ERROR_INSUFFICIENT_BUFFER.
inline constexpr DWORD MAX_PATH = 260;
/// A time-out that never ends. Time-outs are in milliseconds.
inline constexpr DWORD INFINITE = 0xFFFFFFFF;

/// Returned on failure by calls for which null is a valid result (GetStdHandle).
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));

/// Codes of HRESULT. Only those that this library meets are declared.
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

/// Returns true for a success. A function, not a macro as on Windows, as are those below.
constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
/// Returns true for a failure.
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}
/// Returns the lower 16 bits.
constexpr WORD LOWORD(DWORD_PTR value) {
    return static_cast<WORD>(value & 0xFFFF);
}
/// Returns bits 16 to 31.
constexpr WORD HIWORD(DWORD_PTR value) {
    return static_cast<WORD>((value >> 16) & 0xFFFF);
}
/// Returns the lower 8 bits.
constexpr BYTE LOBYTE(DWORD_PTR value) {
    return static_cast<BYTE>(value & 0xFF);
}
/// Returns bits 8 to 15.
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
