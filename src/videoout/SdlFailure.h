// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_SDLFAILURE_H
#define KOVANTA_SRC_VIDEOOUT_SDLFAILURE_H

#include "util/Errors.h"

#include <exception>
#include <iostream>
#include <string>

namespace Ko {

/// Reports a call of SDL's that failed: std::runtime_error "[function]: CALL failed: REASON.".
[[noreturn]] inline void throwSdlFailure(const char* function, const char* call, const std::string& reason) {
    throwRuntimeError(function, std::string(call) + " failed: " + reason + ".");
}

/// Runs one step of tearing down; what the X server's end makes of it is printed.
template <class Step>
bool survives(Step step) noexcept {
    try {
        step();
        return true;
    } catch (const std::exception& e) {
        std::cerr << e.what() << std::endl;
        return false;
    }
}

} // namespace Ko

#endif
