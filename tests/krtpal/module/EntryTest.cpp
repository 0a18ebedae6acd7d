#include "support/DebugOutput.h"

#include <gtest/gtest.h>

#ifdef _WIN32
namespace {

bool LoadAndUnload() {
    const HMODULE module = LoadLibraryW(L"krtpal_entry.dll");
    return module != nullptr && FreeLibrary(module) != FALSE;
}

} // namespace
#else
#include <dlfcn.h>

namespace {

bool LoadAndUnload() {
    void* const module = dlopen(KRTPAL_ENTRY_MODULE, RTLD_NOW);
    return module != nullptr && dlclose(module) == 0;
}

} // namespace
#endif

TEST(Entry, RoutineRunsBehindConstructorsAndBeforeDestructors) {
    DebugOutput output;
    ASSERT_TRUE(LoadAndUnload());
    EXPECT_EQ(output.Text(), L"static made\nattached krtpal_entry\ndetached\nstatic gone\n");
}
