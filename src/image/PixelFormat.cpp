// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/PixelFormat.h"

#include "image/FormatTable.h"

std::string fmt2string(Ko::PIXEL_FORMAT format) {
    const Ko::FormatEntry* entry = Ko::findFormat(format);
    return entry ? entry->text : "Unknown enumeration";
}
