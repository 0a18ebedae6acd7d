#include "krtpal/module.h"
#include "krtpal/error.h"
#include "support/Wine.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

constexpr DWORD kByAddress =
    GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;

HMODULE ModuleOf(const void* address) {
    HMODULE module = nullptr;
    EXPECT_TRUE(GetModuleHandleExW(kByAddress, static_cast<LPCWSTR>(address), &module));
    return module;
}

HMODULE Program() {
    return ModuleOf(reinterpret_cast<const void*>(&ModuleOf));
}

/// An object of the library
HMODULE Library() {
    HMODULE module = nullptr;
#ifdef _WIN32
    module = GetModuleHandleW(L"krtbssU.dll");
#else
    module = ModuleOf(reinterpret_cast<const void*>(&krtpal::ErrorFromErrno));
#endif
    return module;
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
    EXPECT_EQ(FileOf(first), std::filesystem::path(file).filename().wstring());
    EXPECT_TRUE(FreeLibrary(first));
    wchar_t path[MAX_PATH];
    EXPECT_NE(GetModuleFileNameW(first, path, MAX_PATH), 0U);
    EXPECT_TRUE(FreeLibrary(first));
    SetLastError(0);
    EXPECT_FALSE(FreeLibrary(first));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
}

TEST(LoadLibrary, SaysWhyNot) {
    SetLastError(0);
    EXPECT_EQ(LoadLibraryW(L"there-is-no-such-module"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    SetLastError(0);
    EXPECT_EQ(LoadLibraryW(std::filesystem::path(KRTBSS_SOURCE_DIR "/README.md").wstring().c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BAD_EXE_FORMAT));
}

} // namespace

TEST(Module, BadArgumentsAreRefused) {
    int local = 0;
    HMODULE module = Program();
    EXPECT_FALSE(GetModuleHandleExW(kByAddress, reinterpret_cast<LPCWSTR>(&local), &module));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(module, nullptr);
    EXPECT_FALSE(GetModuleHandleExW(0x80, nullptr, &module));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    wchar_t path[100];
    const auto none = reinterpret_cast<HMODULE>(&local);
    EXPECT_EQ(GetModuleFileNameW(none, path, 100), 0U);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(GetProcAddress(Library(), "no such function"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
}

TEST(Module, FilesOfProgramAndLibraryHaveTheirNames) {
    ASSERT_NE(Library(), nullptr);
    ASSERT_NE(Program(), Library());
    EXPECT_EQ(FileOf(nullptr).substr(0, 14), L"krtpal_tests");
    EXPECT_EQ(FileOf(Program()).substr(0, 14), L"krtpal_tests");
    EXPECT_NE(FileOf(Library()).find(L"krtbss"), std::wstring::npos);
}

TEST(Module, PathsThatDoNotFitAreCut) {
    wchar_t path[5] = L"####";
    SetLastError(0);
    EXPECT_EQ(GetModuleFileNameW(nullptr, path, 4), 4U);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    if (!RunsUnderWine()) { // which leaves the NUL out
        EXPECT_EQ(path[3], L'\0');
    }
}

#ifndef _WIN32
TEST(Module, FunctionsAreFoundInTheirOwnModuleOnly) {
    // What the library needs itself is not its own.
    EXPECT_EQ(GetProcAddress(Library(), "malloc"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    EXPECT_EQ(GetProcAddress(Library(), nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    const auto found = GetProcAddress(Library(), "_ZN6krtpal14ErrorFromErrnoEi");
    EXPECT_EQ(reinterpret_cast<const void*>(found), reinterpret_cast<const void*>(&krtpal::ErrorFromErrno));
    HMODULE module = nullptr;
    EXPECT_FALSE(GetModuleHandleExW(0, L"libkrtbss.so", &module));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
}
#else
TEST(Module, FunctionsAreFoundInTheirOwnModuleOnly) {
    GTEST_SKIP() << "names are mangled and modules searched in the way of Linux";
}
#endif
