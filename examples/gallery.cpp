// SPDX-License-Identifier: BSD-2-Clause
// gallery DIRECTORY: writes one picture of each thing that can be drawn, enlarged so that the pixels can be counted.

#include "support/Output.h"
#include "support/Program.h"

#include <Kovanta/Draw.h>
#include <Kovanta/Font.h>
#include <Kovanta/ImageFile.h>

#include <filesystem>
#include <string>

namespace {

constexpr Ko::YCCColor paper{225, 128, 128};
constexpr Ko::YCCColor grid{205, 128, 128};
constexpr Ko::YCCColor ink{50, 128, 128};
constexpr Ko::YCCColor blue{90, 190, 100};
constexpr Ko::YCCColor red{90, 100, 210};
constexpr Ko::YCCColor green{110, 90, 80};

Ko::Image<> blank(unsigned int width, unsigned int height) {
    Ko::Image im(Ko::PF_YCC444P);
    im.size(width, height);
    Ko::drawBbox(im, {0, 0, static_cast<int>(width) - 1, static_cast<int>(height)}, paper, true);
    return im;
}

/// Each pixel becomes a square with a line of the grid at its right and bottom.
Ko::Image<> enlarged(const Ko::Image<>& im, int scale) {
    Ko::Image large = blank(im.width * static_cast<unsigned int>(scale), im.height * static_cast<unsigned int>(scale));
    for (int y = 0; y < static_cast<int>(im.height); ++y)
        for (int x = 0; x < static_cast<int>(im.width); ++x) {
            const Ko::YCCColor c{im.plane[0].view[y][x], im.plane[1].view[y][x], im.plane[2].view[y][x]};
            const Ko::Bbox<int> square{x * scale, y * scale, (x + 1) * scale - 1, (y + 1) * scale - 1};
            Ko::drawBbox(large, square, grid, false);
            Ko::drawBbox(large, {square.left, square.top, square.right - 1, square.bottom}, c, true);
        }
    return large;
}

Ko::Image<> lines() {
    Ko::Image im = blank(48, 24);
    Ko::drawLine(im, 2, 2, 45, 2, ink);
    Ko::drawLine(im, Ko::Point<int>{2, 5}, {45, 9}, blue);
    Ko::drawLine(im, 2, 9, 20, 21, red);
    Ko::drawLine(im, 26, 11, 29, 22, green);
    Ko::drawLine(im, 34, 24, 60, 11, ink); // leaves the picture
    return im;
}

Ko::Image<> boxes() {
    Ko::Image im = blank(48, 24);
    Ko::drawBbox(im, {3, 3, 20, 20}, blue, false);
    Ko::drawBbox(im, {27, 3, 44, 20}, red, true); // ends a row above the outline's
    return im;
}

Ko::Image<> vectors() {
    Ko::Image im = blank(48, 24);
    Ko::drawVector2D(im, {26, 0}, {2, 6}, 5, ink);
    Ko::drawVector2D(im, {20, 9}, {3, 12}, 4, blue);
    Ko::drawVector2D(im, {9.6f, -14.4f}, {33, 20}, 4, red);
    Ko::drawVector2D(im, {3, 2}, {43, 18}, 5, green); // shorter than its head
    return im;
}

Ko::Image<> glyphs() {
    Ko::Image im = blank(48, 32);
    Ko::Font font;
    font.init(14);
    font.drawText(im, "Ag&9\nKo::", {3, 11}, ink);
    return im;
}

Ko::Image<> paragraph() {
    Ko::Image im = blank(480, 176);
    int y = 0;
    for (const unsigned int size : {9u, 12u, 16u, 22u, 32u, 44u}) {
        Ko::Font font;
        font.init(size);
        y += static_cast<int>(size) + 4;
        font.drawText(im, "Frame 128, 0:05.12", {8, y}, size % 3 == 0 ? ink : size % 3 == 1 ? blue : red);
    }
    return im;
}

void writePictures(const std::filesystem::path& directory, bool force) {
    std::filesystem::create_directories(directory);
    constexpr int scale = 10;
    const auto write = [&](const char* name, const Ko::Image<>& picture) {
        const std::string file = (directory / name).string();
        example::requireReplaceable(file, force);
        Ko::writeImage(file, picture);
    };
    write("lines.png", enlarged(lines(), scale));
    write("boxes.png", enlarged(boxes(), scale));
    write("vectors.png", enlarged(vectors(), scale));
    write("glyphs.png", enlarged(glyphs(), scale));
    write("text.png", paragraph());
}

} // namespace

int main(int argc, char** argv) {
    std::string directory;
    bool force = false;
    example::Program program(argc, argv,
                             "Makes the pictures of the documentation: each drawing primitive, enlarged, and text.");
    program.add_option("DIRECTORY", directory, "Where to write the PNG files; made when missing")->required();
    example::addForce(program, force);
    return program.run([&] { writePictures(directory, force); });
}
