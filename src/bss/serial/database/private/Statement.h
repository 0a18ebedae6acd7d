// Owners of statement handles for one call of WDatabase.

#ifndef BSS_SERIAL_DATABASE_PRIVATE_STATEMENT_H
#define BSS_SERIAL_DATABASE_PRIVATE_STATEMENT_H

#include "bss/serial/database/WDatabase.h"
#include "krtpal/common/odbc.h"

namespace bss {

/// A statement that is freed at the end of its scope.
class WDatabase::Statement {
public:
    /// Allocates the statement. See IsAllocated.
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

    /// Returns false if the allocation failed.
    bool IsAllocated() const { return m_isAllocated; }
    krtpal::odbc::Handle Handle() const { return m_handle; }

private:
    krtpal::odbc::Handle m_handle = nullptr;
    bool m_isAllocated = false;
};

/// Closes the cursor of a cached statement and its column bindings at the end of a scope.
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
