// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_PLAY_SOURCE_H
#define KOVANTA_EXAMPLES_PLAY_SOURCE_H

#include "support/Upright.h"

#include <Kovanta/VideoInput.h>

#include <optional>
#include <string>
#include <vector>

/// What a name stands for, a video file, a directory of stills or one still, with the number of the frame read last.
class Source {
public:
    explicit Source(const std::string& name);

    bool read(Ko::Image<>& frame);
    /// Lets the next read() deliver the frame that is this many further on than the last one, or back; not past either
    /// end.
    /// @throws std::runtime_error for a stream that cannot be sought
    void jump(long frames);

    /// Counted from 1.
    long number() const { return frameNumber; }
    /// As the file tells; 25 where nothing does, a third for a still.
    double rate() const { return framesPerSecond; }
    /// Whether there is one frame only.
    bool isSingle() const;
    /// The last part of its name.
    const std::string& title() const { return lastPart; }

private:
    void jumpInVideo(long frames);
    double shownTime() const;
    bool readLast(Ko::Image<>& frame);

    std::string lastPart;
    std::optional<Ko::VideoInputVideoFile> video; // or
    std::vector<std::string> stills;
    example::Upright upright;
    long frameNumber = 0;
    bool jumped = false; // and not read since
    double framesPerSecond = 25;
};

#endif
