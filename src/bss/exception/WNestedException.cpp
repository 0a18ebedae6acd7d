#include "bss/exception/WNestedException.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/exception/WExceptionEventLog.h"
#include "bss/exception/WLogParams.h"
#include "bss/exception/WNestedExceptionData.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace bss {

bool WNestedException::m_bSuppressVariableData = false;

namespace {

// The link that CloneChain is cloning. `clone` calls the copy constructor, which clones the chain after the
// link; that recursion would be as deep as the chain is long. The copy constructor therefore copies this link
// without its chain, and CloneChain walks the chain in a loop.
thread_local const WNestedException* linkBeingCloned = nullptr;

class LinkBeingCloned {
public:
    explicit LinkBeingCloned(const WNestedException* link) : m_outer(std::exchange(linkBeingCloned, link)) {}
    LinkBeingCloned(const LinkBeingCloned&) = delete;
    LinkBeingCloned& operator=(const LinkBeingCloned&) = delete;
    ~LinkBeingCloned() { linkBeingCloned = m_outer; }

private:
    const WNestedException* m_outer;
};

} // namespace

WNestedException::WNestedException(const WNestedExceptionData& data, const WNestedException* next,
                                   const WExceptionEventInfo* info)
    : m_bLogDataFormatted(true) {
    auto params = std::make_unique<WLogParams>();
    params->SetEventInfo(info);
    for (int i = 0; i < WLogParams::ARGUMENT_COUNT; ++i) {
        params->SetFormatArg(i, data.m_apszArgs[static_cast<std::size_t>(i)]);
    }
    m_pNext = CloneChain(next);
    m_pLogParams = params.release();
}

WNestedException::WNestedException(const WNestedException& other)
    : WExceptionEvent(other), m_bLogDataFormatted(other.m_bLogDataFormatted) {
    auto params = other.m_pLogParams == nullptr ? nullptr : std::make_unique<WLogParams>(*other.m_pLogParams);
    if (linkBeingCloned == &other) {
        linkBeingCloned = nullptr;
    } else {
        m_pNext = CloneChain(other.m_pNext);
    }
    m_pLogParams = params.release();
}

WNestedException::~WNestedException() {
    delete m_pLogParams;
    DestroyChain(m_pNext);
}

const WNestedException& WNestedException::operator=(const WNestedException& other) {
    if (this == &other) {
        return *this;
    }
    m_bLogDataFormatted = other.m_bLogDataFormatted;
    if (other.m_pLogParams == nullptr) {
        delete std::exchange(m_pLogParams, nullptr);
    } else if (m_pLogParams == nullptr) {
        m_pLogParams = new WLogParams(*other.m_pLogParams);
    } else {
        *m_pLogParams = *other.m_pLogParams;
    }
    CloneNext(other.m_pNext);
    return *this;
}

const WNestedException& WNestedException::operator+=(const WNestedException& other) {
    WNestedException* last = this;
    while (last->m_pNext != nullptr) {
        last = last->m_pNext;
    }
    last->m_pNext = new WNEWhileHandling(other.GetEventInfo().GetName(), &other);
    return *this;
}

WNestedException* WNestedException::CloneChain(const WNestedException* head) {
    const auto destroy = [](WNestedException* chain) { DestroyChain(chain); };
    std::unique_ptr<WNestedException, decltype(destroy)> copy(nullptr, destroy);
    WNestedException* last = nullptr;
    for (const WNestedException* link = head; link != nullptr; link = link->m_pNext) {
        WNestedException* copied = nullptr;
        {
            const LinkBeingCloned guard(link);
            copied = link->clone();
        }
        if (last == nullptr) {
            copy.reset(copied);
        } else {
            last->m_pNext = copied;
        }
        last = copied;
        if (copied->m_pNext != nullptr) {
            break; // a class with its own copy constructor has copied the rest of the chain
        }
    }
    return copy.release();
}

void WNestedException::DestroyChain(WNestedException* head) noexcept {
    while (head != nullptr) {
        WNestedException* const next = std::exchange(head->m_pNext, nullptr);
        delete head;
        head = next;
    }
}

void WNestedException::CloneNext(const WNestedException* next) {
    WNestedException* const copy = CloneChain(next);
    DestroyChain(std::exchange(m_pNext, copy));
}

WLogParams* WNestedException::GetLogParams() const {
    if (!m_bLogDataFormatted || m_pLogParams == nullptr) {
        m_bLogDataFormatted = true;
        FormatLogParams(m_pLogParams);
    }
    return m_pLogParams;
}

void WNestedException::SetEventInfo(const WExceptionEventInfo* info) {
    if (m_pLogParams != nullptr) {
        m_pLogParams->SetEventInfo(info);
    }
}

void WNestedException::GetLogParamsList(std::vector<const WLogParams*>& list) const {
    for (const WNestedException* link = this; link != nullptr; link = link->m_pNext) {
        if (link->m_pLogParams == nullptr) {
            continue;
        }
        list.push_back(link->GetLogParams());
    }
}

void WNestedException::Log(WExceptionEventLog& log) const {
    std::vector<const WLogParams*> list;
    GetLogParamsList(list);
    log.Log(list);
}

void WNestedException::LogThis(WExceptionEventLog& log) const {
    log.Log({GetLogParams()});
}

std::wstring WNestedException::AsString(bool bFirstOnly) const {
    std::vector<const WLogParams*> list;
    GetLogParamsList(list);
    std::wstring text;
    for (const WLogParams* params : list) {
        text += WExceptionEventLog::FormatEventMessage(*params, false, nullptr, nullptr, false, true);
        text += L'\n';
        if (bFirstOnly) {
            break;
        }
    }
    return text;
}

eseverity WNestedException::GetHighestSeverity() const {
    // `this` may be null: CMakeLists.txt compiles this file with -fno-delete-null-pointer-checks.
    eseverity highest = MINOR;
    for (const WNestedException* link = this; link != nullptr; link = link->m_pNext) {
        highest = std::max(highest, link->GetEventInfo().GetSeverity());
    }
    return highest;
}

std::wstring WNestedException::StripPath(const std::wstring& path) {
    const std::size_t backslash = path.rfind(L'\\');
    return backslash == std::wstring::npos ? path : path.substr(backslash + 1);
}

bool WNestedException::SetVariableDataSuppression(bool suppress) {
    return std::exchange(m_bSuppressVariableData, suppress);
}

bool WNestedException::IsVariableDataSuppressionEnabled() {
    return m_bSuppressVariableData;
}

} // namespace bss
