// SPDX-License-Identifier: BSD-2-Clause
#include "Upright.h"

#include <Kovanta/ImageFile.h>

namespace example {

bool Upright::read(Ko::VideoInputVideoFile& video, Ko::Image<>& frame) {
    const Ko::Orientation orientation = video.getOrientation();
    if (orientation == Ko::OR_UPRIGHT)
        return video.read(frame);
    stored.fmt(frame.format);
    if (!video.read(stored))
        return false;
    Ko::rotate(frame, stored, orientation);
    return true;
}

bool Upright::read(const std::string& still, Ko::Image<>& frame) {
    const Ko::Orientation orientation = Ko::readOrientation(still);
    if (orientation == Ko::OR_UPRIGHT) {
        Ko::readImage(frame, still);
        return false;
    }
    stored.fmt(frame.format);
    Ko::readImage(stored, still);
    Ko::rotate(frame, stored, orientation);
    return true;
}

} // namespace example
