// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/VideoFileEncoder.h"

#include "Kovanta/ConvertIm.h"
#include "libav/Names.h"
#include "util/Errors.h"
#include "videoout/Containers.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
}

#include <cerrno>
#include <climits>
#include <cstring>
#include <new>
#include <numeric>
#include <tuple>

namespace Ko {

namespace {

constexpr const char* openingVideo = "VideoOutputVideoFile::openVideo";

[[noreturn]] void refuseOption(const std::string& name, const std::string& reason) {
    throwLogicError(openingVideo, "The option " + name + reason);
}

/// Frames per second in lowest terms; {0, 1}, which no encoder accepts, for what is no rate.
AVRational reducedRate(Frac<unsigned int> rate) {
    if (rate.num == 0 || rate.den == 0)
        return {0, 1};
    const unsigned int divisor = std::gcd(rate.num, rate.den);
    const unsigned int num = rate.num / divisor;
    const unsigned int den = rate.den / divisor;
    if (num > INT_MAX || den > INT_MAX)
        return {0, 1};
    return {static_cast<int>(num), static_cast<int>(den)};
}

/// Sizes beyond int become negative, which the encoder refuses as it does 0.
int toInt(unsigned int size) {
    return size > INT_MAX ? -1 : static_cast<int>(size);
}

/// libsvtav1 can neither be drained nor closed before it was given a picture: it waits for one for ever.
bool mustBeFed(const AVCodec& codec) {
    return std::strcmp(codec.name, "libsvtav1") == 0;
}

} // namespace

VideoFileEncoder::~VideoFileEncoder() {
    feedUnfed();
}

void VideoFileEncoder::open(const std::string& filename, const Settings& settings, const AVCodec*& codec) {
    const std::string url = libav::urlOf(filename);
    const AVOutputFormat* container = av_guess_format(nullptr, filename.c_str(), nullptr);
    if (!container)
        throwRuntimeError("VideoOutputVideoFile::open", "guess_format failed.");
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, container, nullptr, url.c_str()) < 0)
        throwRuntimeError("VideoOutputVideoFile::open", "avformat_alloc_context failed.");
    formatContext.reset(context);

    if (!codec)
        codec = avcodec_find_encoder(container->video_codec);
    if (!codec)
        throwRuntimeError("VideoOutputVideoFile::open", "avcodec_find_encoder failed.");
    addVideoStream(settings, *codec);
    openVideo(settings, *codec);
    if (avcodec_parameters_from_context(stream->codecpar, codecContext.get()) < 0)
        throwRuntimeError("VideoOutputVideoFile::open", "av_set_parameters failed.");

    if (!hasCodeFor(*formatContext, codec->id))
        throwRuntimeError("VideoOutputVideoFile::open", "av_write_header failed.");
    if (!(container->flags & AVFMT_NOFILE) && avio_open(&formatContext->pb, url.c_str(), AVIO_FLAG_WRITE) < 0)
        throwRuntimeError("VideoOutputVideoFile::open", "url_fopen failed to open " + filename + ".");
    setMuxerOptions(settings);
    if (avformat_write_header(formatContext.get(), nullptr) < 0)
        throwRuntimeError("VideoOutputVideoFile::open", "av_write_header failed.");
    if (!holdsPeriod(*container, codecContext->time_base, stream->time_base))
        throwRuntimeError("VideoOutputVideoFile::open", "The container cannot hold the frame rate.");
}

/// Those of the mp4 and mov family. Other muxers do not know them.
void VideoFileEncoder::setMuxerOptions(const Settings& settings) {
    if (!formatContext->oformat->priv_class)
        return;
    void* const options = formatContext->priv_data;
    // A small time base would be multiplied up, and positions would no longer count frames.
    av_opt_set_int(options, "video_track_timescale", codecContext->time_base.den, 0);
    if (!settings.fragments)
        return;
    av_opt_set(options, "movflags", "+frag_keyframe+delay_moov+default_base_moof", 0);
    constexpr std::int64_t longest = 1000000; // microseconds
    av_opt_set_int(options, "frag_duration", longest, 0);
}

void VideoFileEncoder::addVideoStream(const Settings& settings, const AVCodec& codec) {
    stream = avformat_new_stream(formatContext.get(), nullptr);
    if (!stream)
        throwRuntimeError("VideoOutputVideoFile::addVideoStream", "av_new_stream failed.");
    stream->id = 0;
    codecContext.reset(avcodec_alloc_context3(&codec));
    packet.reset(av_packet_alloc());
    if (!codecContext || !packet)
        throw std::bad_alloc();

    codecContext->flags |= settings.codecFlags;
    if (wantsGlobalHeader(*formatContext->oformat))
        codecContext->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codecContext->codec_type = AVMEDIA_TYPE_VIDEO;
    codecContext->framerate = reducedRate(settings.frameRate);
    codecContext->time_base = av_inv_q(codecContext->framerate);
    codecContext->bit_rate = settings.bitRate;
    codecContext->width = toInt(settings.width);
    codecContext->height = toInt(settings.height);
    format = settings.anyFormat ? formatFor(codec, settings.width, settings.height) : usualFormat(codec);
    ColorTags color = settings.color;
    if (format) {
        codecContext->pix_fmt = format->libav;
        if (format->jpeg)
            color = {color.matrix == CM_UNKNOWN ? CM_UNKNOWN : CM_BT601, CR_FULL};
    }
    tagColor(*codecContext, color);
    if (settings.anyFormat)
        anyFrame.emplace(settings.color.matrix, color);
    stream->time_base = codecContext->time_base;
    stream->avg_frame_rate = codecContext->framerate;
    const Frac<unsigned int> aspect = settings.pixelAspect;
    av_reduce(&codecContext->sample_aspect_ratio.num, &codecContext->sample_aspect_ratio.den, aspect.num, aspect.den,
              INT_MAX);
    stream->sample_aspect_ratio = codecContext->sample_aspect_ratio;
}

