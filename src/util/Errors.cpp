// SPDX-License-Identifier: BSD-2-Clause
#include "util/Errors.h"

#include <cstring>
#include <stdexcept>

namespace Ko {

std::string errorText(const std::string& function, const std::string& reason) {
    return "[" + function + "]: " + reason;
}

std::string errorText(const std::string& function, const std::string& reason, int error) {
    return errorText(function, reason + ": " + std::strerror(error) + ".");
}

std::string errorText(const std::string& function, const std::string& reason, const char* cause) {
    return errorText(function, reason + " (" + cause + ")");
}

void throwLogicError(const std::string& function, const std::string& reason) {
    throw std::logic_error(errorText(function, reason));
}

void throwRuntimeError(const std::string& function, const std::string& reason) {
    throw std::runtime_error(errorText(function, reason));
}

void throwRuntimeError(const std::string& function, const std::string& reason, int error) {
    throw std::runtime_error(errorText(function, reason, error));
}

void throwRuntimeError(const std::string& function, const std::string& reason, const char* cause) {
    throw std::runtime_error(errorText(function, reason, cause));
}

} // namespace Ko
