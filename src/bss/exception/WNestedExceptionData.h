// WNestedExceptionData: a view of one exception's record in a text.

#ifndef BSS_EXCEPTION_WNESTEDEXCEPTIONDATA_H
#define BSS_EXCEPTION_WNESTEDEXCEPTIONDATA_H

#include "bss/Export.h"

#include <array>

namespace bss {

/// Twelve pointers into a text that somebody else owns and that has to outlive the view.
struct KRTBSS_API WNestedExceptionData {
    WNestedExceptionData() = default;
    /// Parses the record that starts at `text`; all members stay null for a null text.
    explicit WNestedExceptionData(wchar_t* const text);
    WNestedExceptionData(const WNestedExceptionData&) = default;
    WNestedExceptionData& operator=(const WNestedExceptionData&) = default;
    WNestedExceptionData& operator=(WNestedExceptionData&&) noexcept = default;

    /// Points the members at the twelve NUL-ended strings that start at `text`, in the order id, name,
    /// message, severity, arguments 0 to 7, and counts the characters passed. The caller answers for the
    /// twelve terminators being there. Does nothing for a null text.
    void ParseNestedExceptionData(wchar_t* const text);

    int m_nCount = 0; ///< wide characters that the record occupies, terminators included
    wchar_t* m_pszId = nullptr;
    wchar_t* m_pszName = nullptr;
    wchar_t* m_pszMsg = nullptr;
    wchar_t* m_pszSeverity = nullptr;
    std::array<wchar_t*, 8> m_apszArgs{};
};

} // namespace bss

#endif
