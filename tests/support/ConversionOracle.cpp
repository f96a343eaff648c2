// SPDX-License-Identifier: BSD-2-Clause
#include "support/ConversionOracle.h"

#include <functional>
#include <stdexcept>

namespace test {

namespace {

/// floor(value / 2^bits), without relying on what >> does to negative numbers.
long long floorShift(long long value, int bits) {
    const long long unit = 1LL << bits;
    const long long quotient = value / unit;
    return value % unit < 0 ? quotient - 1 : quotient;
}

unsigned char low8(long long value) {
    return static_cast<unsigned char>(value & 255);
}

unsigned char clamp8(long long value) {
    return static_cast<unsigned char>(value < 0 ? 0 : value > 255 ? 255 : value);
}

long long towardsZero(long long a, long long b) {
    return a < 0 ? -(-a / b) : a / b;
}

/// Pixel (x, y) of an image as three components, whatever its layout.
Triple pixelAt(const Image& im, unsigned x, unsigned y) {
    const auto at = [&](int p, unsigned column, unsigned row) {
        return im.plane[p].view[row][column];
    };
    switch (im.format) {
    case Ko::PF_RGB:
    case Ko::PF_JFIF:
        return {at(0, 3 * x, y), at(0, 3 * x + 1, y), at(0, 3 * x + 2, y)};
    case Ko::PF_BGR:
        return {at(0, 3 * x + 2, y), at(0, 3 * x + 1, y), at(0, 3 * x, y)};
    case Ko::PF_RGBA:
        return {at(0, 4 * x, y), at(0, 4 * x + 1, y), at(0, 4 * x + 2, y)};
    case Ko::PF_YUY2:
        return {at(0, 2 * x, y), at(0, x / 2 * 4 + 1, y), at(0, x / 2 * 4 + 3, y)};
    case Ko::PF_Y:
        return {at(0, x, y), 0, 0};
    default:
        return {at(0, x, y), at(1, x / im.horDiv[1], y / im.verDiv[1]), at(2, x / im.horDiv[2], y / im.verDiv[2])};
    }
}

using Map = std::function<Triple(int, int, int)>;

Triple same(int a, int b, int c) {
    return {low8(a), low8(b), low8(c)};
}

void eachPixel(Image& dst, const Image& src, const Map& map) {
    for (unsigned y = 0; y < src.height; ++y)
        for (unsigned x = 0; x < src.width; ++x) {
            const Triple from = pixelAt(src, x, y);
            const Triple to = map(from[0], from[1], from[2]);
            if (dst.planar)
                for (int p = 0; p < (dst.format == Ko::PF_Y ? 1 : 3); ++p)
                    dst.plane[p].view[y][x] = to[static_cast<std::size_t>(p)];
            else
                for (unsigned c = 0; c < 3; ++c)
                    dst.plane[0].view[y][3 * x + c] = to[c];
        }
}

void halveChroma(Image& dst, const Image& src) {
    for (unsigned y = 0; y < src.height; ++y)
        for (unsigned x = 0; x < src.width; ++x)
            dst.plane[0].view[y][x] = src.plane[0].view[y][x];
    for (int p = 1; p < 3; ++p)
        for (unsigned y = 0; y < src.height / 2; ++y)
            for (unsigned x = 0; x < src.width / 2; ++x) {
                int sum = 2;
                for (unsigned i = 0; i < 4; ++i)
                    sum += src.plane[p].view[2 * y + i / 2][2 * x + i % 2];
                dst.plane[p].view[y][x] = low8(sum / 4);
            }
}

} // namespace

Triple studioFromRgb(int r, int g, int b) {
    const long long half = 4194304;
    return {low8(floorShift(2154103LL * r + 4228940LL * g + 821297LL * b + half, 23) + 16),
            low8(floorShift(-1243382LL * r - 2441019LL * g + 3684401LL * b + half, 23) + 128),
            low8(floorShift(3684401LL * r - 3085238LL * g - 599163LL * b + half, 23) + 128)};
}

Triple rgbFromStudio(int y, int cb, int cr) {
    const long long t = 2441888LL * y - 39070208;
    return {clamp8(floorShift(t + 3347112LL * cr - 427381760, 21)),
            clamp8(floorShift(t - 821584LL * cb - 1704919LL * cr + 324440960, 21)),
            clamp8(floorShift(t + 4230439LL * cb - 540447616, 21))};
}

Triple studioFromFull(int y, int cb, int cr) {
    return {low8(y * 219 / 255 + 16), low8(cb * 224 / 255 + 16), low8(cr * 224 / 255 + 16)};
}

Triple fullFromStudio(int y, int cb, int cr) {
    return {clamp8(towardsZero(y * 255 - 4080, 219)), clamp8(towardsZero(cb * 255 - 4080, 224)),
            clamp8(towardsZero(cr * 255 - 4080, 224))};
}

bool expectedConversion(Image& dst, const Image& src) {
    const auto pair = [&](Ko::PIXEL_FORMAT to, Ko::PIXEL_FORMAT from) {
        return dst.format == to && src.format == from;
    };
    if (dst.format == src.format)
        dst = src;
    else if (pair(Ko::PF_YCC444P, Ko::PF_RGB) || pair(Ko::PF_YCC444P, Ko::PF_RGBA))
        eachPixel(dst, src, studioFromRgb);
    else if (pair(Ko::PF_YCC444P, Ko::PF_JFIF) || pair(Ko::PF_YCC444P, Ko::PF_JFIF422P))
        eachPixel(dst, src, studioFromFull);
    else if (pair(Ko::PF_YCC444P, Ko::PF_YCC420P) || pair(Ko::PF_YCC444P, Ko::PF_YUY2))
        eachPixel(dst, src, same);
    else if (pair(Ko::PF_YCC444P, Ko::PF_Y) || pair(Ko::PF_YCC420P, Ko::PF_Y)) {
        fill(dst, 128);
        for (unsigned y = 0; y < src.height; ++y)
            for (unsigned x = 0; x < src.width; ++x)
                dst.plane[0].view[y][x] = studioFromFull(src.plane[0].view[y][x], 0, 0)[0];
    } else if (pair(Ko::PF_YCC420P, Ko::PF_YCC444P))
        halveChroma(dst, src);
    else if (pair(Ko::PF_RGB, Ko::PF_YCC444P))
        eachPixel(dst, src, rgbFromStudio);
    else if (pair(Ko::PF_JFIF, Ko::PF_YCC444P) || pair(Ko::PF_Y, Ko::PF_YCC444P))
        eachPixel(dst, src, fullFromStudio);
    else
        return false;
    return true;
}

Image inFormat(Ko::PIXEL_FORMAT format, const Image& picture) {
    Image im(format);
    im.size(picture.width, picture.height);
    if (!expectedConversion(im, picture))
        throw std::logic_error("no formula from " + fmt2string(picture.format) + " to " + fmt2string(format));
    return im;
}

} // namespace test
