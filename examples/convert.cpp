// SPDX-License-Identifier: BSD-2-Clause
// convert IN OUT: turns any still into any other; the file names' extensions say what they are.
//
// Where samples can keep their values they do. Otherwise convertIm() converts; it knows certain pairs of pixel formats
// only, and where a pair is missing, PF_YCC444P, which nearly everything converts to and from, makes the bridge.

#include "convert/StillHeader.h"
#include "convert/Transparency.h"
#include "support/Output.h"
#include "support/Program.h"
#include "support/Upright.h"

#include <Kovanta/ConvertIm.h>
#include <Kovanta/ImageFile.h>

#include <algorithm>
#include <cctype>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Options {
    std::string input;
    std::string output;
    bool asStored = false;
    bool force = false;
};

/// The pixel format in which a file of that name is written.
Ko::PIXEL_FORMAT formatWritten(const std::string& name) {
    std::string extension = name.substr(std::min(name.rfind('.'), name.size()));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    if (extension == ".pgm")
        return Ko::PF_Y;
    if (extension == ".jpg" || extension == ".jpeg")
        return Ko::PF_JFIF;
    return Ko::PF_RGB;
}

/// How a pixel becomes one of another format without arithmetic.
struct ExactWay {
    Ko::PIXEL_FORMAT from, to;
    unsigned int fromBytes, toBytes; // a pixel
    bool greyOnly;
    void (*copy)(unsigned char* to, const unsigned char* from);
};

void firstByte(unsigned char* to, const unsigned char* from) {
    *to = *from;
}

constexpr ExactWay exactWays[] = {
    {Ko::PF_Y, Ko::PF_RGB, 1, 3, false,
     [](unsigned char* to, const unsigned char* from) {
         std::fill_n(to, 3, *from);
     }},
    {Ko::PF_Y, Ko::PF_JFIF, 1, 3, false,
     [](unsigned char* to, const unsigned char* from) {
         to[0] = *from;
         to[1] = to[2] = 128;
     }},
    {Ko::PF_RGBA, Ko::PF_RGB, 4, 3, false,
     [](unsigned char* to, const unsigned char* from) {
         std::copy_n(from, 3, to);
     }},
    {Ko::PF_RGBA, Ko::PF_Y, 4, 1, true, firstByte},
    {Ko::PF_RGB, Ko::PF_Y, 3, 1, true, firstByte},
    {Ko::PF_JFIF, Ko::PF_Y, 3, 1, false, firstByte}, // brightness is what a JPEG keeps first
};

/// @return whether test(pixel) holds for all pixels of a packed image
template <class Test>
bool all(const Ko::Image<>& image, unsigned int bytes, Test test) {
    for (unsigned int y = 0; y < image.height; ++y)
        for (unsigned int x = 0; x < image.width; ++x)
            if (!test(image.plane[0].view[y] + std::size_t{x} * bytes))
                return false;
    return true;
}

bool isGrey(const Ko::Image<>& image) {
    const auto equal = [](const unsigned char* p) {
        return p[0] == p[1] && p[1] == p[2];
    };
    switch (image.format) {
    case Ko::PF_Y:
        return true;
    case Ko::PF_JFIF:
        return all(image, 3, [](const unsigned char* p) { return p[1] == 128 && p[2] == 128; });
    case Ko::PF_RGB:
    case Ko::PF_RGBA:
        return all(image, image.format == Ko::PF_RGB ? 3 : 4, equal);
    default:
        return false;
    }
}

bool convertExactly(Ko::Image<>& target, const Ko::Image<>& source, bool grey) {
    const auto* const way = std::find_if(std::begin(exactWays), std::end(exactWays), [&](const ExactWay& candidate) {
        return candidate.from == source.format && candidate.to == target.format && (grey || !candidate.greyOnly);
    });
    if (way == std::end(exactWays))
        return false;
    target.size(source.width, source.height);
    for (unsigned int y = 0; y < source.height; ++y)
        for (std::size_t x = 0; x < source.width; ++x)
            way->copy(target.plane[0].view[y] + x * way->toBytes, source.plane[0].view[y] + x * way->fromBytes);
    return true;
}

/// Converts into the target's format. @return by which way
std::string convert(Ko::Image<>& target, const Ko::Image<>& source, bool grey) {
    const std::string from = fmt2string(source.format);
    const std::string to = fmt2string(target.format);
    if (source.format == target.format) {
        target = source;
        return from + ", as it is";
    }
    if (convertExactly(target, source, grey))
        return from + " to " + to + ", as it is";
    if (Ko::canConvert(source.format, target.format)) {
        Ko::convertIm(target, source);
        return from + " to " + to;
    }
    Ko::Image bridge(Ko::PF_YCC444P);
    Ko::convertIm(bridge, source);
    Ko::convertIm(target, bridge);
    return from + " to " + fmt2string(bridge.format) + " to " + to;
}

void run(const Options& options) {
    example::requireReplaceable(options.output, options.force);
    const StillHeader header = readStillHeader(options.input);
    Ko::Image source(header.format);
    bool turned = false;
    if (options.asStored)
        Ko::readImage(source, options.input);
    else
        turned = example::Upright().read(options.input, source);
    Ko::Image target(formatWritten(options.output));
    const bool grey = isGrey(source);
    const std::string way = convert(target, source, grey);
    Ko::writeImage(options.output, target);
    std::cout << target.width << " x " << target.height << (turned ? ", turned upright, " : ", ") << way << "\n";

    std::vector<std::string> losses;
    if (header.transparency && hasTransparentPixel(options.input))
        losses.emplace_back("transparency");
    if (header.sixteenBits)
        losses.emplace_back("the low byte of 16-bit samples");
    if (target.format == Ko::PF_Y && !grey)
        losses.emplace_back("colour");
    if (target.format == Ko::PF_JFIF)
        losses.emplace_back("what JPEG rounds");
    for (std::size_t i = 0; i < losses.size(); ++i)
        std::cout << (i == 0 ? "lost: " : ", ") << losses[i] << (i + 1 == losses.size() ? "\n" : "");
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    example::Program program(argc, argv,
                             "Turns any still image into any other: PPM, PGM, JPEG, PNG. Says by which way, and what "
                             "was lost on it.");
    program.add_option("IN", options.input, "Still to read")->required()->check(example::fileName());
    program.add_option("OUT", options.output, "Still to write; its extension chooses the format")
        ->required()
        ->check(example::fileName());
    program.add_flag("--as-stored", options.asStored,
                     "Leave the picture as its samples lie, also where the file says how to turn it");
    example::addForce(program, options.force);
    return program.run([&] { run(options); });
}
