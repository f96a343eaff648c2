// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/GuardedStep.h"

namespace Ko {

bool runGuardedStep(std::jmp_buf& jump, void (*step)(void*), void* context) {
    if (setjmp(jump) != 0) // NOLINT(cert-err52-cpp): the libraries know no other way
        return false;
    step(context);
    return true;
}

} // namespace Ko
