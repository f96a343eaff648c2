// SPDX-License-Identifier: BSD-2-Clause
// contact VIDEO SHEET: frames from all over a video, small, side by side on one still.

#include <Kovanta/ImageFile.h>
#include <Kovanta/VideoInput.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>

namespace {

constexpr unsigned int gap = 4; // pixels between the frames

struct Options {
    std::string video;
    std::string sheet;
    unsigned int columns = 3;
    unsigned int rows = 4;
    unsigned int width = 320; // of one frame on the sheet, at the most
};

/// Puts the frame onto the sheet, each pixel the mean of a square of `shrink` x `shrink`.
void place(Ko::Image<>& sheet, unsigned int left, unsigned int top, const Ko::Image<>& frame, unsigned int shrink) {
    for (int p = 0; p < 3; ++p)
        for (unsigned int y = 0; y < frame.height / shrink; ++y)
            for (unsigned int x = 0; x < frame.width / shrink; ++x) {
                unsigned int sum = 0;
                for (unsigned int sy = y * shrink; sy < (y + 1) * shrink; ++sy)
                    for (unsigned int sx = x * shrink; sx < (x + 1) * shrink; ++sx)
                        sum += frame.plane[p].view[sy][sx];
                sheet.plane[p].view[top + y][left + x] = static_cast<unsigned char>(sum / (shrink * shrink));
            }
}

void makeSheet(const Options& options) {
    Ko::VideoInputVideoFile source(options.video);
    const unsigned int shrink = (source.getWidth() + options.width - 1) / options.width;
    const unsigned int width = source.getWidth() / shrink;
    const unsigned int height = source.getHeight() / shrink;

    Ko::Image sheet(Ko::PF_YCC444P);
    sheet.size(options.columns * (width + gap) - gap, options.rows * (height + gap) - gap);
    for (int p = 0; p < 3; ++p)
        for (unsigned int y = 0; y < sheet.height; ++y)
            std::fill_n(sheet.plane[p].view[y], sheet.width, static_cast<unsigned char>(p == 0 ? 16 : 128));

    Ko::Image frame(Ko::PF_YCC444P);
    const long count = static_cast<long>(options.columns) * options.rows;
    for (long i = 0; i < count; ++i) {
        // Counted back from the end, since time stamps need not begin at 0.
        source.seek(source.getLength() * (2 * (count - i) - 1) / (2 * count), Ko::VP_END);
        if (!source.read(frame) || frame.width != source.getWidth() || frame.height / shrink > height)
            continue; // the place stays black
        const unsigned int column = static_cast<unsigned int>(i) % options.columns;
        const unsigned int row = static_cast<unsigned int>(i) / options.columns;
        place(sheet, column * (width + gap), row * (height + gap), frame, shrink);
    }
    Ko::writeImage(options.sheet, sheet);
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app{"Puts frames from all over a video onto one still."};
    app.add_option("VIDEO", options.video, "Video file to read")->required();
    app.add_option("SHEET", options.sheet, "Still to write; its extension chooses the format")->required();
    app.add_option("--columns", options.columns, "Frames side by side")
        ->check(CLI::Range(1, 50))
        ->capture_default_str();
    app.add_option("--rows", options.rows, "Rows of frames")->check(CLI::Range(1, 50))->capture_default_str();
    app.add_option("--width", options.width, "Greatest width of a frame on the sheet, in pixels")
        ->check(CLI::Range(16, 4000))
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    try {
        makeSheet(options);
    } catch (const std::exception& e) {
        std::cerr << "contact: " << e.what() << "\n";
        return 1;
    }
}
