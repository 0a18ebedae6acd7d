// Whether a Windows program runs under Wine, for the few places where Wine and Windows differ.

#ifndef TESTS_SUPPORT_WINE_H
#define TESTS_SUPPORT_WINE_H

#ifdef _WIN32
#include <windows.h>

inline bool RunsUnderWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}
#else
inline bool RunsUnderWine() {
    return false;
}
#endif

#endif
