// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_FRAMEPOOL_H
#define KOVANTA_SRC_VIDEOOUT_FRAMEPOOL_H

#include "Kovanta/Image.h"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>

#include <exception>
#include <utility>
#include <vector>

namespace Ko {

/// Frames that the writer is done with, handed back so that the next copies go into memory that exists already.
/// Thread-safe. It never holds more frames than were on their way at one time.
class FramePool {
public:
    /// A used frame if there is one, else a new one without memory. What it holds is undefined; its planes own it.
    Image<> take() {
        const boost::lock_guard<boost::mutex> lock(mutex);
        if (frames.empty())
            return Image<>(PF_YCC444P);
        Image<> frame(std::move(frames.back()));
        frames.pop_back();
        return frame;
    }

    /// Keeps a frame for later; without memory for that it is released instead.
    void give(Image<>&& frame) noexcept {
        try {
            const boost::lock_guard<boost::mutex> lock(mutex);
            frames.push_back(std::move(frame));
        } catch (const std::exception&) {
        }
    }

private:
    boost::mutex mutex;
    std::vector<Image<>> frames;
};

} // namespace Ko

#endif
