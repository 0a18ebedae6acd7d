// WSerializer: base of the classes that store persistent objects in binary, text, variant or database form.
//
// A persistent class (WPersistentObject.h) names each of its members by a label and passes it to the
// serializer. The concrete serializer stores it. The base fixes the order of calls, the lock and the form of
// failures.
//
//     m_pSerializer->Insert(L"m_fAngle", m_fAngle);
//     m_pSerializer->Retrieve(L"m_fAngle", m_fAngle);
//
// Pass text as a std::string or std::wstring: a literal would be converted to bool.
//
// The order of the virtual operations is part of the interface and must not change.
//
// Threads: DoSerialization holds the serializer's lock, so that threads that share a serializer take turns by
// whole objects. The lock is recursive: an object may serialize others through the same serializer during its
// run. Insert and Retrieve called outside a run are not protected.

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

/// Base of all serializers.
class KRTBSS_API WSerializer {
public:
    virtual ~WSerializer();

    // WPersistentObject::Read, Write and Delete are the entry points and call these three operations.

    /// Reads the object and, if `bRecursive`, its components.
    /// Throws the failures of WPersistentObject::Read.
    virtual void Read(WPersistentObject& object, bool bRecursive);
    /// Writes the object and, if `bRecursive`, its components.
    /// Throws the failures of WPersistentObject::Write.
    virtual void Write(WPersistentObject& object, bool bRecursive);
    /// Deletes the stored object with this key. Does nothing in the base.
    virtual void Delete(const std::wstring& nameOfClass, long groupID, long objectID);
    /// Deletes the stored object and, if `bRecursive`, its components.
    /// REQUIRES: a derived class overrides it. The base must not be given to WPersistentObject::Delete: it
    /// calls the object, which calls the serializer again, without end.
    virtual void Delete(WPersistentObject& object, bool bRecursive);

    // Insert stores a member under its label, Retrieve reads it into the caller's variable.
    //
    // `label` is the name of the member. An array is `data` with `count` elements; `data` may be null if
    // `count` is 0. Each concrete serializer documents its format, the values that it rejects and what it
    // throws.

    /// Stores a vector of wide texts.
    virtual void Insert(const std::wstring& label, const std::vector<std::wstring>& values) = 0;
    /// Stores a vector of flags.
    virtual void Insert(const std::wstring& label, const std::vector<bool>& values) = 0;
    /// Stores a vector of numbers.
    virtual void Insert(const std::wstring& label, const std::vector<double>& values) = 0;
    /// Stores a vector of integers.
    virtual void Insert(const std::wstring& label, const std::vector<long>& values) = 0;
    /// Stores a vector of integers.
    virtual void Insert(const std::wstring& label, const std::vector<int>& values) = 0;
    /// Stores a wide text.
    virtual void Insert(const std::wstring& label, const std::wstring& value) = 0;
    /// Stores a narrow text.
    virtual void Insert(const std::wstring& label, const std::string& value) = 0;
    /// Stores an array of wide texts.
    virtual void Insert(const std::wstring& label, const std::wstring* const data, long count) = 0;
    /// Stores an array of narrow texts.
    virtual void Insert(const std::wstring& label, const std::string* const data, long count) = 0;
    /// Stores an array of numbers.
    virtual void Insert(const std::wstring& label, const double* const data, long count) = 0;
    /// Stores an array of numbers.
    virtual void Insert(const std::wstring& label, const float* const data, long count) = 0;
    /// Stores an array of integers.
    virtual void Insert(const std::wstring& label, const long* const data, long count) = 0;
    /// Stores an array of bytes.
    virtual void Insert(const std::wstring& label, const unsigned char* const data, long count) = 0;
    /// Stores a calendar time.
    virtual void Insert(const std::wstring& label, struct tm value) = 0;
    /// Stores an identifier.
    virtual void Insert(const std::wstring& label, GUID value) = 0;
    /// Stores a number.
    virtual void Insert(const std::wstring& label, double value) = 0;
    /// Stores a number.
    virtual void Insert(const std::wstring& label, float value) = 0;
    /// Stores an integer of 32 bits.
    virtual void Insert(const std::wstring& label, long value) = 0;
    /// Stores an integer of 16 bits.
    virtual void Insert(const std::wstring& label, short value) = 0;
    /// Stores a flag.
    virtual void Insert(const std::wstring& label, bool value) = 0;
    /// Stores a vector of numbers, in single precision if the format can.
    virtual void InsertF(const std::wstring& label, const std::vector<double>& values) = 0;

