// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_CAPTURE_RECORDER_H
#define KOVANTA_EXAMPLES_CAPTURE_RECORDER_H

#include "support/Rate.h"

#include <Kovanta/VideoOutput.h>

#include <string>
#include <vector>

/// A video file whose rate is that of its first frames, which are held back until it is known.
class Recorder {
public:
    /// Opens the file at once, so that a name or a size that is of no use is known before the first frame.
    /// @param rate 0 to take the measured one
    /// @param guess the rate to begin with; 0 when there is none
    Recorder(unsigned int width, unsigned int height, const std::string& name, example::Rate rate, example::Rate guess,
             unsigned int bitRate);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    /// Leaves no file without a frame.
    ~Recorder();

    /// @param measured frames per second until now, 0 when that is not known
    void write(const Ko::Image<>& frame, double measured);
    void finish(double measured);

private:
    void settle(double measured);
    void open();

    const unsigned int width, height, bitRate;
    const std::string name;
    example::Rate rate;
    bool settled;
    bool empty = true;
    std::vector<Ko::Image<>> held;
    Ko::VideoOutputVideoFile sink;
};

#endif
