// Export macros of the declarations in namespace krtpal.
//
// KRTPAL_API marks functions and variables of the library: exported while the library is built
// (KRTBSS_BUILDING is defined), imported in client code.
//
// KRTPAL_TYPE_API marks class templates. Their code is instantiated in the client, so only their type
// information has to be shared; on Windows, where types are compared by name, it is empty.

#ifndef KRTPAL_EXPORT_H
#define KRTPAL_EXPORT_H

#ifdef _WIN32
#ifdef KRTBSS_BUILDING
#define KRTPAL_API __declspec(dllexport)
#else
#define KRTPAL_API __declspec(dllimport)
#endif
#define KRTPAL_TYPE_API
#else
#define KRTPAL_API __attribute__((visibility("default")))
#define KRTPAL_TYPE_API __attribute__((visibility("default")))
#endif

#endif
