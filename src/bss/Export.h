// KRTBSS_API marks what the library's module gives to its clients.
//
// Everything else is hidden. A class that is thrown carries it too, so that a client which was itself built
// with hidden visibility catches the class by type.

#ifndef BSS_EXPORT_H
#define BSS_EXPORT_H

#include "krtpal/export.h"

#define KRTBSS_API KRTPAL_API

#endif
