// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_DRIVERCOUNT_H
#define KOVANTA_SRC_VIDEOIN_DRIVERCOUNT_H

#include <linux/videodev2.h>

#include <cstdint>

namespace Ko {

/// What the driver says of the frames of one stream.
class DriverCount {
public:
    void note(const v4l2_buffer& record) {
        // Numbers that stand still or go back are those of a driver that does not count.
        const auto step = static_cast<std::int32_t>(record.sequence - lastSequence);
        if (any && step > 1)
            lostFrames += static_cast<std::uint32_t>(step - 1);
        any = true;
        lastSequence = record.sequence;
        // Without a sign, in which drivers' nonsense may overflow.
        microseconds = static_cast<std::int64_t>(static_cast<std::uint64_t>(record.timestamp.tv_sec) * 1000000u +
                                                 static_cast<std::uint64_t>(record.timestamp.tv_usec));
    }

    std::uint32_t sequence() const { return lastSequence; }
    std::int64_t timeStamp() const { return microseconds; }
    std::uint64_t lost() const { return lostFrames; }

private:
    bool any = false;
    std::uint32_t lastSequence = 0;
    std::int64_t microseconds = 0;
    std::uint64_t lostFrames = 0;
};

} // namespace Ko

#endif
