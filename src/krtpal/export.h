// KRTPAL_API: exported from the library's module when it is built, imported from it elsewhere.
// KRTPAL_TYPE_API: for class templates, whose code is in the client: only their type information has to be
// shared.

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
