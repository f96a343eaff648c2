#include "videoin/DecodedPicture.h"

#include "libav/Handles.h"
#include "util/Errors.h"

#include <cstddef>

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
    const auto width = static_cast<unsigned int>(picture.width);
    const auto height = static_cast<unsigned int>(picture.height);
    if (wrapper.format != wrapperFormat(picture.format) || wrapper.width != width || wrapper.height != height)
        shapeWrapper(wrapper, picture.format, width, height);
    // The planes' own heights make the rows: a last odd luma row is pointed, a chroma row that the image lacks is not.
    for (int p = 0; p < 3; ++p) {
        auto& plane = wrapper.plane[p];
        if (!plane.rows)
            continue;
        unsigned char* row = picture.data[p];
        for (std::size_t y = 0; y < plane.height; ++y, row += picture.linesize[p])
            plane.rows[y] = row;
    }
}

} // namespace Ko
