#include "support/TestImages.h"

#include <algorithm>
#include <random>

namespace testing_support {

namespace {

constexpr unsigned char guardByte = 0x5C;

} // namespace

Image randomImage(Ko::PIXEL_FORMAT format, unsigned width, unsigned height, unsigned seed) {
    Image im(format);
    im.size(width, height);
    std::mt19937 random(seed);
    for (auto& plane : im.plane)
        for (unsigned y = 0; plane.rows && y < plane.height; ++y)
            for (unsigned x = 0; x < plane.width; ++x)
                plane.view[y][x] = static_cast<unsigned char>(random());
    return im;
}

void fill(Image& im, unsigned char value) {
    for (auto& plane : im.plane)
        for (unsigned y = 0; plane.rows && y < plane.height; ++y)
            std::fill_n(plane.view[y], plane.width, value);
}

std::vector<std::vector<unsigned char>> samples(const Image& im, int plane) {
    const auto& p = im.plane[plane];
    std::vector<std::vector<unsigned char>> rows;
    for (unsigned y = 0; p.rows && y < p.height; ++y)
        rows.emplace_back(p.view[y], p.view[y] + p.width);
    return rows;
}

GuardedRows::GuardedRows(std::size_t w, std::size_t h, std::size_t firstByte, unsigned char poison)
    : width(w)
    , height(h)
    , offset(firstByte)
    , pitch(w + 2 * guard + firstByte)
    , memory(pitch * h, guardByte) {
    for (std::size_t y = 0; y < height; ++y)
        std::fill_n(row(y), width, poison);
}

void GuardedRows::pointRows(Ko::Array2D<unsigned char>& plane) {
    for (std::size_t y = 0; y < height; ++y)
        plane.rows[y] = row(y);
}

unsigned char* GuardedRows::row(std::size_t y) {
    return memory.data() + y * pitch + guard + offset;
}

bool GuardedRows::intact() const {
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < pitch; ++x)
            if ((x < guard + offset || x >= guard + offset + width) && memory[y * pitch + x] != guardByte)
                return false;
    return true;
}

} // namespace testing_support
