// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_UTIL_ERRORS_H
#define KOVANTA_SRC_UTIL_ERRORS_H

#include <string>

namespace Ko {

/// "[function]: reason", the form of all messages but two that programs know otherwise. A member function is named
/// "Class::operation".
std::string errorText(const std::string& function, const std::string& reason);
/// With the system's text for @p error (an errno value): "[function]: reason: " + text + ".".
std::string errorText(const std::string& function, const std::string& reason, int error);
/// With the lower-level error that it wraps: "[function]: reason (cause)".
std::string errorText(const std::string& function, const std::string& reason, const char* cause);

/// Refuses a caller's mistake: std::logic_error "[function]: reason".
[[noreturn]] void throwLogicError(const std::string& function, const std::string& reason);

/// Reports a failure of the environment: std::runtime_error with the text of errorText().
[[noreturn]] void throwRuntimeError(const std::string& function, const std::string& reason);
[[noreturn]] void throwRuntimeError(const std::string& function, const std::string& reason, int error);
[[noreturn]] void throwRuntimeError(const std::string& function, const std::string& reason, const char* cause);

} // namespace Ko

#endif
