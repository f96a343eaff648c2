// SPDX-License-Identifier: BSD-2-Clause
// contact VIDEO SHEET: frames from all over a video, small, side by side on one still.

#include "support/Output.h"
#include "support/Program.h"
#include "support/Upright.h"

#include <Kovanta/ConvertIm.h>
#include <Kovanta/ImageFile.h>
#include <Kovanta/Resize.h>
#include <Kovanta/VideoInput.h>
#include <Kovanta/Wrap.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr unsigned int gap = 4; // pixels between the frames

struct Options {
    std::string video;
    std::string sheet;
    unsigned int columns = 3;
    unsigned int rows = 4;
    unsigned int width = 320; // of one frame on the sheet, at the most
    bool force = false;
};

using Frames = std::vector<Ko::Image<>>;

/// The frame no wider than that, in its proportions.
Ko::Image<> reduced(const Ko::Image<>& frame, unsigned int greatestWidth) {
    const unsigned int width = std::min(frame.width, greatestWidth);
    const double height = std::round(static_cast<double>(frame.height) * width / frame.width);
    Ko::Image small(Ko::PF_YCC444P);
    small.size(width, std::max(static_cast<unsigned int>(height), 1u));
    Ko::resize(small, frame);
    return small;
}

/// Seeks to evenly spaced positions. @return nothing where the length is not known or the stream cannot be sought
std::optional<Frames> seekFrames(Ko::VideoInputVideoFile& source, std::size_t count, unsigned int width) {
    if (source.getLength() <= 0)
        return std::nullopt;
    Frames frames;
    Ko::Image frame(Ko::PF_YCC444P);
    example::Upright upright;
    const long places = static_cast<long>(count);
    try {
        for (long i = 0; i < places; ++i) {
            // Counted back from the end, since time stamps need not begin at 0.
            source.seek(source.getLength() * (2 * (places - i) - 1) / (2 * places), Ko::VP_END);
            if (upright.read(source, frame))
                frames.push_back(reduced(frame, width));
        }
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
    if (frames.empty()) // every position lay behind the last frame
        return std::nullopt;
    return frames;
}

/// Reads all frames and keeps every n-th; whenever there are eight times as many as wanted, n doubles.
Frames readFrames(Ko::VideoInputVideoFile& source, std::size_t count, unsigned int width) {
    Frames kept;
    Ko::Image frame(Ko::PF_YCC444P);
    example::Upright upright;
    std::size_t step = 1;
    for (std::size_t number = 0; upright.read(source, frame); ++number) {
        if (number % step != 0)
            continue;
        kept.push_back(reduced(frame, width));
        if (kept.size() < 8 * count)
            continue;
        for (std::size_t i = 0; i < 4 * count; ++i)
            std::swap(kept[i], kept[2 * i]);
        kept.resize(4 * count, Ko::Image(Ko::PF_YCC444P));
        step *= 2;
    }
    if (kept.size() <= count)
        return kept;
    Frames spread;
    for (std::size_t i = 0; i < count; ++i)
        spread.push_back(std::move(kept[(2 * i + 1) * kept.size() / (2 * count)]));
    return spread;
}

/// What made the stream's samples. Where the file does not tell, size decides, as in players.
Ko::ColorMatrix matrixOf(const Ko::VideoInputVideoFile& source) {
    const Ko::ColorMatrix told = source.getColorMatrix();
    if (told != Ko::CM_UNKNOWN)
        return told;
    return source.getWidth() >= 1280 || source.getHeight() > 576 ? Ko::CM_BT709 : Ko::CM_BT601;
}

void makeSheet(const Options& options) {
    example::requireReplaceable(options.sheet, options.force);
    const std::size_t count = std::size_t{options.columns} * options.rows;
    Ko::VideoInputVideoFile source;
    source.setAnyFormat(true).open(options.video);
    std::optional<Frames> frames = seekFrames(source, count, options.width);
    if (!frames) {
        source.open(options.video); // from the beginning
        frames = readFrames(source, count, options.width);
    }
    if (frames->empty())
        throw std::runtime_error(options.video + " holds no frame.");

    const unsigned int width = frames->front().width;
    const unsigned int height = frames->front().height;
    Ko::Image sheet(Ko::PF_YCC444P);
    sheet.size(options.columns * (width + gap) - gap, options.rows * (height + gap) - gap);
    for (int p = 0; p < 3; ++p)
        for (unsigned int y = 0; y < sheet.height; ++y)
            std::fill_n(sheet.plane[p].view[y], sheet.width, static_cast<unsigned char>(p == 0 ? 16 : 128));
    for (unsigned int i = 0; i < frames->size(); ++i) {
        const Ko::Image<>& frame = (*frames)[i];
        const unsigned int w = std::min(frame.width, width); // the size may change on the way
        const unsigned int h = std::min(frame.height, height);
        Ko::Image place =
            Ko::wrapRectangle(sheet, i % options.columns * (width + gap), i / options.columns * (height + gap), w, h);
        place = *Ko::wrapRectangle(frame, 0, 0, w, h);
    }
    const Ko::ColorMatrix matrix = matrixOf(source);
    if (matrix != Ko::CM_BT601) { // which every still is made by
        Ko::Image rgb(Ko::PF_RGB);
        Ko::convertIm(rgb, sheet, matrix);
        Ko::convertIm(sheet, rgb);
    }
    Ko::writeImage(options.sheet, sheet);
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    example::Program program(argc, argv, "Puts frames from all over a video onto one still.");
    program.add_option("VIDEO", options.video, "Video file to read")->required();
    program.add_option("SHEET", options.sheet, "Still to write; its extension chooses the format")
        ->required()
        ->check(example::fileName());
    const auto number = [&program](const char* name, unsigned int& value, const char* text, long low, long high) {
        program.add_option(name, value, text)
            ->type_name("N")
            ->check(example::wholeNumber(low, high))
            ->capture_default_str();
    };
    number("--columns", options.columns, "Frames side by side", 1, 50);
    number("--rows", options.rows, "Rows of frames", 1, 50);
    number("--width", options.width, "Greatest width of a frame on the sheet, in pixels", 16, 4000);
    example::addForce(program, options.force);
    return program.run([&] { makeSheet(options); });
}
