// PLATFORM_API: exported from the library's module when it is built, imported from it elsewhere.
// PLATFORM_TYPE_API: for class templates, whose code is in the client: only their type information has to be
// shared.

#ifndef PLATFORM_EXPORT_H
#define PLATFORM_EXPORT_H

#ifdef _WIN32
#ifdef KRTBSS_BUILDING
#define PLATFORM_API __declspec(dllexport)
#else
#define PLATFORM_API __declspec(dllimport)
#endif
#define PLATFORM_TYPE_API
#else
#define PLATFORM_API __attribute__((visibility("default")))
#define PLATFORM_TYPE_API __attribute__((visibility("default")))
#endif

#endif
