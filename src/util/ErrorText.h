#ifndef KOVANTA_SRC_UTIL_ERRORTEXT_H
#define KOVANTA_SRC_UTIL_ERRORTEXT_H

#include <cstring>
#include <string>

namespace Ko {

/// "[function]: reason", the form of every message.
inline std::string errorText(const char* function, const std::string& reason) {
    return std::string("[") + function + "]: " + reason;
}

/// "[function]: reason: " + the system's text for @p error + ".", for failed system calls.
inline std::string errorText(const char* function, const std::string& reason, int error) {
    return errorText(function, reason + ": " + std::strerror(error) + ".");
}

/// "[function]: reason (cause)", for a wrapped lower-level error.
inline std::string errorText(const char* function, const std::string& reason, const char* cause) {
    return errorText(function, reason + " (" + cause + ")");
}

} // namespace Ko

#endif
