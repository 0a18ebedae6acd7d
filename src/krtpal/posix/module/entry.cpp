// Calls the library's entry routine. This file is linked last, so that its object is constructed last and
// destroyed first.

#include "krtpal/module.h"

extern "C" {
// Weak: the library links without an entry routine.
__attribute__((weak, visibility("hidden"))) krtpal::BOOL WINAPI DllMain(krtpal::HINSTANCE module,
                                                                        krtpal::DWORD reason, void* reserved);
}

namespace krtpal {

namespace {

class ModuleEntry {
public:
    ModuleEntry() {
        constexpr DWORD kFlags =
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
        GetModuleHandleExW(kFlags, reinterpret_cast<LPCWSTR>(this), &m_module);
        Call(DLL_PROCESS_ATTACH);
    }
    ModuleEntry(const ModuleEntry&) = delete;
    ModuleEntry& operator=(const ModuleEntry&) = delete;
    ~ModuleEntry() { Call(DLL_PROCESS_DETACH); }

private:
    void Call(DWORD reason) {
        if (&DllMain != nullptr) {
            DllMain(m_module, reason, nullptr);
        }
    }

    HMODULE m_module = nullptr;
};

ModuleEntry g_entry;

} // namespace

} // namespace krtpal
