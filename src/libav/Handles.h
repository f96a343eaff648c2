// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_LIBAV_HANDLES_H
#define KOVANTA_SRC_LIBAV_HANDLES_H

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <memory>

namespace Ko::libav {

/// Releases a libav object the way its kind asks for. Codec and container contexts are closed under libAvMutex, which
/// the holder takes: the lock is not recursive and most releases happen inside an open or a close.
struct Release {
    void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
    void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
    void operator()(AVCodecParserContext* parser) const noexcept { av_parser_close(parser); }
};

struct ReleaseInput {
    void operator()(AVFormatContext* context) const noexcept { avformat_close_input(&context); }
};

/// Closes the file as well, where the container has one. Writes no trailer.
struct ReleaseOutput {
    void operator()(AVFormatContext* context) const noexcept {
        if (context->pb && !(context->oformat && (context->oformat->flags & AVFMT_NOFILE)))
            avio_closep(&context->pb);
        avformat_free_context(context);
    }
};

using PacketHandle = std::unique_ptr<AVPacket, Release>;
using FrameHandle = std::unique_ptr<AVFrame, Release>;
using CodecContextHandle = std::unique_ptr<AVCodecContext, Release>;
using ParserHandle = std::unique_ptr<AVCodecParserContext, Release>;
using InputContextHandle = std::unique_ptr<AVFormatContext, ReleaseInput>;
using OutputContextHandle = std::unique_ptr<AVFormatContext, ReleaseOutput>;

} // namespace Ko::libav

#endif
