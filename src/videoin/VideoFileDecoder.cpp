// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/VideoFileDecoder.h"

#include "libav/Names.h"
#include "util/Errors.h"
#include "videoin/Ticks.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <numeric>

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/error.h>
#include <libavutil/mathematics.h>
#include <libavutil/mem.h>
}

namespace Ko {

namespace {

/// Where the caller meets these failures first.
constexpr const char* constructor = "VideoInputVideoFile::VideoInputVideoFile";

bool known(std::int64_t time) {
    return time != AV_NOPTS_VALUE;
}

/// 0/1 or 0/0 where nothing tells. No rate that has a place for every picture lies below the average; libav's guess
/// does where few packets have stamps (H.264 in program streams), since it is made from the gaps between these.
AVRational guessRate(AVFormatContext& container, AVStream& stream) {
    const AVRational guess = av_guess_frame_rate(&container, &stream, nullptr);
    const AVRational average = stream.avg_frame_rate;
    const bool tooLow = guess.num > 0 && average.den > 0 && av_q2d(guess) < 0.7 * av_q2d(average);
    return tooLow ? average : guess;
}

} // namespace

void VideoFileDecoder::open(const std::string& filename, const AVInputFormat* forcedFormat) {
    name = filename;
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, libav::urlOf(filename).c_str(), forcedFormat, nullptr) != 0)
        throwRuntimeError(constructor, "Failed to open " + filename + ".");
    container.reset(opened);
    if (avformat_find_stream_info(opened, nullptr) < 0)
        throwRuntimeError(constructor, "Failed to find stream information in " + filename + ".");
    chooseStream();
    openDecoder();

    const AVRational guess = guessRate(*opened, *stream);
    if (guess.num > 0 && guess.den > 0)
        rate = guess;
    clock = PictureClock(*opened, *stream, rate);
    packet.reset(av_packet_alloc());
    picture.reset(av_frame_alloc());
    if (!packet || !picture)
        throw std::bad_alloc();
}

/// The first video stream that is no cover picture, or else the first cover picture.
void VideoFileDecoder::chooseStream() {
    for (const int cover : {0, AV_DISPOSITION_ATTACHED_PIC})
        for (unsigned int i = 0; !stream && i < container->nb_streams; ++i) {
            AVStream* candidate = container->streams[i];
            if (candidate->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
                (candidate->disposition & AV_DISPOSITION_ATTACHED_PIC) == cover)
                stream = candidate;
        }
    if (!stream)
        throwRuntimeError(constructor, "Failed to find video stream in " + name + ".");
    // Spares the demuxer the work on packets that nobody wants.
    for (unsigned int i = 0; i < container->nb_streams; ++i)
        if (container->streams[i] != stream)
            container->streams[i]->discard = AVDISCARD_ALL;
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
    codec->opaque = &outOfMemory;
    codec->get_buffer2 = getBuffer;
#if LIBAVCODEC_VERSION_MAJOR < 60 // ever since, this is so
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    codec->thread_safe_callbacks = 1;
#pragma GCC diagnostic pop
#endif
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0)
        throwRuntimeError(constructor, "avcodec_open failed.");
}

/// Some decoders report a lack of memory like any damage; here it is seen all the same.
int VideoFileDecoder::getBuffer(AVCodecContext* codec, AVFrame* frame, int flags) {
    const int result = avcodec_default_get_buffer2(codec, frame, flags);
    if (result == AVERROR(ENOMEM))
        *static_cast<std::atomic<bool>*>(codec->opaque) = true;
    return result;
}

const AVFrame* VideoFileDecoder::next() {
    for (;;) {
        const int result = avcodec_receive_frame(codec.get(), picture.get());
        if (result == AVERROR_EOF || (draining && result == AVERROR(EAGAIN))) {
            refuseWithoutMemory(0);
            return nullptr;
        }
        const bool lacksReferences =
            (codec->flags & AV_CODEC_FLAG_OUTPUT_CORRUPT) != 0 && (picture->flags & AV_FRAME_FLAG_CORRUPT) != 0;
        if (result == 0 && !lacksReferences) {
            clock.show(*picture);
            return picture.get();
        }
        // Anything but EAGAIN is the error of one packet; the stream goes on behind it. A draining decoder has no more
        // packets to be fed with and comes to its end by being asked again.
        if (result < 0 && result != AVERROR(EAGAIN))
            note(result);
        if (!draining)
            feed();
    }
}

