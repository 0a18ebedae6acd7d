// WVersionResource: the version resource of a loaded module, as texts and numbers.
//
//     const bss::WVersionResource resource(bss::GetBSSHandle());
//     About(resource.GetProductName(), resource.GetDisplayProductVersion(), resource.GetCopyrightInfo());
//
// The constructor reads everything once. Nothing fails: a module without a version resource leaves all fields
// empty except the two names of the module, and a missing value leaves its field empty or 0. On Linux the
// CMake function krtbss_version_resource gives a module its resource; it serves Windows too.
//
// Two strings extend the standard ones: "KRTFileVer" and "KRTIOVer", the versions of the file format and of
// the input and output format of a module.
//
// Threads: objects are constant after construction; any number of threads may read one.

#ifndef BSS_SYSTEM_WVERSIONRESOURCE_H
#define BSS_SYSTEM_WVERSIONRESOURCE_H

#include "bss/CStdStr.h"
#include "bss/Export.h"
#include "krtpal/version.h"

#include <cstdint>
#include <memory>
#include <string>

namespace bss {

/// The version resource of one module. The texts that its operations return are owned by the object.
class KRTBSS_API WVersionResource {
public:
    /// A version of four numbers.
    struct versionnumber {
        unsigned int product = 0;
        unsigned int major = 0;
        unsigned int minor = 0;
        unsigned int build = 0;
    };

    /// Reads the resource of `module`; null is the program of the process. Does not keep the module loaded.
    explicit WVersionResource(HINSTANCE module);
    virtual ~WVersionResource();
    WVersionResource(const WVersionResource&) = delete;
    WVersionResource& operator=(const WVersionResource&) = delete;

    /// Returns the path of the module's file.
    const wchar_t* GetModuleNameLong() const { return m_sModuleNameLong.c_str(); }
    /// Returns the path in its short form (8.3), or the long one if there is none.
    const wchar_t* GetModuleNameShort() const { return m_sModuleNameShort.c_str(); }
    /// Returns the file version of the fixed part, "1.2.3.4".
    const wchar_t* GetModuleVersion() const { return m_sModuleVersion.c_str(); }
    /// Returns the numbers of the string "FileVersion", "1.2.3.4".
    const wchar_t* GetFileVersion() const { return m_sFileVersion.c_str(); }
    /// Returns the string "FileDescription".
    const wchar_t* GetFileDescription() const { return m_sFileDescription.c_str(); }
    /// Returns the operating system of the fixed part, such as "Win32 API"; empty for an unknown value.
    const wchar_t* GetFileOS() const { return m_sFileOS.c_str(); }
    /// Returns the file type of the fixed part, such as "Dynamic link library"; empty for an unknown value.
    const wchar_t* GetFileType() const { return m_sFileType.c_str(); }
    /// Returns the date of the fixed part in UTC, "MM/DD/YYYY  hh:mm:ss"; empty if it has none.
    const wchar_t* GetFileCreationDate() const { return m_sFileCreationDate.c_str(); }
    /// Returns the name of the process's program in upper case, without folder and extension.
    const wchar_t* GetFileExecutableName() const { return m_sFileExecutableName.c_str(); }
    /// Returns the four numbers of the product version. A private build precedes them, a special build
    /// follows in parentheses: "X 1.2.3.4 (Y)".
    const wchar_t* GetProductVersion() const { return m_sProductVersion.c_str(); }
    /// Returns the same text; without a private and a special build, the first three numbers only.
    const wchar_t* GetDisplayProductVersion() const { return m_sDisplayProductVersion.c_str(); }
    /// Returns the string "ProductName".
    const wchar_t* GetProductName() const { return m_sProductName.c_str(); }
    /// Returns the string "PrivateBuild".
    const wchar_t* GetPrivateBuild() const { return m_sPrivateBuild.c_str(); }
    /// Returns the string "SpecialBuild".
    const wchar_t* GetSpecialBuild() const { return m_sSpecialBuild.c_str(); }
    /// Returns the string "LegalCopyright".
    const wchar_t* GetCopyrightInfo() const { return m_sCopyright.c_str(); }
    /// Returns the string "CompanyName".
    const wchar_t* GetCompanyName() const { return m_sCompanyName.c_str(); }
    /// Returns the numbers of the string "KRTFileVer", "1.2.3.4"; empty without the string.
    const wchar_t* GetKRTFileVer() const { return m_sKRTFileVer.c_str(); }
    /// Returns the numbers of the string "KRTIOVer", "1.2.3.4"; empty without the string.
    const wchar_t* GetKRTIOVer() const { return m_sKRTIOVer.c_str(); }

    /// Returns the numbers of the string "FileVersion".
    versionnumber GetFileVersionNumber() const { return m_FileVersionNumber; }
    /// Returns the numbers of the string "ProductVersion".
    versionnumber GetProductVersionNumber() const { return m_ProductVersionNumber; }
    /// Returns the numbers of the string "KRTFileVer".
    versionnumber GetKRTFileVersionNumber() const { return m_KRTFileVersionNumber; }
    /// Returns the numbers of the string "KRTIOVer".
    versionnumber GetKRTIOVersionNumber() const { return m_KRTIOVersionNumber; }

