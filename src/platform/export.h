// PLATFORM_API: exported from the library's module when it is built, imported from it elsewhere.

#ifndef PLATFORM_EXPORT_H
#define PLATFORM_EXPORT_H

#ifdef _WIN32
#ifdef KRTBSS_BUILDING
#define PLATFORM_API __declspec(dllexport)
#else
#define PLATFORM_API __declspec(dllimport)
#endif
#else
#define PLATFORM_API __attribute__((visibility("default")))
#endif

#endif