/// Gives the decoder one packet of the stream, or the news that there are no more.
void VideoFileDecoder::feed() {
    if (!resend) {
        if (!packetWaits && !readPacket()) {
            draining = true;
            // After a seek into the last open group of pictures the H.264 decoder takes its last pictures for
            // ones that lack references, and keeps them. It has to be asked for those; what truly lacks references
            // comes marked then.
            if (codec->codec_id == AV_CODEC_ID_H264 && keyFed)
                codec->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
            avcodec_send_packet(codec.get(), nullptr);
            return;
        }
        if (!anyFed)
            guessed = packet->pos < 0 && first->pos >= 0;
        anyFed = true;
        packetWaits = false;
        awaitsKey = false;
        keyFed = keyFed || (packet->flags & AV_PKT_FLAG_KEY) != 0;
        clock.feed(*packet);
    }
    const int result = avcodec_send_packet(codec.get(), packet.get());
    resend = result == AVERROR(EAGAIN) && !resend;
    if (resend)
        return;
    av_packet_unref(packet.get());
    if (result < 0)
        note(result);
}

/// The next packet of the stream that the decoder can take. @return false at the end, also after a failure to read
bool VideoFileDecoder::readPacket() {
    for (;;) {
        int result = av_read_frame(container.get(), packet.get());
        if (result == AVERROR_EOF && container->pb && container->pb->error < 0)
            result = container->pb->error; // which not every demuxer hands on
        if (result < 0) {
            refuseWithoutMemory(result);
            if (result != AVERROR_EOF)
                lastError = result;
            return false;
        }
        // The decoder would take an empty packet for the end of the stream.
        const bool empty = packet->size == 0 && packet->side_data_elems == 0;
        const bool startable = !awaitsKey || (packet->flags & AV_PKT_FLAG_KEY) != 0;
        if (packet->stream_index == stream->index && !empty && startable) {
            if (!first)
                first = Place{packet->pts, packet->dts, packet->pos};
            return true;
        }
        av_packet_unref(packet.get());
    }
}

/// A packet that could not be decoded.
void VideoFileDecoder::note(int error) {
    refuseWithoutMemory(error);
    lastError = error;
    ++damagedPackets;
}

/// To be asked wherever pictures fail to come. Not every decoder and demuxer says that it had no memory; most often
/// there is none for a picture now either.
/// @throws std::bad_alloc
void VideoFileDecoder::refuseWithoutMemory(int error) {
    const std::size_t pixels = std::size_t{4} * static_cast<unsigned int>(std::max(codec->width, 0)) *
                               static_cast<unsigned int>(std::max(codec->height, 0));
    void* const probe = av_malloc(pixels + 65536);
    av_free(probe);
    if (outOfMemory.exchange(false) || error == AVERROR(ENOMEM) || !probe)
        throw std::bad_alloc();
}

std::string VideoFileDecoder::error() const {
    if (lastError == 0)
        return "";
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(lastError, text, sizeof text);
    if (damagedPackets == 0)
        return text;
    return std::string(text) + " (damaged packets: " + std::to_string(damagedPackets) + ")";
}

bool VideoFileDecoder::isElementary() const {
    for (const char* format : {"avs2", "avs3", "cavsvideo", "dirac", "dnxhd", "evc", "h261", "h263", "h264", "hevc",
                               "m4v", "mjpeg", "mpegvideo", "vc1", "vvc"})
        if (std::strcmp(container->iformat->name, format) == 0)
            return true;
    return false;
}

bool VideoFileDecoder::seek(std::int64_t target) {
    findFirst();
    // libav would look for a time that it has made up itself.
    if (isElementary() || !move(target, AVSEEK_FLAG_BACKWARD))
        return false;
    // Transport and program streams are entered anywhere, and some decoders (HEVC, MPEG-4) would show what they make of
    // pictures without references. The beginning is taken as it comes.
    awaitsKey = target > start();
    return true;
}

