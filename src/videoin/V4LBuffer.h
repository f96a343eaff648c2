// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_V4LBUFFER_H
#define KOVANTA_SRC_VIDEOIN_V4LBUFFER_H

#include "Kovanta/Image.h"
#include "videoin/V4LHandles.h"

#include <linux/videodev2.h>

namespace Ko {

/// One of the driver's buffers: its memory, and the image that wraps it.
struct V4LBuffer {
    explicit V4LBuffer(PIXEL_FORMAT format)
        : image(format) {}

    /// Points the image's rows into the mapping, as the driver laid them. @return false when a frame of this format
    /// would pass the mapping's end; the image has no rows then
    bool wrap(const v4l2_pix_format& format);
    /// Maps full-range samples, as those of a JPEG are, to the studio range of the image's format, which is planar.
    void toStudioRange();

    Mapping mapping;
    Image<> image;
};

} // namespace Ko

#endif
