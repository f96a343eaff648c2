// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"
#include "support/Rows.h"
#include "support/VideoMedia.h"
#include "videoout/Programs.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>

// Colours from a file to RGB, and what a file tells of them.

namespace {

/// The seven bars of the standard pattern for high definition, which ffmpeg writes as the samples that the standard
/// gives for 75 % of each colour.
TEST(Color, BarsOfHighDefinitionComeOutAsTheyAre) {
    const test::TempDirectory directory;
    const std::string file = directory / "bars.mkv";
    ASSERT_EQ(std::system(("ffmpeg -nostdin -v error -f lavfi -i smptehdbars=s=1280x720:d=0.2 "
                           "-vf setparams=colorspace=bt709 -c:v libx264 -qp 0 -pix_fmt yuv420p " +
                           file)
                              .c_str()),
              0);
    Ko::VideoInputVideoFile source(file);
    Ko::Image frame(Ko::PF_YCC420P), full(Ko::PF_YCC444P), rgb(Ko::PF_RGB), asBt601(Ko::PF_RGB);
    ASSERT_TRUE(source.read(frame));
    Ko::convertIm(full, frame);
    Ko::convertIm(rgb, full, source.getColorMatrix());
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

struct Tagged : test::Row {
    const char* extension;
    const char* encoder;
    Ko::ColorMatrix matrix;
    Ko::ColorRange range;
    const char* tags; ///< Range, matrix, transfer and primaries.
};
constexpr Tagged tagged[] = {
    {{"Untold"}, "mp4", "libx264", Ko::CM_UNKNOWN, Ko::CR_UNKNOWN, "unknown,unknown,unknown,unknown"},
    {{"Mp4"}, "mp4", "libx264", Ko::CM_BT709, Ko::CR_STUDIO, "tv,bt709,bt709,bt709"},
    {{"Mp4ByItself"}, "mp4", "mpeg4", Ko::CM_BT2020, Ko::CR_STUDIO, "tv,bt2020nc,bt2020-10,bt2020"},
    {{"WithoutPrimaries"}, "mkv", "libx264", Ko::CM_BT601, Ko::CR_STUDIO, "tv,smpte170m,unknown,unknown"},
    {{"RangeAlone"}, "mkv", "ffv1", Ko::CM_UNKNOWN, Ko::CR_FULL, "pc,unknown,unknown,unknown"},
    {{"AviH264"}, "avi", "libx264", Ko::CM_BT709, Ko::CR_STUDIO, "tv,bt709,bt709,bt709"},
    {{"NoPlaceForTags"}, "avi", "mpeg4", Ko::CM_BT709, Ko::CR_STUDIO, "unknown,unknown,unknown,unknown"},
};
class Tags : public testing::TestWithParam<Tagged> {};
INSTANTIATE_TEST_SUITE_P(Every, Tags, testing::ValuesIn(tagged), test::rowName);

TEST_P(Tags, AreWrittenBesideTheSameSamples) {
    const test::TempDirectory directory;
    std::string pictures[2];
    for (const bool tags : {false, true}) {
        const std::string file = directory / (std::string("video.") + GetParam().extension);
        Ko::VideoOutputVideoFile sink;
        sink.setThrowOnFailure(true).setEncoder(GetParam().encoder);
        if (tags)
            sink.setColor(GetParam().matrix, GetParam().range);
        sink.open(64, 48, file, {25, 1}, 1000000);
        sink.write(test::numberedFrame(5));
        sink.close();
        EXPECT_EQ(test::probe(file, "stream=color_range,color_space,color_transfer,color_primaries"),
                  tags ? GetParam().tags : tagged[0].tags);
        pictures[tags] = test::rawPictures(file);
        Ko::VideoInputVideoFile source;
        source.setAnyFormat(true).open(file);
        const bool held = tags && GetParam().tags != std::string(tagged[0].tags);
        EXPECT_EQ(source.getColorMatrix(), held ? GetParam().matrix : Ko::CM_UNKNOWN);
        EXPECT_EQ(source.getColorRange(), held ? GetParam().range : Ko::CR_UNKNOWN);
    }
    EXPECT_EQ(pictures[0], pictures[1]);
}

TEST(Color, TagsThatAreNoneAreRefused) {
    Ko::VideoOutputVideoFile sink;
    EXPECT_THAT([&] { sink.setColor(static_cast<Ko::ColorMatrix>(4), Ko::CR_STUDIO); },
                testing::ThrowsMessage<std::logic_error>("[VideoOutputVideoFile::setColor]: Unknown color matrix."));
    EXPECT_THAT([&] { sink.setColor(Ko::CM_BT709, static_cast<Ko::ColorRange>(3)); },
                testing::ThrowsMessage<std::logic_error>("[VideoOutputVideoFile::setColor]: Unknown color range."));
}

} // namespace