/// Asked for the start, some containers refuse, and some go to a key frame that is shown later than the first picture.
/// So it is looked at where they went, and asked for times before the start.
bool VideoFileDecoder::rewind() {
    if (isElementary())
        return move(0, AVSEEK_FLAG_BYTE);
    findFirst();
    for (const std::int64_t aim : {start(), subtractTicks(start(), 2 * second()), std::int64_t{0}}) {
        if (!move(aim, AVSEEK_FLAG_BACKWARD))
            continue;
        packetWaits = readPacket();
        if (packetWaits && isFirst(*packet))
            return true;
    }
    return move(start(), AVSEEK_FLAG_BACKWARD);
}

/// The packet that is read for it waits, should the container refuse to move.
void VideoFileDecoder::findFirst() {
    if (!first)
        packetWaits = readPacket();
}

/// Not every container tells all of a packet's place, after a seek even less.
bool VideoFileDecoder::isFirst(const AVPacket& found) const {
    if (known(found.pts) && known(first->pts))
        return found.pts == first->pts;
    if (known(found.dts) && known(first->dts))
        return found.dts == first->dts;
    return found.pos == first->pos;
}

/// A flush comes only ever right after the container has moved: it takes the decoder's reference pictures away.
bool VideoFileDecoder::move(std::int64_t target, int flags) {
    if (av_seek_frame(container.get(), stream->index, target, flags) < 0)
        return false;
    avcodec_flush_buffers(codec.get());
    codec->flags &= ~AV_CODEC_FLAG_OUTPUT_CORRUPT;
    av_packet_unref(packet.get());
    packetWaits = false;
    resend = false;
    draining = false;
    anyFed = false;
    keyFed = false;
    awaitsKey = false;
    guessed = false;
    clock.reset();
    return true;
}

Frac<unsigned int> VideoFileDecoder::frameRate() const {
    if (rate.num == 0)
        return {1, 0};
    const int divisor = std::gcd(rate.num, rate.den);
    return {static_cast<unsigned int>(rate.num / divisor), static_cast<unsigned int>(rate.den / divisor)};
}

std::int64_t VideoFileDecoder::pictureNumber() const {
    // The frame period in ticks, when it is a whole number of them.
    const std::int64_t ticks = std::int64_t{rate.den} * stream->time_base.den;
    const std::int64_t divisor = std::int64_t{rate.num} * stream->time_base.num;
    if (!knowsTime() || divisor <= 0 || ticks < divisor || ticks % divisor != 0)
        return -1;
    const std::int64_t frame = ticks / divisor;
    std::int64_t all = 0;
    const bool constant = stream->nb_frames > 0
                              ? !__builtin_mul_overflow(stream->nb_frames, frame, &all) && all == stream->duration
                              : frame == 1;
    const std::int64_t since = subtractTicks(timeStamp(), start());
    return constant && since >= 0 && since % frame == 0 ? addTicks(since / frame, 1) : -1;
}

std::int64_t VideoFileDecoder::start() const {
    if (known(stream->start_time))
        return stream->start_time;
    if (known(container->start_time))
        return av_rescale_q(container->start_time, AVRational{1, AV_TIME_BASE}, stream->time_base);
    return 0;
}

std::optional<std::int64_t> VideoFileDecoder::length() const {
    if (known(stream->duration))
        return stream->duration;
    if (known(container->duration))
        return av_rescale_q(container->duration, AVRational{1, AV_TIME_BASE}, stream->time_base);
    return std::nullopt;
}

std::optional<std::int64_t> VideoFileDecoder::farEnd() const {
    const std::optional<std::int64_t> ticks = length();
    return ticks ? std::optional(addTicks(start(), *ticks)) : std::nullopt;
}

std::int64_t VideoFileDecoder::second() const {
    return std::max<std::int64_t>(1, av_rescale_q(1, AVRational{1, 1}, stream->time_base));
}

} // namespace Ko
