#include "bss/exception/WNestedExceptionData.h"

#include <cwchar>

namespace bss {

WNestedExceptionData::WNestedExceptionData(wchar_t* const text) {
    ParseNestedExceptionData(text);
}

void WNestedExceptionData::ParseNestedExceptionData(wchar_t* const text) {
    if (text == nullptr) {
        return;
    }
    wchar_t* cursor = text;
    const auto take = [&cursor] {
        wchar_t* const field = cursor;
        cursor += std::wcslen(cursor) + 1;
        return field;
    };
    m_pszId = take();
    m_pszName = take();
    m_pszMsg = take();
    m_pszSeverity = take();
    for (wchar_t*& argument : m_apszArgs) {
        argument = take();
    }
    m_nCount = static_cast<int>(cursor - text);
}

} // namespace bss
