#include "krtpal/variant.h"

#include "krtpal/posix/text/numbertext.h"

#include <cfloat>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace krtpal {

namespace {

// Range of OLE dates: 1 January 100 to the end of 9999.
constexpr double kFirstDate = -657434.0;
constexpr double kLastDate = 2958465.9999999999;

// Returns whether a kind exists, supported or not.
bool IsKind(VARTYPE vt) {
    const auto base = static_cast<VARTYPE>(vt & VT_TYPEMASK);
    const bool known = base <= VT_DECIMAL || (base >= VT_I1 && base <= VT_UINT) || base == VT_RECORD;
    const bool modified = (vt & ~VT_TYPEMASK) != 0;
    return known && (vt & ~(VT_TYPEMASK | VT_ARRAY | VT_BYREF)) == 0 && !(modified && base <= VT_NULL);
}

// Returns whether values of a kind are held.
bool IsSupported(VARTYPE vt) {
    switch (vt & ~VT_BYREF) {
    case VT_EMPTY:
    case VT_NULL:
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_I8:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_R8:
    case VT_DATE:
    case VT_BSTR:
    case VT_ERROR:
    case VT_BOOL:
        return IsKind(vt);
    default:
        return false;
    }
}

// Returns the bytes of an integer kind, 0 for other kinds.
int IntegerWidth(VARTYPE vt) {
    switch (vt) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
        return 4;
    case VT_I8:
    case VT_UI8:
        return 8;
    default:
        return 0;
    }
}

// The value of a source in the widest type of its family.
struct Number {
    enum class Family { Signed, Unsigned, Boolean, Floating } family;
    LONGLONG integer = 0;
    ULONGLONG natural = 0;
    double real = 0.0;
};

Number SignedNumber(LONGLONG value) {
    return {Number::Family::Signed, value};
}
Number UnsignedNumber(ULONGLONG value) {
    return {Number::Family::Unsigned, 0, value};
}
Number RealNumber(double value) {
    return {Number::Family::Floating, 0, 0, value};
}

// Returns nothing for kinds that are not numbers.
std::optional<Number> NumberOf(const VARIANT& value) {
    switch (value.vt) {
    case VT_EMPTY:
        return SignedNumber(0);
    case VT_I1:
        return SignedNumber(static_cast<signed char>(value.cVal));
    case VT_UI1:
        return UnsignedNumber(value.bVal);
    case VT_I2:
        return SignedNumber(value.iVal);
    case VT_UI2:
        return UnsignedNumber(value.uiVal);
    case VT_I4:
    case VT_INT:
        return SignedNumber(value.lVal);
    case VT_UI4:
    case VT_UINT:
        return UnsignedNumber(value.ulVal);
    case VT_I8:
        return SignedNumber(value.llVal);
    case VT_UI8:
        return UnsignedNumber(value.ullVal);
    case VT_BOOL:
        return Number{Number::Family::Boolean, value.boolVal};
    case VT_R4:
        return RealNumber(static_cast<double>(value.fltVal));
    case VT_R8:
    case VT_DATE:
        return RealNumber(value.dblVal);
    default:
        return std::nullopt;
    }
}

double ToReal(const Number& number) {
    switch (number.family) {
    case Number::Family::Floating:
        return number.real;
    case Number::Family::Unsigned:
        return static_cast<double>(number.natural);
    default:
        return static_cast<double>(number.integer);
    }
}

// Converts to an integer type; floating point is rounded half to even. A boolean is sign-extended: true has
// all bits set in every width.
template <typename T>
HRESULT ToInteger(const Number& number, T* result) {
    constexpr auto kLowest = std::numeric_limits<T>::min();
    switch (number.family) {
    case Number::Family::Boolean:
        *result = static_cast<T>(number.integer);
        return S_OK;
    case Number::Family::Signed:
        if (!std::in_range<T>(number.integer)) {
            return DISP_E_OVERFLOW;
        }
        *result = static_cast<T>(number.integer);
        return S_OK;
    case Number::Family::Unsigned:
        if (!std::in_range<T>(number.natural)) {
            return DISP_E_OVERFLOW;
        }
        *result = static_cast<T>(number.natural);
        return S_OK;
    default:
        break;
    }
    const double rounded = std::nearbyint(number.real);
    // The upper bound is a power of two and therefore exact, unlike the largest 64-bit value.
    const double end = std::ldexp(1.0, std::numeric_limits<T>::digits);
    if (!(rounded >= static_cast<double>(kLowest) && rounded < end)) {
        return DISP_E_OVERFLOW;
    }
    *result = static_cast<T>(rounded);
    return S_OK;
}

