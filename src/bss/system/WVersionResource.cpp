#include "bss/system/WVersionResource.h"

#include "krtpal/module.h"
#include "krtpal/path.h"
#include "krtpal/text.h"
#include "krtpal/time.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <cwctype>
#include <new>
#include <string_view>

namespace bss {

namespace {

struct TextOfValue {
    DWORD value;
    const wchar_t* text;
};

constexpr TextOfValue kFileOS[] = {
    {0, L"Unknown OS"},
    {1, L"16-bit windows"},
    {2, L"16-bit Presentation manager"},
    {3, L"32-bit Presentation manager"},
    {4, L"Win32 API"},
    {0x10000, L"MS-DOS"},
    {0x10001, L"16-bit windows running on MS-DOS"},
    {0x10004, L"Win32 API running on MS-DOS"},
    {0x20000, L"16-bit OS/2"},
    {0x20002, L"16-bit Presentation manager running on 16-bit OS/2"},
    {0x30000, L"32-bit OS/2"},
    {0x30003, L"32-bit Presentation manager running on 32-bit OS/2"},
    {0x40000, L"Windows NT"},
    {0x40004, L"Win32 API on Windows NT"},
};

constexpr DWORD kDriver = 3;
constexpr DWORD kFont = 4;

// File types without subtypes.
constexpr TextOfValue kFileTypes[] = {
    {0, L"Unknown type"},   {1, L"Application"},         {2, L"Dynamic link library"},
    {5, L"Virtual device"}, {7, L"Static link library"},
};
constexpr TextOfValue kDrivers[] = {
    {0, L"Unknown driver"},     {1, L"Printer driver"}, {2, L"Keyboard driver"}, {3, L"Language driver"},
    {4, L"Display driver"},     {5, L"Mouse driver"},   {6, L"Network driver"},  {7, L"System driver"},
    {8, L"Installable driver"}, {9, L"Sound driver"},
};
constexpr TextOfValue kFonts[] = {
    {0, L"Unknown font"},
    {1, L"Raster font"},
    {2, L"Vector font"},
    {3, L"Truetype font"},
};

// Sets the text of a value. Leaves it unchanged for a value that is not in the table.
template <std::size_t N>
void FindText(const TextOfValue (&table)[N], DWORD value, std::wstring& text) {
    const auto* const row = std::find_if(std::begin(table), std::end(table),
                                         [&](const TextOfValue& each) { return each.value == value; });
    if (row != std::end(table)) {
        text = row->text;
    }
}

CStdStr<wchar_t> Dotted(const WVersionResource::versionnumber& number) {
    CStdStr<wchar_t> text;
    text.Format(L"%d.%d.%d.%d", number.product, number.major, number.minor, number.build);
    return text;
}

// Returns the number as _wtoi does: 0 for text that is not a number, the limit for a number out of range.
unsigned int NumberOf(const std::wstring& text) {
    const long value = std::wcstol(text.c_str(), nullptr, 10);
    return static_cast<unsigned int>(static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX)));
}

std::wstring ModulePath(HINSTANCE module) {
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(module, path, MAX_PATH);
    return {path, std::min<DWORD>(length, MAX_PATH - 1)};
}

// Returns the number of the month whose English name begins with these three letters, from 1; 1 if none does.
int MonthOf(std::wstring_view name) {
    constexpr std::wstring_view kMonths[] = {L"jan", L"feb", L"mar", L"apr", L"may", L"jun",
                                             L"jul", L"aug", L"sep", L"oct", L"nov", L"dec"};
    for (int i = 0; i < 12; ++i) {
        if (name.size() >= 3 &&
            std::equal(kMonths[i].begin(), kMonths[i].end(), name.begin(), [](wchar_t a, wchar_t b) {
                return a == static_cast<wchar_t>(std::towlower(static_cast<wint_t>(b)));
            })) {
            return i + 1;
        }
    }
    return 1;
}

