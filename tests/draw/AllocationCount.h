#ifndef KOVANTA_TESTS_DRAW_ALLOCATIONCOUNT_H
#define KOVANTA_TESTS_DRAW_ALLOCATIONCOUNT_H

/// How often the program, libraries included, has called operator new.
long allocationCount();

#endif
