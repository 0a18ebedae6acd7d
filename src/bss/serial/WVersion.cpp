#include "bss/serial/WVersion.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/thread/WCriticalSection.h"
#include "bss/thread/WSingleLock.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cwchar>
#include <memory>

namespace bss {

struct WVersion::Defaults {
    WVersion m_KRTFileVersion{Zero{}};
    bool m_bIsValidFileVersion = false;
    std::unique_ptr<WVersion> m_apKRTIOVersion;
    std::unique_ptr<WVersion> m_apKRTReportVersion;
    // Guards m_bIsValidFileVersion only.
    sync::WCriticalSection m_CriticalSection;
};

namespace {

// Returns the low 16 bits of the number at the beginning of the text, parsed as `_wtoi` does.
short ReadNumber(const std::wstring& text) {
    const long number = std::clamp(std::wcstol(text.c_str(), nullptr, 10), static_cast<long>(INT_MIN),
                                   static_cast<long>(INT_MAX));
    return static_cast<short>(static_cast<std::uint16_t>(number));
}

std::uint32_t Extend(short number) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(number));
}

short ByteOf(long packed, unsigned shift) {
    return static_cast<short>((static_cast<std::uint32_t>(packed) >> shift) & 0xFFU);
}

const WVersion& Demand(const std::unique_ptr<WVersion>& version, const wchar_t* message) {
    if (version == nullptr) {
        throw WNEUnexpectedException(message);
    }
    return *version;
}

} // namespace

WVersion::Defaults& WVersion::GetDefaults() {
    static auto& defaults = *new Defaults;
    return defaults;
}

WVersion::WVersion() : WVersion(0, 0, 0, 0) {}

WVersion::WVersion(short productVersion, short majorVersion, short minorVersion, short build)
    : m_nProductVersion(productVersion), m_nMajorVersion(majorVersion), m_nMinorVersion(minorVersion),
      m_nBuild(build) {
    Initialize(GetVersion() == 0 && GetIsValidFileVersion() ? GetDefaults().m_KRTFileVersion : *this);
}

WVersion::WVersion(long packed) {
    Initialize(packed);
}

WVersion::WVersion(const std::wstring& text) {
    constexpr wchar_t kDelimiter = L',';
    std::array<short, 4> numbers{};
    std::size_t position = text.find_first_not_of(kDelimiter);
    for (std::size_t i = 0; i < numbers.size() && position != std::wstring::npos; ++i) {
        const std::size_t end = text.find(kDelimiter, position);
        numbers[i] = ReadNumber(text.substr(position, end - position));
        position = text.find_first_not_of(kDelimiter, end);
    }
    Initialize(WVersion(numbers[0], numbers[1], numbers[2], numbers[3]));
}

WVersion::WVersion(Zero /*zero*/) {
    Initialize(*this);
}

WVersion::WVersion(const WVersion& other) = default;

WVersion::~WVersion() = default;

WVersion& WVersion::operator=(const WVersion& other) = default;

WVersion& WVersion::operator=(long packed) {
    return *this = GetVersion(packed);
}

void WVersion::Initialize(const WVersion& other) {
    m_nProductVersion = other.m_nProductVersion;
    m_nMajorVersion = other.m_nMajorVersion;
    m_nMinorVersion = other.m_nMinorVersion;
    m_nBuild = other.m_nBuild;
    const std::wstring threeNumbers = std::to_wstring(m_nProductVersion) + L'.' +
                                      std::to_wstring(m_nMajorVersion) + L'.' +
                                      std::to_wstring(m_nMinorVersion);
    if (m_sVersionEx.empty()) {
        m_sVersionEx = threeNumbers + L'.' + std::to_wstring(m_nBuild);
    }
    if (m_sDisplayVersion.empty()) {
        m_sDisplayVersion = threeNumbers;
    }
}

void WVersion::Initialize(long packed) {
    Initialize(GetVersion(packed));
}

