// SPDX-License-Identifier: BSD-2-Clause
// sequence DIR OUTPUT: makes a video file of the stills in a directory, in the order of their names.

#include <Kovanta/VideoInput.h>
#include <Kovanta/VideoOutput.h>

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

/// One line that counts up, ended when this goes.
class Progress {
public:
    explicit Progress(long count)
        : total(count) {}
    ~Progress() {
        if (done > 0)
            std::cerr << "\n";
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void step() { std::cerr << "\r" << ++done << " of " << total << std::flush; }

private:
    long total;
    long done = 0;
};

void writeAll(Ko::VideoInputImageFile& input, Ko::VideoOutputVideoFile& output) {
    // A directory of a single still is at its end from the start; this makes it readable.
    input.seek(0, Ko::VP_BEGIN);
    Progress progress(input.getLength());
    Ko::Image frame(Ko::PF_YCC444P);
    while (input.read(frame)) {
        if (frame.width != input.getWidth() || frame.height != input.getHeight())
            throw std::runtime_error("A still is " + std::to_string(frame.width) + " x " +
                                     std::to_string(frame.height) + ", unlike the first.");
        output.write(frame);
        progress.step();
    }
    output.close();
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Makes a video file of a directory of stills.");
    std::string directory;
    std::string file;
    unsigned int rate = 25;
    unsigned int bitRate = 4000000;
    app.add_option("DIR", directory, "directory of .jpg, .jpeg, .png, .ppm or .pgm files")->required();
    app.add_option("OUTPUT", file, "video file; its extension says the container")->required();
    app.add_option("--rate", rate, "frames per second")->capture_default_str();
    app.add_option("--bitrate", bitRate, "bits per second")->capture_default_str();
    CLI11_PARSE(app, argc, argv)

    try {
        Ko::VideoInputImageFile input(directory);
        Ko::VideoOutputVideoFile output(input.getWidth(), input.getHeight(), file, {rate, 1}, bitRate);
        output.setThrowOnFailure(true);
        writeAll(input, output);
        return EXIT_SUCCESS;
    } catch (const std::exception& e) {
        std::cerr << "sequence: " << e.what() << "\n";
        return EXIT_FAILURE;
    }
}
