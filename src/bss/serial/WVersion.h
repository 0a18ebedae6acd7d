// WVersion: a version of four numbers (product, major, minor, build), and the process-wide default versions
// of the file, I/O and report formats.
//
//     bss::WVersion version(5, 3, 0, 9);
//     long packed = version.GetVersion();                 // 84082697: one byte a number from the top
//     version.GetVersionExW();                            // L"5.3.0.9"
//     if (packed >= bss::WVersion::GetVersion(5, 3, 0, 9)) { ... }
//
// Versions are compared by their packed numbers, signed 32-bit integers on every system. Numbers over 255 or
// below 0 overflow into the fields on their left: 0.0.0.300 and 0.0.1.44 are the same version (kept for
// compatibility).
//
// An application sets the defaults at its start. From then on every version of four zeros that is made from
// four numbers or from text is the default file version.
//
// Threads: objects are values. The defaults must be set before other threads read them; only the flag that
// the default file version is set has a guard.

#ifndef BSS_SERIAL_WVERSION_H
#define BSS_SERIAL_WVERSION_H

#include "bss/Export.h"

#include <string>
#include <utility>
#include <vector>

namespace bss {

/// A version of four numbers with its texts.
class KRTBSS_API WVersion {
public:
    /// Makes 0.0.0.0, or the default file version once it is set.
    WVersion();
    /// Makes a version. Four numbers that pack to 0 give the default file version once it is set.
    WVersion(short productVersion, short majorVersion, short minorVersion, short build);
    /// Makes a version from a packed number. 0 gives 0.0.0.0, even if a default is set.
    WVersion(long packed);
    /// Makes a version from numbers separated by commas: "5,3,0,9". Points are not separators. Missing
    /// numbers are 0, text after the fourth is ignored, and each number keeps its low 16 bits.
    WVersion(const std::wstring& text);
    WVersion(const WVersion& other);
    virtual ~WVersion();

    WVersion& operator=(const WVersion& other);
    /// Sets the numbers. The texts become those of WVersion() (kept for compatibility).
    WVersion& operator=(long packed);

    /// Returns the packed number.
    operator long() const { return GetVersion(); }
    /// Returns the packed number: one byte for each number, the product in the highest.
    long GetVersion() const;
    /// Returns the packed number of `version`.
    static long GetVersion(const WVersion& version);
    /// Returns the packed number of four numbers. Ignores the defaults.
    static long GetVersion(short productVersion, short majorVersion, short minorVersion, short build);
    /// Returns a version with the numbers of `packed` and the texts of WVersion() (kept for compatibility).
    static WVersion GetVersion(long packed);

    /// Returns true if `packed` is the packed number of `version`.
    static bool IsVersion(long packed, const WVersion& version);
    /// Returns true if `packed` is the packed number of the four numbers.
    static bool IsVersion(long packed, short productVersion, short majorVersion, short minorVersion,
                          short build);

    /// Returns the first number.
    short GetProductVersion() const { return m_nProductVersion; }
    /// Returns the second number.
    short GetMajorVersion() const { return m_nMajorVersion; }
    /// Returns the third number.
    short GetMinorVersion() const { return m_nMinorVersion; }
    /// Returns the fourth number.
    short GetBuildVersion() const { return m_nBuild; }
    /// Returns the four numbers separated by points. The object owns the text, which is valid until it
    /// changes.
    const wchar_t* GetVersionExW() const { return m_sVersionEx.c_str(); }
    /// Returns the first three numbers separated by points. See GetVersionExW.
    const wchar_t* GetDisplayVersion() const { return m_sDisplayVersion.c_str(); }

    /// Returns the default file version. Throws WNEUnexpectedException if it is not set.
    static const WVersion& DefaultFileSerializationVersion();
    /// Returns the default version of the I/O format. Throws WNEUnexpectedException if it is not set.
    static const WVersion& DefaultSliceSerializationVersion();
    /// Returns the default version of reports. Throws WNEUnexpectedException if it is not set.
    static const WVersion& DefaultReportableVorinVersion();
    /// Sets the default file version. Replaces the list of save-as filters by that of `version`: add filters
    /// afterwards.
    static void SetDefaultFileSerializationVersion(const WVersion& version);
    /// Sets the default version of the I/O format. Invalidates references to the previous one.
    static void SetDefaultSliceSerializationVersion(const WVersion& version);
    /// Sets the default version of reports. Invalidates references to the previous one.
    static void SetDefaultReportableVorinVersion(const WVersion& version);
    /// Returns true if the default version of the I/O format is set.
    static bool IsDefaultSliceSerializationSet();
    /// Returns true if the default version of reports is set.
    static bool IsDefaultVorinReportVersionSet();
    /// Returns true if the default file version is set.
    static bool GetIsValidFileVersion();

    /// Adds a filter of the save-as dialog: its text and the packed version of the format, both unchecked.
    /// Returns the new number of filters.
    static unsigned int AddSaveAsFileFilter(const std::pair<std::wstring, long>& filter);
    /// Returns the save-as filters in the order of their addition.
    static std::vector<std::pair<std::wstring, long>> GetSaveAsFileFilters();
    /// Removes all save-as filters.
    static void RemoveAllSaveAsFileFilters();

protected:
    /// Copies the numbers, and formats each text that is empty.
    void Initialize(const WVersion& other);
    /// See Initialize(const WVersion&).
    void Initialize(long packed);
    /// Sets the flag of GetIsValidFileVersion.
    static void SetIsValidFileVersion(bool isValid);

    // The four numbers.

    short m_nProductVersion = 0;
    short m_nMajorVersion = 0;
    short m_nMinorVersion = 0;
    short m_nBuild = 0;

private:
    struct Defaults;
    /// Selects the constructor that ignores the defaults.
    struct Zero {};

    /// Makes 0.0.0.0, even if a default is set.
    explicit WVersion(Zero zero);
    /// Returns the defaults. They are never destroyed, so that static objects may use them at any time.
    static Defaults& GetDefaults();

    std::wstring m_sVersionEx;
    std::wstring m_sDisplayVersion;
    std::vector<std::pair<std::wstring, long>> m_aSaveAsFileFilters;
};

} // namespace bss

#endif
