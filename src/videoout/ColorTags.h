// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_COLORTAGS_H
#define KOVANTA_SRC_VIDEOOUT_COLORTAGS_H

#include "Kovanta/ColorMatrix.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace Ko {

/// What an encoder, and from it the container, is to tell about its samples.
struct ColorTags {
    ColorMatrix matrix = CM_UNKNOWN;
    ColorRange range = CR_UNKNOWN;
};

/// Hands them to an encoder that is not open yet. What is unknown stays untold.
void tagColor(AVCodecContext& codec, ColorTags tags);

} // namespace Ko

#endif