bool ReadDate(const wchar_t* date, std::tm* fields) {
    const std::wstring_view text(date);
    const std::size_t monthAt = text.find_first_not_of(L" \t");
    const std::size_t dayAt = text.find_first_of(L" \t", monthAt);
    if (dayAt == std::wstring_view::npos) {
        return false;
    }
    wchar_t* yearAt = nullptr;
    wchar_t* end = nullptr;
    const long day = std::wcstol(date + dayAt, &yearAt, 10);
    const long year = std::wcstol(yearAt, &end, 10);
    constexpr long kLastYear = 3000;
    if (yearAt == date + dayAt || end == yearAt || day < 1 || day > 31 || year < 1900 || year > kLastYear) {
        return false;
    }
    fields->tm_year = static_cast<int>(year - 1900);
    fields->tm_mon = MonthOf(text.substr(monthAt, dayAt - monthAt));
    fields->tm_mday = static_cast<int>(day);
    return true;
}

// Reads "hh:mm:ss".
bool ReadTime(const wchar_t* time, std::tm* fields) {
    constexpr std::size_t kLength = 8;
    const std::wstring_view text(time);
    if (text.size() < kLength) {
        return false;
    }
    fields->tm_hour = static_cast<int>(NumberOf(std::wstring(text.substr(0, 2))));
    fields->tm_min = static_cast<int>(NumberOf(std::wstring(text.substr(3, 2))));
    fields->tm_sec = static_cast<int>(NumberOf(std::wstring(text.substr(6, 2))));
    return true;
}

} // namespace

WVersionResource::WVersionResource(HINSTANCE module) {
    if (!ReadNames(module) || !ReadBlock()) {
        return;
    }
    GetFixedFileInfo();
    ReadTranslation();
    GetFileDescription(m_sFileDescription);
    GetFileVersion(m_FileVersionNumber);
    GetFileVersion(m_sFileVersion);
    GetFileExecutableName(m_sFileExecutableName);
    GetProductName(m_sProductName);
    GetProductVersion(m_ProductVersionNumber);
    GetProductVersion(m_sProductVersion);
    GetDisplayProductVersion(m_sDisplayProductVersion);
    GetCopyrightInfo(m_sCopyright);
    GetCompanyName(m_sCompanyName);
    GetPrivateBuild(m_sPrivateBuild);
    GetSpecialBuild(m_sSpecialBuild);
    GetKRTFileVer(m_sKRTFileVer);
    GetKRTIOVer(m_sKRTIOVer);
}

WVersionResource::~WVersionResource() = default;

bool WVersionResource::ReadNames(HINSTANCE module) {
    m_sExecutablePath = ModulePath(nullptr);
    const std::wstring path = ModulePath(module);
    if (m_sExecutablePath.empty() || path.empty()) {
        return false;
    }
    m_sModuleNameLong = path;
    wchar_t shortPath[MAX_PATH] = {};
    const DWORD length = GetShortPathNameW(path.c_str(), shortPath, MAX_PATH);
    m_sModuleNameShort = length == 0 || length >= MAX_PATH ? path : std::wstring(shortPath, length);
    return true;
}

bool WVersionResource::ReadBlock() {
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeW(m_sModuleNameShort.c_str(), &unused);
    if (size == 0) {
        return false;
    }
    m_pBlock.reset(new (std::nothrow) unsigned char[size]());
    m_nBlockSize = m_pBlock == nullptr ? 0 : size;
    return m_pBlock != nullptr &&
           GetFileVersionInfoW(m_sModuleNameShort.c_str(), 0, size, m_pBlock.get()) != FALSE;
}

// `bytesLeft` is the number of bytes from the value to the end of the block. The length that the block states
// is not trusted.
bool WVersionResource::QueryBlock(const std::wstring& name, const void** value, std::size_t* bytesLeft,
                                  unsigned int* length) const {
    void* found = nullptr;
    UINT count = 0;
    if (m_pBlock == nullptr || !VerQueryValueW(m_pBlock.get(), name.c_str(), &found, &count)) {
        return false;
    }
    const auto* const at = static_cast<const unsigned char*>(found);
    const unsigned char* const end = m_pBlock.get() + m_nBlockSize;
    const bool isInside = found != nullptr && at >= m_pBlock.get() && at < end;
    *value = isInside ? found : nullptr;
    *bytesLeft = isInside ? static_cast<std::size_t>(end - at) : 0;
    *length = count;
    return true;
}

