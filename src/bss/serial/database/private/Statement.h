// A statement of its own for one call of WDatabase, freed at the end of its scope.

#ifndef BSS_SERIAL_DATABASE_PRIVATE_STATEMENT_H
#define BSS_SERIAL_DATABASE_PRIVATE_STATEMENT_H

#include "bss/serial/database/WDatabase.h"
#include "krtpal/common/odbc.h"

namespace bss {

class WDatabase::Statement {
public:
    explicit Statement(krtpal::odbc::Handle connection) {
        m_isAllocated = krtpal::odbc::Succeeded(
            krtpal::odbc::AllocHandle(krtpal::odbc::kStatement, connection, &m_handle));
    }
    ~Statement() {
        if (m_isAllocated) {
            krtpal::odbc::FreeStmt(m_handle, krtpal::odbc::kUnbind);
            krtpal::odbc::CloseCursor(m_handle);
            krtpal::odbc::FreeStmt(m_handle, krtpal::odbc::kResetParams);
            krtpal::odbc::FreeHandle(krtpal::odbc::kStatement, m_handle);
        }
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    bool IsAllocated() const { return m_isAllocated; }
    krtpal::odbc::Handle Handle() const { return m_handle; }

private:
    krtpal::odbc::Handle m_handle = nullptr;
    bool m_isAllocated = false;
};

/// Leaves a statement that is kept without rows and without bindings of columns.
class WDatabase::Reset {
public:
    explicit Reset(krtpal::odbc::Handle statement) : m_handle(statement) {}
    ~Reset() {
        krtpal::odbc::FreeStmt(m_handle, krtpal::odbc::kClose);
        krtpal::odbc::FreeStmt(m_handle, krtpal::odbc::kUnbind);
    }
    Reset(const Reset&) = delete;
    Reset& operator=(const Reset&) = delete;

private:
    krtpal::odbc::Handle m_handle;
};

} // namespace bss

#endif