HRESULT ToFloat(const Number& number, bool isFloat, float* result) {
    const double value = ToReal(number);
    if (!isFloat && std::fabs(value) > static_cast<double>(FLT_MAX)) {
        return DISP_E_OVERFLOW;
    }
    *result = static_cast<float>(value);
    return S_OK;
}

HRESULT ToDate(const Number& number, double* result) {
    const double value = ToReal(number);
    if (!(value >= kFirstDate - 1.0 && value <= kLastDate)) {
        return DISP_E_OVERFLOW;
    }
    *result = value;
    return S_OK;
}

HRESULT ConvertNumber(const Number& number, VARTYPE from, VARIANT* result) {
    switch (result->vt) {
    case VT_I1: {
        signed char value = 0;
        const HRESULT outcome = ToInteger(number, &value);
        result->cVal = static_cast<CHAR>(value);
        return outcome;
    }
    case VT_UI1:
        return ToInteger(number, &result->bVal);
    case VT_I2:
        return ToInteger(number, &result->iVal);
    case VT_UI2:
        return ToInteger(number, &result->uiVal);
    case VT_I4:
    case VT_INT:
        return ToInteger(number, &result->lVal);
    case VT_UI4:
    case VT_UINT:
        return ToInteger(number, &result->ulVal);
    case VT_I8:
        return ToInteger(number, &result->llVal);
    case VT_UI8:
        return ToInteger(number, &result->ullVal);
    case VT_R4:
        return ToFloat(number, from == VT_R4, &result->fltVal);
    case VT_R8:
        result->dblVal = ToReal(number);
        return S_OK;
    case VT_DATE:
        return ToDate(number, &result->date);
    case VT_BOOL:
        result->boolVal = ToReal(number) != 0.0 ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

std::wstring_view TextOf(const VARIANT& value) {
    return value.bstrVal == nullptr ? std::wstring_view()
                                    : std::wstring_view(value.bstrVal, SysStringLen(value.bstrVal));
}

bool EqualsIgnoringCase(std::wstring_view text, std::wstring_view lower) {
    if (text.size() != lower.size()) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i] >= L'A' && text[i] <= L'Z' ? static_cast<wchar_t>(text[i] | 0x20) : text[i];
        if (c != lower[i]) {
            return false;
        }
    }
    return true;
}

std::optional<VARIANT_BOOL> NamedBool(std::wstring_view text) {
    if (EqualsIgnoringCase(text, L"true") || text == L"#TRUE#") {
        return VARIANT_TRUE;
    }
    if (EqualsIgnoringCase(text, L"false") || text == L"#FALSE#") {
        return VARIANT_FALSE;
    }
    return std::nullopt;
}

HRESULT ConvertText(std::wstring_view text, VARIANT* result) {
    if (result->vt == VT_BOOL) {
        if (const auto named = NamedBool(text)) {
            result->boolVal = *named;
            return S_OK;
        }
    }
    const auto parsed = posix::ParseNumber(text);
    if (!parsed || result->vt == VT_DATE) {
        return DISP_E_TYPEMISMATCH;
    }
    const double real = posix::DoubleFromNumber(*parsed);
    if (std::isinf(real)) {
        return DISP_E_OVERFLOW;
    }
    // Integers of up to 18 digits are converted exactly.
    constexpr std::size_t kExactDigits = 18;
    if (parsed->IsInteger() && parsed->integer.size() <= kExactDigits && result->vt != VT_R8 &&
        result->vt != VT_R4) {
        const LONGLONG magnitude = parsed->integer.empty() ? 0 : std::stoll(parsed->integer);
        return ConvertNumber(SignedNumber(parsed->negative ? -magnitude : magnitude), VT_BSTR, result);
    }
    return ConvertNumber(RealNumber(real), VT_BSTR, result);
}

HRESULT ToText(const VARIANT& value, USHORT flags, VARIANT* result) {
    std::wstring text;
    switch (value.vt) {
    case VT_EMPTY:
        break;
    case VT_BSTR:
        text = TextOf(value);
        break;
    case VT_R4:
        text = posix::TextFromDouble(static_cast<double>(value.fltVal), 7);
        break;
    case VT_R8:
        text = posix::TextFromDouble(value.dblVal, 15);
        break;
    case VT_BOOL:
        if ((flags & (VARIANT_ALPHABOOL | VARIANT_LOCALBOOL)) != 0) {
            text = value.boolVal != VARIANT_FALSE ? L"True" : L"False";
            break;
        }
        [[fallthrough]];
    default: {
        const auto number = NumberOf(value);
        if (!number || number->family == Number::Family::Floating) {
            return DISP_E_TYPEMISMATCH;
        }
        text = number->family == Number::Family::Unsigned ? std::to_wstring(number->natural)
                                                          : std::to_wstring(number->integer);
    }
    }
    result->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return result->bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
}

