// Counted wide strings (BSTR) and tagged values (VARIANT) of OLE automation.
//
//     BSTR text = SysAllocString(L"text");     // owned by the caller
//     SysFreeString(text);
//
//     VARIANT value, result;
//     VariantInit(&value);
//     VariantInit(&result);
//     value.vt = VT_R8;
//     value.dblVal = 1.0 / 3.0;
//     if (SUCCEEDED(VariantChangeType(&result, &value, 0, VT_BSTR))) {
//         Use(result.bstrVal);                 // "0.333333333333333"
//     }
//     VariantClear(&result);
//
// A BSTR points behind a 32-bit count of bytes and ends with a NUL that is not counted. Its characters are
// wchar_t: on Linux the count is four times the number of characters. Formats count UTF-16 code units: see
// krtpal/text.h.
//
// Threads: a BSTR or VARIANT serves one thread at a time.

#ifndef KRTPAL_VARIANT_H
#define KRTPAL_VARIANT_H

#include "krtpal/export.h"
#include "krtpal/time.h"
#include "krtpal/types.h"

#ifdef _WIN32
#include <oleauto.h>
#else

namespace krtpal {

using OLECHAR = wchar_t;
using LPOLESTR = wchar_t*;
using LPCOLESTR = const wchar_t*;
using BSTR = wchar_t*;

/// A copy of the text up to its NUL. Null for null text or without memory.
KRTPAL_API BSTR WINAPI SysAllocString(const OLECHAR* text);
/// A copy of `length` characters, NULs included. Null text leaves the characters undefined.
KRTPAL_API BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length);
/// A copy of bytes, which need not make up whole characters.
KRTPAL_API BSTR WINAPI SysAllocStringByteLen(LPCSTR bytes, UINT length);
/// Replaces a string by a copy of the text, which may lie within it. FALSE without memory, and the old string
/// stays.
KRTPAL_API INT WINAPI SysReAllocString(BSTR* string, const OLECHAR* text);
/// Null text keeps the old characters as far as the new length goes.
KRTPAL_API INT WINAPI SysReAllocStringLen(BSTR* string, const OLECHAR* text, UINT length);
/// Null is ignored.
KRTPAL_API void WINAPI SysFreeString(BSTR string);
/// Whole characters; 0 for null
KRTPAL_API UINT WINAPI SysStringLen(BSTR string);
/// Bytes in memory; 0 for null
KRTPAL_API UINT WINAPI SysStringByteLen(BSTR string);

using VARTYPE = unsigned short;
using VARIANT_BOOL = short;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_RECORD = 36,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0x0FFF,
};

/// 16 bytes, the tag at offset 0 and the value at offset 8, as on 32-bit Windows.
struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONGLONG llVal;
        ULONGLONG ullVal;
        LONG lVal;
        ULONG ulVal;
        INT intVal;
        UINT uintVal;
        SHORT iVal;
        USHORT uiVal;
        CHAR cVal;
        BYTE bVal;
        FLOAT fltVal;
        double dblVal;
        DATE date;
        VARIANT_BOOL boolVal;
        SCODE scode;
        BSTR bstrVal;
        PVOID byref;
        LONGLONG* pllVal;
        ULONGLONG* pullVal;
        LONG* plVal;
        ULONG* pulVal;
        INT* pintVal;
        UINT* puintVal;
        SHORT* piVal;
        USHORT* puiVal;
        CHAR* pcVal;
        BYTE* pbVal;
        FLOAT* pfltVal;
        double* pdblVal;
        DATE* pdate;
        VARIANT_BOOL* pboolVal;
        SCODE* pscode;
        BSTR* pbstrVal;
    };
};
using VARIANTARG = VARIANT;

inline constexpr USHORT VARIANT_NOVALUEPROP = 0x01;
inline constexpr USHORT VARIANT_ALPHABOOL = 0x02;
inline constexpr USHORT VARIANT_NOUSEROVERRIDE = 0x04;
inline constexpr USHORT VARIANT_LOCALBOOL = 0x10;

inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;
inline constexpr LCID LOCALE_INVARIANT = 0x007F;

KRTPAL_API void WINAPI VariantInit(VARIANT* value);
/// Frees what the value owns and makes it VT_EMPTY. DISP_E_BADVARTYPE for a kind that is not known here.
KRTPAL_API HRESULT WINAPI VariantClear(VARIANT* value);
/// Clears the target and copies: text deep, references as they are. Copying onto itself does nothing.
KRTPAL_API HRESULT WINAPI VariantCopy(VARIANT* target, VARIANT* source);
/// Converts into `target`, which may be `source`; on failure the target keeps its value. Numbers are rounded
/// half to even. DISP_E_OVERFLOW if the value does not fit, DISP_E_TYPEMISMATCH if it is none of the kind or
/// the pair of kinds is not supported, DISP_E_BADVARTYPE for no kind at all, E_INVALIDARG for an unknown
/// flag.
KRTPAL_API HRESULT WINAPI VariantChangeType(VARIANT* target, VARIANT* source, USHORT flags, VARTYPE kind);
/// Numbers have a decimal point: locales other than English and the defaults are refused with E_INVALIDARG.
KRTPAL_API HRESULT WINAPI VariantChangeTypeEx(VARIANT* target, VARIANT* source, LCID locale, USHORT flags,
                                              VARTYPE kind);

static_assert(sizeof(VARIANT) == 16 && offsetof(VARIANT, llVal) == 8);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::OLECHAR, krtpal::LPOLESTR, krtpal::LPCOLESTR, krtpal::BSTR, krtpal::SysAllocString,        \
        krtpal::SysAllocStringLen, krtpal::SysAllocStringByteLen, krtpal::SysReAllocString,                  \
        krtpal::SysReAllocStringLen, krtpal::SysFreeString, krtpal::SysStringLen, krtpal::SysStringByteLen,  \
        krtpal::VARTYPE, krtpal::VARIANT_BOOL, krtpal::VARIANT_TRUE, krtpal::VARIANT_FALSE, krtpal::VARIANT, \
        krtpal::VARIANTARG, krtpal::VARIANT_NOVALUEPROP, krtpal::VARIANT_ALPHABOOL,                          \
        krtpal::VARIANT_NOUSEROVERRIDE, krtpal::VARIANT_LOCALBOOL, krtpal::LOCALE_USER_DEFAULT,              \
        krtpal::LOCALE_SYSTEM_DEFAULT, krtpal::LOCALE_INVARIANT, krtpal::VariantInit, krtpal::VariantClear,  \
        krtpal::VariantCopy, krtpal::VariantChangeType, krtpal::VariantChangeTypeEx, krtpal::VARENUM,        \
        krtpal::VT_EMPTY, krtpal::VT_NULL, krtpal::VT_I2, krtpal::VT_I4, krtpal::VT_R4, krtpal::VT_R8,       \
        krtpal::VT_CY, krtpal::VT_DATE, krtpal::VT_BSTR, krtpal::VT_DISPATCH, krtpal::VT_ERROR,              \
        krtpal::VT_BOOL, krtpal::VT_VARIANT, krtpal::VT_UNKNOWN, krtpal::VT_DECIMAL, krtpal::VT_I1,          \
        krtpal::VT_UI1, krtpal::VT_UI2, krtpal::VT_UI4, krtpal::VT_I8, krtpal::VT_UI8, krtpal::VT_INT,       \
        krtpal::VT_UINT, krtpal::VT_RECORD, krtpal::VT_ARRAY, krtpal::VT_BYREF, krtpal::VT_TYPEMASK
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
