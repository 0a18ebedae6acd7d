// WSerializer: what keeps persistent objects. The base of the binary, text, variant and database forms.
//
// A persistent class (WPersistentObject.h) names each of its members by a label and passes it to the
// serializer; what becomes of it is the concrete serializer's business. The base fixes the order of calls,
// the lock, and what a failure looks like.
//
//     m_pSerializer->Insert(L"m_fAngle", m_fAngle);
//     m_pSerializer->Retrieve(L"m_fAngle", m_fAngle);
//
// Text is passed as a std::string or std::wstring: a literal would be taken for a bool.
//
// The order of the virtual operations is part of the interface, whatever the sense in it.
//
// Threads: a run of DoSerialization holds the serializer's lock, so threads that share a serializer take
// turns by whole objects. An object may serialize others through the same serializer from inside its run.
// Insert and Retrieve called outside a run are not protected.

#ifndef BSS_SERIAL_WSERIALIZER_H
#define BSS_SERIAL_WSERIALIZER_H

#include "bss/Export.h"
#include "bss/thread/WCriticalSection.h"
#include "krtpal/guid.h"

#include <ctime>
#include <string>
#include <vector>

namespace bss {

class WPersistentObject;

class KRTBSS_API WSerializer {
public:
    virtual ~WSerializer();

    // One object and, if recursive, its components. An object calls these from its own Read, Write and
    // Delete, which are the entry points.
    virtual void Read(WPersistentObject& object, bool bRecursive);
    virtual void Write(WPersistentObject& object, bool bRecursive);
    /// Does nothing in the base.
    virtual void Delete(const std::wstring& nameOfClass, long groupID, long objectID);
    /// A serializer that can delete overrides it; no other may be given to WPersistentObject::Delete, since
    /// the base calls the object, which calls the serializer, without end.
    virtual void Delete(WPersistentObject& object, bool bRecursive);

    // `label` is the member's name. Arrays are `count` elements, of which none is read for 0.
    virtual void Insert(const std::wstring& label, const std::vector<std::wstring>& values) = 0;
    virtual void Insert(const std::wstring& label, const std::vector<bool>& values) = 0;
    virtual void Insert(const std::wstring& label, const std::vector<double>& values) = 0;
    virtual void Insert(const std::wstring& label, const std::vector<long>& values) = 0;
    virtual void Insert(const std::wstring& label, const std::vector<int>& values) = 0;
    virtual void Insert(const std::wstring& label, const std::wstring& value) = 0;
    virtual void Insert(const std::wstring& label, const std::string& value) = 0;
    virtual void Insert(const std::wstring& label, const std::wstring* const data, long count) = 0;
    virtual void Insert(const std::wstring& label, const std::string* const data, long count) = 0;
    virtual void Insert(const std::wstring& label, const double* const data, long count) = 0;
    virtual void Insert(const std::wstring& label, const float* const data, long count) = 0;
    virtual void Insert(const std::wstring& label, const long* const data, long count) = 0;
    virtual void Insert(const std::wstring& label, const unsigned char* const data, long count) = 0;
    virtual void Insert(const std::wstring& label, struct tm value) = 0;
    virtual void Insert(const std::wstring& label, GUID value) = 0;
    virtual void Insert(const std::wstring& label, double value) = 0;
    virtual void Insert(const std::wstring& label, float value) = 0;
    virtual void Insert(const std::wstring& label, long value) = 0;
    virtual void Insert(const std::wstring& label, short value) = 0;
    virtual void Insert(const std::wstring& label, bool value) = 0;
    /// Stored as single precision where the format can.
    virtual void InsertF(const std::wstring& label, const std::vector<double>& values) = 0;

    // Into the caller's variable. A pointer and a count get a new array (`new[]`), which the caller owns.
    virtual void Retrieve(const std::wstring& label, std::vector<std::wstring>& values) = 0;
    virtual void Retrieve(const std::wstring& label, std::vector<bool>& values) = 0;
    virtual void Retrieve(const std::wstring& label, std::vector<double>& values) = 0;
    virtual void Retrieve(const std::wstring& label, std::vector<long>& values) = 0;
    virtual void Retrieve(const std::wstring& label, std::vector<int>& values) = 0;
    virtual void Retrieve(const std::wstring& label, std::wstring& value) = 0;
    virtual void Retrieve(const std::wstring& label, std::string& value) = 0;
    virtual void Retrieve(const std::wstring& label, std::wstring*& data, long& count) = 0;
    virtual void Retrieve(const std::wstring& label, std::string*& data, long& count) = 0;
    virtual void Retrieve(const std::wstring& label, double*& data, long& count) = 0;
    virtual void Retrieve(const std::wstring& label, float*& data, long& count) = 0;
    virtual void Retrieve(const std::wstring& label, long*& data, long& count) = 0;
    virtual void Retrieve(const std::wstring& label, unsigned char*& data, long& count) = 0;
    virtual void Retrieve(const std::wstring& label, struct tm& value) = 0;
    virtual void Retrieve(const std::wstring& label, GUID& value) = 0;
    virtual void Retrieve(const std::wstring& label, double& value) = 0;
    virtual void Retrieve(const std::wstring& label, float& value) = 0;
    virtual void Retrieve(const std::wstring& label, long& value) = 0;
    virtual void Retrieve(const std::wstring& label, short& value) = 0;
    virtual void Retrieve(const std::wstring& label, bool& value) = 0;
    virtual void RetrieveF(const std::wstring& label, std::vector<double>& values) = 0;

    const std::wstring& GetSerializerType() const { return m_sSerializerType; }
    /// True from the construction and from the start of each run on.
    bool IsValid() const { return m_bIsValid; }
    void SetIsValid(bool isValid) { m_bIsValid = isValid; }

    /// Runs one object's Serialize between the steps of start and finish. Failures come out as WNEDataIOError
    /// with the cause behind it, or as WNEUnexpectedException for what is no WNestedException; the step of
    /// finish has been called by then.
    void DoSerialization(WPersistentObject& object, bool bRead);

protected:
    /// `type` names the kind of serializer.
    explicit WSerializer(const std::wstring& type);
    /// The lock stays each one's own.
    WSerializer& operator=(const WSerializer& other);

    // Around an object's Serialize; they do nothing in the base.
    virtual void StartInsertion(WPersistentObject& object);
    virtual void FinishInsertion(WPersistentObject& object);
    virtual void StartRetrieval(WPersistentObject& object);
    virtual void FinishRetrieval();

private:
    void FinishAfterFailure(WPersistentObject& object, bool bRead) noexcept;

    std::wstring m_sSerializerType;
    bool m_bIsValid = true;
    sync::WCriticalSection m_CriticalSection;
};

} // namespace bss

#endif