    /// Returns the time of a build, in seconds since 1970 (UTC), from the texts of __DATE__ and __TIME__ in
    /// local time. The month counts one too many ("Mar 02 2004" falls in April; kept for compatibility); an
    /// unknown month name is January.
    /// `pText` (may be null) receives the time as "Apr 02, 2004  03:04:05 AM". Returns -1 and an empty text
    /// for null, for texts in another layout and for times outside 1970 to 3000.
    static std::int64_t GetBuildDate(const wchar_t* date, const wchar_t* time, CStdStr<wchar_t>* pText);

protected:
    // The steps of the constructor. Those that return bool return false if the value is missing, and leave
    // the argument unchanged; those that return nothing set the text from fields that were read before.

    /// Reads a string of the block in its first language.
    bool GetValueByName(const wchar_t* name, std::wstring& text) const;
    /// Reads the numbers of a string. See GetValueByName and ParseVersionString.
    bool GetVersionNumber(const wchar_t* name, versionnumber& number) const;
    /// Parses up to four numbers separated by blanks, points and commas. Numbers that are missing are left
    /// unchanged; more than four are ignored.
    static void ParseVersionString(const std::wstring& text, unsigned int& a, unsigned int& b,
                                   unsigned int& c, unsigned int& d);
    /// Reads the fixed part and sets the fields that are derived from it. Returns false if there is none.
    bool GetFixedFileInfo();
    /// Sets the creation date from the fixed part.
    void GetFileDateTimes();

    /// Formats the file version of the fixed part.
    void GetModuleVersion(std::wstring& text) const;
    /// Looks up the operating system; leaves the text unchanged for an unknown value.
    void GetFileOS(std::wstring& text) const;
    /// Looks up the file type and its subtype; leaves the text unchanged for an unknown value.
    void GetFileType(std::wstring& text) const;
    /// Reads "FileVersion".
    bool GetFileVersion(versionnumber& number) const;
    /// Formats the file version's numbers.
    void GetFileVersion(std::wstring& text) const;
    /// Reads "FileDescription".
    bool GetFileDescription(std::wstring& text) const;
    /// Sets the name of the process's program.
    void GetFileExecutableName(std::wstring& text) const;
    /// Reads "ProductVersion".
    bool GetProductVersion(versionnumber& number) const;
    /// Formats the product version's numbers and the builds.
    void GetProductVersion(std::wstring& text) const;
    /// Formats the product version for display.
    void GetDisplayProductVersion(std::wstring& text) const;
    /// Reads "ProductName".
    bool GetProductName(std::wstring& text) const;
    /// Reads "PrivateBuild".
    bool GetPrivateBuild(std::wstring& text) const;
    /// Reads "SpecialBuild".
    bool GetSpecialBuild(std::wstring& text) const;
    /// Reads "LegalCopyright".
    bool GetCopyrightInfo(std::wstring& text) const;
    /// Reads "CompanyName".
    bool GetCompanyName(std::wstring& text) const;
    /// Reads "KRTFileVer" and formats its numbers; leaves the text unchanged without the string.
    void GetKRTFileVer(std::wstring& text);
    /// Reads "KRTIOVer" and formats its numbers; leaves the text unchanged without the string.
    void GetKRTIOVer(std::wstring& text);

private:
    bool ReadNames(HINSTANCE module);
    bool ReadBlock();
    void ReadTranslation();
    bool QueryBlock(const std::wstring& name, const void** value, std::size_t* bytesLeft,
                    unsigned int* length) const;
    std::wstring WithBuilds(const std::wstring& version) const;

    std::uint16_t m_nLanguage = 0;
    std::uint16_t m_nCodePage = 0;
    versionnumber m_FileVersionNumber;
    versionnumber m_ProductVersionNumber;
    versionnumber m_KRTFileVersionNumber;
    versionnumber m_KRTIOVersionNumber;
    std::wstring m_sModuleNameLong;
    std::wstring m_sModuleNameShort;
    std::wstring m_sModuleVersion;
    std::wstring m_sFileVersion;
    std::wstring m_sFileDescription;
    std::wstring m_sFileOS;
    std::wstring m_sFileType;
    std::wstring m_sFileCreationDate;
    std::wstring m_sFileExecutableName;
    std::wstring m_sProductVersion;
    std::wstring m_sDisplayProductVersion;
    std::wstring m_sProductName;
    std::wstring m_sPrivateBuild;
    std::wstring m_sSpecialBuild;
    std::wstring m_sCopyright;
    std::wstring m_sCompanyName;
    std::wstring m_sKRTFileVer;
    std::wstring m_sKRTIOVer;
    VS_FIXEDFILEINFO m_FixedFileInfo{};
    std::unique_ptr<unsigned char[]> m_pBlock;
    std::size_t m_nBlockSize = 0;
    std::wstring m_sExecutablePath;
};

} // namespace bss

#endif
