#include "videoin/VideoFileDecoder.h"

#include "util/Errors.h"

#include <algorithm>
#include <new>
#include <numeric>

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/error.h>
#include <libavutil/mathematics.h>
}

namespace Ko {

namespace {

/// Where the caller meets these failures first.
constexpr const char* constructor = "VideoInputVideoFile::VideoInputVideoFile";

bool known(std::int64_t time) {
    return time != AV_NOPTS_VALUE;
}

} // namespace

void VideoFileDecoder::open(const std::string& filename, const AVInputFormat* forcedFormat) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, filename.c_str(), forcedFormat, nullptr) != 0)
        throwRuntimeError(constructor, "Failed to open " + filename + ".");
    container.reset(opened);
    if (avformat_find_stream_info(opened, nullptr) < 0)
        throwRuntimeError(constructor, "Failed to find stream information in " + filename + ".");

    // Spares the demuxer the work on packets that nobody wants.
    for (unsigned int i = 0; i < opened->nb_streams; ++i) {
        AVStream* candidate = opened->streams[i];
        if (!stream && candidate->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
            stream = candidate;
        else
            candidate->discard = AVDISCARD_ALL;
    }
    if (!stream)
        throwRuntimeError(constructor, "Failed to find video stream in " + filename + ".");

    openDecoder();

    const AVRational guess = av_guess_frame_rate(opened, stream, nullptr);
    if (guess.num > 0 && guess.den > 0)
        rate = guess;
    clock = PictureClock(stream->time_base, rate);
    packet.reset(av_packet_alloc());
    picture.reset(av_frame_alloc());
    if (!packet || !picture)
        throw std::bad_alloc();
}

void VideoFileDecoder::openDecoder() {
    const AVCodec* decoder = avcodec_find_decoder(stream->codecpar->codec_id);
    if (!decoder)
        throwRuntimeError(constructor, "avcodec_find_decoder failed.");
    codec.reset(avcodec_alloc_context3(decoder));
    if (!codec)
        throw std::bad_alloc();
    if (avcodec_parameters_to_context(codec.get(), stream->codecpar) < 0)
        throwRuntimeError(constructor, "avcodec_open failed.");
    codec->pkt_timebase = stream->time_base;
    codec->thread_count = 0; // as many as there are processors
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0)
        throwRuntimeError(constructor, "avcodec_open failed.");
}

const AVFrame* VideoFileDecoder::next() {
    for (;;) {
        const int result = avcodec_receive_frame(codec.get(), picture.get());
        if (result == AVERROR_EOF || (draining && result == AVERROR(EAGAIN)))
            return nullptr;
        const bool lacksReferences =
            (codec->flags & AV_CODEC_FLAG_OUTPUT_CORRUPT) != 0 && (picture->flags & AV_FRAME_FLAG_CORRUPT) != 0;
        if (result == 0 && !lacksReferences) {
            clock.show(*picture);
            return picture.get();
        }
        // Anything but EAGAIN is the error of one packet; the stream goes on behind it. A draining decoder has no more
        // packets to be fed with and comes to its end by being asked again.
        if (!draining)
            feed();
    }
}

/// Gives the decoder one packet of the stream, or the news that there are no more.
void VideoFileDecoder::feed() {
    if (!resend)
        for (;;) {
            if (av_read_frame(container.get(), packet.get()) < 0) {
                draining = true;
                // After a seek into the last open group of pictures the H.264 decoder takes its last pictures for
                // ones that lack references, and keeps them. It has to be asked for those; what truly lacks references
                // comes marked then.
                if (codec->codec_id == AV_CODEC_ID_H264 && keyFed)
                    codec->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
                avcodec_send_packet(codec.get(), nullptr);
                return;
            }
            // The decoder would take an empty packet for the end of the stream.
            const bool empty = packet->size == 0 && packet->side_data_elems == 0;
            const bool startable = !awaitsKey || (packet->flags & AV_PKT_FLAG_KEY) != 0;
            if (packet->stream_index == stream->index && !empty && startable)
                break;
            av_packet_unref(packet.get());
        }
    // An edit list may cut off the file's last pictures; they are in the file and not lost on the way here.
    if (known(stream->duration) && packet->pts >= stream->duration)
        packet->flags &= ~AV_PKT_FLAG_DISCARD;
    awaitsKey = false;
    keyFed = keyFed || (packet->flags & AV_PKT_FLAG_KEY) != 0;
    clock.feed(*packet);
    const bool refused = avcodec_send_packet(codec.get(), packet.get()) == AVERROR(EAGAIN);
    resend = refused && !resend;
    if (!resend)
        av_packet_unref(packet.get());
}

bool VideoFileDecoder::seek(std::int64_t target) {
    if (av_seek_frame(container.get(), stream->index, target, AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    flush();
    // Transport and program streams are entered anywhere, and some decoders (HEVC, MPEG-4) would show what they make of
    // pictures without references. The beginning is taken as it comes.
    awaitsKey = target > 0;
    return true;
}

bool VideoFileDecoder::rewind() {
    if (seek(0))
        return true;
    // A stream without a container has no time stamps to look for, but its beginning is known.
    if (av_seek_frame(container.get(), stream->index, 0, AVSEEK_FLAG_BYTE) < 0)
        return false;
    flush();
    return true;
}

/// Only ever right after the container has moved: a flush takes the decoder's reference pictures away.
void VideoFileDecoder::flush() {
    avcodec_flush_buffers(codec.get());
    codec->flags &= ~AV_CODEC_FLAG_OUTPUT_CORRUPT;
    av_packet_unref(packet.get());
    resend = false;
    draining = false;
    keyFed = false;
    awaitsKey = false;
    clock.reset();
}

Frac<unsigned int> VideoFileDecoder::frameRate() const {
    if (rate.num == 0)
        return {1, 0};
    const int divisor = std::gcd(rate.num, rate.den);
    return {static_cast<unsigned int>(rate.num / divisor), static_cast<unsigned int>(rate.den / divisor)};
}

std::optional<std::int64_t> VideoFileDecoder::length() const {
    if (known(stream->duration))
        return stream->duration;
    if (known(container->duration))
        return av_rescale_q(container->duration, AVRational{1, AV_TIME_BASE}, stream->time_base);
    return std::nullopt;
}

std::int64_t VideoFileDecoder::second() const {
    return std::max<std::int64_t>(1, av_rescale_q(1, AVRational{1, 1}, stream->time_base));
}

} // namespace Ko
