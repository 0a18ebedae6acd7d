#include "bss/system/WGuid.h"

#include <cstdint>
#include <cstring>

namespace bss {

namespace {

int DigitValue(wchar_t c) {
    if (c >= L'0' && c <= L'9') {
        return static_cast<int>(c - L'0');
    }
    if (c >= L'a' && c <= L'f') {
        return static_cast<int>(c - L'a') + 10;
    }
    return c >= L'A' && c <= L'F' ? static_cast<int>(c - L'A') + 10 : -1;
}

// Returns the value of the next group. Moves `text` past the group's hyphen, or to the end of the text.
std::uint64_t TakeGroup(const wchar_t*& text) {
    std::uint64_t value = 0;
    for (; DigitValue(*text) >= 0; ++text) {
        value = value << 4 | static_cast<std::uint64_t>(DigitValue(*text));
    }
    while (*text != L'\0' && *text != L'-') {
        ++text;
    }
    if (*text == L'-') {
        ++text;
    }
    return value;
}

GUID Parse(const wchar_t* text) {
    if (*text == L'{') {
        ++text;
    }
    GUID guid{};
    guid.Data1 = static_cast<decltype(guid.Data1)>(TakeGroup(text) & 0xFFFFFFFF);
    guid.Data2 = static_cast<decltype(guid.Data2)>(TakeGroup(text) & 0xFFFF);
    guid.Data3 = static_cast<decltype(guid.Data3)>(TakeGroup(text) & 0xFFFF);
    const std::uint64_t upper = TakeGroup(text);
    const std::uint64_t lower = TakeGroup(text);
    for (int i = 0; i < 2; ++i) {
        guid.Data4[i] = static_cast<unsigned char>(upper >> (8 * (1 - i)));
    }
    for (int i = 0; i < 6; ++i) {
        guid.Data4[2 + i] = static_cast<unsigned char>(lower >> (8 * (5 - i)));
    }
    return guid;
}

int Compare(const GUID& a, const GUID& b) {
    if (a.Data1 != b.Data1) {
        return a.Data1 < b.Data1 ? -1 : 1;
    }
    if (a.Data2 != b.Data2) {
        return a.Data2 < b.Data2 ? -1 : 1;
    }
    if (a.Data3 != b.Data3) {
        return a.Data3 < b.Data3 ? -1 : 1;
    }
    return std::memcmp(a.Data4, b.Data4, sizeof(a.Data4));
}

} // namespace

WGuid::WGuid(const GUID& guid) {
    Init(&guid);
}

WGuid::WGuid(const WGuid& other) : m_guid(other.m_guid) {}

WGuid::WGuid(const WGuid* other) {
    Init(other);
}

WGuid::WGuid(const wchar_t* text) : m_guid(GetGuid(text).m_guid) {}

WGuid::~WGuid() = default;

WGuid& WGuid::operator=(const GUID& guid) {
    m_guid = guid;
    return *this;
}

WGuid& WGuid::operator=(const WGuid& other) = default;

void WGuid::Init(const GUID* guid) {
    m_guid = guid != nullptr ? *guid : GetNext();
}

void WGuid::Init(const WGuid* other) {
    Init(other != nullptr ? &other->m_guid : static_cast<const GUID*>(nullptr));
}

bool WGuid::operator==(const WGuid& other) const {
    return Compare(m_guid, other.m_guid) == 0;
}

bool WGuid::operator!=(const WGuid& other) const {
    return !(*this == other);
}

bool WGuid::operator<(const WGuid& other) const {
    return Compare(m_guid, other.m_guid) < 0;
}

bool WGuid::operator>(const WGuid& other) const {
    return Compare(m_guid, other.m_guid) > 0;
}

WGuid WGuid::GetGuid(const wchar_t* text) {
    return {text == nullptr ? GetNext() : Parse(text)};
}

void WGuid::SetGuid(const GUID& guid) {
    m_guid = guid;
}

void WGuid::SetGuid(const wchar_t* text) {
    m_guid = GetGuid(text).m_guid;
}

std::wstring WGuid::GetAsText() const {
    return GetAsText(m_guid);
}

std::wstring WGuid::GetAsText(const GUID& guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

void WGuid::GetAsText(const GUID& guid, std::wstring& text) {
    text = GetAsText(guid);
}

GUID WGuid::GetNext() {
    GUID guid{};
    return SUCCEEDED(CoCreateGuid(&guid)) ? guid : GUID{};
}

GUID WGuid::GetNextGuid() {
    return GetNext();
}

void WGuid::GetNextGuids(unsigned int count, std::vector<GUID>& guids) {
    guids.clear();
    guids.reserve(count);
    for (unsigned int i = 0; i < count; ++i) {
        guids.push_back(GetNext());
    }
}

bool GuidLessThan::operator()(const GUID& a, const GUID& b) const {
    // UuidCompare takes non-const pointers but writes to neither identifier.
    RPC_STATUS status = RPC_S_OK;
    return UuidCompare(const_cast<GUID*>(&a), const_cast<GUID*>(&b), &status) == -1;
}

} // namespace bss
