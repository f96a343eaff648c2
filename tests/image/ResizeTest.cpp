// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Resize.h"

#include "image/kernels/KernelLevels.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace {

using namespace test;
using testing::ThrowsMessage;

/// What each of n source samples weighs in sample x of m, in some unit.
std::vector<std::int64_t> weights(std::int64_t n, std::int64_t m, std::int64_t x) {
    std::vector<std::int64_t> all;
    for (std::int64_t i = 0; i < n; ++i) {
        const std::int64_t covered = std::min((i + 1) * m, (x + 1) * n) - std::max(i * m, x * n);
        const std::int64_t centre = std::clamp<std::int64_t>((2 * x + 1) * n - m, 0, (n - 1) * 2 * m);
        const std::int64_t near = 2 * m - std::abs(2 * m * i - centre);
        all.push_back(std::max<std::int64_t>(m <= n ? covered : near, 0));
    }
    return all;
}

/// One plane as the documentation says, sample by sample.
void scale(Ko::Array2D<>& dst, const Ko::Array2D<>& src, unsigned bytes) {
    std::vector<std::vector<std::int64_t>> columns;
    for (unsigned x = 0; x < dst.width / bytes; ++x)
        columns.push_back(weights(src.width / bytes, dst.width / bytes, x));
    for (unsigned y = 0; y < dst.height; ++y) {
        const auto rows = weights(src.height, dst.height, y);
        std::vector<std::int64_t> sums(src.width);
        std::int64_t above = 0;
        for (unsigned j = 0; j < src.height; ++j) {
            above += rows[j];
            for (unsigned i = 0; rows[j] != 0 && i < src.width; ++i)
                sums[i] += rows[j] * src.row(j)[i];
        }
        for (unsigned x = 0; x < dst.width; ++x) {
            std::int64_t sum = 0;
            std::int64_t all = 0;
            for (unsigned i = 0; i < src.width / bytes; ++i) {
                sum += columns[x / bytes][i] * sums[i * bytes + x % bytes];
                all += columns[x / bytes][i] * above;
            }
            dst.row(y)[x] = static_cast<unsigned char>((2 * sum + all) / (2 * all));
        }
    }
}

Image scaled(const Image& src, unsigned width, unsigned height) {
    Image dst(src.format);
    dst.size(width, height);
    for (int p = 0; p < 4; ++p) {
        if (src.horDiv[p] == 0 || dst.plane[p].rows == nullptr)
            continue;
        if (src.plane[p].rows == nullptr) // one pixel has no chroma in 4:2:0
            for (unsigned y = 0; y < dst.plane[p].height; ++y)
                std::fill_n(dst.plane[p].row(y), dst.plane[p].width, static_cast<unsigned char>(128));
        else
            scale(dst.plane[p], src.plane[p], src.planar ? 1 : src.bytesPerPixelNum);
    }
    return dst;
}

struct Sizes {
    unsigned fromWidth, fromHeight, width, height;
};
constexpr Sizes sizes[] = {
    {1, 1, 1, 1},       {1, 1, 7, 5},       {7, 5, 1, 1},      {8, 6, 8, 6},       {3, 2, 2, 1},
    {2, 1, 3, 2},       {64, 36, 32, 18},   {70, 34, 35, 17},  {99, 36, 33, 12},   {303, 9, 101, 3},
    {160, 40, 40, 10},  {524, 16, 131, 4},  {96, 54, 64, 36},  {297, 6, 198, 4},   {40, 30, 80, 60},
    {131, 17, 262, 34}, {1, 9, 2, 18},      {9, 1, 18, 2},     {100, 60, 60, 60},  {60, 60, 60, 17},
    {40, 60, 50, 20},   {40, 20, 17, 31},   {131, 70, 77, 69}, {129, 65, 128, 64}, {64, 40, 65, 41},
    {33, 20, 400, 7},   {1920, 3, 100, 50}, {5, 700, 40, 2},   {5000, 2, 7, 1},    {5000, 2, 1, 1},
    {3, 4000, 1, 1},    {71, 301, 70, 2},   {97, 53, 89, 47},  {200, 100, 67, 33}, {250, 120, 224, 1},
    {53, 97, 211, 199}, {34, 34, 102, 102},
};
constexpr Ko::PIXEL_FORMAT known[] = {Ko::PF_Y,   Ko::PF_YAP,  Ko::PF_YCC444P,  Ko::PF_YCCA4444P, Ko::PF_YCC420P,
                                      Ko::PF_RGB, Ko::PF_RGBA, Ko::PF_JFIF422P, Ko::PF_JFIF,      Ko::PF_BGR};
constexpr Ko::KernelLevel levels[] = {Ko::KernelLevel::portable, Ko::KernelLevel::sse4, Ko::KernelLevel::avx2,
                                      Ko::KernelLevel::avxVnni, Ko::KernelLevel::avx512};

