// Counts heap allocations, and lets one of them fail, by replacing operator new for the whole process. On
// Windows a program can't replace the operator new of a DLL: tests that need it skip there.

#ifndef TESTS_SUPPORT_FAILINGALLOCATION_H
#define TESTS_SUPPORT_FAILINGALLOCATION_H

#ifdef _WIN32
#include <gtest/gtest.h>

#define SKIP_WITHOUT_FAILING_ALLOCATION()                                                                    \
    GTEST_SKIP() << "operator new of a DLL can't be replaced from the program"
inline long CountAllocations() {
    return 0;
}
inline void FailAllocation(long) {}
#else
#define SKIP_WITHOUT_FAILING_ALLOCATION() static_cast<void>(0)

/// Returns the number of calls of operator new since the start of the program.
long CountAllocations();
/// Lets the n-th call of operator new from now on throw std::bad_alloc, once; 0 for none.
void FailAllocation(long n);
#endif

#endif
