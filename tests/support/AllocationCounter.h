// Counts what the library allocates on the heap.

#ifndef TESTS_FIT_ALLOCATIONCOUNTER_H
#define TESTS_FIT_ALLOCATIONCOUNTER_H

// The calls of operator new since the program began: on Linux those of the whole process, on Windows those of
// the library's module.
long countAllocations();

#endif
