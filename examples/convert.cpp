// SPDX-License-Identifier: BSD-2-Clause
// convert IN OUT: turns any still into any other; the file names' extensions say what they are.
//
// convertIm() knows certain pairs of pixel formats only. Where a pair is missing, PF_YCC444P, which nearly everything
// converts to and from, makes the bridge.

#include <Kovanta/ConvertIm.h>
#include <Kovanta/ImageFile.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

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

/// Reads a still as the file has it, without a conversion. The wanted format is tried first; a reader refuses, with a
/// std::logic_error, what it cannot convert.
Ko::Image<> readAsItIs(const std::string& name, Ko::PIXEL_FORMAT wanted) {
    for (const Ko::PIXEL_FORMAT format : {wanted, Ko::PF_RGB, Ko::PF_Y, Ko::PF_JFIF, Ko::PF_RGBA}) {
        try {
            Ko::Image image(format);
            Ko::readImage(image, name);
            return image;
        } catch (const std::logic_error&) {
            if (format == Ko::PF_RGBA)
                throw; // the last; it may be the name that is refused
        }
    }
    throw std::logic_error("not reached");
}

bool convertDirectly(Ko::Image<>& target, const Ko::Image<>& source) {
    try {
        Ko::convertIm(target, source);
        return true;
    } catch (const std::logic_error&) {
        return false;
    }
}

/// Converts into the target's format and says by which way.
/// @throws std::runtime_error when there is none
std::string convert(Ko::Image<>& target, const Ko::Image<>& source) {
    const std::string from = fmt2string(source.format);
    const std::string to = fmt2string(target.format);
    if (source.format == target.format) {
        target = source;
        return from + ", as it is";
    }
    if (convertDirectly(target, source))
        return from + " to " + to;
    Ko::Image bridge(Ko::PF_YCC444P);
    if (convertDirectly(bridge, source) && convertDirectly(target, bridge))
        return from + " to " + fmt2string(bridge.format) + " to " + to;
    throw std::runtime_error("There is no way from " + from + " to " + to + ".");
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Turns any still image into any other: PPM, PGM, JPEG, PNG.");
    std::string in;
    std::string out;
    app.add_option("IN", in, "the still to read")->required();
    app.add_option("OUT", out, "the still to write; its extension says the format")->required();
    CLI11_PARSE(app, argc, argv)

    try {
        const Ko::PIXEL_FORMAT wanted = formatWritten(out);
        const Ko::Image source = readAsItIs(in, wanted);
        Ko::Image target(wanted);
        const std::string way = convert(target, source);
        Ko::writeImage(out, target);
        std::cout << target.width << " x " << target.height << ", " << way << "\n";
        return EXIT_SUCCESS;
    } catch (const std::exception& e) {
        std::cerr << "convert: " << e.what() << "\n";
        return EXIT_FAILURE;
    }
}
