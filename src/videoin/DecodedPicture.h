// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_DECODEDPICTURE_H
#define KOVANTA_SRC_VIDEOIN_DECODEDPICTURE_H

#include "Kovanta/Image.h"

struct AVFrame;

namespace Ko {

/// Describes @p wrapper as a picture of the given libav pixel format and size, with rows that are yet to be pointed.
/// @throws std::runtime_error "[VideoInputVideoFile::open]: Input pixel format of stream is not supported."
void shapeWrapper(Image<>& wrapper, int avPixelFormat, unsigned int width, unsigned int height);

/// Points the rows of @p wrapper into @p picture, reshaping it first where the stream has changed. No pixel is copied;
/// the rows are good until the picture is released.
/// @throws std::runtime_error as shapeWrapper()
void wrapPicture(Image<>& wrapper, const AVFrame& picture);

} // namespace Ko

#endif
