// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_ENCODERFORMAT_H
#define KOVANTA_SRC_VIDEOOUT_ENCODERFORMAT_H

#include "Kovanta/PixelFormat.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <optional>

namespace Ko {

/// What the pictures of an encoder are.
struct EncoderFormat {
    AVPixelFormat libav;
    PIXEL_FORMAT image; ///< The same for ours.
    bool jpeg = false;  ///< Whether it is JPEG's: full range and BT.601 for every reader.
};

/// Studio-range 4:2:0. @return nothing unless it is the pixel format that the encoder names first
std::optional<EncoderFormat> usualFormat(const AVCodec& codec);

/// The best that an encoder lists for a size: 4:2:0, which all players know, where both sides are even; else 4:4:4,
/// where each pixel has its chroma, before 4:2:0.
/// @return nothing where it lists neither; one without a list would write what a container may have no code for
std::optional<EncoderFormat> formatFor(const AVCodec& codec, unsigned int width, unsigned int height);

} // namespace Ko

#endif
