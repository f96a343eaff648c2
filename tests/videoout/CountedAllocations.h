#ifndef KOVANTA_TESTS_VIDEOOUT_COUNTEDALLOCATIONS_H
#define KOVANTA_TESTS_VIDEOOUT_COUNTEDALLOCATIONS_H

#include <cstddef>

/// How often the program, libraries included, has asked operator new for 10000 bytes or more.
std::size_t bigAllocations();

/// Refuses the n-th next request of this thread to operator new, counted from 0; a negative n refuses none.
void refuseAllocation(long n);

#endif
