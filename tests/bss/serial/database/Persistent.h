// What the persistent objects of these tests have in common.

#ifndef TESTS_BSS_SERIAL_DATABASE_PERSISTENT_H
#define TESTS_BSS_SERIAL_DATABASE_PERSISTENT_H

#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/serial/database/WDatabase.h"

#include <string>

class Persistent : public bss::WPersistentObject {
protected:
    explicit Persistent(long group, long object, const bss::WVersion& version = bss::WVersion(5, 3, 2, 0))
        : WPersistentObject(group, object, version) {}

    /// A member, in the direction of the run.
    template <class Member>
    void Pass(bool bRead, const std::wstring& key, Member& member) {
        auto& database = static_cast<bss::WDatabase&>(*m_pSerializer);
        bRead ? database.Retrieve(key, member) : database.Insert(key, member);
    }
};

#endif
