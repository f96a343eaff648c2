// SPDX-License-Identifier: BSD-2-Clause
#include "Source.h"

#include "support/Rate.h"
#include "support/Stills.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

Source::Source(const std::string& name) {
    std::filesystem::path path = std::filesystem::absolute(name).lexically_normal();
    if (!path.has_filename()) // "stills/"
        path = path.parent_path();
    lastPart = path.filename().string();

    if (std::filesystem::is_directory(name)) {
        stills = example::listStills(name, false);
    } else if (example::isStill(name)) {
        stills = {name};
        framesPerSecond = 1.0 / 3;
    } else {
        video.emplace();
        video->setAnyFormat(true).open(name);
        if (const double told = example::perSecond(video->getFrameRate()); told > 0)
            framesPerSecond = told;
    }
}

bool Source::isSingle() const {
    return stills.size() == 1;
}

bool Source::read(Ko::Image<>& frame) {
    const bool sought = std::exchange(jumped, false);
    if (video ? !upright.read(*video, frame) : frameNumber == static_cast<long>(stills.size()))
        return sought && video && readLast(frame);
    if (!video)
        upright.read(stills[static_cast<std::size_t>(frameNumber)], frame);
    ++frameNumber;
    return true;
}

/// Where the container promises more than there are pictures: sound goes on for longer, say.
bool Source::readLast(Ko::Image<>& frame) {
    const double promised = static_cast<double>(frameNumber) / framesPerSecond;
    for (double back = 1;; back *= 4) {
        const bool start = back >= promised;
        video->seek(video->position(promised - back), Ko::VP_BEGIN);
        bool any = false;
        while (upright.read(*video, frame))
            any = true;
        if (any)
            frameNumber = std::lround(shownTime() * framesPerSecond) + 1;
        if (any || start)
            return any;
    }
}

/// That of the picture read last, counted from the first one.
double Source::shownTime() const {
    return video->seconds(video->tell() - 1);
}

void Source::jump(long frames) {
    jumped = true;
    const long before = std::max(frameNumber + frames - 1, 0L); // frames before the wanted one
    if (video)
        jumpInVideo(before - (frameNumber - 1));
    else
        frameNumber = std::min(before, static_cast<long>(stills.size()) - 1);
}

void Source::jumpInVideo(long frames) {
    const double period = 1 / framesPerSecond;
    double time = shownTime() + static_cast<double>(frames) * period;
    if (video->getLength() > 0)
        time =
            std::min(time, static_cast<double>(video->getLength()) * example::perSecond(video->getTimeBase()) - period);
    time = std::max(time, 0.0);
    video->seek(video->position(time + period / 2), Ko::VP_BEGIN); // what is shown half a frame later, however rounded
    frameNumber = std::lround(time * framesPerSecond);
}
