// A module of its own with an entry routine, which reports what happens to it in debug output.

#include "krtpal/debug.h"
#include "krtpal/module.h"
#include "krtpal/unqualified.h"

#include <string>

namespace {

struct Witness {
    Witness() { OutputDebugStringW(L"static made\n"); }
    ~Witness() { OutputDebugStringW(L"static gone\n"); }
};

Witness g_witness;

std::wstring FileName(HINSTANCE module) {
    wchar_t path[1000];
    const std::wstring text(path, GetModuleFileNameW(module, path, 1000));
    const std::wstring name = text.substr(text.find_last_of(L"/\\") + 1);
    return name.substr(0, name.find(L'.'));
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* /*reserved*/);

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        OutputDebugStringW((L"attached " + FileName(module) + L"\n").c_str());
    } else if (reason == DLL_PROCESS_DETACH) {
        OutputDebugStringW(L"detached\n");
    }
    return TRUE;
}
