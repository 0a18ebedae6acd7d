#include "bss/module.h"

namespace {

HINSTANCE instance = nullptr;

} // namespace

// The module's entry point. Stores the handle; the loader's lock allows little else.
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
