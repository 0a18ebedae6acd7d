#include "krtpal/variant.h"
#include "krtpal/common/text.h"
#include "support/Expect.h"
#include "support/Rows.h"
#include "support/Wine.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <tuple>

namespace {

/// A variant that is cleared at the end.
class Value {
public:
    Value() { VariantInit(&m_variant); }
    explicit Value(double number) : Value() {
        m_variant.vt = VT_R8;
        m_variant.dblVal = number;
    }
    explicit Value(const wchar_t* text) : Value() {
        m_variant.vt = VT_BSTR;
        m_variant.bstrVal = SysAllocString(text);
    }
    Value(VARTYPE kind, LONGLONG integer) : Value() {
        m_variant.vt = kind;
        m_variant.llVal = integer;
    }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() { VariantClear(&m_variant); }

    VARIANT* operator->() { return &m_variant; }
    VARIANT* operator&() { return &m_variant; }

    HRESULT ChangeTo(VARTYPE kind, USHORT flags = 0) {
        return VariantChangeType(&m_variant, &m_variant, flags, kind);
    }

    std::wstring Text() const {
        return m_variant.vt == VT_BSTR ? std::wstring(m_variant.bstrVal, SysStringLen(m_variant.bstrVal))
                                       : L"kind " + std::to_wstring(m_variant.vt);
    }

private:
    VARIANT m_variant;
};

} // namespace

TEST(CountedString, KeepsNulsAndEndsWithOne) {
    const BSTR text = SysAllocStringLen(L"a\0b\xFFFE", 4);
    EXPECT_EQ(SysStringLen(text), 4U);
    EXPECT_EQ(SysStringByteLen(text), 4 * sizeof(wchar_t));
    EXPECT_EQ(std::wstring(text, 5), std::wstring(L"a\0b\xFFFE\0", 5));
    SysFreeString(text);
    const BSTR bytes = SysAllocStringByteLen("abcdefghi", 9);
    EXPECT_EQ(SysStringByteLen(bytes), 9U);
    EXPECT_EQ(SysStringLen(bytes), 9 / sizeof(wchar_t));
    EXPECT_EQ(std::memcmp(bytes, "abcdefghi\0", 10), 0);
    SysFreeString(bytes);
    const BSTR empty = SysAllocStringLen(nullptr, 0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(*empty, L'\0');
    SysFreeString(empty);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    SysFreeString(nullptr);
    EXPECT_EQ(SysAllocStringLen(nullptr, 0x7FFFFFFF), nullptr);
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFF), nullptr);
}

TEST(CountedString, IsReplacedByPartOfItself) {
    BSTR text = SysAllocString(L"abc");
    ASSERT_TRUE(SysReAllocStringLen(&text, text + 1, 2));
    EXPECT_STREQ(text, L"bc");
    ASSERT_TRUE(SysReAllocStringLen(&text, nullptr, 5));
    EXPECT_EQ(SysStringLen(text), 5U);
    EXPECT_EQ(std::wstring(text, 2), L"bc");
    EXPECT_EQ(text[5], L'\0');
    ASSERT_TRUE(SysReAllocString(&text, L"new"));
    EXPECT_STREQ(text, L"new");
    SysFreeString(text);
}

