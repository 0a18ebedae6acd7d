#include "bss/serial/WPersistentObject.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/module.h"
#include "bss/serial/WSerializer.h"
#include "bss/serial/WVersion.h"
#include "bss/system/WIDDispenser.h"
#include "krtpal/common/text.h"
#include "krtpal/common/typename.h"
#include "krtpal/debug.h"
#include "krtpal/module.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <typeinfo>

namespace bss {

namespace {

// Number of the upgrade text in the module's string table.
constexpr UINT kUpgradeText = 1001;

// The labels of every object, made once and never destroyed.
struct Labels {
    const std::wstring version = L"m_nVersion";
    const std::wstring groupID = L"groupID";
    const std::wstring objectID = L"objectID";
    const std::wstring valid = L"m_bValid";
    const std::wstring modified = L"m_bModified";
};

const Labels& GetLabels() {
    static const Labels& labels = *new Labels;
    return labels;
}

std::wstring LoadText(UINT number) {
    wchar_t text[512] = {};
    const int length = LoadStringW(GetBSSHandle(), number, text, 512);
    return {text, static_cast<std::size_t>(length > 0 ? length : 0)};
}

// Recognises a database by its kind, so that objects do not depend on its class. It has no columns for the
// flags.
bool IsDatabase(const WSerializer& serializer) {
    return serializer.GetSerializerType() == L"DATABASE";
}

WSerializer& Demand(WSerializer* serializer) {
    if (serializer == nullptr) {
        throw WNESerializerError(L"No serializer is set: call Read, Write or Delete of the object.");
    }
    return *serializer;
}

[[noreturn]] void ThrowDataIOError(const std::wstring& text) {
    OutputDebugStringW((text + L"\n").c_str());
    throw WNEDataIOError(text);
}

} // namespace

// Sets the object's serializer for a scope.
class WPersistentObject::Run {
public:
    Run(WPersistentObject& object, WSerializer* serializer) : m_object(object) {
        m_object.m_pSerializer = serializer;
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() { m_object.m_pSerializer = nullptr; }

private:
    WPersistentObject& m_object;
};

WPersistentObject::WPersistentObject(long groupID, long objectID, const WVersion& version)
    : m_nGroupID(groupID), m_nObjectID(objectID), m_nVersion(version.GetVersion()),
      m_nCurrentVersion(version.GetVersion()) {}

WPersistentObject::WPersistentObject(const WPersistentObject& other)
    : m_bValid(other.m_bValid), m_bModified(other.m_bModified), m_nGroupID(other.m_nGroupID),
      m_nObjectID(other.m_nObjectID), m_nVersion(other.m_nVersion),
      m_nCurrentVersion(other.m_nCurrentVersion), m_pSerializer(other.m_pSerializer) {}

WPersistentObject::~WPersistentObject() = default;

WPersistentObject&
WPersistentObject::operator=(const WPersistentObject& other) { // NOLINT(bugprone-unhandled-self-assignment)
    Assign(other);
    return *this;
}

void WPersistentObject::Assign(const WPersistentObject& other) {
    m_bValid = other.m_bValid;
    m_bModified = other.m_bModified;
    m_nGroupID = other.m_nGroupID;
    m_nObjectID = other.m_nObjectID;
    m_nVersion = other.m_nVersion;
    m_nCurrentVersion = other.m_nCurrentVersion;
    m_pSerializer = other.m_pSerializer;
}

void WPersistentObject::SetModified(bool isModified) {
    m_bModified = isModified;
}

bool WPersistentObject::GetModified() const {
    return m_bModified;
}

void WPersistentObject::SetValid(bool isValid) {
    m_bValid = isValid;
}

bool WPersistentObject::GetValid() const {
    return m_bValid;
}

bool WPersistentObject::operator!=(const WPersistentObject& other) const {
    return !(*this == other);
}

bool WPersistentObject::operator==(const WPersistentObject& other) const {
    return m_nGroupID == other.m_nGroupID && m_nObjectID == other.m_nObjectID &&
           m_nVersion == other.m_nVersion && m_nCurrentVersion == other.m_nCurrentVersion &&
           m_bValid == other.m_bValid && m_bModified == other.m_bModified &&
           m_pSerializer == other.m_pSerializer;
}

WPersistentObject* WPersistentObject::clone() const {
    return nullptr;
}

void WPersistentObject::SerializeComponents(bool /*bRead*/) {}

void WPersistentObject::DeleteComponents() {}

void WPersistentObject::SetComponentGroupID(long /*groupID*/) {}

void WPersistentObject::AutosetComponentObjectID(WIDDispenser& /*dispenser*/) {}

void WPersistentObject::Read(WSerializer* serializer, long version, bool bRecursive) {
    const Run run(*this, serializer);
    if (serializer != nullptr) {
        SetVersionInForce(version);
        serializer->Read(*this, bRecursive);
    }
}

void WPersistentObject::Write(WSerializer* serializer, long version, bool bRecursive) {
    const Run run(*this, serializer);
    if (serializer != nullptr) {
        SetVersionInForce(version);
        serializer->Write(*this, bRecursive);
    }
}

void WPersistentObject::Delete(WSerializer* serializer, long /*version*/, bool bRecursive) {
    const Run run(*this, serializer);
    if (serializer != nullptr) {
        serializer->Delete(*this, bRecursive);
    }
}

void WPersistentObject::SetVersionInForce(long version) {
    const bool isKnown = version >= WVersion::GetVersion(5, 0, 0, 0) && version <= m_nCurrentVersion;
    m_nVersion = isKnown ? version : m_nCurrentVersion;
}

void WPersistentObject::SetGroupID(long groupID) {
    m_nGroupID = groupID;
    SetComponentGroupID(groupID);
}

void WPersistentObject::AutosetObjectID(WIDDispenser& dispenser) {
    m_nObjectID = dispenser.GetNewID();
    AutosetComponentObjectID(dispenser);
}

void WPersistentObject::SetVersion(const WVersion& version) {
    m_nVersion = version.GetVersion();
}

std::wstring WPersistentObject::GetNameOfClass() const {
    constexpr wchar_t kScope[] = L"::";
    constexpr wchar_t kKeyword[] = L"class ";
    std::wstring name = krtpal::TypeName(typeid(*this));
    name.erase(std::min(name.find(L'<'), name.size()));
    if (const std::size_t position = name.rfind(kScope); position != std::wstring::npos) {
        return name.substr(position + std::size(kScope) - 1);
    }
    const std::size_t position = name.find(kKeyword);
    return position == std::wstring::npos ? name : name.substr(position + std::size(kKeyword) - 1);
}

std::wstring WPersistentObject::GetIDInfo() const {
    return L"Class name: " + GetNameOfClass() + L" Group ID: " + std::to_wstring(m_nGroupID) +
           L" Object ID: " + std::to_wstring(m_nObjectID) + L"\n";
}

void WPersistentObject::ReadObject() {
    RunObject(true);
}

void WPersistentObject::WriteObject() {
    RunObject(false);
}

void WPersistentObject::DeleteObject() {
    Demand(m_pSerializer).Delete(*this, true);
}

void WPersistentObject::RunObject(bool bRead) {
    constexpr wchar_t kWhat[] = L"Unexpected serialization error.\n\n";
    const auto where = [&] { return GetNameOfClass() + (bRead ? L"::ReadObject" : L"::WriteObject"); };
    try {
        Demand(m_pSerializer).DoSerialization(*this, bRead);
    } catch (const WNESerializerError& e) {
        ThrowDataIOError(kWhat + e.AsString(false) + L"\n\n" + where());
    } catch (const WNestedException&) {
        throw;
    } catch (const std::exception& e) {
        ThrowDataIOError(kWhat + krtpal::WidenText(e.what()) + L"\n\n" + where());
    } catch (...) {
        ThrowDataIOError(kWhat + where());
    }
}

void WPersistentObject::Serialize(bool bRead) {
    const auto text = [&] {
        return std::wstring(L"Could not ") + (bRead ? L"read" : L"write") + L" data.\n" + GetIDInfo();
    };
    try {
        SerializeMembers(bRead);
    } catch (const WNestedException& e) {
        throw WNEDataIOError(text(), &e);
    } catch (...) {
        throw WNEDataIOError(text());
    }
}

void WPersistentObject::SerializeMembers(bool bRead) {
    WSerializer& serializer = Demand(m_pSerializer);
    const Labels& labels = GetLabels();
    const auto member = [&serializer, bRead](const std::wstring& label, auto& value) {
        bRead ? serializer.Retrieve(label, value) : serializer.Insert(label, value);
    };
    member(labels.version, m_nVersion);
    if (bRead && m_nVersion > m_nCurrentVersion) {
        throw WNEDataIOError(LoadText(kUpgradeText));
    }
    member(labels.groupID, m_nGroupID);
    member(labels.objectID, m_nObjectID);
    if (m_nVersion >= WVersion::GetVersion(5, 3, 0, 9) && !IsDatabase(serializer)) {
        member(labels.valid, m_bValid);
        member(labels.modified, m_bModified);
    }
}

} // namespace bss
