#include "bss/exception/WExceptionEventInfo.h"

#include "bss/exception/WNestedExceptionData.h"

#include <array>
#include <cwchar>

namespace bss {

namespace {

constexpr std::array<const wchar_t*, 4> kSeverityTexts{L"ADVISORY", L"MINOR   ", L"MAJOR   ", L"CRITICAL"};

bool SameText(const wchar_t* a, const wchar_t* b) {
    return a == b || (a != nullptr && b != nullptr && std::wcscmp(a, b) == 0);
}

} // namespace

// Constant-initialised: descriptors of other units may register before this unit's initialisers run. Never
// destroyed: static destructors may read the list.
constinit std::vector<const WExceptionEventInfo*>* WExceptionEventInfo::m_apExceptionEventInfoList = nullptr;

WExceptionEventInfo::WExceptionEventInfo(long id, const wchar_t* name, const wchar_t* msg,
                                         ThrowFunc throwFunc, eseverity severity)
    : m_nId(id), m_pszName(name), m_severity(severity), m_pszMsg(msg), m_throwFunc(throwFunc) {
    UpdateEventInfoList();
}

eseverity WExceptionEventInfo::GetSeverity(const wchar_t* text) {
    for (std::size_t i = 0; i < kSeverityTexts.size(); ++i) {
        if (SameText(text, kSeverityTexts[i])) {
            return static_cast<eseverity>(i);
        }
    }
    return UNKNOWN_SEVERITY;
}

const wchar_t* WExceptionEventInfo::GetSeverity(eseverity severity) {
    const auto index = static_cast<std::size_t>(severity);
    return index < kSeverityTexts.size() ? kSeverityTexts[index] : L"????????";
}

std::vector<const WExceptionEventInfo*> WExceptionEventInfo::GetEventInfoList() {
    InitializeEventInfoList();
    return *m_apExceptionEventInfoList;
}

void WExceptionEventInfo::InitializeEventInfoList() {
    if (m_apExceptionEventInfoList == nullptr) {
        m_apExceptionEventInfoList = new std::vector<const WExceptionEventInfo*>;
    }
}

void WExceptionEventInfo::UpdateEventInfoList() {
    InitializeEventInfoList();
    for (const WExceptionEventInfo* info : *m_apExceptionEventInfoList) {
        if (info->m_nId == m_nId && info->m_severity == m_severity && SameText(info->m_pszName, m_pszName)) {
            return;
        }
    }
    m_apExceptionEventInfoList->push_back(this);
}

void WExceptionEventInfo::ThrowFromList(WNestedExceptionData& data, WNestedException* next) {
    if (data.m_pszId == nullptr) {
        return;
    }
    const long id = std::wcstol(data.m_pszId, nullptr, 10);
    const eseverity severity = GetSeverity(data.m_pszSeverity);
    for (const WExceptionEventInfo* info : GetEventInfoList()) {
        if (info->m_nId == id && info->m_severity == severity && SameText(info->m_pszName, data.m_pszName)) {
            if (info->m_throwFunc != nullptr) {
                info->m_throwFunc(data, next);
            }
            return;
        }
    }
}

} // namespace bss
