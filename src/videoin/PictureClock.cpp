// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/PictureClock.h"

#include "videoin/Ticks.h"

#include <algorithm>
#include <cstring>
#include <new>

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/mathematics.h>
}

namespace Ko {

namespace {

bool known(std::int64_t time) {
    return time != AV_NOPTS_VALUE;
}

} // namespace

PictureClock::PictureClock(const AVFormatContext& container, const AVStream& stream, AVRational rate) {
    if (rate.num > 0)
        period = std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(rate), stream.time_base));
    // libav makes up presentation times for some codecs in these, and for some pictures only.
    if (std::strcmp(container.iformat->name, "avi") == 0 || std::strcmp(container.iformat->name, "asf") == 0)
        counts = true;
    parser.reset(av_parser_init(stream.codecpar->codec_id)); // null for codecs that need none
    if (!parser)
        return;
    parser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
    parsed.reset(avcodec_alloc_context3(nullptr));
    if (!parsed || avcodec_parameters_to_context(parsed.get(), stream.codecpar) < 0)
        throw std::bad_alloc();
}

void PictureClock::reset() {
    shown = false;
    placed = false;
    fed = 0;
    next = 0;
    reference = -1;
}

void PictureClock::feed(AVPacket& packet) {
    if (!counts)
        counts = !known(packet.pts) && known(packet.dts);
    if (*counts)
        count(packet);
}

void PictureClock::count(AVPacket& packet) {
    const bool key = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    at(fed) = {packet.dts, key, 0};
    if (key)
        reference = fed;
    else if (reference >= 0 && isBidirectional(packet))
        ++at(reference).leading;
    else
        reference = -1;
    packet.pts = fed++;
}

/// Whether a packet right behind a key frame holds a picture that is shown before that.
bool PictureClock::isBidirectional(const AVPacket& packet) {
    if (!parser)
        return false;
    unsigned char* frame = nullptr;
    int size = 0;
    av_parser_parse2(parser.get(), parsed.get(), &frame, &size, packet.data, packet.size, AV_NOPTS_VALUE,
                     AV_NOPTS_VALUE, -1);
    return parser->pict_type == AV_PICTURE_TYPE_B;
}

void PictureClock::show(const AVFrame& picture) {
    const std::optional<std::int64_t> time = counts.value_or(false) ? countedTime(picture) : toldTime(picture);
    if (time)
        placed = true;
    if (time)
        last = *time;
    else if (shown)
        last = addTicks(last, period);
    else
        last = 0;
    shown = true;
}

std::optional<std::int64_t> PictureClock::countedTime(const AVFrame& picture) {
    const std::int64_t own = picture.pts;
    if (isRemembered(own) && at(own).key)
        next = std::max(next, own + at(own).leading);
    const std::int64_t number = next++;
    if (!isRemembered(number) || !known(at(number).time))
        return std::nullopt;
    return at(number).time;
}

/// Without its own time only the first picture takes its packet's.
std::optional<std::int64_t> PictureClock::toldTime(const AVFrame& picture) const {
    if (known(picture.pts))
        return picture.pts;
    if (!shown && known(picture.pkt_dts))
        return picture.pkt_dts;
    return std::nullopt;
}

} // namespace Ko
