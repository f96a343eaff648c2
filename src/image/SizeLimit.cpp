// SPDX-License-Identifier: BSD-2-Clause
#include "image/SizeLimit.h"

#include "util/Errors.h"

namespace Ko {

void throwTooLarge(const char* function) {
    throwRuntimeError(function, "Image too large.");
}

} // namespace Ko
