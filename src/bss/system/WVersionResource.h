// WVersionResource: what the version resource of a loaded module says, as texts and numbers.
//
//     const bss::WVersionResource resource(bss::GetBSSHandle());
//     About(resource.GetProductName(), resource.GetDisplayProductVersion(), resource.GetCopyrightInfo());
//
// All is read once, at construction. Nothing fails: a module without a version resource leaves everything
// empty but its names, and a value that is missing leaves its field empty or 0. On Linux a module gets its
// resource by the CMake function krtbss_version_resource, which serves Windows too.
//
// Beyond the standard strings there are two of the suite's own, "KRTFileVer" and "KRTIOVer": the versions of
// the file format and of the input and output format that a module works with.
//
// Threads: objects are values that do not change.

#ifndef BSS_SYSTEM_WVERSIONRESOURCE_H
#define BSS_SYSTEM_WVERSIONRESOURCE_H

#include "bss/CStdStr.h"
#include "bss/Export.h"
#include "krtpal/version.h"

#include <cstdint>
#include <memory>
#include <string>

namespace bss {

class KRTBSS_API WVersionResource {
public:
    struct versionnumber {
        unsigned int product = 0;
        unsigned int major = 0;
        unsigned int minor = 0;
        unsigned int build = 0;
    };

    explicit WVersionResource(HINSTANCE module);
    virtual ~WVersionResource();
    WVersionResource(const WVersionResource&) = delete;
    WVersionResource& operator=(const WVersionResource&) = delete;

    /// The texts belong to the object.
    const wchar_t* GetModuleNameLong() const { return m_sModuleNameLong.c_str(); }
    const wchar_t* GetModuleNameShort() const { return m_sModuleNameShort.c_str(); }
    /// The fixed part's file version, "1.2.3.4".
    const wchar_t* GetModuleVersion() const { return m_sModuleVersion.c_str(); }
    /// The numbers of the string "FileVersion", "1.2.3.4".
    const wchar_t* GetFileVersion() const { return m_sFileVersion.c_str(); }
    const wchar_t* GetFileDescription() const { return m_sFileDescription.c_str(); }
    const wchar_t* GetFileOS() const { return m_sFileOS.c_str(); }
    const wchar_t* GetFileType() const { return m_sFileType.c_str(); }
    /// "MM/DD/YYYY  hh:mm:ss" of the fixed part, UTC; empty if it has no date.
    const wchar_t* GetFileCreationDate() const { return m_sFileCreationDate.c_str(); }
    /// The name of the process's program, upper case, without folder and extension.
    const wchar_t* GetFileExecutableName() const { return m_sFileExecutableName.c_str(); }
    /// The product version's four numbers, with the private build in front and the special build behind.
    const wchar_t* GetProductVersion() const { return m_sProductVersion.c_str(); }
    /// The same; without private and special build the three leading numbers only.
    const wchar_t* GetDisplayProductVersion() const { return m_sDisplayProductVersion.c_str(); }
    const wchar_t* GetProductName() const { return m_sProductName.c_str(); }
    const wchar_t* GetPrivateBuild() const { return m_sPrivateBuild.c_str(); }
    const wchar_t* GetSpecialBuild() const { return m_sSpecialBuild.c_str(); }
    const wchar_t* GetCopyrightInfo() const { return m_sCopyright.c_str(); }
    const wchar_t* GetCompanyName() const { return m_sCompanyName.c_str(); }
    const wchar_t* GetKRTFileVer() const { return m_sKRTFileVer.c_str(); }
    const wchar_t* GetKRTIOVer() const { return m_sKRTIOVer.c_str(); }

    versionnumber GetFileVersionNumber() const { return m_FileVersionNumber; }
    versionnumber GetProductVersionNumber() const { return m_ProductVersionNumber; }
    versionnumber GetKRTFileVersionNumber() const { return m_KRTFileVersionNumber; }
    versionnumber GetKRTIOVersionNumber() const { return m_KRTIOVersionNumber; }

    /// The local time of a build, from the texts of __DATE__ and __TIME__, in seconds since 1970. The month
    /// counts one too many, as it always has ("Mar 02 2004" falls in April); an unknown month is January.
    /// Where `text` is not null it gets the time as "Apr 02, 2004  03:04:05 AM". Texts of another layout and
    /// times outside 1970 to 3000 give -1 and an empty text.
    static std::int64_t GetBuildDate(const wchar_t* date, const wchar_t* time, CStdStr<wchar_t>* pText);

protected:
    /// A string of the block in its first language; false, and `text` as it was, if there is none.
    bool GetValueByName(const wchar_t* name, std::wstring& text) const;
    bool GetVersionNumber(const wchar_t* name, versionnumber& number) const;
    /// Up to four numbers between blanks, points and commas; those that the text does not have stay.
    static void ParseVersionString(const std::wstring& text, unsigned int& a, unsigned int& b,
                                   unsigned int& c, unsigned int& d);
    /// Reads the fixed part and what is made of it; false if there is none.
    bool GetFixedFileInfo();
    void GetFileDateTimes();

    void GetModuleVersion(std::wstring& text) const;
    void GetFileOS(std::wstring& text) const;
    void GetFileType(std::wstring& text) const;
    bool GetFileVersion(versionnumber& number) const;
    void GetFileVersion(std::wstring& text) const;
    bool GetFileDescription(std::wstring& text) const;
    void GetFileExecutableName(std::wstring& text) const;
    bool GetProductVersion(versionnumber& number) const;
    void GetProductVersion(std::wstring& text) const;
    void GetDisplayProductVersion(std::wstring& text) const;
    bool GetProductName(std::wstring& text) const;
    bool GetPrivateBuild(std::wstring& text) const;
    bool GetSpecialBuild(std::wstring& text) const;
    bool GetCopyrightInfo(std::wstring& text) const;
    bool GetCompanyName(std::wstring& text) const;
    void GetKRTFileVer(std::wstring& text);
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
