// One program in two roles, so that a test has two processes of one executable:
//
//     version_info_child wait [MODULE]        loads the module, says "ready NUMBER", and waits to be killed
//     version_info_child list NUMBER [MODULE] says which modules of process NUMBER take part, a line each
//
// A line has the name, the version, the file and the I/O version; "end" ends the list.

#include "bss/serial/WVersionInfo.h"
#include "krtpal/common/text.h"
#include "krtpal/module.h"
#include "krtpal/process.h"
#include "krtpal/sync.h"
#include "krtpal/unqualified.h"

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    const std::string role = argc > 1 ? argv[1] : "";
    const int moduleAt = role == "list" ? 3 : 2;
    if (argc > moduleAt && LoadLibraryW(krtpal::WidenText(argv[moduleAt]).c_str()) == nullptr) {
        std::puts("cannot load the module");
        return 1;
    }
    if (role == "wait") {
        std::printf("ready %lu\n", static_cast<unsigned long>(GetCurrentProcessId()));
        std::fflush(stdout);
        Sleep(60'000);
        return 0;
    }
    bss::WVersionInfo info;
    info.AddProcessVersionInfo(std::stoul(argv[2]));
    for (const bss::WVersionInfo& module : info.GetComponents()) {
        const std::wstring line = module.GetName() + L" " + module.GetModuleVersionString() + L" " +
                                  module.GetKRTFileVersionString() + L" " + module.GetKRTIOVerionString();
        std::puts(krtpal::NarrowText(line).c_str());
    }
    std::puts("end");
    return 0;
}
