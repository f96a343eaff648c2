#ifndef KOVANTA_SRC_VIDEOOUT_DISPLAYTEXT_H
#define KOVANTA_SRC_VIDEOOUT_DISPLAYTEXT_H

#include "util/Errors.h"

#include <string>

namespace Ko {

/// "[VideoOutputDisplay::operation]: reason".
inline std::string displayText(const char* operation, const std::string& reason) {
    return errorText((std::string("VideoOutputDisplay::") + operation).c_str(), reason);
}

} // namespace Ko

#endif
