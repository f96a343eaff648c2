// SPDX-License-Identifier: BSD-2-Clause
// sequence DIR OUTPUT: makes a video file of the stills in a directory, in the order of their names.

#include "support/Output.h"
#include "support/Program.h"
#include "support/Progress.h"
#include "support/Rate.h"
#include "support/Stills.h"
#include "support/Stop.h"
#include "support/Upright.h"

#include <Kovanta/VideoOutput.h>

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Options {
    std::string directory;
    std::string output;
    example::Rate rate{25, 1};
    unsigned int bitRate = 4000000;
    bool natural = false;
    bool force = false;
};

std::string sizeText(unsigned int width, unsigned int height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

void makeVideo(const Options& options) {
    const std::vector<std::string> stills = example::listStills(options.directory, options.natural);
    Ko::Image frame(Ko::PF_YCC444P);
    example::Upright upright;
    upright.read(stills.front(), frame);
    const unsigned int width = frame.width;
    const unsigned int height = frame.height;

    example::requireReplaceable(options.output, options.force);
    example::catchStops();
    Ko::VideoOutputVideoFile output;
    output.setThrowOnFailure(true).setAnyFormat(true); // stills of odd sizes too
    output.setColor(Ko::CM_BT601, Ko::CR_STUDIO);      // what readImage() makes of them, whatever their size
    example::openOutput(output, width, height, options.output, options.rate, options.bitRate);
    example::Progress progress;
    std::size_t done = 0;
    for (; done < stills.size() && !example::stopAsked(); ++done) {
        if (done > 0)
            upright.read(stills[done], frame);
        if (frame.width != width || frame.height != height)
            throw std::runtime_error(stills[done] + " is " + sizeText(frame.width, frame.height) +
                                     ", unlike the stills before, which are " + sizeText(width, height) + ".");
        output.write(frame);
        if (progress.due())
            progress.show(std::to_string(done + 1) + " of " + std::to_string(stills.size()));
    }
    progress.clear();
    output.close(); // what is still queued is encoded here
    std::cout << done << " of " << stills.size() << " stills\n";
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    example::Program program(argc, argv, "Makes a video file of a directory of stills.");
    program.add_option("DIR", options.directory, "Directory of .jpg, .jpeg, .png, .ppm or .pgm files of one size")
        ->required();
    program.add_option("OUTPUT", options.output, "Video file to write; its extension chooses the container")
        ->required()
        ->check(example::fileName());
    example::addRate(program, options.rate, "Frames per second: 25, 12.5 or 30000/1001 (25 by default)");
    program.add_option("--bitrate", options.bitRate, "Bits per second")
        ->type_name("N")
        ->check(example::wholeNumber(1))
        ->capture_default_str();
    program.add_flag("--natural", options.natural, "Sort numbers in names by their value: 2 before 10");
    example::addForce(program, options.force);
    return program.run([&] { makeVideo(options); });
}
