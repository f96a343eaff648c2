// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_FRAMEWAIT_H
#define KOVANTA_SRC_VIDEOIN_FRAMEWAIT_H

#include "videoin/V4LHandles.h"

#include <atomic>
#include <cstdint>

namespace Ko {

/// In milliseconds, negative for none; signal handlers and other threads may change it during the wait.
using WaitLimit = std::atomic<std::int64_t>;
static_assert(WaitLimit::is_always_lock_free);

/// Waits, with interruption points, until a call for a frame of the device, or its failure, would not.
/// @return false when the time since the call has reached the limit or, if wanted, when a signal was handled
/// @throws boost::thread_interrupted
bool awaitFrame(const Descriptor& device, const WaitLimit& limit, bool untilSignal);

} // namespace Ko

#endif
