// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/EncoderPictures.h"

#include "Kovanta/Wrap.h"
#include "util/Errors.h"

#include <cstring>

namespace Ko {

namespace {

libav::FrameHandle allocPicture(int width, int height, AVPixelFormat format) {
    libav::FrameHandle frame(av_frame_alloc());
    if (!frame)
        throwRuntimeError("allocPicture", "avcodec_alloc_frame failed.");
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        throwRuntimeError("allocPicture", "av_malloc failed.");
    // The encoder's planes round odd sizes up, ours down: the last column and row of chroma are never written.
    for (const AVBufferRef* buffer : frame->buf)
        if (buffer)
            std::memset(buffer->data, 128, buffer->size);
    return frame;
}

std::unique_ptr<EncoderPicture> makePicture(unsigned int width, unsigned int height, EncoderFormat format) {
    auto picture = std::make_unique<EncoderPicture>();
    picture->frame = allocPicture(static_cast<int>(width), static_cast<int>(height), format.libav);
    const AVFrame& frame = *picture->frame;
    picture->image = wrapMemory(
        format.image, width, height,
        {{frame.data[0], frame.linesize[0]}, {frame.data[1], frame.linesize[1]}, {frame.data[2], frame.linesize[2]}});
    return picture;
}

} // namespace

EncoderPictures::EncoderPictures(unsigned int w, unsigned int h, EncoderFormat f)
    : width(w)
    , height(h)
    , format(f) {
    pictures.push_back(makePicture(width, height, format));
}

EncoderPicture& EncoderPictures::writable() {
    for (const auto& picture : pictures)
        if (av_frame_is_writable(picture->frame.get()) > 0)
            return *picture;
    pictures.push_back(makePicture(width, height, format));
    return *pictures.back();
}

} // namespace Ko
