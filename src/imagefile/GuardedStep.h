// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_GUARDEDSTEP_H
#define KOVANTA_SRC_IMAGEFILE_GUARDEDSTEP_H

#include <csetjmp>
#include <type_traits>

namespace Ko {

/// Calls step(context); false when the C library jumped out of it. The only place that calls setjmp.
bool runGuardedStep(std::jmp_buf& jump, void (*step)(void*), void* context);

/// Runs calls of a C library that reports its errors by a jump to @p jump. The jump skips whatever lies between, so a
/// step makes library calls and simple assignments only: nothing with a destructor lives in it, nothing in it throws.
/// @return false after an error
template <class Step>
bool guarded(std::jmp_buf& jump, Step step) {
    static_assert(std::is_trivially_destructible_v<Step>, "a jump would skip the destructor of a capture");
    return runGuardedStep(
        jump, [](void* context) { (*static_cast<Step*>(context))(); }, &step);
}

} // namespace Ko

#endif
