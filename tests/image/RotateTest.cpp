// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Rotate.h"

#include "image/kernels/KernelLevels.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace test;
using testing::ThrowsMessage;

const Ko::PIXEL_FORMAT known[] = {Ko::PF_Y,   Ko::PF_YAP,  Ko::PF_YCC444P, Ko::PF_YCCA4444P, Ko::PF_YCC420P,
                                  Ko::PF_RGB, Ko::PF_RGBA, Ko::PF_JFIF,    Ko::PF_BGR};

/// Where a unit of the source stands in a picture of w x h that EXIF shows so: the tag's value names the sides at which
/// the stored first row and first column are seen.
std::pair<unsigned, unsigned> seenAt(int exif, unsigned x, unsigned y, unsigned w, unsigned h) {
    switch (exif) {
    case 1:
        return {x, y};
    case 2:
        return {w - 1 - x, y};
    case 3:
        return {w - 1 - x, h - 1 - y};
    case 4:
        return {x, h - 1 - y};
    case 5:
        return {y, x};
    case 6:
        return {w - 1 - y, x};
    case 7:
        return {w - 1 - y, h - 1 - x};
    default:
        return {y, h - 1 - x};
    }
}

Image turned(const Image& src, int exif) {
    Image dst(src.format);
    dst.size(exif < 5 ? src.width : src.height, exif < 5 ? src.height : src.width);
    const unsigned bytes = src.planar ? 1 : src.bytesPerPixelNum;
    const bool grey = src.format == Ko::PF_Y || src.format == Ko::PF_YAP;
    for (int p = 0; p < 4; ++p) {
        const auto& plane = src.plane[p];
        if (src.horDiv[p] == 0 || (grey && (p == 1 || p == 2)))
            continue;
        for (unsigned y = 0; y < plane.height; ++y)
            for (unsigned x = 0; x < plane.width; ++x) {
                const auto [column, row] = seenAt(exif, x / bytes, y, dst.plane[p].width / bytes, dst.plane[p].height);
                dst.plane[p].row(row)[column * bytes + x % bytes] = plane.row(y)[x];
            }
    }
    return dst;
}

class Rotate : public testing::TestWithParam<Ko::KernelLevel> {};

TEST_P(Rotate, TurnsEverySizeAllEightWays) {
    if (!Ko::useKernels(GetParam()))
        GTEST_SKIP() << "this processor does not have the level";
    for (const Ko::PIXEL_FORMAT format : known)
        for (const unsigned width : {1u, 2u, 15u, 16u, 17u, 40u, 63u, 64u, 65u, 131u})
            for (const unsigned height : {1u, 5u, 16u, 32u, 71u})
                for (int exif = 1; exif <= 8; ++exif) {
                    const Image src = randomImage(format, width, height, width);
                    const Image expected = turned(src, exif);
                    Image dst = randomImage(Ko::PF_YCCA4444P, 3, 2);
                    Ko::rotate(dst, src, static_cast<Ko::Orientation>(exif));
                    ASSERT_EQ(difference(dst, expected), "") << exif;
                    WrappedImage wrapped(format, expected.width, expected.height, width % 3);
                    Ko::rotate(wrapped.im, src, static_cast<Ko::Orientation>(exif));
                    ASSERT_EQ(difference(wrapped.im, expected), "") << exif;
                    ASSERT_TRUE(wrapped.intact());
                }
}

INSTANTIATE_TEST_SUITE_P(Levels, Rotate,
                         testing::Values(Ko::KernelLevel::portable, Ko::KernelLevel::sse4, Ko::KernelLevel::avx2,
                                         Ko::KernelLevel::avx512));

TEST(Rotation, TakesWhatSharesMemoryAndWhatIsNotWhole) {
    const Image before = randomImage(Ko::PF_YCC444P, 40, 24);
    Image im = before;
    Ko::rotate(im, im, Ko::OR_ROTATED_90);
    EXPECT_EQ(difference(im, turned(before, 6)), "");
    // What the source lacks is 0.
    Image lacking = before;
    lacking.plane[1].resize(30, 20);
    Image expected = before;
    for (unsigned y = 0; y < 24; ++y)
        for (unsigned x = 0; x < 40; ++x) {
            unsigned char& sample = expected.plane[1].row(y)[x];
            sample = x < 30 && y < 20 ? sample : 0;
            if (x < 30 && y < 20)
                lacking.plane[1].row(y)[x] = sample;
        }
    for (int exif = 1; exif <= 8; ++exif) {
        Image dst(Ko::PF_RGB);
        Ko::rotate(dst, lacking, static_cast<Ko::Orientation>(exif));
        EXPECT_EQ(difference(dst, turned(expected, exif)), "") << exif;
    }
}

TEST(Rotation, RefusesBeforeAnythingChanges) {
    const Image before = randomImage(Ko::PF_Y, 5, 4);
    Image dst = before;
    EXPECT_THAT([&] { Ko::rotate(dst, randomImage(Ko::PF_YUY2, 4, 4), Ko::OR_ROTATED_90); },
                ThrowsMessage<std::logic_error>("[rotate]: Don't know how to rotate PF_YUY2 (YUY2)."));
    EXPECT_THAT([&] { Ko::rotate(dst, before, static_cast<Ko::Orientation>(9)); },
                ThrowsMessage<std::logic_error>("[rotate]: Unknown orientation."));
    EXPECT_EQ(difference(dst, before), "");
    WrappedImage wrapped(Ko::PF_Y, 5, 4);
    EXPECT_THROW(Ko::rotate(wrapped.im, before, Ko::OR_ROTATED_90), std::logic_error);
    EXPECT_TRUE(wrapped.intact());
}

} // namespace
