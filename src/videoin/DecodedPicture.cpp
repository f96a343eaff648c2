// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/DecodedPicture.h"

#include "Kovanta/Wrap.h"
#include "libav/Handles.h"
#include "util/Errors.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace Ko {

namespace {

PIXEL_FORMAT wrapperFormat(int avPixelFormat) {
    switch (avPixelFormat) {
    case AV_PIX_FMT_YUV420P:
        return PF_YCC420P;
    case AV_PIX_FMT_YUVJ422P:
        return PF_JFIF422P;
    default:
        throwRuntimeError("VideoInputVideoFile::open", "Input pixel format of stream is not supported.");
    }
}

} // namespace

void shapeWrapper(Image<>& wrapper, int avPixelFormat, unsigned int width, unsigned int height) {
    wrapper.fmt(wrapperFormat(avPixelFormat));
    wrapper.width = 0; // should there be no memory for the rows, the next picture tries again
    wrapper.size(width, height, false);
}

void wrapPicture(Image<>& wrapper, const AVFrame& picture) {
    const PIXEL_FORMAT format = wrapperFormat(picture.format);
    if (wrapper.format != format)
        wrapper.fmt(format);
    rewrapMemory(wrapper, static_cast<unsigned int>(picture.width), static_cast<unsigned int>(picture.height),
                 {{picture.data[0], picture.linesize[0]},
                  {picture.data[1], picture.linesize[1]},
                  {picture.data[2], picture.linesize[2]}});
}

} // namespace Ko
