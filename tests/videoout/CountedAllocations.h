#ifndef KOVANTA_TESTS_VIDEOOUT_COUNTEDALLOCATIONS_H
#define KOVANTA_TESTS_VIDEOOUT_COUNTEDALLOCATIONS_H

#include <cstddef>

/// How often the program, libraries included, has asked operator new for 10000 bytes or more.
std::size_t bigAllocations();

#endif
