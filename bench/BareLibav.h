// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_BENCH_BARELIBAV_H
#define KOVANTA_BENCH_BARELIBAV_H

#include "Kovanta/Image.h"
#include "libav/Handles.h"

#include <cstdint>
#include <string>

namespace bench {

/// What it takes to read a video file with libav and nothing around it.
class BareReader {
public:
    explicit BareReader(const std::string& file);
    /// The next picture; null at the end.
    AVFrame* next();
    /// Goes to the picture with this time stamp.
    void seek(std::int64_t target);

private:
    Ko::libav::InputContextHandle container;
    Ko::libav::CodecContextHandle codec;
    Ko::libav::PacketHandle packet;
    Ko::libav::FrameHandle picture;
    int stream = 0;
};

/// The same for writing, in MPEG-4.
class BareWriter {
public:
    BareWriter(const std::string& file, int width, int height, int bitRate);
    /// A picture that may be written into.
    AVFrame* picture();
    void encode();
    void close();

private:
    void drain();

    Ko::libav::OutputContextHandle container;
    Ko::libav::CodecContextHandle codec;
    Ko::libav::PacketHandle packet;
    Ko::libav::FrameHandle frame;
    std::int64_t count = 0;
};

/// An image over a planar 4:2:0 picture's memory.
void wrap(Ko::Image<>& image, const AVFrame& picture);

} // namespace bench

#endif
