// WNestedExceptionData: a view of one exception's record in a text, from which the exception is thrown again.
//
// A record is twelve NUL-ended wide strings in sequence: id, name, message, severity, arguments 0 to 7.
//
//     bss::WNestedExceptionData data(record);              // `record` is modifiable and outlives `data`
//     bss::WExceptionEventInfo::ThrowFromList(data, nullptr);
//
// Threads: a value of pointers; one object, one thread at a time.

#ifndef BSS_EXCEPTION_WNESTEDEXCEPTIONDATA_H
#define BSS_EXCEPTION_WNESTEDEXCEPTIONDATA_H

#include "bss/Export.h"

#include <array>

namespace bss {

/// Twelve pointers into a text that the caller owns. REQUIRES: the text outlives the view.
struct KRTBSS_API WNestedExceptionData {
    /// Sets all members to null and the count to 0.
    WNestedExceptionData() = default;
    /// Parses the record that starts at `text`, as ParseNestedExceptionData does. A null text leaves all
    /// members null.
    explicit WNestedExceptionData(wchar_t* const text);
    /// Copies the pointers; both views refer to the same text.
    WNestedExceptionData(const WNestedExceptionData&) = default;
    /// Copies the pointers; both views refer to the same text.
    WNestedExceptionData& operator=(const WNestedExceptionData&) = default;
    /// Copies the pointers; the other view is unchanged.
    WNestedExceptionData& operator=(WNestedExceptionData&&) noexcept = default;

    /// Points the members at the twelve strings that start at `text` and sets the count. Does nothing for a
    /// null text. REQUIRES: `text` has twelve terminators, which is not checked here.
    void ParseNestedExceptionData(wchar_t* const text);

    int m_nCount = 0;                     ///< Wide characters of the record, terminators included.
    wchar_t* m_pszId = nullptr;           ///< Event code in decimal.
    wchar_t* m_pszName = nullptr;         ///< Class name.
    wchar_t* m_pszMsg = nullptr;          ///< Message template.
    wchar_t* m_pszSeverity = nullptr;     ///< Severity text of eight characters.
    std::array<wchar_t*, 8> m_apszArgs{}; ///< Texts of the arguments.
};

} // namespace bss

#endif
