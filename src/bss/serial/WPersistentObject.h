// WPersistentObject: base of objects whose state a WSerializer stores.
//
//     class Sample : public bss::WPersistentObject {
//     public:
//         Sample() : WPersistentObject(0, 0, bss::WVersion(5, 4, 0, 0)) {}
//         void Serialize(bool bRead) override {
//             WPersistentObject::Serialize(bRead);
//             if (bRead) {
//                 m_pSerializer->Retrieve(L"m_fAngle", m_fAngle);
//             } else {
//                 m_pSerializer->Insert(L"m_fAngle", m_fAngle);
//             }
//             if (m_nVersion >= bss::WVersion::GetVersion(5, 4, 0, 0)) { ... }    // newer data have more
//         }
//     private:
//         double m_fAngle = 0.0;
//     };
//
//     sample.Write(&serializer, 0, true);      // in the newest format, with its components
//     other.Read(&serializer, 0, true);
//
// One Serialize serves every kind of serializer. Each object begins with the base's members, whose labels are
// also column names of the database: m_nVersion, groupID, objectID and, from version 5.3.0.9 on and outside a
// database, m_bValid and m_bModified. A class that owns other persistent objects overrides the operations on
// components and forwards them.
//
// Read and Write throw chains of WNestedException. A failure of SerializeComponents itself, outside the runs
// of the components, passes unchanged.
//
// Threads: an object has no lock. No other thread may use it during a run.

#ifndef BSS_SERIAL_WPERSISTENTOBJECT_H
#define BSS_SERIAL_WPERSISTENTOBJECT_H

#include "bss/Export.h"

#include <string>

namespace bss {

class WDatabase;
class WIDDispenser;
class WSerializer;
class WVersion;

/// Base of persistent objects. The pair of group and object number is the key of an object.
class KRTBSS_API WPersistentObject {
    friend class WDatabase;
    friend class WSerializer;

public:
    /// Sets the key. `version` is the newest format that the class understands and the version in force.
    WPersistentObject(long groupID, long objectID, const WVersion& version);
    /// Copies the key, the flags, both versions and the serializer pointer; see Assign.
    WPersistentObject(const WPersistentObject& other);
    virtual ~WPersistentObject();
    /// See Assign.
    WPersistentObject& operator=(const WPersistentObject& other);

    /// Sets the flag that the object differs from its stored form. The base does not use it.
    virtual void SetModified(bool isModified);
    /// Returns the flag of SetModified; false at first.
    virtual bool GetModified() const;
    /// Sets the flag that the state is usable. The base does not use it.
    virtual void SetValid(bool isValid);
    /// Returns the flag of SetValid; true at first.
    virtual bool GetValid() const;
    /// Returns the negation of operator==.
    virtual bool operator!=(const WPersistentObject& other) const;
    /// Compares the base's members only: key, flags, both versions and the serializer of the current run.
    virtual bool operator==(const WPersistentObject& other) const;
    /// Returns a copy that the caller owns. Returns null in the base.
    virtual WPersistentObject* clone() const;
    /// Passes the base's members to the serializer. Derived classes call it first, then pass their own
    /// members. REQUIRES: a run of Read or Write. Throws WNEDataIOError with the cause as next link; its text
    /// asks for an upgrade if the data are newer than the newest format of the class.
    virtual void Serialize(bool bRead);

    // The operations on components, the persistent objects that this one owns. They do nothing in the base.

    /// Reads or writes the components.
    virtual void SerializeComponents(bool bRead);
    /// Deletes the components.
    virtual void DeleteComponents();
    /// Sets the group number of the components.
    virtual void SetComponentGroupID(long groupID);
    /// Gives each component the next numbers of the dispenser.
    virtual void AutosetComponentObjectID(WIDDispenser& dispenser);

    // The entry points. A null serializer makes each of them do nothing. The serializer is borrowed for the
    // call.

    /// Reads the object and, if `bRecursive`, its components. `version` is a packed version
    /// (WVersion::GetVersion); 0, a version below 5.0.0.0 and one above the newest format select the newest.
    /// The version of the data replaces it. Throws a chain with WNEDataIOError at its head, or
    /// WNEUnexpectedException for a failure that is not a WNestedException. The object may then hold a part
    /// of the data.
    void Read(WSerializer* serializer, long version, bool bRecursive);
    /// Writes the object and, if `bRecursive`, its components in the format of `version`. See Read for the
    /// version and the failures.
    void Write(WSerializer* serializer, long version, bool bRecursive);
    /// Deletes the stored object and, if `bRecursive`, its components. The version is ignored.
    /// REQUIRES: the serializer can delete (see WSerializer::Delete).
    void Delete(WSerializer* serializer, long version, bool bRecursive);

    /// Returns the group number.
    long GetGroupID() const { return m_nGroupID; }
    /// Sets the group number of this object and of its components.
    void SetGroupID(long groupID);
    /// Returns the object number.
    long GetObjectID() const { return m_nObjectID; }
    /// Sets the object number.
    void SetObjectID(long objectID) { m_nObjectID = objectID; }
    /// Sets the object number to the next number of the dispenser, then does so for the components.
    void AutosetObjectID(WIDDispenser& dispenser);
    /// Returns the packed version in force. After a read it is the version of the data.
    long GetVersion() const { return m_nVersion; }
    /// Sets the version in force. Read and Write replace it.
    void SetVersion(const WVersion& version);

    /// Returns the name of the object's class without namespaces and template arguments. It is also the name
    /// of the class's table in a database.
    std::wstring GetNameOfClass() const;
    /// Returns a line with class name, group number and object number, for messages.
    std::wstring GetIDInfo() const;

protected:
    /// Runs Serialize(true) through the serializer. Throws as Read does.
    void ReadObject();
    /// Runs Serialize(false) through the serializer. Throws as Write does.
    void WriteObject();
    /// Calls the serializer's Delete for this object and its components.
    void DeleteObject();
    /// Copies the key, the flags, both versions and the serializer pointer.
    void Assign(const WPersistentObject& other);

    /// See SetValid.
    bool m_bValid = true;
    /// See SetModified.
    bool m_bModified = false;
    /// Not copied and not used: GetNameOfClass reads the run-time type.
    std::wstring m_sNameOfClass;
    /// The group number of the key.
    long m_nGroupID;
    /// The object number of the key.
    long m_nObjectID;
    /// The packed version in force. Determines the members that Serialize passes.
    long m_nVersion;
    /// The newest packed version that the class understands.
    long m_nCurrentVersion;
    /// The serializer of the current run, not owned. Null except during Read, Write and Delete.
    WSerializer* m_pSerializer = nullptr;

private:
    class Run;

    void SetVersionInForce(long version);
    void RunObject(bool bRead);
    void SerializeMembers(bool bRead);
};

} // namespace bss

#endif
