// SPDX-License-Identifier: BSD-2-Clause
#include "support/TestImages.h"

#include <algorithm>
#include <random>
#include <utility>

namespace test {

namespace {

constexpr unsigned char guardByte = 0x5C;
constexpr std::size_t guard = 64;

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

void beginAt(Ko::Array2D<unsigned char>& plane, unsigned x, unsigned y) {
    plane.subarrays.push_back({plane.width - x, plane.height - y, x, y});
    for (unsigned row = 0; row < plane.height; ++row)
        plane.rows[row] += x;
    plane.view = plane.rows + y;
}

std::vector<std::vector<unsigned char>> samples(const Image& im, int plane) {
    const auto& p = im.plane[plane];
    std::vector<std::vector<unsigned char>> rows;
    for (unsigned y = 0; p.rows && y < p.height; ++y)
        rows.emplace_back(p.view[y], p.view[y] + p.width);
    return rows;
}

std::string difference(const Image& im, const Image& expected) {
    const auto described = [](const Image& i) {
        return fmt2string(i.format) + " " + std::to_string(i.width) + " x " + std::to_string(i.height);
    };
    if (described(im) != described(expected))
        return described(im) + " instead of " + described(expected);
    // The chroma planes of the grey formats belong to no picture.
    const bool grey = expected.format == Ko::PF_Y || expected.format == Ko::PF_YAP;
    for (int p = 0; p < 4; ++p)
        if (expected.horDiv[p] != 0 && !(grey && (p == 1 || p == 2)) && samples(im, p) != samples(expected, p))
            return described(im) + ": samples of plane " + std::to_string(p);
    return "";
}

WrappedImage::WrappedImage(Ko::PIXEL_FORMAT format, unsigned width, unsigned height, std::size_t offset)
    : im(format) {
    im.size(width, height, false); // tells the sizes of the planes
    Ko::PlaneMemory planes[4];
    for (int p = 0; p < 4; ++p) {
        const auto& plane = im.plane[p];
        Rows rows{guard + offset, plane.width, plane.width + 2 * guard + offset, {}};
        rows.bytes.assign(plane.rows ? rows.pitch * plane.height : 0, guardByte);
        if (!rows.bytes.empty())
            planes[p] = {rows.row(0), static_cast<std::ptrdiff_t>(rows.pitch)};
        memory.push_back(std::move(rows));
    }
    Ko::rewrapMemory(im, width, height, planes);
    fill(im, 0xA5);
}

bool WrappedImage::intact() const {
    for (const Rows& rows : memory)
        for (std::size_t i = 0; i < rows.bytes.size(); ++i) {
            const std::size_t x = i % rows.pitch;
            if ((x < rows.first || x >= rows.first + rows.width) && rows.bytes[i] != guardByte)
                return false;
        }
    return true;
}

} // namespace test
