#include "bss/serial/WVersionInfo.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WBinarySerializer.h"
#include "bss/system/WVersionResource.h"
#include "krtpal/module.h"
#include "krtpal/path.h"
#include "krtpal/process.h"
#include "krtpal/sync.h"

#include <algorithm>
#include <cwctype>
#include <memory>
#include <stdexcept>

namespace bss {

namespace {

// The largest accepted count: the number of components that a 32-bit process could hold.
constexpr long kMostComponents = 15'339'168;
// The largest number of components to reserve before they are read.
constexpr long kReserved = 64;
// Limits the recursion: the depth of a stored tree is not trusted.
constexpr int kDeepestComponents = 100;
thread_local int componentDepth = 0;

class DepthGuard {
public:
    DepthGuard() {
        if (componentDepth >= kDeepestComponents) {
            throw WNEDataIOError(L"cannot read components: they are nested deeper than " +
                                 std::to_wstring(kDeepestComponents) + L" levels");
        }
        ++componentDepth;
    }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;
    ~DepthGuard() { --componentDepth; }
};

bool HasEnded(const WSerializer& serializer) {
    const auto* const binary = dynamic_cast<const WBinarySerializer*>(&serializer);
    return binary != nullptr && !binary->MoreToRead();
}

// Returns the file name and the extension of a path.
std::wstring FileNameOf(const wchar_t* path) {
    wchar_t name[_MAX_FNAME] = {};
    wchar_t extension[_MAX_EXT] = {};
    _wsplitpath_s(path, nullptr, 0, nullptr, 0, name, _MAX_FNAME, extension, _MAX_EXT);
    return std::wstring(name) + extension;
}

HMODULE OwnProgram() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       nullptr, &module);
    return module;
}

bool EqualIgnoringCase(const wchar_t* a, const wchar_t* b) {
    const std::wstring first(a);
    const std::wstring second(b);
    return std::equal(first.begin(), first.end(), second.begin(), second.end(), [](wchar_t x, wchar_t y) {
        return std::towlower(static_cast<wint_t>(x)) == std::towlower(static_cast<wint_t>(y));
    });
}

struct HandleCloser {
    void operator()(void* handle) const { CloseHandle(handle); }
};

} // namespace

WVersionInfo::WVersionInfo(const wchar_t* name) : WVersionInfo(0, 0, 0, 0) {
    SetName(name);
}

WVersionInfo::WVersionInfo(short productVersion, short majorVersion, short minorVersion, short build)
    : WVersion(productVersion, majorVersion, minorVersion, build), WPersistentObject(0, 0, WVersion()) {
    WVersionInfo::SetNameOfClass();
}

WVersionInfo::WVersionInfo(const WVersionInfo& other) = default;

WVersionInfo::~WVersionInfo() = default;

WVersionInfo& WVersionInfo::operator=(const WVersionInfo& other) = default;

void WVersionInfo::SetNameOfClass() {
    m_sNameOfClass = L"WVersionInfo";
}

void WVersionInfo::Serialize(bool bRead) {
    WPersistentObject::Serialize(bRead);
    const auto text = [&](const wchar_t* label, std::wstring& value) {
        if (bRead) {
            value.clear(); // a binary image leaves the value unchanged for an empty text
            m_pSerializer->Retrieve(label, value);
        } else {
            m_pSerializer->Insert(label, value);
        }
    };
    const auto number = [&](const wchar_t* label, short& value) {
        bRead ? m_pSerializer->Retrieve(label, value) : m_pSerializer->Insert(label, value);
    };
    text(L"m_sModuleName", m_sModuleName);
    text(L"m_sModuleVersion", m_sModuleVersion);
    text(L"m_sDescriptor", m_sDescriptor);
    text(L"m_sFileDate", m_sFileDate);
    text(L"m_sKRTFileVer", m_sKRTFileVer);
    text(L"m_sKRTIOVer", m_sKRTIOVer);
    number(L"m_nProductVersion", m_nProductVersion);
    number(L"m_nMajorVersion", m_nMajorVersion);
    number(L"m_nMinorVersion", m_nMinorVersion);
    number(L"m_nBuild", m_nBuild);
}

void WVersionInfo::SerializeComponents(bool bRead) {
    WPersistentObject::SerializeComponents(bRead);
    bRead ? ReadComponents() : WriteComponents();
}

void WVersionInfo::WriteComponents() {
    m_pSerializer->Insert(L"m_aComponents", static_cast<long>(m_aComponents.size()));
    for (WVersionInfo& component : m_aComponents) {
        component.Write(m_pSerializer, m_nVersion, true);
    }
}