TEST(Resize, IsTheRoundedWeightedMeanAtEveryLevel) {
    for (const Sizes& s : sizes)
        for (const Ko::PIXEL_FORMAT format : known) {
            const Image src = randomImage(format, s.fromWidth, s.fromHeight, s.width);
            const Image expected = scaled(src, s.width, s.height);
            for (const Ko::KernelLevel level : levels) { // the best comes last, and stays
                if (!Ko::useKernels(level))
                    continue;
                WrappedImage wrapped(format, s.width, s.height, s.width % 3);
                Ko::resize(wrapped.im, src);
                ASSERT_EQ(difference(wrapped.im, expected), "")
                    << s.fromWidth << " x " << s.fromHeight << ", level " << static_cast<int>(level);
                ASSERT_TRUE(wrapped.intact());
            }
        }
}

/// Where the sum of all weights passes what 32 bits hold, and what extremes come of.
TEST(Resize, KeepsOneColourAndOverflowsNowhere) {
    for (const Sizes& s : {Sizes{4099, 4099, 4, 3}, Sizes{8000, 3, 1, 2}, Sizes{3, 70000, 2, 1},
                           Sizes{2, 3, 2063, 2053}, Sizes{5, 1999, 2053, 2}, Sizes{640, 480, 213, 160},
                           Sizes{30, 20, 60, 40}, Sizes{200, 258, 7, 1}, Sizes{32, 32, 2, 2}})
        for (const int level : {0, 1, 128, 254, 255}) {
            const auto value = static_cast<unsigned char>(level);
            Image src(Ko::PF_Y);
            src.size(s.fromWidth, s.fromHeight);
            fill(src, value);
            Image dst = randomImage(Ko::PF_Y, s.width, s.height);
            Ko::resize(dst, src);
            Image expected = dst;
            fill(expected, value);
            ASSERT_EQ(difference(dst, expected), "") << s.fromWidth << " x " << s.fromHeight;
        }
    const Image src = randomImage(Ko::PF_Y, 4099, 4099);
    Image dst(Ko::PF_Y);
    dst.size(4, 3);
    Ko::resize(dst, src);
    EXPECT_EQ(difference(dst, scaled(src, 4, 3)), "");
}

TEST(Resize, TakesWhatSharesMemoryAndWhatIsNotWhole) {
    const Image before = randomImage(Ko::PF_YCC444P, 40, 24);
    Image im = before;
    Ko::resize(im, im);
    EXPECT_EQ(difference(im, before), "");
    Image corner = Ko::wrapRectangle(im, 0, 0, 13, 9);
    Ko::resize(corner, im);
    EXPECT_EQ(difference(corner, scaled(before, 13, 9)), "");
    // What the source lacks is 0; a target without memory gets it.
    Image lacking = before;
    lacking.plane[1].resize(30, 20);
    Image completed = before;
    for (unsigned y = 0; y < 24; ++y)
        for (unsigned x = 0; x < 40; ++x)
            if (x >= 30 || y >= 20)
                completed.plane[1].row(y)[x] = 0;
            else
                lacking.plane[1].row(y)[x] = completed.plane[1].row(y)[x];
    Image dst(Ko::PF_Y);
    dst.size(20, 12);
    dst.fmt(Ko::PF_YCC444P);
    Ko::resize(dst, lacking);
    EXPECT_EQ(difference(dst, scaled(completed, 20, 12)), "");
    // A view shows its part.
    beginAt(dst.plane[0], 3, 2);
    const Image shown = scaled(randomImage(Ko::PF_YCC444P, 7, 7), 20, 12);
    Ko::resize(dst, randomImage(Ko::PF_YCC444P, 7, 7));
    EXPECT_EQ(dst.plane[0].row(0)[0], shown.plane[0].row(0)[0]);
}

TEST(Resize, RefusesBeforeAnythingChanges) {
    const Image before = randomImage(Ko::PF_Y, 5, 4);
    Image dst = before;
    const auto refuses = [&](const Image& target, const Image& src, const char* text) {
        dst = target;
        EXPECT_THAT([&] { Ko::resize(dst, src); }, ThrowsMessage<std::logic_error>(text));
        EXPECT_EQ(difference(dst, target), "");
    };
    refuses(before, randomImage(Ko::PF_YUY2, 4, 4), "[resize]: Don't know how to resize PF_YUY2 (YUY2).");
    refuses(before, randomImage(Ko::PF_RGB, 4, 4),
            "[resize]: The source is PF_RGB (Packed RGB 4:4:4), the target PF_Y (Grayscale).");
    refuses(before, Image(Ko::PF_Y), "[resize]: The source has no size.");
    refuses(Image(Ko::PF_Y), before, "[resize]: The target has no size.");
    WrappedImage memory(Ko::PF_Y, 5, 4);
    Image narrow = Ko::wrapRectangle(memory.im, 0, 0, 3, 2);
    narrow.width = 5;
    narrow.height = 4;
    EXPECT_THAT([&] { Ko::resize(narrow, before); },
                ThrowsMessage<std::logic_error>("[Array2D<T>::resize]: Noalloc and trying to resize."));
}

} // namespace
