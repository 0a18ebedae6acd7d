// WExceptionEventInfo: the static descriptor of one kind of failure.
//
// Every exception class of the library has one descriptor: code, class name, message template, severity and a
// function that throws the class from nothing but text. All descriptors of a module stand in one process-wide
// list as soon as the module is loaded, whether or not the class is ever thrown.
//
//     for (const bss::WExceptionEventInfo* info : bss::WExceptionEventInfo::GetEventInfoList())
//         std::wcout << info->GetId() << L' ' << info->GetName() << L'\n';
//
// Threads: the list is written during static initialisation (on the loader's thread) and read afterwards; it
// has no lock.

#ifndef BSS_EXCEPTION_WEXCEPTIONEVENTINFO_H
#define BSS_EXCEPTION_WEXCEPTIONEVENTINFO_H

#include "bss/Export.h"
#include "bss/net/WSystemTimeEx.h"

#include <vector>

namespace bss {

class WNestedException;
struct WNestedExceptionData;

/// How bad an event is. Any other value counts as unknown.
enum eseverity : int {
    ADVISORY = 0,
    MINOR = 1,
    MAJOR = 2,
    CRITICAL = 3,
    UNKNOWN_SEVERITY = 4, ///< what the look-up of a text answers for a text that it does not know
};

class KRTBSS_API WExceptionEventInfo {
public:
    /// Throws the described class with the texts of a record and `next` (cloned) behind it.
    using ThrowFunc = void (*)(WNestedExceptionData& data, WNestedException* next);

    /// Registers the descriptor, unless one of the same code, severity and name is in the list already.
    /// The texts are not copied: they have to outlive the descriptor, and the descriptor the process's use of
    /// the list.
    WExceptionEventInfo(long id, const wchar_t* name, const wchar_t* msg, ThrowFunc throwFunc,
                        eseverity severity);
    WExceptionEventInfo(const WExceptionEventInfo&) = default; ///< the copy is not registered
    WExceptionEventInfo& operator=(const WExceptionEventInfo&) = default;
    virtual ~WExceptionEventInfo() = default;

    long GetId() const { return m_nId; }
    const wchar_t* GetName() const { return m_pszName; }
    /// The message template, with inserts `%1` to `%8`.
    const wchar_t* GetMsg() const { return m_pszMsg; }
    /// Always null: no descriptor names its module.
    const wchar_t* GetModule() const { return m_pszModule; }
    eseverity GetSeverity() const { return m_severity; }
    /// UTC time at which the descriptor was built, that is of the module's static initialisation.
    SYSTEMTIME GetDateTime() const { return m_dateTime; }
    ThrowFunc GetThrowFunc() const { return m_throwFunc; }
    void SetThrowFunc(ThrowFunc throwFunc) { m_throwFunc = throwFunc; }

    /// The value of a severity text of exactly eight characters, blanks included; UNKNOWN_SEVERITY for any
    /// other text and for null.
    static eseverity GetSeverity(const wchar_t* text);
    /// The eight characters of a severity; "????????" outside ADVISORY to CRITICAL.
    static const wchar_t* GetSeverity(eseverity severity);

    /// A copy of the list of distinct descriptors, in order of registration. The descriptors stay the
    /// library's.
    static std::vector<const WExceptionEventInfo*> GetEventInfoList();

    /// Throws the class that the record's id, name and severity texts name, with `next` cloned behind it.
    /// Returns normally, with nothing thrown, when no descriptor matches all three.
    static void ThrowFromList(WNestedExceptionData& data, WNestedException* next);

protected:
    static void InitializeEventInfoList();
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
