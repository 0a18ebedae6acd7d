#include "krtpal/module.h"
#include "krtpal/error.h"
#include "support/Expect.h"
#include "support/VersionModules.h"
#include "support/Wine.h"

namespace {

constexpr DWORD kByAddress =
    GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;

HMODULE Program() {
    return ModuleOf(reinterpret_cast<const void*>(&Program));
}

/// An object of the library
HMODULE Library() {
#ifdef _WIN32
    return GetModuleHandleW(L"krtbssU.dll");
#else
    return ModuleOf(reinterpret_cast<const void*>(&krtpal::ErrorFromErrno));
#endif
}

std::wstring FileOf(HMODULE module) {
    wchar_t path[1000];
    const DWORD length = GetModuleFileNameW(module, path, 1000);
    EXPECT_EQ(std::wcslen(path), length);
    return std::filesystem::path(std::wstring(path, length)).filename().wstring();
}

TEST(LoadLibrary, LoadsOnceForAllHoldersAndUnloadsWithTheLast) {
    const std::wstring file = std::filesystem::path(KRTPAL_ENTRY_MODULE).wstring();
    const HMODULE first = LoadLibraryW(file.c_str());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(LoadLibraryW(file.c_str()), first);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(FileOf(first), std::filesystem::path(file).filename().wstring());
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_FAILS(FreeLibrary(first), ERROR_MOD_NOT_FOUND);
    EXPECT_FAILS(LoadLibraryW(L"there-is-no-such-module"), ERROR_MOD_NOT_FOUND);
    EXPECT_FAILS(LoadLibraryW(std::filesystem::path(KRTBSS_SOURCE_DIR "/README.md").wstring().c_str()),
                 ERROR_BAD_EXE_FORMAT);
}

TEST(Module, BadArgumentsAreRefused) {
    int local = 0;
    HMODULE module = Program();
    EXPECT_FAILS(GetModuleHandleExW(kByAddress, reinterpret_cast<LPCWSTR>(&local), &module),
                 ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(module, nullptr);
    EXPECT_FAILS(GetModuleHandleExW(0x80, nullptr, &module), ERROR_INVALID_PARAMETER);
    wchar_t path[100];
    EXPECT_FAILS(GetModuleFileNameW(reinterpret_cast<HMODULE>(&local), path, 100), ERROR_MOD_NOT_FOUND);
    EXPECT_FAILS(GetProcAddress(Library(), "no such function"), ERROR_PROC_NOT_FOUND);
}

TEST(Module, FilesOfProgramAndLibraryHaveTheirNames) {
    ASSERT_NE(Library(), nullptr);
    ASSERT_NE(Program(), Library());
    EXPECT_EQ(FileOf(nullptr).substr(0, 12), L"krtpal_tests");
    EXPECT_EQ(FileOf(Program()).substr(0, 12), L"krtpal_tests");
    EXPECT_NE(FileOf(Library()).find(L"krtbss"), std::wstring::npos);
    wchar_t path[5] = L"####";
    SetLastError(0);
    EXPECT_EQ(GetModuleFileNameW(nullptr, path, 4), 4U); // cut
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    if (!RunsUnderWine()) { // which leaves the NUL out
        EXPECT_EQ(path[3], L'\0');
    }
}

#ifndef _WIN32
TEST(Module, FunctionsAreFoundInTheirOwnModuleOnly) {
    // What the library needs itself is not its own.
    EXPECT_FAILS(GetProcAddress(Library(), "malloc"), ERROR_PROC_NOT_FOUND);
    EXPECT_FAILS(GetProcAddress(Library(), nullptr), ERROR_INVALID_PARAMETER);
    const auto found = GetProcAddress(Library(), "_ZN6krtpal14ErrorFromErrnoEi");
    EXPECT_EQ(reinterpret_cast<const void*>(found), reinterpret_cast<const void*>(&krtpal::ErrorFromErrno));
    HMODULE module = nullptr;
    EXPECT_FAILS(GetModuleHandleExW(0, L"libkrtbss.so", &module), ERROR_NOT_SUPPORTED);
}
#else
SKIPPED_TEST(Module, FunctionsAreFoundInTheirOwnModuleOnly, "names are mangled in the way of Linux")
#endif

} // namespace
