// A statement of its own for one call of WDatabase, freed at the end of its scope.

#ifndef BSS_SERIAL_DATABASE_STATEMENT_H
#define BSS_SERIAL_DATABASE_STATEMENT_H

#include "bss/serial/database/WDatabase.h"
#include "platform/odbc.h"

namespace bss {

class WDatabase::Statement {
public:
    explicit Statement(platform::odbc::Handle connection) {
        m_isAllocated = platform::odbc::Succeeded(
            platform::odbc::AllocHandle(platform::odbc::kStatement, connection, &m_handle));
    }
    ~Statement() {
        if (m_isAllocated) {
            platform::odbc::FreeStmt(m_handle, platform::odbc::kUnbind);
            platform::odbc::CloseCursor(m_handle);
            platform::odbc::FreeStmt(m_handle, platform::odbc::kResetParams);
            platform::odbc::FreeHandle(platform::odbc::kStatement, m_handle);
        }
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    bool IsAllocated() const { return m_isAllocated; }
    platform::odbc::Handle Handle() const { return m_handle; }

private:
    platform::odbc::Handle m_handle = nullptr;
    bool m_isAllocated = false;
};

/// Leaves a statement that is kept without rows and without bindings of columns.
class WDatabase::Reset {
public:
    explicit Reset(platform::odbc::Handle statement) : m_handle(statement) {}
    ~Reset() {
        platform::odbc::FreeStmt(m_handle, platform::odbc::kClose);
        platform::odbc::FreeStmt(m_handle, platform::odbc::kUnbind);
    }
    Reset(const Reset&) = delete;
    Reset& operator=(const Reset&) = delete;

private:
    platform::odbc::Handle m_handle;
};

} // namespace bss

#endif
