// The driver manager's header, for the driver's own sources and its test alone: on Linux it defines names
// such as BOOL and ULONG otherwise than the rest of the project does.

#ifndef TESTS_SUPPORT_ODBC_ODBC_H
#define TESTS_SUPPORT_ODBC_ODBC_H

#define SQL_NOUNICODEMAP
#include <sql.h>

#include <sqlext.h>
#include <sqlucode.h>

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));
static_assert(sizeof(SQLINTEGER) == 4);

#endif
