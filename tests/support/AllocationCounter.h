// Counts heap allocations by replacing operator new for the whole process. On Windows a program can't replace
// the operator new of a DLL: tests that count skip there.

#ifndef TESTS_SUPPORT_ALLOCATIONCOUNTER_H
#define TESTS_SUPPORT_ALLOCATIONCOUNTER_H

#ifdef _WIN32
#include <gtest/gtest.h>

#define SKIP_WITHOUT_ALLOCATION_COUNTER()                                                                    \
    GTEST_SKIP() << "operator new of a DLL can't be replaced from the program"
inline long CountAllocations() {
    return 0;
}
#else
#define SKIP_WITHOUT_ALLOCATION_COUNTER() static_cast<void>(0)

/// Returns the number of calls of operator new since the start of the program.
long CountAllocations();
#endif

#endif
