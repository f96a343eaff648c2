// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_FRAMEWAIT_H
#define KOVANTA_SRC_VIDEOIN_FRAMEWAIT_H

#include "videoin/V4LHandles.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace Ko {

/// In milliseconds, negative for none; signal handlers and other threads may change it during the wait.
using WaitLimit = std::atomic<std::int64_t>;
static_assert(WaitLimit::is_always_lock_free);

/// A wait for a frame of a device, in one or more parts that have a limit together.
class FrameWait {
public:
    /// Refers to both.
    FrameWait(const V4LDevice& device, const WaitLimit& limit);

    /// Waits, with interruption points, until a call for a frame, or its failure, would not.
    /// @return false when the limit is reached or, if wanted, when a signal was handled
    /// @throws boost::thread_interrupted
    bool await(bool untilSignal) const;
    /// Whether the limit is reached.
    bool isOver() const;

private:
    std::int64_t milliseconds() const;

    const V4LDevice& device;
    const WaitLimit& limit;
    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

} // namespace Ko

#endif
