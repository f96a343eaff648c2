#include "videoin/PictureClock.h"

#include <algorithm>

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

PictureClock::PictureClock(AVRational timeBase, AVRational rate) {
    if (rate.num > 0)
        period = std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(rate), timeBase));
}

void PictureClock::reset() {
    firstKeyDts.reset();
    keyFed = false;
    shown = false;
}

void PictureClock::feed(const AVPacket& packet) {
    if (!counts)
        counts = !known(packet.pts) && known(packet.dts);
    const bool key = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    if (key && !keyFed && known(packet.dts))
        firstKeyDts = packet.dts;
    keyFed = keyFed || key;
}

void PictureClock::show(const AVFrame& picture) {
    const std::optional<std::int64_t> time = stamp(picture);
    last = time.value_or(0);
    placed = shown ? placed || known(picture.pts) : time.has_value();
    shown = true;
}

/// Containers that give even their first key frame no presentation time have none at all. What libav makes up there
/// for some of the pictures is late by the reordering, so those pictures are counted.
std::optional<std::int64_t> PictureClock::stamp(const AVFrame& picture) const {
    const bool counted = counts.value_or(false);
    if (known(picture.pts) && !counted)
        return picture.pts;
    if (shown)
        return last > INT64_MAX - period ? last : last + period;
    if (counted || !known(picture.pkt_dts))
        return firstKeyDts;
    return picture.pkt_dts;
}

} // namespace Ko