TEST(Variant, UnknownKindsAreRefused) {
    Value number(1.0);
    Value target(L"keep");
    EXPECT_EQ(VariantChangeType(&target, &number, 0, 15), DISP_E_BADVARTYPE);
    EXPECT_EQ(VariantChangeType(&target, &number, 0, VT_DISPATCH), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VariantChangeType(&target, &number, 0, VT_I4 | VT_BYREF), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VariantChangeType(&target, &number, 0, VT_ERROR), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(target.Text(), L"keep");
    VARIANT bad;
    VariantInit(&bad);
    bad.vt = 0x7FF;
    EXPECT_EQ(VariantClear(&bad), DISP_E_BADVARTYPE);
    EXPECT_EQ(VariantCopy(&target, &bad), DISP_E_BADVARTYPE);
    EXPECT_EQ(VariantChangeType(&target, &bad, 0, VT_BSTR), DISP_E_BADVARTYPE);
    EXPECT_EQ(target.Text(), L"keep");
}

TEST(Variant, CopiesTextDeepAndFreesTheTarget) {
    Value source;
    source->vt = VT_BSTR;
    source->bstrVal = SysAllocStringLen(L"a\0b", 3);
    Value target(L"old");
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_NE(target->bstrVal, source->bstrVal);
    EXPECT_EQ(target.Text(), std::wstring(L"a\0b", 3));
    EXPECT_EQ(VariantCopy(&target, &target), S_OK);
    EXPECT_EQ(target.Text(), std::wstring(L"a\0b", 3));
    EXPECT_EQ(VariantClear(&target), S_OK);
    EXPECT_EQ(target->vt, VT_EMPTY);
}

// The texts are those of the system's own call, which the same test asks on Windows.
TEST(Variant, NumbersReadAsTheSystemWritesThem) {
    const std::tuple<VARTYPE, std::uint64_t, const wchar_t*> rows[] = {
#include "NumberTexts.inc"
    };
    for (const auto& [kind, bits, text] : rows) {
        Value number;
        number->vt = kind;
        if (kind == VT_R4) {
            number->fltVal = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        } else {
            number->dblVal = std::bit_cast<double>(bits);
        }
        ASSERT_EQ(number.ChangeTo(VT_BSTR), S_OK);
        EXPECT_EQ(number.Text(), text) << kind << " bits " << std::hex << bits;
    }
}

TEST(Variant, ValuesKeepTheirMeaningOrAreRefused) {
    const std::map<std::string, VARTYPE> kinds = {
        {"I1", VT_I1},     {"UI1", VT_UI1},   {"I2", VT_I2},       {"UI2", VT_UI2},
        {"I4", VT_I4},     {"UI4", VT_UI4},   {"I8", VT_I8},       {"UI8", VT_UI8},
        {"UINT", VT_UINT}, {"R4", VT_R4},     {"R8", VT_R8},       {"DATE", VT_DATE},
        {"BOOL", VT_BOOL}, {"BSTR", VT_BSTR}, {"EMPTY", VT_EMPTY}, {"NULL", VT_NULL}};
    for (const auto& row : ReadRows("krtpal/variants.tsv")) {
        SCOPED_TRACE(row[0] + ' ' + row[1] + " to " + row[2]);
        if (row[0] == "R8" && row[1] == "-9223372036854775808" && RunsUnderWine()) {
            continue; // which takes the least number for an overflow
        }
        Value value = row[0] == "BSTR" ? Value(krtpal::WideFromUtf8(row[1]).c_str())
                      : row[0] == "R8" ? Value(std::stod(row[1]))
                                       : Value(kinds.at(row[0]), std::stoll(row[1]));
        const HRESULT result = value.ChangeTo(kinds.at(row[2]));
        if (row[3] == "overflow" || row[3] == "mismatch") {
            EXPECT_EQ(result, row[3] == "overflow" ? DISP_E_OVERFLOW : DISP_E_TYPEMISMATCH);
        } else {
            EXPECT_EQ(result, S_OK);
            EXPECT_EQ(value.ChangeTo(VT_BSTR), S_OK);
            EXPECT_EQ(value.Text(), krtpal::WideFromUtf8(row[3]));
        }
    }
    EXPECT_EQ(Value(VT_NULL, 0).ChangeTo(VT_NULL), S_OK);
}

TEST(Variant, BooleansHaveWordsOnDemand) {
    Value word(VT_BOOL, VARIANT_FALSE);
    ASSERT_EQ(word.ChangeTo(VT_BSTR, VARIANT_ALPHABOOL), S_OK);
    EXPECT_EQ(word.Text(), L"False");
    ASSERT_EQ(word.ChangeTo(VT_BOOL), S_OK);
    EXPECT_EQ(word->boolVal, VARIANT_FALSE);
}

TEST(Variant, TextIsReadAsNumbersToTheLastBitOrNotAtAll) {
    for (const wchar_t* const text :
         {L"", L" ", L"12abc", L"1 2", L"1.2.3", L"--12", L"1e", L".", L"INF", L"0x10", L"&O8", L"True"}) {
        EXPECT_EQ(Value(text).ChangeTo(VT_R8), DISP_E_TYPEMISMATCH) << text;
        EXPECT_EQ(Value(text).ChangeTo(VT_I4), DISP_E_TYPEMISMATCH) << text;
    }
    Value smallest(L"5e-324");
    ASSERT_EQ(smallest.ChangeTo(VT_R8), S_OK);
    EXPECT_EQ(smallest->dblVal, 5e-324);
    Value exact(L"0.30000000000000004");
    ASSERT_EQ(exact.ChangeTo(VT_R8), S_OK);
    EXPECT_EQ(exact->dblVal, 0.30000000000000004);
}

TEST(Variant, ReferencesAreFollowedAndCopiedAsTheyAre) {
    LONG number = 65;
    Value reference;
    reference->vt = VT_I4 | VT_BYREF;
    reference->plVal = &number;
    Value target;
    ASSERT_EQ(VariantChangeType(&target, &reference, 0, VT_BSTR), S_OK);
    EXPECT_EQ(target.Text(), L"65");
    ASSERT_EQ(VariantCopy(&target, &reference), S_OK);
    EXPECT_EQ(target->plVal, &number);
}

#ifndef _WIN32
TEST(Variant, RefusesWhatItDoesNotSupport) {
    Value number(1.5);
    EXPECT_EQ(VariantChangeTypeEx(&number, &number, 0x407, 0, VT_BSTR), E_INVALIDARG);
    EXPECT_EQ(VariantChangeTypeEx(&number, &number, 0x409, 0, VT_R8), S_OK);
    EXPECT_EQ(number.ChangeTo(VT_BSTR, 8), E_INVALIDARG);
    EXPECT_EQ(number.ChangeTo(VT_CY), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Value(L"&HFFFFFFFFFFFFFFFFF").ChangeTo(VT_R8), DISP_E_TYPEMISMATCH); // beyond 64 bits
    ASSERT_EQ(number.ChangeTo(VT_DATE), S_OK);
    EXPECT_EQ(number.ChangeTo(VT_BSTR), DISP_E_TYPEMISMATCH);
    Value notANumber(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(notANumber.ChangeTo(VT_I4), DISP_E_OVERFLOW);
}
#else
SKIPPED_TEST(Variant, RefusesWhatItDoesNotSupport, "the system supports it")
#endif
