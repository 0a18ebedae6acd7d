#include "krtpal/process.h"
#include "krtpal/error.h"
#include "krtpal/module.h"
#include "krtpal/sync.h"
#include "krtpal/user.h"
#include "support/Expect.h"
#include "support/VersionModules.h"
#include "support/Wine.h"

#include <algorithm>
#include <string>

namespace {

constexpr DWORD kRights = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;

std::wstring PathOf(HANDLE process, HMODULE module) {
    wchar_t path[1000] = {};
    const DWORD length = K32GetModuleFileNameExW(process, module, path, 1000);
    return {path, length};
}

TEST(Process, OnlyRunningOnesOpen) {
    EXPECT_FAILS(OpenProcess(kRights, FALSE, 0), ERROR_INVALID_PARAMETER);
    EXPECT_FAILS(OpenProcess(kRights, FALSE, 0x7FFFFFF0), ERROR_INVALID_PARAMETER);
    HMODULE module = nullptr;
    DWORD needed = 0;
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EXPECT_FALSE(K32EnumProcessModules(event, &module, sizeof(module), &needed));
    EXPECT_EQ(PathOf(event, nullptr), L"");
    CloseHandle(event);
}

TEST(Process, ModulesOfThisOneAreListedBothWays) {
    wchar_t programPath[1000] = {};
    GetModuleFileNameW(nullptr, programPath, 1000);
    const HMODULE program = ModuleOf(reinterpret_cast<const void*>(&PathOf));
    const HANDLE opened = OpenProcess(kRights, FALSE, GetCurrentProcessId());
    ASSERT_NE(opened, nullptr);
    for (const HANDLE process : {opened, GetCurrentProcess()}) {
        HMODULE modules[256] = {};
        DWORD needed = 0;
        ASSERT_TRUE(K32EnumProcessModules(process, modules, sizeof(modules), &needed));
        ASSERT_LE(needed, sizeof(modules));
        EXPECT_EQ(modules[0], program);
        EXPECT_EQ(PathOf(process, program), programPath);
        EXPECT_EQ(PathOf(process, nullptr), programPath);
        EXPECT_TRUE(std::any_of(modules, modules + needed / sizeof(HMODULE), [&](HMODULE module) {
            return PathOf(process, module).find(L"krtbss") != std::wstring::npos;
        }));
        DWORD neededAgain = 0;
        EXPECT_TRUE(K32EnumProcessModules(process, modules, sizeof(HMODULE), &neededAgain));
        EXPECT_EQ(neededAgain, needed); // though one fits
        EXPECT_EQ(PathOf(process, reinterpret_cast<HMODULE>(&neededAgain)), L"");
    }
    wchar_t cut[5] = {};
    if (!RunsUnderWine()) { // which answers one less
        EXPECT_EQ(K32GetModuleFileNameExW(opened, nullptr, cut, 5), 5U);
    }
    EXPECT_TRUE(CloseHandle(opened));
    EXPECT_EQ(PathOf(opened, nullptr), L"");
}

} // namespace
