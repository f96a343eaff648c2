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

using Frame = Ko::Image<unsigned char>;

void writeAll(Ko::VideoInputImageFile& input, Ko::VideoOutputVideoFile& output) {
    const long length = input.getLength();
    // A directory of a single still is at its end from the start; this makes it readable.
    input.seek(0, Ko::VP_BEGIN);
    Frame frame(Ko::PF_YCC444P);
    for (long written = 0; input.read(frame);) {
        if (frame.width != input.getWidth() || frame.height != input.getHeight())
            throw std::runtime_error("Still " + std::to_string(written + 1) + " is " + std::to_string(frame.width) +
                                     " x " + std::to_string(frame.height) + ", unlike the first.");
        // A writer that met an error no longer takes frames out of the queue.
        if (!output.getError().empty())
            throw std::runtime_error(output.getError());
        output.write(frame);
        std::cerr << "\r" << ++written << " of " << length << std::flush;
    }
    std::cerr << "\n";
    output.close();
    if (!output.getError().empty())
        throw std::runtime_error(output.getError());
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
        writeAll(input, output);
        return EXIT_SUCCESS;
    } catch (const std::exception& e) {
        std::cerr << "\n" << e.what() << "\n";
        return EXIT_FAILURE;
    }
}