bool WVersionResource::GetFixedFileInfo() {
    const void* value = nullptr;
    std::size_t bytesLeft = 0;
    unsigned int length = 0;
    if (!QueryBlock(L"\\", &value, &bytesLeft, &length) || length < sizeof(m_FixedFileInfo) ||
        bytesLeft < sizeof(m_FixedFileInfo)) {
        return false;
    }
    std::memcpy(&m_FixedFileInfo, value, sizeof(m_FixedFileInfo));
    GetModuleVersion(m_sModuleVersion);
    GetFileDateTimes();
    GetFileType(m_sFileType);
    GetFileOS(m_sFileOS);
    return true;
}

void WVersionResource::ReadTranslation() {
    const void* value = nullptr;
    std::size_t bytesLeft = 0;
    unsigned int length = 0;
    std::uint16_t pair[2];
    if (QueryBlock(L"\\VarFileInfo\\Translation", &value, &bytesLeft, &length) && length >= sizeof(pair) &&
        bytesLeft >= sizeof(pair)) {
        std::memcpy(pair, value, sizeof(pair));
        m_nLanguage = pair[0];
        m_nCodePage = pair[1];
    }
}

void WVersionResource::GetModuleVersion(std::wstring& text) const {
    const auto high = [](DWORD both) { return both >> 16; };
    const auto low = [](DWORD both) { return both & 0xFFFF; };
    text = Dotted({high(m_FixedFileInfo.dwFileVersionMS), low(m_FixedFileInfo.dwFileVersionMS),
                   high(m_FixedFileInfo.dwFileVersionLS), low(m_FixedFileInfo.dwFileVersionLS)});
}

void WVersionResource::GetFileDateTimes() {
    m_sFileCreationDate.clear();
    if (m_FixedFileInfo.dwFileDateMS == 0 && m_FixedFileInfo.dwFileDateLS == 0) {
        return;
    }
    const FILETIME ticks{m_FixedFileInfo.dwFileDateLS, m_FixedFileInfo.dwFileDateMS};
    SYSTEMTIME time{};
    if (FileTimeToSystemTime(&ticks, &time)) {
        CStdStr<wchar_t> text;
        text.Format(L"%02d/%02d/%02d  %02d:%02d:%02d", time.wMonth, time.wDay, time.wYear, time.wHour,
                    time.wMinute, time.wSecond);
        m_sFileCreationDate = text;
    }
}

void WVersionResource::GetFileType(std::wstring& text) const {
    switch (m_FixedFileInfo.dwFileType) {
    case kDriver:
        FindText(kDrivers, m_FixedFileInfo.dwFileSubtype, text);
        break;
    case kFont:
        FindText(kFonts, m_FixedFileInfo.dwFileSubtype, text);
        break;
    default:
        FindText(kFileTypes, m_FixedFileInfo.dwFileType, text);
    }
}

void WVersionResource::GetFileOS(std::wstring& text) const {
    FindText(kFileOS, m_FixedFileInfo.dwFileOS, text);
}

bool WVersionResource::GetValueByName(const wchar_t* name, std::wstring& text) const {
    if (m_nLanguage == 0 || m_nCodePage == 0 || m_pBlock == nullptr) {
        return false;
    }
    CStdStr<wchar_t> path;
    path.Format(L"\\StringFileInfo\\%04x%04x\\%s", m_nLanguage, m_nCodePage, name);
    const void* value = nullptr;
    std::size_t bytesLeft = 0;
    unsigned int length = 0;
    if (!QueryBlock(path, &value, &bytesLeft, &length)) {
        return false;
    }
    if (value != nullptr) {
        std::wstring found(std::min<std::size_t>(length, bytesLeft / sizeof(wchar_t)), L'\0');
        std::memcpy(found.data(), value, found.size() * sizeof(wchar_t));
        text = found.substr(0, found.find(L'\0'));
    }
    return true;
}

bool WVersionResource::GetVersionNumber(const wchar_t* name, versionnumber& number) const {
    std::wstring text;
    if (!GetValueByName(name, text)) {
        return false;
    }
    ParseVersionString(text, number.product, number.major, number.minor, number.build);
    return true;
}

