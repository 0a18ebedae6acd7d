// Makes the names of the system visible without qualification in every namespace.
//
//     #include "krtpal/unqualified.h"
//
//     const SYSTEMTIME now = bss::WSystemTimeEx();      // without this header: krtpal::SYSTEMTIME
//
// On Windows the names are global, and this header has no effect. On Linux it is one using-directive for
// namespace krtpal, which covers all headers of this layer, also those that are included later.
//
// Include it in source files only, never in a header, and after the headers of ODBC, which do not compile
// after it. Names that ODBC's headers declare with another type are ambiguous in such a source (with
// unixODBC: ULONG, WCHAR, LPWSTR, LPCWSTR, HINSTANCE, HWND): write krtpal::ULONG there.

#ifndef KRTPAL_UNQUALIFIED_H
#define KRTPAL_UNQUALIFIED_H

#include "krtpal/types.h"

#ifndef _WIN32
using namespace krtpal; // NOLINT(google-build-using-namespace): the purpose of this header
#endif

#endif