void WVersionInfo::ReadComponents() {
    const DepthGuard depth;
    m_aComponents.clear();
    long count = 0;
    m_pSerializer->Retrieve(L"m_aComponents", count);
    if (count < 0 || count > kMostComponents) {
        throw std::length_error("vector<T> too long");
    }
    m_aComponents.reserve(static_cast<std::size_t>(std::min(count, kReserved)));
    for (long i = 0; i < count && !HasEnded(*m_pSerializer); ++i) {
        WVersionInfo component;
        component.Read(m_pSerializer, m_nVersion, true);
        m_aComponents.push_back(component);
    }
}

void WVersionInfo::DeleteComponents() {
    WPersistentObject::DeleteComponents();
    for (WVersionInfo& component : m_aComponents) {
        component.DeleteComponents();
    }
    m_aComponents.clear();
}

void WVersionInfo::SetName(const wchar_t* name) {
    if (name != nullptr) {
        m_sModuleName = name;
    }
}

WVersion WVersionInfo::VersionFromString(std::wstring text) {
    // A point at the beginning ends the search: such a text keeps all its points (kept for compatibility).
    for (std::size_t i = text.find(L'.'); i != std::wstring::npos && i != 0; i = text.find(L'.', i)) {
        text[i] = L',';
    }
    return {text};
}

std::wstring WVersionInfo::GetVersionString() const {
    return std::to_wstring(m_nProductVersion) + L'.' + std::to_wstring(m_nMajorVersion) + L'.' +
           std::to_wstring(m_nMinorVersion) + L'.' + std::to_wstring(m_nBuild);
}

void WVersionInfo::SetVersion(short productVersion, short majorVersion, short minorVersion, short build) {
    m_nProductVersion = productVersion;
    m_nMajorVersion = majorVersion;
    m_nMinorVersion = minorVersion;
    m_nBuild = build;
}

WVersionInfo WVersionInfo::GetVersionInfo(HINSTANCE module) {
    const WVersionResource resource(module);
    WVersionInfo info(resource.GetFileVersion());
    if (const std::wstring name = FileNameOf(resource.GetModuleNameLong()); !name.empty()) {
        info.m_sModuleName = name;
    }
    info.m_sFileDate = resource.GetFileCreationDate();
    info.m_sModuleVersion = resource.GetModuleVersion();
    info.m_sKRTFileVer = resource.GetKRTFileVer();
    info.m_sKRTIOVer = resource.GetKRTIOVer();
    return info;
}

std::wstring WVersionInfo::GetVersionInfo(const WVersionInfo& info, int indent) {
    std::wstring text(static_cast<std::size_t>(std::max(indent, 0)), L'\t');
    text += info.m_sModuleName + L"  " + info.GetVersionString() + L"  " + info.m_sKRTIOVer + L'\n';
    for (const WVersionInfo& component : info.m_aComponents) {
        text += GetVersionInfo(component, indent + 1);
    }
    return text;
}

void WVersionInfo::AddComponent(const WVersionInfo& component) {
    m_aComponents.push_back(component);
}

void WVersionInfo::AddProcessVersionInfo(unsigned long processId) {
    wchar_t ownPath[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, ownPath, MAX_PATH - 1);
    const std::unique_ptr<void, HandleCloser> process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, static_cast<DWORD>(processId)));
    if (process == nullptr) {
        return;
    }
    wchar_t path[MAX_PATH] = {};
    if (K32GetModuleFileNameExW(process.get(), OwnProgram(), path, MAX_PATH - 1) != 0 &&
        !EqualIgnoringCase(path, ownPath)) {
        return;
    }
    HMODULE modules[256] = {};
    DWORD needed = 0;
    if (K32EnumProcessModules(process.get(), modules, sizeof(modules), &needed) == FALSE) {
        return;
    }
    const std::size_t count = std::min<std::size_t>(needed / sizeof(void*), std::size(modules));
    for (std::size_t i = 0; i < count; ++i) {
        // The module handles of a process that runs the same program are used as this process's own.
        if (GetProcAddress(modules[i], "GetVersionInfoModuleHandle") != nullptr) {
            m_aComponents.push_back(GetVersionInfo(modules[i]));
        }
    }
}

void WVersionInfo::Clear() {
    SetVersion(0, 0, 0, 0);
    m_sModuleName.clear();
    m_sDescriptor.clear();
    m_sFileDate.clear();
}

} // namespace bss
