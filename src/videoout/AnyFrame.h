// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_ANYFRAME_H
#define KOVANTA_SRC_VIDEOOUT_ANYFRAME_H

#include "Kovanta/Image.h"
#include "videoout/ColorTags.h"
#include "videoout/EncoderPictures.h"

namespace Ko {

/// Brings frames of any format and size into an encoder's pictures of the same size, by way of 4:4:4 where there is no
/// direct one, and by way of RGB where the pictures are of another matrix.
class AnyFrame {
public:
    /// @param frames what the application says of its Y'CbCr frames
    /// @param pictures what readers will take the pictures for
    AnyFrame(ColorMatrix frames, ColorTags pictures);

    /// @throws as convertIm()
    void convert(EncoderPicture& to, const Image<>& frame);

private:
    ColorMatrix frameMatrix;
    ColorMatrix pictureMatrix;
    bool fullRange;
    Image<> between{PF_YCC444P}; ///< Kept for its memory, as is the next.
    Image<> rgb{PF_RGB};
};

} // namespace Ko

#endif
