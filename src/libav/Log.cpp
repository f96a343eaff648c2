// SPDX-License-Identifier: BSD-2-Clause
#include "libav/Log.h"

extern "C" {
#include <libavutil/log.h>
}

#include <mutex>

namespace Ko::libav {

void quietByDefault() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (av_log_get_level() == AV_LOG_INFO) // what libav starts with
            av_log_set_level(AV_LOG_QUIET);
    });
}

} // namespace Ko::libav
