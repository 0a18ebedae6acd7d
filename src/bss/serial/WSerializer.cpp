#include "bss/serial/WSerializer.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/thread/WSingleLock.h"
#include "krtpal/common/text.h"
#include "krtpal/debug.h"

#include <exception>

namespace bss {

namespace {

std::wstring Describe(const wchar_t* what, const wchar_t* stage, const WPersistentObject& object) {
    return std::wstring(what) + stage + L"\n\tWSerializer::DoSerialization (" + object.GetNameOfClass() +
           L")";
}

// The misspelling in the debugger's output is intended (kept for compatibility); the exception's text
// differs.
constexpr wchar_t kDebugText[] = L"Unexptected serializaton error: ";

} // namespace

WSerializer::WSerializer(const std::wstring& type) : m_sSerializerType(type) {}

WSerializer::~WSerializer() = default;

WSerializer& WSerializer::operator=(const WSerializer& other) {
    m_sSerializerType = other.m_sSerializerType;
    m_bIsValid = other.m_bIsValid;
    return *this;
}

void WSerializer::Read(WPersistentObject& object, bool bRecursive) {
    object.ReadObject();
    if (bRecursive) {
        object.SerializeComponents(true);
    }
}

void WSerializer::Write(WPersistentObject& object, bool bRecursive) {
    object.WriteObject();
    if (bRecursive) {
        object.SerializeComponents(false);
    }
}

void WSerializer::Delete(const std::wstring& /*nameOfClass*/, long /*groupID*/, long /*objectID*/) {}

void WSerializer::Delete(WPersistentObject& object, bool bRecursive) {
    object.DeleteObject();
    if (bRecursive) {
        object.DeleteComponents();
    }
}

void WSerializer::DoSerialization(WPersistentObject& object, bool bRead) {
    const sync::WSingleLock lock(&m_CriticalSection, true);
    m_bIsValid = true;
    const wchar_t* stage = L"";
    try {
        if (bRead) {
            stage = L"StartRetrieval";
            StartRetrieval(object);
            stage = L"Serialize(read)";
            object.Serialize(true);
            stage = L"FinishRetrieval";
            FinishRetrieval();
        } else {
            stage = L"StartInsertion";
            StartInsertion(object);
            stage = L"Serialize(write)";
            object.Serialize(false);
            stage = L"FinishInsertion";
            FinishInsertion(object);
        }
    } catch (const WNestedException& e) {
        FinishAfterFailure(object, bRead);
        const std::wstring text =
            Describe(L"Unexpected serialization error: ", stage, object) + L"\n\n" + e.AsString(false);
        OutputDebugStringW((text + L"\n").c_str());
        throw WNEDataIOError(text, &e);
    } catch (const std::exception& e) {
        FinishAfterFailure(object, bRead);
        const std::wstring reason = krtpal::WidenText(e.what());
        OutputDebugStringW((Describe(kDebugText, stage, object) + L"\n\n" + reason + L"\n").c_str());
        throw WNEUnexpectedException(reason);
    } catch (...) {
        FinishAfterFailure(object, bRead);
        OutputDebugStringW((Describe(kDebugText, stage, object) + L"\n").c_str());
        throw WNEUnexpectedException(L"Unexpected serialization error.");
    }
}

void WSerializer::FinishAfterFailure(WPersistentObject& object, bool bRead) noexcept {
    try {
        if (bRead) {
            FinishRetrieval();
        } else {
            FinishInsertion(object);
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): runs while another failure is being reported
    }
}

void WSerializer::StartInsertion(WPersistentObject& /*object*/) {}

void WSerializer::FinishInsertion(WPersistentObject& /*object*/) {}

void WSerializer::StartRetrieval(WPersistentObject& /*object*/) {}

void WSerializer::FinishRetrieval() {}

} // namespace bss