void WVersionResource::ParseVersionString(const std::wstring& text, unsigned int& a, unsigned int& b,
                                          unsigned int& c, unsigned int& d) {
    constexpr const wchar_t* kDelimiters = L" .,";
    std::size_t at = text.find_first_not_of(kDelimiters);
    for (unsigned int* const number : {&a, &b, &c, &d}) {
        if (at == std::wstring::npos) {
            return;
        }
        const std::size_t end = std::min(text.find_first_of(kDelimiters, at), text.size());
        *number = NumberOf(text.substr(at, end - at));
        at = text.find_first_not_of(kDelimiters, end);
    }
}

bool WVersionResource::GetFileVersion(versionnumber& number) const {
    return GetVersionNumber(L"FileVersion", number);
}

void WVersionResource::GetFileVersion(std::wstring& text) const {
    text = Dotted(m_FileVersionNumber);
}

bool WVersionResource::GetFileDescription(std::wstring& text) const {
    return GetValueByName(L"FileDescription", text);
}

void WVersionResource::GetFileExecutableName(std::wstring& text) const {
    wchar_t name[_MAX_FNAME] = {};
    if (_wsplitpath_s(m_sExecutablePath.c_str(), nullptr, 0, nullptr, 0, name, _MAX_FNAME, nullptr, 0) == 0) {
        text = name;
        CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    }
}

bool WVersionResource::GetProductVersion(versionnumber& number) const {
    return GetVersionNumber(L"ProductVersion", number);
}

std::wstring WVersionResource::WithBuilds(const std::wstring& version) const {
    std::wstring privateBuild;
    std::wstring specialBuild;
    GetPrivateBuild(privateBuild);
    GetSpecialBuild(specialBuild);
    std::wstring text = privateBuild.empty() ? version : privateBuild + L" " + version;
    return specialBuild.empty() ? text : text + L" (" + specialBuild + L")";
}

void WVersionResource::GetProductVersion(std::wstring& text) const {
    text = WithBuilds(Dotted(m_ProductVersionNumber));
}

void WVersionResource::GetDisplayProductVersion(std::wstring& text) const {
    const std::wstring version = Dotted(m_ProductVersionNumber);
    text = WithBuilds(version);
    if (text == version) {
        text.resize(version.rfind(L'.'));
    }
}

bool WVersionResource::GetProductName(std::wstring& text) const {
    return GetValueByName(L"ProductName", text);
}

bool WVersionResource::GetPrivateBuild(std::wstring& text) const {
    return GetValueByName(L"PrivateBuild", text);
}

bool WVersionResource::GetSpecialBuild(std::wstring& text) const {
    return GetValueByName(L"SpecialBuild", text);
}

bool WVersionResource::GetCopyrightInfo(std::wstring& text) const {
    return GetValueByName(L"LegalCopyright", text);
}

bool WVersionResource::GetCompanyName(std::wstring& text) const {
    return GetValueByName(L"CompanyName", text);
}

void WVersionResource::GetKRTFileVer(std::wstring& text) {
    if (GetVersionNumber(L"KRTFileVer", m_KRTFileVersionNumber)) {
        text = Dotted(m_KRTFileVersionNumber);
    }
}

void WVersionResource::GetKRTIOVer(std::wstring& text) {
    if (GetVersionNumber(L"KRTIOVer", m_KRTIOVersionNumber)) {
        text = Dotted(m_KRTIOVersionNumber);
    }
}

std::int64_t WVersionResource::GetBuildDate(const wchar_t* date, const wchar_t* time,
                                            CStdStr<wchar_t>* pText) {
    if (pText != nullptr) {
        pText->clear();
    }
    std::tm fields{};
    fields.tm_isdst = -1;
    if (date == nullptr || time == nullptr || !ReadDate(date, &fields) || !ReadTime(time, &fields)) {
        return -1;
    }
    const std::int64_t seconds = _mktime64(&fields);
    if (seconds != -1 && pText != nullptr) {
        wchar_t text[255] = {};
        *pText = std::wstring(text, std::wcsftime(text, 255, L"%b %d, %Y  %I:%M:%S %p", &fields));
    }
    return seconds;
}

} // namespace bss
