// SPDX-License-Identifier: BSD-2-Clause
#include "BareLibav.h"

#include "Kovanta/Wrap.h"

#include <stdexcept>

namespace bench {

namespace {

void check(bool good, const char* what) {
    if (!good)
        throw std::runtime_error(what);
}

} // namespace

BareReader::BareReader(const std::string& file) {
    AVFormatContext* opened = nullptr;
    check(avformat_open_input(&opened, file.c_str(), nullptr, nullptr) == 0, "avformat_open_input");
    container.reset(opened);
    check(avformat_find_stream_info(opened, nullptr) >= 0, "avformat_find_stream_info");
    const AVCodec* decoder = nullptr;
    stream = av_find_best_stream(opened, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    check(stream >= 0, "av_find_best_stream");
    codec.reset(avcodec_alloc_context3(decoder));
    avcodec_parameters_to_context(codec.get(), opened->streams[stream]->codecpar);
    codec->thread_count = 0;
    check(avcodec_open2(codec.get(), decoder, nullptr) == 0, "avcodec_open2");
    packet.reset(av_packet_alloc());
    picture.reset(av_frame_alloc());
}

AVFrame* BareReader::next() {
    for (;;) {
        const int result = avcodec_receive_frame(codec.get(), picture.get());
        if (result == 0)
            return picture.get();
        if (result != AVERROR(EAGAIN))
            return nullptr;
        if (av_read_frame(container.get(), packet.get()) < 0)
            avcodec_send_packet(codec.get(), nullptr);
        else if (packet->stream_index == stream)
            avcodec_send_packet(codec.get(), packet.get());
        av_packet_unref(packet.get());
    }
}

void BareReader::seek(std::int64_t target) {
    av_seek_frame(container.get(), stream, target, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(codec.get());
    while (const AVFrame* shown = next())
        if (shown->pts >= target)
            return;
}

BareWriter::BareWriter(const std::string& file, int width, int height, int bitRate) {
    AVFormatContext* made = nullptr;
    avformat_alloc_output_context2(&made, nullptr, nullptr, file.c_str());
    check(made != nullptr, "avformat_alloc_output_context2");
    container.reset(made);
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_MPEG4);
    codec.reset(avcodec_alloc_context3(encoder));
    codec->width = width;
    codec->height = height;
    codec->bit_rate = bitRate;
    codec->time_base = {1, 25};
    codec->framerate = {25, 1};
    codec->pix_fmt = AV_PIX_FMT_YUV420P;
    check(avcodec_open2(codec.get(), encoder, nullptr) == 0, "avcodec_open2");
    AVStream* stream = avformat_new_stream(made, nullptr);
    stream->time_base = codec->time_base;
    avcodec_parameters_from_context(stream->codecpar, codec.get());
    check(avio_open(&made->pb, file.c_str(), AVIO_FLAG_WRITE) >= 0, "avio_open");
    check(avformat_write_header(made, nullptr) >= 0, "avformat_write_header");
    packet.reset(av_packet_alloc());
    frame.reset(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width;
    frame->height = height;
    check(av_frame_get_buffer(frame.get(), 0) == 0, "av_frame_get_buffer");
}

AVFrame* BareWriter::picture() {
    check(av_frame_make_writable(frame.get()) == 0, "av_frame_make_writable");
    return frame.get();
}

void BareWriter::encode() {
    frame->pts = count++;
    avcodec_send_frame(codec.get(), frame.get());
    drain();
}

void BareWriter::close() {
    avcodec_send_frame(codec.get(), nullptr);
    drain();
    av_write_trailer(container.get());
}

void BareWriter::drain() {
    while (avcodec_receive_packet(codec.get(), packet.get()) == 0) {
        packet->duration = 1;
        av_packet_rescale_ts(packet.get(), codec->time_base, container->streams[0]->time_base);
        av_write_frame(container.get(), packet.get());
        av_packet_unref(packet.get());
    }
}

void wrap(Ko::Image<>& image, const AVFrame& picture) {
    Ko::rewrapMemory(image, static_cast<unsigned int>(picture.width), static_cast<unsigned int>(picture.height),
                     {{picture.data[0], picture.linesize[0]},
                      {picture.data[1], picture.linesize[1]},
                      {picture.data[2], picture.linesize[2]}});
}

} // namespace bench