long WVersion::GetVersion() const {
    return GetVersion(m_nProductVersion, m_nMajorVersion, m_nMinorVersion, m_nBuild);
}

long WVersion::GetVersion(const WVersion& version) {
    return version.GetVersion();
}

long WVersion::GetVersion(short productVersion, short majorVersion, short minorVersion, short build) {
    // Signed 32 bits, also where long has more. Nothing is masked: numbers overflow to the left (kept for
    // compatibility).
    std::uint32_t packed = Extend(productVersion) << 8U | Extend(majorVersion);
    packed = packed << 8U | Extend(minorVersion);
    packed = packed << 8U | Extend(build);
    return static_cast<std::int32_t>(packed);
}

WVersion WVersion::GetVersion(long packed) {
    WVersion version(0, 0, 0, 0);
    version.m_nProductVersion = ByteOf(packed, 24);
    version.m_nMajorVersion = ByteOf(packed, 16);
    version.m_nMinorVersion = ByteOf(packed, 8);
    version.m_nBuild = ByteOf(packed, 0);
    return version;
}

bool WVersion::IsVersion(long packed, const WVersion& version) {
    return packed == version.GetVersion();
}

bool WVersion::IsVersion(long packed, short productVersion, short majorVersion, short minorVersion,
                         short build) {
    return packed == GetVersion(productVersion, majorVersion, minorVersion, build);
}

const WVersion& WVersion::DefaultFileSerializationVersion() {
    if (!GetIsValidFileVersion()) {
        throw WNEUnexpectedException(L"KRT File Serialization not set");
    }
    return GetDefaults().m_KRTFileVersion;
}

const WVersion& WVersion::DefaultSliceSerializationVersion() {
    return Demand(GetDefaults().m_apKRTIOVersion, L"KRT ISI I/O Serialization not set");
}

const WVersion& WVersion::DefaultReportableVorinVersion() {
    return Demand(GetDefaults().m_apKRTReportVersion, L"KRT Reportable Version not set");
}

void WVersion::SetDefaultFileSerializationVersion(const WVersion& version) {
    // The flag is set last: a thread that sees it set sees the whole version.
    GetDefaults().m_KRTFileVersion = version;
    SetIsValidFileVersion(true);
}

void WVersion::SetDefaultSliceSerializationVersion(const WVersion& version) {
    GetDefaults().m_apKRTIOVersion = std::make_unique<WVersion>(version);
}

void WVersion::SetDefaultReportableVorinVersion(const WVersion& version) {
    GetDefaults().m_apKRTReportVersion = std::make_unique<WVersion>(version);
}

bool WVersion::IsDefaultSliceSerializationSet() {
    return GetDefaults().m_apKRTIOVersion != nullptr;
}

bool WVersion::IsDefaultVorinReportVersionSet() {
    return GetDefaults().m_apKRTReportVersion != nullptr;
}

bool WVersion::GetIsValidFileVersion() {
    Defaults& defaults = GetDefaults();
    const sync::WSingleLock lock(&defaults.m_CriticalSection, true);
    return defaults.m_bIsValidFileVersion;
}

void WVersion::SetIsValidFileVersion(bool isValid) {
    Defaults& defaults = GetDefaults();
    const sync::WSingleLock lock(&defaults.m_CriticalSection, true);
    defaults.m_bIsValidFileVersion = isValid;
}

unsigned int WVersion::AddSaveAsFileFilter(const std::pair<std::wstring, long>& filter) {
    auto& filters = GetDefaults().m_KRTFileVersion.m_aSaveAsFileFilters;
    filters.push_back(filter);
    return static_cast<unsigned int>(filters.size());
}

std::vector<std::pair<std::wstring, long>> WVersion::GetSaveAsFileFilters() {
    return GetDefaults().m_KRTFileVersion.m_aSaveAsFileFilters;
}

void WVersion::RemoveAllSaveAsFileFilters() {
    GetDefaults().m_KRTFileVersion.m_aSaveAsFileFilters.clear();
}

} // namespace bss
