#include "bss/module.h"

namespace bss {

namespace {

HINSTANCE g_instance = nullptr;

// Stores the handle; the loader's lock allows little else.
BOOL Enter(HINSTANCE module, DWORD reason) {
    if (reason == DLL_PROCESS_ATTACH) {
        g_instance = module;
    } else if (reason == DLL_PROCESS_DETACH) {
        g_instance = nullptr;
    }
    return TRUE;
}

} // namespace

HINSTANCE GetBSSHandle() {
    return g_instance;
}

} // namespace bss

// The module's entry point.
extern "C" krtpal::BOOL WINAPI DllMain(krtpal::HINSTANCE module, krtpal::DWORD reason,
                                       krtpal::LPVOID /*reserved*/) {
    return bss::Enter(module, reason);
}

extern "C" krtpal::HINSTANCE GetVersionInfoModuleHandle() {
    return bss::GetBSSHandle();
}
