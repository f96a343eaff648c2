// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_CONTAINERS_H
#define KOVANTA_SRC_VIDEOOUT_CONTAINERS_H

extern "C" {
#include <libavformat/avformat.h>
}

// What containers can hold, where libav's muxers do not ask.
namespace Ko {

/// Whether the encoder's headers go into the container's instead of into the stream.
bool wantsGlobalHeader(const AVOutputFormat& container);

/// Whether the container has a code for the codec; without one nobody can tell what the file holds.
bool hasCodeFor(const AVFormatContext& output, AVCodecID codec);

/// Whether the container can tell two frames apart in time, and hold the distances of reordered ones.
/// @param period of one frame, in seconds
/// @param tick of the stream, in seconds
bool holdsPeriod(const AVOutputFormat& container, AVRational period, AVRational tick);

/// A transport stream of less than eleven packets is taken for something else by libav's own readers; null packets,
/// which every reader skips, make it long enough. Does nothing to other containers.
void padTransportStream(const AVFormatContext& output);

} // namespace Ko

#endif
