// KRTBSS_API exports a declaration from the library's module. All other symbols are hidden.
//
//     class KRTBSS_API WThing { ... };
//     KRTBSS_API void DoThing();
//
// An exception class carries it as well, so that a client built with hidden visibility catches the class by
// its type.

#ifndef BSS_EXPORT_H
#define BSS_EXPORT_H

#include "krtpal/export.h"

/// Exports a class or function of the library.
#define KRTBSS_API KRTPAL_API

#endif
