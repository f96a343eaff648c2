// SPDX-License-Identifier: BSD-2-Clause
#include "libav/Names.h"

extern "C" {
#include <libavformat/avio.h>
}

namespace Ko::libav {

std::string urlOf(const std::string& filename) {
    return avio_find_protocol_name(filename.c_str()) ? filename : "file:" + filename;
}

} // namespace Ko::libav
