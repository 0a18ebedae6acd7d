#include "bss/exception/WLogParams.h"

#include "bss/exception/WExceptionEventInfo.h"
#include "krtpal/common/text.h"

#include <cwchar>

namespace bss {

const int WLogParams::ARGUMENT_COUNT = 8;

namespace {

CountedText TextOfReal(VARIANT& value) {
    VARIANT text;
    VariantInit(&text);
    if (FAILED(VariantChangeType(&text, &value, 0, VT_BSTR))) {
        return {};
    }
    return CountedText::Adopt(text.bstrVal);
}

} // namespace

WLogParams::~WLogParams() = default;

bool WLogParams::operator<(const WLogParams& other) const {
    if (m_pEventInfo == nullptr || other.m_pEventInfo == nullptr) {
        return false;
    }
    return WSystemTimeEx(m_pEventInfo->GetDateTime()) < WSystemTimeEx(other.m_pEventInfo->GetDateTime());
}

void WLogParams::SetArgument(int i, CountedText text) {
    if (i >= 0 && i < ARGUMENT_COUNT) {
        m_args[static_cast<std::size_t>(i)] = std::move(text);
    }
}

void WLogParams::SetFormatArg(int i, const wchar_t* text) {
    SetArgument(i, text == nullptr ? CountedText() : CountedText(std::wstring_view(text)));
}

const wchar_t* WLogParams::GetFormatArg(int i) const {
    return i >= 0 && i < ARGUMENT_COUNT ? m_args[static_cast<std::size_t>(i)].Get() : nullptr;
}

void WLogParams::FormatEventArgument(int i, char value) {
    FormatEventArgument(i, static_cast<long>(value));
}
void WLogParams::FormatEventArgument(int i, short value) {
    FormatEventArgument(i, static_cast<long>(value));
}
void WLogParams::FormatEventArgument(int i, int value) {
    FormatEventArgument(i, static_cast<long>(value));
}

void WLogParams::FormatEventArgument(int i, long value) {
    FormatEventArgument(i, std::to_wstring(value));
}

void WLogParams::FormatEventArgument(int i, unsigned char value) {
    FormatEventArgument(i, static_cast<unsigned long>(value));
}
void WLogParams::FormatEventArgument(int i, unsigned short value) {
    FormatEventArgument(i, static_cast<unsigned long>(value));
}
void WLogParams::FormatEventArgument(int i, unsigned int value) {
    FormatEventArgument(i, static_cast<unsigned long>(value));
}

void WLogParams::FormatEventArgument(int i, unsigned long value) {
    FormatEventArgument(i, std::to_wstring(value));
}

void WLogParams::FormatEventArgument(int i, LONGLONG value) {
    wchar_t text[20];
    const int length =
        std::swprintf(text, std::size(text), L"0x%llx", static_cast<unsigned long long>(value));
    SetArgument(i, CountedText(std::wstring_view(text, static_cast<std::size_t>(length))));
}

void WLogParams::FormatEventArgument(int i, float value) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_R4;
    variant.fltVal = value;
    SetArgument(i, TextOfReal(variant));
}

void WLogParams::FormatEventArgument(int i, double value) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_R8;
    variant.dblVal = value;
    SetArgument(i, TextOfReal(variant));
}

void WLogParams::FormatEventArgument(int i, const wchar_t* text) {
    SetFormatArg(i, text);
}

void WLogParams::FormatEventArgument(int i, const std::wstring& text) {
    SetArgument(i, CountedText(text));
}

void WLogParams::FormatEventArgument(int i, const std::string& text) {
    FormatEventArgument(i, krtpal::WidenText(text));
}

} // namespace bss
