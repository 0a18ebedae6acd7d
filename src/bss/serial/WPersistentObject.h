// WPersistentObject: a thing that has state, to be kept by a WSerializer.
//
//     class Sample : public bss::WPersistentObject {
//     public:
//         Sample() : WPersistentObject(0, 0, bss::WVersion(5, 4, 0, 0)) {}
//         void Serialize(bool bRead) override {
//             WPersistentObject::Serialize(bRead);
//             bRead ? m_pSerializer->Retrieve(L"m_fAngle", m_fAngle) : m_pSerializer->Insert(L"m_fAngle",
//             m_fAngle); if (m_nVersion >= bss::WVersion::GetVersion(5, 4, 0, 0)) { ... }    // a member of
//             newer data
//         }
//     private:
//         double m_fAngle = 0.0;
//     };
//
//     sample.Write(&serializer, 0, true);      // in the newest format, with its components
//     other.Read(&serializer, 0, true);
//
// One Serialize works against every kind of serializer. Each object begins with the base's members, whose
// labels are column names of the database too: m_nVersion, groupID, objectID and, from version 5.3.0.9 on and
// outside a database, m_bValid and m_bModified. A class that owns other persistent objects overrides the
// operations on components and forwards them.
//
// Failures of Read and Write are chains of WNestedException. What SerializeComponents itself throws, outside
// the runs of the components, passes as it is.
//
// Threads: an object has no lock. No other thread may touch it during a run.

#ifndef BSS_SERIAL_WPERSISTENTOBJECT_H
#define BSS_SERIAL_WPERSISTENTOBJECT_H

#include "bss/Export.h"

#include <string>

namespace bss {

class WDatabase;
class WIDDispenser;
class WSerializer;
class WVersion;

class KRTBSS_API WPersistentObject {
    friend class WDatabase;
    friend class WSerializer;

public:
    /// `version` is the newest format that the class understands.
    WPersistentObject(long groupID, long objectID, const WVersion& version);
    WPersistentObject(const WPersistentObject& other);
    virtual ~WPersistentObject();
    WPersistentObject& operator=(const WPersistentObject& other);

    virtual void SetModified(bool isModified);
    virtual bool GetModified() const;
    virtual void SetValid(bool isValid);
    virtual bool GetValid() const;
    virtual bool operator!=(const WPersistentObject& other) const;
    /// The base's own members alone, the serializer of a run included.
    virtual bool operator==(const WPersistentObject& other) const;
    /// A copy that the caller owns; null in the base.
    virtual WPersistentObject* clone() const;
    /// Passes the members to the serializer, only during a run. WNEDataIOError on failure.
    virtual void Serialize(bool bRead);
    // The components' part; empty in the base.
    virtual void SerializeComponents(bool bRead);
    virtual void DeleteComponents();
    virtual void SetComponentGroupID(long groupID);
    virtual void AutosetComponentObjectID(WIDDispenser& dispenser);

    // The entry points. `version` is a packed one (WVersion::GetVersion); 0, one below 5.0.0.0 and one above
    // the newest format mean the newest. A null serializer: nothing is done.
    void Read(WSerializer* serializer, long version, bool bRecursive);
    void Write(WSerializer* serializer, long version, bool bRecursive);
    /// The version counts for nothing. The serializer must be one that can delete (WSerializer::Delete).
    void Delete(WSerializer* serializer, long version, bool bRecursive);

    long GetGroupID() const { return m_nGroupID; }
    /// The components' too.
    void SetGroupID(long groupID);
    long GetObjectID() const { return m_nObjectID; }
    void SetObjectID(long objectID) { m_nObjectID = objectID; }
    /// The dispenser's next number; then the components take theirs.
    void AutosetObjectID(WIDDispenser& dispenser);
    /// The version in force, which is that of the data after a read.
    long GetVersion() const { return m_nVersion; }
    void SetVersion(const WVersion& version);

    /// The name of the object's class without namespaces and template arguments.
    std::wstring GetNameOfClass() const;
    /// A line that names class, group and object.
    std::wstring GetIDInfo() const;

protected:
    void ReadObject();
    void WriteObject();
    void DeleteObject();
    void Assign(const WPersistentObject& other);

    bool m_bValid = true;
    bool m_bModified = false;
    /// Not copied and not used: GetNameOfClass asks the type.
    std::wstring m_sNameOfClass;
    long m_nGroupID;
    long m_nObjectID;
    long m_nVersion;
    long m_nCurrentVersion;
    /// Not owned; set during Read, Write and Delete only.
    WSerializer* m_pSerializer = nullptr;

private:
    class Run;

    void SetVersionInForce(long version);
    void RunObject(bool bRead);
    void SerializeMembers(bool bRead);
};

} // namespace bss

#endif