void VideoFileEncoder::openVideo(const Settings& settings, const AVCodec& codec) {
    if (!format)
        throwLogicError(openingVideo, settings.anyFormat ? "The encoder lists neither 4:2:0 nor 4:4:4 of eight bits."
                                                         : "Can only convert to 4:2:0 Planar YUV.");
    // libx265 prints past libav's log. The other encoders do not know the option.
    if (codec.priv_class && av_log_get_level() == AV_LOG_QUIET)
        av_opt_set(codecContext->priv_data, "x265-params", "log-level=none", 0);
    setEncoderOptions(settings);
    const auto makePictures = [this] {
        pictures.emplace(static_cast<unsigned int>(codecContext->width),
                         static_cast<unsigned int>(codecContext->height), *format);
    };
    // Without memory for a picture such an encoder could not be closed any more.
    if (mustBeFed(codec) && av_image_check_size(settings.width, settings.height, 0, nullptr) >= 0)
        makePictures();
    if (avcodec_open2(codecContext.get(), &codec, nullptr) < 0)
        throwRuntimeError(openingVideo, "avcodec_open failed.");
    if (!pictures)
        makePictures();
}

/// The pictures that the encoder is given are made for what open() was asked for.
void VideoFileEncoder::setEncoderOptions(const Settings& settings) {
    const auto described = [this] {
        const AVCodecContext& codec = *codecContext;
        return std::tuple(codec.pix_fmt, codec.width, codec.height, codec.time_base.num, codec.time_base.den);
    };
    const auto before = described();
    for (const auto& [name, value] : settings.options) {
        const int result = av_opt_set(codecContext.get(), name.c_str(), value.c_str(), AV_OPT_SEARCH_CHILDREN);
        if (result == AVERROR_OPTION_NOT_FOUND)
            throwLogicError(openingVideo, "The encoder has no option " + name + ".");
        if (result == AVERROR(ENOMEM))
            throw std::bad_alloc();
        if (result < 0)
            refuseOption(name, " does not take " + value + ".");
        if (described() != before)
            refuseOption(name, " would change what is written.");
    }
}

void VideoFileEncoder::frameWrite(const Image<>& image) {
    if (image.width != static_cast<unsigned int>(codecContext->width) ||
        image.height != static_cast<unsigned int>(codecContext->height))
        throwLogicError("VideoOutputVideoFile::frameWrite", "Image size is not equal to the output file image size.");
    EncoderPicture& picture = pictures->writable();
    if (anyFrame)
        anyFrame->convert(picture, image);
    else
        convertIm(picture.image, image);
    picture.frame->pts = frameCount;
    fed = true;
    if (avcodec_send_frame(codecContext.get(), picture.frame.get()) < 0)
        throwRuntimeError("VideoOutputVideoFile::frameWrite", "avcodec_encode_video failed.");
    writePackets();
    ++frameCount;
}

/// Without a frame of the caller's, the encoder gets one that goes nowhere.
/// @return whether that was so; the encoder is drained then
bool VideoFileEncoder::feedUnfed() noexcept {
    if (fed || !codecContext || !avcodec_is_open(codecContext.get()) || !mustBeFed(*codecContext->codec))
        return false;
    fed = true;
    AVFrame* const frame = pictures->first().frame.get();
    frame->pts = 0;
    if (avcodec_send_frame(codecContext.get(), frame) >= 0 && avcodec_send_frame(codecContext.get(), nullptr) >= 0)
        while (avcodec_receive_packet(codecContext.get(), packet.get()) >= 0)
            av_packet_unref(packet.get());
    return true;
}

void VideoFileEncoder::drain() {
    if (feedUnfed())
        return;
    if (avcodec_send_frame(codecContext.get(), nullptr) < 0)
        throwRuntimeError("VideoOutputVideoFile::frameWrite", "avcodec_encode_video failed.");
    writePackets();
}

void VideoFileEncoder::writePackets() {
    for (;;) {
        const int result = avcodec_receive_packet(codecContext.get(), packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0)
            throwRuntimeError("VideoOutputVideoFile::frameWrite", "avcodec_encode_video failed.");
        packet->stream_index = stream->index;
        packet->duration = 1; // Without it the last frame of some containers is not shown.
        av_packet_rescale_ts(packet.get(), codecContext->time_base, stream->time_base);
        if (av_write_frame(formatContext.get(), packet.get()) < 0)
            throwRuntimeError("VideoOutputVideoFile::frameWrite", "av_write_frame failed.");
    }
}

void VideoFileEncoder::writeTrailer() {
    if (av_write_trailer(formatContext.get()) < 0)
        throwRuntimeError("VideoOutputVideoFile::close", "av_write_trailer failed.");
}

void VideoFileEncoder::closeFile() {
    padTransportStream(*formatContext);
    if (!(formatContext->oformat->flags & AVFMT_NOFILE) && avio_closep(&formatContext->pb) < 0)
        throwRuntimeError("VideoOutputVideoFile::close", "url_fclose failed.");
}

} // namespace Ko
