// WVersionInfo: the version and identity of a module, with a tree of component modules. It is a persistent
// object, so that a file or a database records the modules that wrote it.
//
//     bss::WVersionInfo suite(L"Control.exe");
//     suite.SetVersion(5, 3, 2, 0);
//     suite.AddProcessVersionInfo(GetCurrentProcessId());     // every module of the suite in this process
//     std::wstring table = bss::WVersionInfo::GetVersionInfo(suite, 0);
//     suite.Write(&serializer, 0, true);
//
// A module takes part if it exports a plain function GetVersionInfoModuleHandle without arguments (as this
// library does: bss/module.h) and has a version resource (bss/system/WVersionResource.h).
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

/// The version and identity of a module, with its components.
class KRTBSS_API WVersionInfo : public WVersion, public WPersistentObject {
public:
    /// Makes version 0.0.0.0, or the default file version once it is set. A null name gives an empty name.
    WVersionInfo(const wchar_t* name = nullptr);
    /// Makes a version without a name. See WVersion(short, short, short, short).
    WVersionInfo(short productVersion, short majorVersion, short minorVersion, short build);
    /// Copies the components as well.
    WVersionInfo(const WVersionInfo& other);
    ~WVersionInfo() override;
    WVersionInfo& operator=(const WVersionInfo& other);

    /// Sets m_sNameOfClass to "WVersionInfo".
    virtual void SetNameOfClass();

    /// Passes name, texts and the four numbers to the serializer. See WPersistentObject::Serialize.
    void Serialize(bool bRead) override;
    /// Reads or writes the number of components, then each component with its own components. Reading
    /// replaces the present components. A binary image that ends among the components gives those before its
    /// end. Throws std::length_error for a count that is negative or too large, WNEDataIOError for components
    /// nested deeper than 100 levels.
    void SerializeComponents(bool bRead) override;
    /// Removes the components from memory, each after its own components.
    void DeleteComponents() override;

    /// Returns the file name of the module with its extension.
    const std::wstring& GetName() const { return m_sModuleName; }
    /// Sets the file name of the module. Null is ignored.
    void SetName(const wchar_t* name);
    /// Returns a free text that describes the module.
    const std::wstring& GetDescriptor() const { return m_sDescriptor; }
    /// Sets the descriptive text.
    void SetDescriptor(const std::wstring& descriptor) { m_sDescriptor = descriptor; }
    /// Returns the date of the module's file as text.
    const std::wstring& GetDateString() const { return m_sFileDate; }
    /// Sets the date of the module's file.
    void SetDateString(const std::wstring& date) { m_sFileDate = date; }

    // The versions of the module, of its file format and of its I/O format, as text and as WVersion. The
    // texts are not checked.

    /// Returns the module's version as text.
    const std::wstring& GetModuleVersionString() const { return m_sModuleVersion; }
    /// Sets the text of the module's version.
    void SetModuleVersion(const std::wstring& version) { m_sModuleVersion = version; }
    /// Returns the version of the file format as text.
    const std::wstring& GetKRTFileVersionString() const { return m_sKRTFileVer; }
    /// Sets the text of the file format's version.
    void SetKRTFileVersion(const std::wstring& version) { m_sKRTFileVer = version; }
    /// Returns the version of the I/O format as text. The spelling of the name is part of the interface.
    const std::wstring& GetKRTIOVerionString() const { return m_sKRTIOVer; }
    /// Sets the text of the I/O format's version.
    void SetKRTIOVersion(const std::wstring& version) { m_sKRTIOVer = version; }
    /// Returns the module's version. See VersionFromString.
    WVersion GetModuleVersion() const { return VersionFromString(m_sModuleVersion); }
    /// Returns the version of the file format. See VersionFromString.
    WVersion GetKRTFileVersion() const { return VersionFromString(m_sKRTFileVer); }
    /// Returns the version of the I/O format. See VersionFromString.
    WVersion GetKRTIOVersion() const { return VersionFromString(m_sKRTIOVer); }

    /// Returns the packed number of this version, not the version of the stored form.
    long GetVersion() const { return WVersion::GetVersion(); }
    /// Returns the four numbers separated by points.
    std::wstring GetVersionString() const;
    /// Sets the numbers only. GetVersionExW and GetDisplayVersion keep their texts (kept for compatibility).
    void SetVersion(short productVersion, short majorVersion, short minorVersion, short build);

    /// Returns the name, date and versions of a loaded module. The four numbers are those of the default
    /// constructor. The name is the file version for a module without a file name.
    static WVersionInfo GetVersionInfo(HINSTANCE module);
    /// Returns a line of `indent` tabs, name, version and I/O version, followed by the lines of the
    /// components with one more tab.
    static std::wstring GetVersionInfo(const WVersionInfo& info, int indent);

    /// Appends a copy of `component`.
    void AddComponent(const WVersionInfo& component);
    /// Returns the components in the order of their addition.
    const std::vector<WVersionInfo>& GetComponents() const { return m_aComponents; }
    /// Adds a component for each module that takes part in the process, which runs the caller's program. Adds
    /// nothing if the process can't be opened or runs another program. Reads at most 256 modules.
    void AddProcessVersionInfo(unsigned long processId);
    /// Clears the numbers, the name, the descriptor and the date. The version texts and the components remain
    /// (kept for compatibility).
    void Clear();

protected:
    /// Returns the version of a text with points or commas. A text that begins with a point keeps its points,
    /// which are not separators (kept for compatibility).
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
