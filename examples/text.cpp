// SPDX-License-Identifier: BSD-2-Clause
// text INPUT OUTPUT: a still with a box, a vector and text drawn over it.

#include "support/Output.h"
#include "support/Program.h"
#include "support/Upright.h"

#include <Kovanta/Colors.h>
#include <Kovanta/Draw.h>
#include <Kovanta/Font.h>
#include <Kovanta/ImageFile.h>

#include <algorithm>
#include <string>

namespace {

using namespace Ko::colors;

struct Options {
    std::string input;
    std::string output;
    std::string text = "Look here";
    std::string fontFile;
    bool force = false;
};

void annotate(const Options& options) {
    example::requireReplaceable(options.output, options.force);
    Ko::Image im(Ko::PF_YCC444P);
    example::Upright().read(options.input, im);
    const int w = static_cast<int>(im.width);
    const int h = static_cast<int>(im.height);
    const unsigned int size = std::max(8u, im.height / 15);

    Ko::Font font;
    if (options.fontFile.empty())
        font.init(size); // the built-in font
    else
        font.init(options.fontFile, size);

    const Ko::Bbox<int> box{w / 2, h / 3, w - w / 8, h - h / 4};
    Ko::drawBbox(im, box, yellow, false);
    // From below the text to the middle of the box's left side.
    const Ko::Point<int> pen{w / 16, h / 6};
    const Ko::Point<int> from{w / 6, h / 4};
    const Ko::Vector2D<int> way{box.left - 2 - from.x, (box.top + box.bottom) / 2 - from.y};
    Ko::drawVector2D(im, way, from, size / 2, red);
    font.drawText(im, options.text, {pen.x + 1, pen.y + 1}, black); // a shadow, for bright places
    font.drawText(im, options.text, pen, white);
    Ko::writeImage(options.output, im);
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    example::Program program(argc, argv, "Draws text, a box and a vector over a still.");
    program.add_option("INPUT", options.input, "Still to read (.ppm, .pgm, .png, .jpg)")
        ->required()
        ->check(example::fileName());
    program.add_option("OUTPUT", options.output, "Still to write; its extension chooses the format")
        ->required()
        ->check(example::fileName());
    program.add_option("--text", options.text, "What to write; 7-bit characters")
        ->type_name("TEXT")
        ->capture_default_str();
    program.add_option("--font", options.fontFile, "Font file; the built-in font when left out")->type_name("FILE");
    example::addForce(program, options.force);
    return program.run([&] { annotate(options); });
}
