// WExceptionEventInfo: the static descriptor of one kind of failure.
//
// Each exception class of the library has one descriptor: code, class name, message template, severity and a
// function that throws the class from a text record. Loading a module registers its descriptors in one
// process-wide list, whether or not the classes are ever thrown.
//
//     for (const bss::WExceptionEventInfo* info : bss::WExceptionEventInfo::GetEventInfoList())
//         std::wcout << info->GetId() << L' ' << info->GetName() << L'\n';
//
// Threads: the list has no lock. It is written during static initialisation, on the loader's thread, and only
// read afterwards. A registered descriptor may be read by any number of threads.

#ifndef BSS_EXCEPTION_WEXCEPTIONEVENTINFO_H
#define BSS_EXCEPTION_WEXCEPTIONEVENTINFO_H

#include "bss/Export.h"
#include "bss/net/WSystemTimeEx.h"

#include <vector>

namespace bss {

class WNestedException;
struct WNestedExceptionData;

/// Severity of an event, in ascending order. Any other value is treated as unknown.
enum eseverity : int {
    ADVISORY = 0,         ///< Text "ADVISORY".
    MINOR = 1,            ///< Text "MINOR   ", with three blanks.
    MAJOR = 2,            ///< Text "MAJOR   ", with three blanks.
    CRITICAL = 3,         ///< Text "CRITICAL".
    UNKNOWN_SEVERITY = 4, ///< Result of the look-up of an unknown text.
};

/// Static descriptor of one exception class.
class KRTBSS_API WExceptionEventInfo {
public:
    /// Throws the described class with the texts of a record; `next` is cloned as its next link.
    using ThrowFunc = void (*)(WNestedExceptionData& data, WNestedException* next);

    /// Registers the descriptor, unless the list has one with the same code, severity and name.
    /// REQUIRES: the texts, which are not copied, outlive the descriptor; a registered descriptor outlives
    /// all use of the list. Throws std::bad_alloc if memory is short.
    WExceptionEventInfo(long id, const wchar_t* name, const wchar_t* msg, ThrowFunc throwFunc,
                        eseverity severity);
    /// Copies all fields. The copy is not registered.
    WExceptionEventInfo(const WExceptionEventInfo&) = default;
    /// Copies all fields. The list is unchanged.
    WExceptionEventInfo& operator=(const WExceptionEventInfo&) = default;
    /// Destroys the descriptor; the list is unchanged.
    virtual ~WExceptionEventInfo() = default;

    /// Returns the event code.
    long GetId() const { return m_nId; }
    /// Returns the class name.
    const wchar_t* GetName() const { return m_pszName; }
    /// Returns the message template, with the inserts `%1` to `%8`.
    const wchar_t* GetMsg() const { return m_pszMsg; }
    /// Returns null: no descriptor stores its module.
    const wchar_t* GetModule() const { return m_pszModule; }
    /// Returns the severity.
    eseverity GetSeverity() const { return m_severity; }
    /// Returns the UTC time of the descriptor's construction, which is the module's static initialisation.
    SYSTEMTIME GetDateTime() const { return m_dateTime; }
    /// Returns the throw function, which may be null.
    ThrowFunc GetThrowFunc() const { return m_throwFunc; }
    /// Replaces the throw function; null makes ThrowFromList skip the class. Not synchronised.
    void SetThrowFunc(ThrowFunc throwFunc) { m_throwFunc = throwFunc; }

    /// Returns the value of a severity text of exactly eight characters, blanks included; UNKNOWN_SEVERITY
    /// for any other text and for null.
    static eseverity GetSeverity(const wchar_t* text);
    /// Returns the eight characters of a severity; "????????" for values outside ADVISORY to CRITICAL.
    static const wchar_t* GetSeverity(eseverity severity);

    /// Returns a copy of the list of distinct descriptors, in order of registration. The list does not own
    /// the descriptors. Throws std::bad_alloc if memory is short.
    static std::vector<const WExceptionEventInfo*> GetEventInfoList();

    /// Throws the class whose code, name and severity match the record's texts; `next` is cloned as its next
    /// link and may be null. Returns without throwing if no descriptor matches all three texts, or if the
    /// matching one has no throw function.
    static void ThrowFromList(WNestedExceptionData& data, WNestedException* next);

protected:
    /// Creates the empty list if there is none.
    static void InitializeEventInfoList();
    /// Appends this descriptor, unless the list has one with the same code, severity and name.
    void UpdateEventInfoList();

private:
    long m_nId;
    const wchar_t* m_pszName;
    eseverity m_severity;
    const wchar_t* m_pszMsg;
    const wchar_t* m_pszModule = nullptr;
    WSystemTimeEx m_dateTime;
    ThrowFunc m_throwFunc;

    static std::vector<const WExceptionEventInfo*>* m_apExceptionEventInfoList;
};

} // namespace bss

#endif