// Returns the referenced value of a reference, otherwise the value. A string still belongs to its owner.
VARIANT Dereferenced(const VARIANT& value) {
    VARIANT result = value;
    if ((value.vt & VT_BYREF) == 0) {
        return result;
    }
    result.vt = static_cast<VARTYPE>(value.vt & ~VT_BYREF);
    switch (result.vt) {
    case VT_I1:
    case VT_UI1:
        result.bVal = *value.pbVal;
        break;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        result.iVal = *value.piVal;
        break;
    case VT_I8:
    case VT_UI8:
        result.llVal = *value.pllVal;
        break;
    case VT_R4:
        result.fltVal = *value.pfltVal;
        break;
    case VT_R8:
    case VT_DATE:
        result.dblVal = *value.pdblVal;
        break;
    case VT_BSTR:
        result.bstrVal = *value.pbstrVal;
        break;
    default:
        result.lVal = *value.plVal;
    }
    return result;
}

HRESULT Convert(const VARIANT& value, USHORT flags, VARIANT* result) {
    const VARTYPE from = value.vt;
    const VARTYPE to = result->vt;
    if (from == VT_NULL || from == VT_ERROR || to == VT_ERROR) {
        if (from != to) {
            return DISP_E_TYPEMISMATCH;
        }
        result->llVal = value.llVal;
        return S_OK;
    }
    if (to == VT_EMPTY || to == VT_NULL) {
        return S_OK;
    }
    if (to == VT_BSTR) {
        return ToText(value, flags, result);
    }
    if (from == VT_BSTR) {
        return ConvertText(TextOf(value), result);
    }
    // Integers of equal width keep their bits, as on Windows.
    if (from == to || (IntegerWidth(from) != 0 && IntegerWidth(from) == IntegerWidth(to))) {
        result->llVal = value.llVal;
        return S_OK;
    }
    const auto number = NumberOf(value);
    return number ? ConvertNumber(*number, from, result) : DISP_E_TYPEMISMATCH;
}

bool HasDecimalPoint(LCID locale) {
    constexpr LCID kEnglish = 0x09;
    return locale == 0 || locale == LOCALE_USER_DEFAULT || locale == LOCALE_SYSTEM_DEFAULT ||
           locale == LOCALE_INVARIANT || (locale & 0x3FF) == kEnglish;
}

} // namespace

void VariantInit(VARIANT* value) {
    *value = VARIANT{};
}

HRESULT VariantClear(VARIANT* value) {
    if (!IsSupported(value->vt)) {
        return DISP_E_BADVARTYPE;
    }
    if (value->vt == VT_BSTR) {
        SysFreeString(value->bstrVal);
    }
    *value = VARIANT{};
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, VARIANT* source) {
    if (target == source) {
        return S_OK;
    }
    if (!IsSupported(source->vt)) {
        return DISP_E_BADVARTYPE;
    }
    VARIANT copy = *source;
    if (copy.vt == VT_BSTR) {
        copy.bstrVal = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(source->bstrVal),
                                             SysStringByteLen(source->bstrVal));
        if (copy.bstrVal == nullptr) {
            return E_OUTOFMEMORY;
        }
    }
    const HRESULT cleared = VariantClear(target);
    if (FAILED(cleared)) {
        VariantClear(&copy);
        return cleared;
    }
    *target = copy;
    return S_OK;
}

HRESULT VariantChangeType(VARIANT* target, VARIANT* source, USHORT flags, VARTYPE kind) {
    return VariantChangeTypeEx(target, source, LOCALE_USER_DEFAULT, flags, kind);
}

HRESULT VariantChangeTypeEx(VARIANT* target, VARIANT* source, LCID locale, USHORT flags, VARTYPE kind) {
    constexpr USHORT kKnownFlags =
        VARIANT_NOVALUEPROP | VARIANT_ALPHABOOL | VARIANT_NOUSEROVERRIDE | VARIANT_LOCALBOOL;
    if (target == nullptr || source == nullptr || (flags & ~kKnownFlags) != 0 || !HasDecimalPoint(locale)) {
        return E_INVALIDARG;
    }
    if (!IsKind(source->vt) || !IsKind(kind)) {
        return DISP_E_BADVARTYPE;
    }
    if (!IsSupported(source->vt) || !IsSupported(kind) || (kind & VT_BYREF) != 0) {
        return DISP_E_TYPEMISMATCH;
    }
    VARIANT result{};
    result.vt = kind;
    const HRESULT converted = Convert(Dereferenced(*source), flags, &result);
    if (FAILED(converted)) {
        return converted;
    }
    const HRESULT cleared = VariantClear(target);
    if (FAILED(cleared)) {
        VariantClear(&result);
        return cleared;
    }
    *target = result;
    return S_OK;
}

} // namespace krtpal
