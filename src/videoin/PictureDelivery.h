// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_PICTUREDELIVERY_H
#define KOVANTA_SRC_VIDEOIN_PICTUREDELIVERY_H

#include "Kovanta/Image.h"
#include "videoin/RowRoom.h"

struct AVCodecContext;
struct AVFrame;

namespace Ko {

/// Brings a decoder's pictures into images of the caller's format: by convertIm() alone where their own format is one
/// of the library's, else, where that was asked for, by convertStored() or both.
class PictureDelivery {
public:
    /// Whether pictures are taken whose format is none of the library's.
    bool anyFormat = false;

    /// Takes the size and looks at the pixel format that a stream announces.
    /// @throws std::runtime_error "[VideoInputVideoFile::open]: Input pixel format of stream is not supported.", with
    ///         the format's name where any format is asked for
    void expect(const AVCodecContext& stream);

    /// Gives @p frame the size and the pixels of a picture; its format stays.
    /// @throws std::runtime_error as expect(), std::logic_error as convertIm(), std::bad_alloc
    void deliver(Image<>& frame, const AVFrame& picture);

    /// Size of the picture that was delivered last, or else expected.
    unsigned int width() const { return pictureWidth; }
    unsigned int height() const { return pictureHeight; }

private:
    Image<> wrapper{PF_YCC444P}; ///< Its rows point into the picture that is delivered.
    Image<> between{PF_YCC444P}; ///< For what convertIm() reaches from there only.
    RowRoom room;
    unsigned int pictureWidth = 0;
    unsigned int pictureHeight = 0;
};

} // namespace Ko

#endif