    // Retrieve of a pointer and a count allocates the array with `new[]`. The caller owns it.

    /// Reads a vector of wide texts.
    virtual void Retrieve(const std::wstring& label, std::vector<std::wstring>& values) = 0;
    /// Reads a vector of flags.
    virtual void Retrieve(const std::wstring& label, std::vector<bool>& values) = 0;
    /// Reads a vector of numbers.
    virtual void Retrieve(const std::wstring& label, std::vector<double>& values) = 0;
    /// Reads a vector of integers.
    virtual void Retrieve(const std::wstring& label, std::vector<long>& values) = 0;
    /// Reads a vector of integers.
    virtual void Retrieve(const std::wstring& label, std::vector<int>& values) = 0;
    /// Reads a wide text.
    virtual void Retrieve(const std::wstring& label, std::wstring& value) = 0;
    /// Reads a narrow text.
    virtual void Retrieve(const std::wstring& label, std::string& value) = 0;
    /// Reads an array of wide texts.
    virtual void Retrieve(const std::wstring& label, std::wstring*& data, long& count) = 0;
    /// Reads an array of narrow texts.
    virtual void Retrieve(const std::wstring& label, std::string*& data, long& count) = 0;
    /// Reads an array of numbers.
    virtual void Retrieve(const std::wstring& label, double*& data, long& count) = 0;
    /// Reads an array of numbers.
    virtual void Retrieve(const std::wstring& label, float*& data, long& count) = 0;
    /// Reads an array of integers.
    virtual void Retrieve(const std::wstring& label, long*& data, long& count) = 0;
    /// Reads an array of bytes.
    virtual void Retrieve(const std::wstring& label, unsigned char*& data, long& count) = 0;
    /// Reads a calendar time.
    virtual void Retrieve(const std::wstring& label, struct tm& value) = 0;
    /// Reads an identifier.
    virtual void Retrieve(const std::wstring& label, GUID& value) = 0;
    /// Reads a number.
    virtual void Retrieve(const std::wstring& label, double& value) = 0;
    /// Reads a number.
    virtual void Retrieve(const std::wstring& label, float& value) = 0;
    /// Reads an integer of 32 bits.
    virtual void Retrieve(const std::wstring& label, long& value) = 0;
    /// Reads an integer of 16 bits.
    virtual void Retrieve(const std::wstring& label, short& value) = 0;
    /// Reads a flag.
    virtual void Retrieve(const std::wstring& label, bool& value) = 0;
    /// Reads a vector of numbers that InsertF stored.
    virtual void RetrieveF(const std::wstring& label, std::vector<double>& values) = 0;

    /// Returns the kind of serializer, such as "BINARY" or "DATABASE".
    const std::wstring& GetSerializerType() const { return m_sSerializerType; }
    /// Returns true unless SetIsValid(false) was called since the start of the last run. For an invalid run a
    /// database rejects the write and skips the checksum of a read.
    bool IsValid() const { return m_bIsValid; }
    /// Sets the result of IsValid.
    void SetIsValid(bool isValid) { m_bIsValid = isValid; }

    /// Runs the object's Serialize between the start step and the finish step, under the lock.
    /// Throws WNEDataIOError with the cause as next link for a WNestedException, WNEUnexpectedException for
    /// any other exception. The finish step has then been called; its own failure is ignored.
    void DoSerialization(WPersistentObject& object, bool bRead);

protected:
    /// `type` is the kind of serializer. See GetSerializerType.
    explicit WSerializer(const std::wstring& type);
    /// Copies kind and validity. Each serializer keeps its own lock.
    WSerializer& operator=(const WSerializer& other);

    // The steps around an object's Serialize. They do nothing in the base.

    /// Prepares to write the object.
    virtual void StartInsertion(WPersistentObject& object);
    /// Completes the write. Also called after a failure of an earlier step or of itself.
    virtual void FinishInsertion(WPersistentObject& object);
    /// Prepares to read the object.
    virtual void StartRetrieval(WPersistentObject& object);
    /// Completes the read. Also called after a failure of an earlier step or of itself.
    virtual void FinishRetrieval();

private:
    void FinishAfterFailure(WPersistentObject& object, bool bRead) noexcept;

    std::wstring m_sSerializerType;
    bool m_bIsValid = true;
    sync::WCriticalSection m_CriticalSection;
};

} // namespace bss

#endif
