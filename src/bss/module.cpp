#include "bss/module.h"

namespace {

HINSTANCE instance = nullptr;

} // namespace

/// The module's entry routine. It stores the handle and does nothing else.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        instance = module;
    } else if (reason == DLL_PROCESS_DETACH) {
        instance = nullptr;
    }
    return TRUE;
}

extern "C" HINSTANCE GetVersionInfoModuleHandle() {
    return instance;
}

namespace bss {

HINSTANCE GetBSSHandle() {
    return instance;
}

} // namespace bss
