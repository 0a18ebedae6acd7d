// The names of the system, unqualified in every namespace.
//
//     #include "krtpal/unqualified.h"
//
//     SYSTEMTIME time = bss::WSystemTimeEx().GetDateTime();      // on Linux otherwise krtpal::SYSTEMTIME
//
// On Windows they are global in any case. On Linux this header makes them visible in the source that includes
// it, which leaves those ambiguous that other headers define globally, too (those of ODBC: ULONG, DWORD and
// others).

#ifndef KRTPAL_UNQUALIFIED_H
#define KRTPAL_UNQUALIFIED_H

#include "krtpal/types.h"

#ifndef _WIN32
using namespace krtpal; // NOLINT(google-build-using-namespace): what this header is for
#endif

#endif
