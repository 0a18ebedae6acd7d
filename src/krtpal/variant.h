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
// A BSTR points to its characters. A 32-bit count of bytes precedes them, and a NUL that is not counted
// follows them. Characters are wchar_t: on Linux the count is four times the number of characters, on Windows
// twice. Formats store the number of UTF-16 code units instead: see Utf16Length in krtpal/common/text.h.
//
// A VARIANT is a kind (VARTYPE) and a value of that kind. On Linux these kinds are held and converted, by
// value and as the source of a conversion by reference (VT_BYREF):
//
//     VT_EMPTY NULL I1 UI1 I2 UI2 I4 UI4 I8 UI8 INT UINT R4 R8 BOOL DATE BSTR ERROR
//
// VT_CY, DECIMAL, DISPATCH, UNKNOWN, VARIANT, RECORD and arrays are known but not supported.
//
// Failures are returned as HRESULT; the last error is unchanged.
//
// Threads: any thread may use a BSTR or VARIANT, one at a time.

#ifndef KRTPAL_VARIANT_H
#define KRTPAL_VARIANT_H

#include "krtpal/export.h"
#include "krtpal/time.h"
#include "krtpal/types.h"

#ifdef _WIN32
#include <oleauto.h>
#else

namespace krtpal {

/// Characters and strings of OLE automation.
using OLECHAR = wchar_t;
using LPOLESTR = wchar_t*;
using LPCOLESTR = const wchar_t*;
using BSTR = wchar_t*;

/// Returns a copy of the text up to its NUL. The caller owns it and releases it by SysFreeString. Returns
/// null for null text, if there is no memory, or for a text of 2 GiB and more.
KRTPAL_API BSTR WINAPI SysAllocString(const OLECHAR* text);
/// Returns a copy of `length` characters, including NULs. Null text leaves the characters undefined.
/// Otherwise as SysAllocString.
KRTPAL_API BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length);
/// Returns a copy of `length` bytes, which need not be whole characters: SysStringLen then counts the whole
/// ones. Null leaves the bytes undefined. Otherwise as SysAllocString.
KRTPAL_API BSTR WINAPI SysAllocStringByteLen(LPCSTR bytes, UINT length);
/// Returns TRUE and replaces `*string` by a copy of the text, which may lie within the old string. Null text
/// sets `*string` to null.
/// Fails with FALSE if there is no memory or `string` is null; `*string` is then unchanged.
KRTPAL_API INT WINAPI SysReAllocString(BSTR* string, const OLECHAR* text);
/// Returns TRUE and replaces `*string` by a copy of `length` characters. Null text preserves the old
/// characters up to the new length and leaves the others undefined. Fails as SysReAllocString.
KRTPAL_API INT WINAPI SysReAllocStringLen(BSTR* string, const OLECHAR* text, UINT length);
/// Releases a string. Null is ignored.
KRTPAL_API void WINAPI SysFreeString(BSTR string);
/// Returns the number of whole characters, 0 for null.
KRTPAL_API UINT WINAPI SysStringLen(BSTR string);
/// Returns the number of bytes in memory, 0 for null.
KRTPAL_API UINT WINAPI SysStringByteLen(BSTR string);

/// A kind: a value of VARENUM, possibly with VT_ARRAY or VT_BYREF.
using VARTYPE = unsigned short;
/// A truth value. Every value but VARIANT_FALSE is true.
using VARIANT_BOOL = short;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

/// Kinds of values. Those from VT_EMPTY to VT_RECORD are kinds of one value.
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
    /// Modifiers of a kind, and the mask of the bits without them.
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0x0FFF,
};

/// A kind and a value. It has 16 bytes with the kind at offset 0 and the value at offset 8, as on 32-bit
/// Windows; on 64-bit Windows it has 24 bytes. Members of the union are named for their type.
struct VARIANT {
    VARTYPE vt; ///< the kind
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        /// Values, by kind.
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
        BSTR bstrVal; ///< owned by the value
        PVOID byref;  ///< address of any referenced value
        /// Addresses of referenced values, by kind; not owned.
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
/// A VARIANT that may be a reference.
using VARIANTARG = VARIANT;

/// Flags of conversions. ALPHABOOL and LOCALBOOL convert truth values to the text "True" and "False" instead
/// of "-1" and "0"; the others have no effect.
inline constexpr USHORT VARIANT_NOVALUEPROP = 0x01;
inline constexpr USHORT VARIANT_ALPHABOOL = 0x02;
inline constexpr USHORT VARIANT_NOUSEROVERRIDE = 0x04;
inline constexpr USHORT VARIANT_LOCALBOOL = 0x10;

/// Locales of conversions. All of them have a decimal point on Linux.
inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;
inline constexpr LCID LOCALE_INVARIANT = 0x007F;

/// Makes a value VT_EMPTY without releasing anything.
KRTPAL_API void WINAPI VariantInit(VARIANT* value);
/// Returns S_OK, releases the value's own string and makes the value VT_EMPTY. Referenced values are
/// unchanged.
/// Fails with DISP_E_BADVARTYPE for a kind that is not held; the value is then unchanged.
KRTPAL_API HRESULT WINAPI VariantClear(VARIANT* value);
/// Returns S_OK, clears the target and stores a copy: strings are copied, references still refer to the same
/// value. A copy to itself has no effect.
/// REQUIRES: an initialised target.
/// Fails with DISP_E_BADVARTYPE for a kind that is not held, in the source or in the target, E_OUTOFMEMORY;
/// the target is then unchanged.
KRTPAL_API HRESULT WINAPI VariantCopy(VARIANT* target, VARIANT* source);
/// Returns S_OK, clears the target and stores the source's value as `kind`. Source and target may be the same
/// value. Equal to VariantChangeTypeEx with LOCALE_USER_DEFAULT.
/// Floating point becomes an integer by rounding half to even, and text with 15 significant digits (VT_R8) or
/// 7 (VT_R4). Integers of equal width keep their bits. Every number but 0 becomes VARIANT_TRUE. CONTRACT.md
/// has the grammar of numbers in text.
/// REQUIRES: an initialised target.
/// Fails with DISP_E_OVERFLOW if the value does not fit, DISP_E_TYPEMISMATCH if a text is not a number or the
/// pair of kinds is not supported, DISP_E_BADVARTYPE for a kind that does not exist, E_INVALIDARG for null
/// arguments and unknown flags, E_OUTOFMEMORY. The target is then unchanged.
/// Unlike Windows, dates have no text form, and numbers in text have no currency signs or parentheses.
KRTPAL_API HRESULT WINAPI VariantChangeType(VARIANT* target, VARIANT* source, USHORT flags, VARTYPE kind);
/// As VariantChangeType, by the number format of a locale: neutral, default, invariant or English.
/// Fails with E_INVALIDARG for another locale.
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
