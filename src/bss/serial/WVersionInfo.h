// WVersionInfo: a version with a module's identity around it, and a tree of component modules; a persistent
// object, so that a file or a database records which modules wrote it.
//
//     bss::WVersionInfo suite(L"Control.exe");
//     suite.SetVersion(5, 3, 2, 0);
//     suite.AddProcessVersionInfo(GetCurrentProcessId());     // every module of the suite in this process
//     std::wstring table = bss::WVersionInfo::GetVersionInfo(suite, 0);
//     suite.Write(&serializer, 0, true);
//
// A module takes part by exporting a plain function GetVersionInfoModuleHandle without arguments (as this
// library does: bss/module.h) and carrying a version resource (bss/system/WVersionResource.h).
//
// Threads: objects are values.

#ifndef BSS_SERIAL_WVERSIONINFO_H
#define BSS_SERIAL_WVERSIONINFO_H

#include "bss/Export.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "krtpal/types.h"

#include <string>
#include <vector>

namespace bss {

class KRTBSS_API WVersionInfo : public WVersion, public WPersistentObject {
public:
    /// Version 0.0.0.0, or the default file version once that is set. A null name is none.
    WVersionInfo(const wchar_t* name = nullptr);
    WVersionInfo(short productVersion, short majorVersion, short minorVersion, short build);
    /// Deep, with the components.
    WVersionInfo(const WVersionInfo& other);
    ~WVersionInfo() override;
    WVersionInfo& operator=(const WVersionInfo& other);

    virtual void SetNameOfClass();

    void Serialize(bool bRead) override;
    /// The components, with theirs, behind their count. Reading replaces those that there are.
    /// std::length_error for a count that is negative or too large, WNEDataIOError for components nested
    /// deeper than a file of ours has them; a binary image that ends among the components gives those before
    /// its end.
    void SerializeComponents(bool bRead) override;
    /// Each deletes its own first; a failure leaves those not reached.
    void DeleteComponents() override;

    /// The module file's name with its extension.
    const std::wstring& GetName() const { return m_sModuleName; }
    /// Null is ignored.
    void SetName(const wchar_t* name);
    const std::wstring& GetDescriptor() const { return m_sDescriptor; }
    void SetDescriptor(const std::wstring& descriptor) { m_sDescriptor = descriptor; }
    const std::wstring& GetDateString() const { return m_sFileDate; }
    void SetDateString(const std::wstring& date) { m_sFileDate = date; }

    // Versions as dotted text, and as what the text says.
    const std::wstring& GetModuleVersionString() const { return m_sModuleVersion; }
    void SetModuleVersion(const std::wstring& version) { m_sModuleVersion = version; }
    const std::wstring& GetKRTFileVersionString() const { return m_sKRTFileVer; }
    void SetKRTFileVersion(const std::wstring& version) { m_sKRTFileVer = version; }
    const std::wstring& GetKRTIOVerionString() const { return m_sKRTIOVer; }
    void SetKRTIOVersion(const std::wstring& version) { m_sKRTIOVer = version; }
    WVersion GetModuleVersion() const { return VersionFromString(m_sModuleVersion); }
    WVersion GetKRTFileVersion() const { return VersionFromString(m_sKRTFileVer); }
    WVersion GetKRTIOVersion() const { return VersionFromString(m_sKRTIOVer); }

    /// The packed number of this version, not the version of the stored form.
    long GetVersion() const { return WVersion::GetVersion(); }
    /// The four numbers with points between them.
    std::wstring GetVersionString() const;
    /// Sets the numbers alone: GetVersionExW and GetDisplayVersion keep their texts, which is meant.
    void SetVersion(short productVersion, short majorVersion, short minorVersion, short build);

    /// Of a loaded module: its name, date and versions. The four numbers stay those of the default
    /// construction.
    static WVersionInfo GetVersionInfo(HINSTANCE module);
    /// A line of name, version and I/O version behind `indent` tabs, then the components one tab further in.
    static std::wstring GetVersionInfo(const WVersionInfo& info, int indent);

    void AddComponent(const WVersionInfo& component);
    const std::vector<WVersionInfo>& GetComponents() const { return m_aComponents; }
    /// Adds a component for each module that takes part, of a process that runs the caller's own program.
    /// Adds nothing if the process can't be looked at or runs another one.
    void AddProcessVersionInfo(unsigned long processId);
    /// Empties numbers, name, descriptor and date. The version texts and the components stay, which is meant.
    void Clear();

protected:
    /// Points may stand for commas, unless the text begins with one.
    static WVersion VersionFromString(std::wstring text);

private:
    void ReadComponents();
    void WriteComponents();

    std::wstring m_sModuleName;
    std::wstring m_sModuleVersion;
    std::wstring m_sDescriptor;
    std::wstring m_sFileDate;
    std::wstring m_sKRTFileVer;
    std::wstring m_sKRTIOVer;
    std::vector<WVersionInfo> m_aComponents;
};

} // namespace bss

#endif
