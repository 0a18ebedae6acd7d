// The headers of ODBC after those of the library. A client names the system's types unqualified by one small
// header.

#include "bss/net/WSystemTimeEx.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/thread/WEvent.h"

#ifdef _WIN32
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>

#include "krtpal/unqualified.h"

int YearOf(const bss::WSystemTimeEx& time) {
    const SYSTEMTIME fields = time;
    return fields.wYear;
}
