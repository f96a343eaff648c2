// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_CONVERTSTORED_H
#define KOVANTA_SRC_VIDEOIN_CONVERTSTORED_H

#include "Kovanta/Image.h"
#include "videoin/RowRoom.h"
#include "videoin/StoredFormat.h"

struct AVFrame;

namespace Ko {

/// Brings a decoder's picture of any StoredFormat into an image of PF_YCC444P or PF_YCC420P, which gets its size, in
/// one pass.
///
/// Every sample becomes what ComponentRows or RgbRows say. In PF_YCC444P every pixel takes the sample of chroma that is
/// stored for it; PF_YCC420P is what convertIm() makes of that. Grey has chroma 128.
/// @param room keeps its memory from picture to picture
/// @throws std::runtime_error when the picture lacks samples; std::logic_error, std::runtime_error and std::bad_alloc
/// as
///         convertIm()
void convertStored(Image<>& frame, const AVFrame& picture, const StoredFormat& format, RowRoom& room);

} // namespace Ko

#endif
