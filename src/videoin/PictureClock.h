// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_PICTURECLOCK_H
#define KOVANTA_SRC_VIDEOIN_PICTURECLOCK_H

#include "libav/Handles.h"

#include <array>
#include <cstdint>
#include <optional>

namespace Ko {

/// Tells the time stamp of each picture, in stream ticks, from the packets that were fed and the pictures that came of
/// them.
///
/// AVI, ASF and their like hold decoding times only. There the k-th picture takes the k-th of these, counted from a key
/// frame; pictures that come after a key frame in the file but before it on the screen count as well, although a
/// decoder that has just been put there leaves them out.
class PictureClock {
public:
    PictureClock() = default;
    PictureClock(const AVFormatContext& container, const AVStream& stream, AVRational rate);

    /// The container has moved.
    void reset();
    /// To be called with each packet before the decoder has it. Where pictures are counted, this one's number goes into
    /// its presentation time, for the decoder to hand on.
    void feed(AVPacket& packet);
    void show(const AVFrame& picture);

    /// Of the picture shown last.
    std::int64_t timeStamp() const { return last; }
    /// Whether the file told it, or it was counted from one that the file told since the last reset.
    bool knowsTime() const { return placed; }

private:
    struct Fed {
        std::int64_t time; ///< Of decoding.
        bool key;
        std::uint32_t leading; ///< Packets behind this one whose pictures are shown before it.
    };
    static constexpr std::int64_t memory = 256; ///< Packets, more than any decoder holds.

    Fed& at(std::int64_t number) { return recent[static_cast<std::size_t>(number % memory)]; }
    bool isRemembered(std::int64_t number) const { return number >= 0 && number < fed && number >= fed - memory; }
    bool isBidirectional(const AVPacket& packet);
    void count(AVPacket& packet);
    std::optional<std::int64_t> countedTime(const AVFrame& picture);
    std::optional<std::int64_t> toldTime(const AVFrame& picture) const;

    std::optional<bool> counts; ///< Whether there are no presentation times; not known before the first packet.
    std::int64_t period = 1;    ///< Of one frame, in ticks.
    std::int64_t last = 0;
    bool shown = false; ///< Since the reset.
    bool placed = false;

    std::array<Fed, memory> recent{}; ///< A ring of what was fed last.
    std::int64_t fed = 0;             ///< Packets since the reset.
    std::int64_t next = 0;            ///< The number whose time the next picture takes.
    std::int64_t reference = -1;      ///< The key frame fed last, while what follows it may precede it.
    libav::ParserHandle parser;
    libav::CodecContextHandle parsed; ///< Parameters for the parser.
};

} // namespace Ko

#endif
