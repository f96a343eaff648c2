// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_ANYFRAME_H
#define KOVANTA_SRC_VIDEOOUT_ANYFRAME_H

#include "Kovanta/ColorMatrix.h"
#include "Kovanta/Image.h"
#include "videoout/EncoderPictures.h"

namespace Ko {

/// Brings frames of any format and size into an encoder's pictures of the same size, by way of 4:4:4 where there is no
/// direct one.
class AnyFrame {
public:
    /// @param m between RGB and Y'CbCr; BT.601 where it is unknown
    explicit AnyFrame(ColorMatrix m)
        : matrix(m == CM_UNKNOWN ? CM_BT601 : m) {}

    /// @throws as convertIm()
    void convert(EncoderPicture& to, const Image<>& frame);

private:
    ColorMatrix matrix;
    Image<> between{PF_YCC444P}; ///< Kept for its memory.
};

} // namespace Ko

#endif
