// WVersion: a version of four numbers (product, major, minor, build), and the process-wide default versions
// of the file, I/O and report formats.
//
//     bss::WVersion version(5, 3, 0, 9);
//     long packed = version.GetVersion();                 // 84082697: one byte a number from the top
//     version.GetVersionExW();                            // L"5.3.0.9"
//     if (packed >= bss::WVersion::GetVersion(5, 3, 0, 9)) { ... }
//
// Versions are compared by their packed numbers, 32 bits with sign on every system. Numbers over 255 or below
// zero spill into the fields on their left, so 0.0.0.300 and 0.0.1.44 are the same version: that is meant.
//
// The defaults are set at the start of an application. From then on every version of four zeros, made from
// four numbers or from text, is the default file version.
//
// Threads: objects are values. The defaults have to be set before other threads read them; only the flag that
// says whether the default file version is set is guarded.

#ifndef BSS_SERIAL_WVERSION_H
#define BSS_SERIAL_WVERSION_H

#include "bss/Export.h"

#include <string>
#include <utility>
#include <vector>

namespace bss {

class KRTBSS_API WVersion {
public:
    /// Four zeros.
    WVersion();
    /// The default file version instead of a version that packs to zero, once it is set.
    WVersion(short productVersion, short majorVersion, short minorVersion, short build);
    /// From a packed number; 0 is 0.0.0.0, whatever the default.
    WVersion(long packed);
    /// From numbers between commas: "5,3,0,9". Points separate nothing. Numbers that are missing are 0, what
    /// stands behind the fourth is ignored, and each keeps its low 16 bits.
    WVersion(const std::wstring& text);
    WVersion(const WVersion& other);
    virtual ~WVersion();

    WVersion& operator=(const WVersion& other);
    /// Takes the numbers. The texts become those of a version of four zeros, which is meant.
    WVersion& operator=(long packed);

    operator long() const { return GetVersion(); }
    long GetVersion() const;
    static long GetVersion(const WVersion& version);
    static long GetVersion(short productVersion, short majorVersion, short minorVersion, short build);
    /// The numbers of the packed one, with the texts of a version of four zeros, which is meant.
    static WVersion GetVersion(long packed);

    static bool IsVersion(long packed, const WVersion& version);
    static bool IsVersion(long packed, short productVersion, short majorVersion, short minorVersion,
                          short build);

    short GetProductVersion() const { return m_nProductVersion; }
    short GetMajorVersion() const { return m_nMajorVersion; }
    short GetMinorVersion() const { return m_nMinorVersion; }
    short GetBuildVersion() const { return m_nBuild; }
    /// Four numbers with points between them. The text is the object's and lives until it changes.
    const wchar_t* GetVersionExW() const { return m_sVersionEx.c_str(); }
    /// The same without the build.
    const wchar_t* GetDisplayVersion() const { return m_sDisplayVersion.c_str(); }

    /// The defaults. Each throws WNEUnexpectedException until it has been set.
    static const WVersion& DefaultFileSerializationVersion();
    static const WVersion& DefaultSliceSerializationVersion();
    static const WVersion& DefaultReportableVorinVersion();
    /// A whole assignment: it replaces the list of save-as filters too, so that filters are added afterwards.
    static void SetDefaultFileSerializationVersion(const WVersion& version);
    /// References to the former default become invalid.
    static void SetDefaultSliceSerializationVersion(const WVersion& version);
    static void SetDefaultReportableVorinVersion(const WVersion& version);
    static bool IsDefaultSliceSerializationSet();
    static bool IsDefaultVorinReportVersionSet();
    static bool GetIsValidFileVersion();

    /// The save-as list: a filter's text and a packed version, kept as given. Answers the new count.
    static unsigned int AddSaveAsFileFilter(const std::pair<std::wstring, long>& filter);
    static std::vector<std::pair<std::wstring, long>> GetSaveAsFileFilters();
    static void RemoveAllSaveAsFileFilters();

protected:
    /// Take the numbers and make each text that is empty.
    void Initialize(const WVersion& other);
    void Initialize(long packed);
    static void SetIsValidFileVersion(bool isValid);

    short m_nProductVersion = 0;
    short m_nMajorVersion = 0;
    short m_nMinorVersion = 0;
    short m_nBuild = 0;

private:
    struct Defaults;
    struct Zero {};

    /// Four zeros, without a look at the defaults.
    explicit WVersion(Zero zero);
    /// Never destroyed, so that static objects may use it at any time.
    static Defaults& GetDefaults();

    std::wstring m_sVersionEx;
    std::wstring m_sDisplayVersion;
    std::vector<std::pair<std::wstring, long>> m_aSaveAsFileFilters;
};

} // namespace bss

#endif
