// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoInput.h"
#include "support/TempDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

// Colours from a file to RGB.

namespace {

/// The seven bars of the standard pattern for high definition, which ffmpeg writes as the samples that the standard
/// gives for 75 % of each colour.
TEST(Color, BarsOfHighDefinitionComeOutAsTheyAre) {
    const test::TempDirectory directory;
    const std::string file = directory / "bars.mkv";
    ASSERT_EQ(std::system(("ffmpeg -nostdin -v error -f lavfi -i smptehdbars=s=1280x720:d=0.2 -colorspace bt709 "
                           "-c:v libx264 -qp 0 -pix_fmt yuv420p " +
                           file)
                              .c_str()),
              0);
    Ko::VideoInputVideoFile source(file);
    Ko::Image frame(Ko::PF_YCC420P), full(Ko::PF_YCC444P), rgb(Ko::PF_RGB), asBt601(Ko::PF_RGB);
    ASSERT_TRUE(source.read(frame));
    Ko::convertIm(full, frame);
    Ko::convertIm(rgb, full, Ko::CM_BT709);
    Ko::convertIm(asBt601, full);
    int mostOff = 0;
    for (unsigned bar = 0; bar < 7; ++bar) {
        // The pattern has a grey border of an eighth on both sides; red and blue go with green from left to right.
        const unsigned x = 1280 / 8 + (2 * bar + 1) * 1280 * 3 / 4 / 14;
        const bool on[] = {bar % 4 < 2, bar < 4, bar % 2 == 0};
        for (unsigned c = 0; c < 3; ++c) {
            const int wanted = on[c] ? 191 : 0;
            EXPECT_NEAR(rgb.plane[0].row(100)[3 * x + c], wanted, 1) << "bar " << bar << " component " << c;
            mostOff = std::max(mostOff, std::abs(asBt601.plane[0].row(100)[3 * x + c] - wanted));
        }
    }
    EXPECT_GT(mostOff, 20) << "the pattern does not tell the matrices apart";
}

} // namespace
