// SPDX-License-Identifier: BSD-2-Clause
#include "Source.h"

#include "support/Rate.h"
#include "support/Stills.h"

#include <Kovanta/ImageFile.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

Source::Source(const std::string& name) {
    std::filesystem::path path = std::filesystem::absolute(name).lexically_normal();
    if (!path.has_filename()) // "stills/"
        path = path.parent_path();
    lastPart = path.filename().string();

    if (std::filesystem::is_directory(name)) {
        stills.emplace(name);
        stills->seek(0, Ko::VP_BEGIN); // a single still counts as read already until a seek
    } else if (example::isStill(name)) {
        still = name;
        framesPerSecond = 1.0 / 3;
    } else {
        video.emplace(name);
        if (const double told = example::perSecond(video->getFrameRate()); told > 0)
            framesPerSecond = told;
    }
}

bool Source::isSingle() const {
    return stills ? stills->getLength() == 1 : !video;
}

bool Source::read(Ko::Image<>& frame) {
    if (video ? !video->read(frame) : stills ? !stills->read(frame) : frameNumber > 0)
        return false;
    if (!video && !stills)
        Ko::readImage(frame, still);
    ++frameNumber;
    return true;
}

void Source::jump(long frames) {
    const long before = std::max(frameNumber + frames - 1, 0L); // frames before the wanted one
    if (stills)
        frameNumber = stills->seek(std::min(before, stills->getLength() - 1), Ko::VP_BEGIN);
    else if (video)
        jumpInVideo(before - (frameNumber - 1));
    else
        frameNumber = 0;
}

void Source::jumpInVideo(long frames) {
    const double now = video->seconds(video->tell() - 1);
    const double period = 1 / framesPerSecond;
    double time = now + static_cast<double>(frames) * period;
    if (video->getLength() > 0)
        time =
            std::min(time, static_cast<double>(video->getLength()) * example::perSecond(video->getTimeBase()) - period);
    // A position lies behind a picture: behind the one before, give or take what stamps are rounded by.
    const bool start = time < period / 2;
    video->seek(start ? 0 : video->position(time - 1.5 * period) + 1, Ko::VP_BEGIN);
    frameNumber = start ? 0 : std::lround(time * framesPerSecond);
}
