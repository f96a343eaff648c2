#ifndef KOVANTA_SRC_VIDEOIN_PICTURECLOCK_H
#define KOVANTA_SRC_VIDEOIN_PICTURECLOCK_H

#include "libav/Handles.h"

#include <cstdint>
#include <optional>

namespace Ko {

/// Tells the time stamp of each picture, in stream ticks, from the packets that were fed and the pictures that came of
/// them. Some containers hold no presentation times; there the pictures are counted.
class PictureClock {
public:
    PictureClock() = default;
    /// @param rate frames per second; {0, 1} when not known
    PictureClock(AVRational timeBase, AVRational rate);

    /// The container has moved.
    void reset();
    void feed(const AVPacket& packet);
    void show(const AVFrame& picture);

    /// Of the picture shown last.
    std::int64_t timeStamp() const { return last; }
    /// Whether the file told it, or it was counted from one that the file told since the last reset.
    bool knowsTime() const { return placed; }

private:
    std::optional<std::int64_t> stamp(const AVFrame& picture) const;

    std::int64_t period = 1; ///< Of one frame, in ticks.
    std::int64_t last = 0;
    std::optional<std::int64_t> firstKeyDts; ///< Decoding time of the first key packet since the reset.
    bool keyFed = false;
    bool shown = false;
    bool placed = false;
    std::optional<bool> counts; ///< Whether there are no presentation times; known from the first packet.
};

} // namespace Ko

#endif
