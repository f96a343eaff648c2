// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_ENCODERPICTURES_H
#define KOVANTA_SRC_VIDEOOUT_ENCODERPICTURES_H

#include "Kovanta/Image.h"
#include "libav/Handles.h"
#include "videoout/EncoderFormat.h"

#include <memory>
#include <vector>

namespace Ko {

/// A planar picture for the encoder, and the same memory seen as an image.
struct EncoderPicture {
    libav::FrameHandle frame;
    Image<> image{PF_YCC420P}; ///< Owns no pixels: its rows point into the frame's planes.
};

/// The pictures that go to an encoder, used again and again.
///
/// An encoder keeps references to the pictures it still needs. Writing into one of those would spoil it, and libavcodec
/// would rather have it copied; so the next free picture is taken instead, and there are soon as many as the encoder
/// holds at a time.
class EncoderPictures {
public:
    /// Makes the first picture. @throws std::runtime_error "[allocPicture]: ... failed."
    EncoderPictures(unsigned int width, unsigned int height, EncoderFormat format);

    /// The picture made first, whoever refers to it.
    EncoderPicture& first() { return *pictures.front(); }
    /// A picture that nobody else refers to. Valid until the next call.
    EncoderPicture& writable();

private:
    unsigned int width;
    unsigned int height;
    EncoderFormat format;
    std::vector<std::unique_ptr<EncoderPicture>> pictures;
};

} // namespace Ko

#endif
