// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_ALLOCATIONS_H
#define KOVANTA_TESTS_SUPPORT_ALLOCATIONS_H

#include <cstddef>

// The program's own operator new, of every form, for the library under test as well. A test that wants it links
// counted_allocations.
namespace test {

/// Asked by operator new before it takes memory; may throw. None while null.
extern void (*beforeAllocation)();

/// How often the program has called operator new so far, from all threads.
std::size_t allocations();
/// The same for 10000 bytes or more, which only pixels take.
std::size_t bigAllocations();

} // namespace test

#endif
