// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/Containers.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <climits>
#include <cstdint>
#include <cstring>
#include <initializer_list>

namespace Ko {

namespace {

bool isOneOf(const AVOutputFormat& container, std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (std::strcmp(container.name, name) == 0)
            return true;
    return false;
}

} // namespace

bool wantsGlobalHeader(const AVOutputFormat& container) {
    return isOneOf(container, {"mp4", "mov", "3gp"}) || (container.flags & AVFMT_GLOBALHEADER) != 0;
}

bool hasCodeFor(const AVFormatContext& output, AVCodecID codec) {
    const AVOutputFormat& container = *output.oformat;
    if (isOneOf(container, {"avi"}))
        return avformat_query_codec(&container, codec, FF_COMPLIANCE_NORMAL) != 0;
    const bool transport = isOneOf(container, {"mpegts"});
    if (!transport && !isOneOf(container, {"mpeg", "vcd", "svcd", "vob", "dvd"}))
        return true; // the others ask for themselves
    switch (codec) {
    case AV_CODEC_ID_MPEG1VIDEO:
    case AV_CODEC_ID_MPEG2VIDEO:
    case AV_CODEC_ID_MPEG4:
    case AV_CODEC_ID_H264:
    case AV_CODEC_ID_HEVC:
        return true;
    case AV_CODEC_ID_DIRAC:
        return transport && !av_match_ext(output.url, "m2ts");
    default:
        return false;
    }
}

bool holdsPeriod(const AVOutputFormat& container, AVRational period, AVRational tick) {
    if (av_cmp_q(period, tick) < 0)
        return false;
    // These store the distance from decoding to presentation, some frames, in 32 bits.
    constexpr int mostFrames = 16;
    return !isOneOf(container, {"mp4", "mov", "3gp", "3g2", "psp", "ipod", "ismv", "f4v"}) ||
           av_cmp_q(period, av_mul_q(tick, {INT_MAX / mostFrames, 1})) <= 0;
}

void padTransportStream(const AVFormatContext& output) {
    constexpr std::int64_t packetSize = 188;
    constexpr std::int64_t recognised = 11 * packetSize;
    if (!output.pb || !isOneOf(*output.oformat, {"mpegts"}))
        return;
    std::int64_t size = avio_tell(output.pb);
    if (size < 0 || size % packetSize != 0) // m2ts has longer packets
        return;
    unsigned char nullPacket[packetSize];
    std::memset(nullPacket, 0xFF, sizeof nullPacket);
    nullPacket[0] = 0x47;
    nullPacket[1] = 0x1F;
    nullPacket[3] = 0x10;
    for (; size < recognised; size += packetSize)
        avio_write(output.pb, nullPacket, packetSize);
}

} // namespace Ko
