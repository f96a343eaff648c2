// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/FrameWait.h"

#include <boost/thread/thread.hpp>

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace Ko {

namespace {

/// How long the wait does not look at what other threads may have changed.
constexpr std::int64_t longestSlice = 50; // milliseconds

std::int64_t millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

bool awaitFrame(const Descriptor& device, const WaitLimit& limit, bool untilSignal) {
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        boost::this_thread::interruption_point();
        const std::int64_t most = limit;
        const std::int64_t left =
            most < 0 ? longestSlice + 1 : std::max<std::int64_t>(most - millisecondsSince(start), 0);
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
