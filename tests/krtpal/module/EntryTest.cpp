#include "support/DebugOutput.h"
#include "support/VersionModules.h"

#include <gtest/gtest.h>

TEST(Entry, RoutineRunsBehindConstructorsAndBeforeDestructors) {
    DebugOutput output;
    { const LoadedModule module(KRTPAL_ENTRY_MODULE); }
    EXPECT_EQ(output.Text(), L"static made\nattached krtpal_entry\ndetached\nstatic gone\n");
}
