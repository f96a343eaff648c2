// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/PictureDelivery.h"

#include "Kovanta/ConvertIm.h"
#include "Kovanta/Wrap.h"
#include "libav/Handles.h"
#include "util/Errors.h"
#include "videoin/ConvertStored.h"
#include "videoin/StoredFormat.h"
#include "videoin/StreamColor.h"

#include <optional>
#include <string>

namespace Ko {

namespace {

[[noreturn]] void refuse(int avPixelFormat, bool withName) {
    const std::string name = withName ? " (" + nameOfPixelFormat(avPixelFormat) + ")" : "";
    throwRuntimeError("VideoInputVideoFile::open", "Input pixel format of stream is not supported." + name);
}

/// The library's format for pictures as they are. Full range passes for studio range unless the caller knows better.
std::optional<PIXEL_FORMAT> ownFormat(int avPixelFormat, ColorRange range, bool anyFormat) {
    if (avPixelFormat == AV_PIX_FMT_YUVJ422P)
        return PF_JFIF422P;
    if (avPixelFormat == AV_PIX_FMT_YUV420P && !(anyFormat && range == CR_FULL))
        return PF_YCC420P;
    return std::nullopt;
}

} // namespace

void PictureDelivery::expect(const AVCodecContext& stream) {
    const ColorRange range = colorRangeOf(stream.pix_fmt, stream.color_range);
    if (!ownFormat(stream.pix_fmt, range, anyFormat) && !(anyFormat && storedFormatOf(stream.pix_fmt, range)))
        refuse(stream.pix_fmt, anyFormat);
    pictureWidth = static_cast<unsigned int>(stream.width);
    pictureHeight = static_cast<unsigned int>(stream.height);
}

void PictureDelivery::deliver(Image<>& frame, const AVFrame& picture) {
    const ColorRange range = colorRangeOf(picture.format, picture.color_range);
    const std::optional<PIXEL_FORMAT> own = ownFormat(picture.format, range, anyFormat);
    const std::optional<StoredFormat> stored = !own && anyFormat ? storedFormatOf(picture.format, range) : std::nullopt;
    if (!own && !stored)
        refuse(picture.format, anyFormat);
    pictureWidth = static_cast<unsigned int>(picture.width);
    pictureHeight = static_cast<unsigned int>(picture.height);

    if (stored) {
        const bool directly = frame.format == PF_YCC444P || frame.format == PF_YCC420P;
        convertStored(directly ? frame : between, picture, *stored, room);
        if (!directly)
            convertIm(frame, between);
        return;
    }
    if (wrapper.format != *own)
        wrapper.fmt(*own);
    rewrapMemory(wrapper, pictureWidth, pictureHeight,
                 {{picture.data[0], picture.linesize[0]},
                  {picture.data[1], picture.linesize[1]},
                  {picture.data[2], picture.linesize[2]}});
    const bool directly = !anyFormat || canConvert(*own, frame.format);
    if (!directly)
        convertIm(between, wrapper);
    convertIm(frame, directly ? wrapper : between);
}

} // namespace Ko
