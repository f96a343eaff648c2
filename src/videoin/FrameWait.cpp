// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/FrameWait.h"

#include <boost/thread/thread.hpp>

#include <poll.h>

#include <algorithm>
#include <cerrno>

namespace Ko {

namespace {

/// How long the wait does not look at what other threads may have changed.
constexpr std::int64_t longestSlice = 50; // milliseconds

} // namespace

FrameWait::FrameWait(const V4LDevice& d, const WaitLimit& l)
    : device(d)
    , limit(l) {}

/// Since the beginning.
std::int64_t FrameWait::milliseconds() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

bool FrameWait::isOver() const {
    const std::int64_t most = limit;
    return most >= 0 && milliseconds() >= most;
}

bool FrameWait::await(bool untilSignal) const {
    for (;;) {
        boost::this_thread::interruption_point();
        const std::int64_t most = limit;
        const std::int64_t left = most < 0 ? longestSlice + 1 : std::max<std::int64_t>(most - milliseconds(), 0);
        pollfd waiting{device.get(), POLLIN, 0};
        const int result = ::poll(&waiting, 1, static_cast<int>(std::min(left, longestSlice)));
        const bool signalled = result == -1 && errno == EINTR;
        if (result != 0 && !signalled) // a failure of poll too: the call for the frame tells why
            return true;
        if (signalled ? untilSignal : left <= longestSlice)
            return false;
    }
}

} // namespace Ko
