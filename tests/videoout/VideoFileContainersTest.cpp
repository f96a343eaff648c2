#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoOutputVideoFile.h"
#include "support/Rows.h"
#include "support/VideoMedia.h"
#include "videoout/Programs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

// What others make of the files that were written; test_road reads them with our own source.

namespace {

using Ko::VideoOutputVideoFile;
using Rate = Ko::Frac<unsigned int>;

class VideoFileContainers : public testing::Test {
protected:
    /// Writes a file of the frames, which must go without an error; an empty encoder is the container's default one.
    std::string write(const std::string& extension, const std::string& encoder, Rate rate, unsigned int width,
                      unsigned int height, const std::vector<Ko::Image<>>& frames, bool interlace = false) const {
        std::string file = folder / "video." + extension;
        VideoOutputVideoFile out;
        if (!encoder.empty())
            out.setEncoder(encoder);
        out.setInterlace(!interlace).setInterlace(interlace).setQueueSize(2);
        out.open(width, height, file, rate, width > 1000 ? 8000000 : 1000000);
        for (const Ko::Image<>& im : frames)
            EXPECT_TRUE(out.write(im));
        out.close();
        EXPECT_EQ(out.getError(), "");
        return file;
    }

    const test::TempDirectory folder;
};

struct Written : test::Row {
    const char* extension;
    const char* encoder;
    Rate rate;
    int width;
    int height;
    const char* stream; ///< The rate and the time base that the file tells.
    bool timed = true;  ///< Whether ffprobe knows every frame's time, the first one's being 0.
    int frames = 30;
};

const Written written[] = {
    {{"Avi49x37"}, "avi", "", {30000, 1001}, 49, 37, "30000/1001,1001/30000"},
    {{"Avi16x16"}, "avi", "", {15, 2}, 16, 16, "15/2,2/15"},
    {{"AviX264176x144"}, "avi", "libx264", {50, 2}, 176, 144, "25/1,1/25", false},
    {{"Mp464x48"}, "mp4", "", {15, 2}, 64, 48, "15/2,1/15"},
    {{"Mp4Mpeg449x37"}, "mp4", "mpeg4", {30000, 1001}, 49, 37, "30000/1001,1/30000"},
    {{"MovMpeg2320x240"}, "mov", "mpeg2video", {24, 1}, 320, 240, "24/1,1/24"},
    {{"3gp176x144"}, "3gp", "", {25, 1}, 176, 144, "25/1,1/25"},
    {{"Mkv64x48"}, "mkv", "", {15, 2}, 64, 48, "15/2,1/1000"},
    {{"Mkv1920x1080Frames2"}, "mkv", "", {25, 1}, 1920, 1080, "25/1,1/1000", true, 2},
    {{"Webm64x48"}, "webm", "", {24, 1}, 64, 48, "24/1,1/1000"},
    {{"WebmVpx49x37"}, "webm", "libvpx", {30000, 1001}, 49, 37, "30000/1001,1/1000"},
    {{"MpgMpeg249x37Frames5"}, "mpg", "mpeg2video", {30000, 1001}, 49, 37, "30000/1001,1/90000", false, 5},
    {{"Ts64x48"}, "ts", "", {24, 1}, 64, 48, "24/1,1/90000", false},
    {{"TsX26464x48"}, "ts", "libx264", {25, 1}, 64, 48, "25/1,1/90000", false},
    {{"Ts16x16Frames2"}, "ts", "", {25, 1}, 16, 16, "0/0,1/90000", false, 2},
    {{"TsX26464x48Frames1"}, "ts", "libx264", {25, 1}, 64, 48, "0/0,1/90000", false, 1},
    {{"Webm16x16Frames1"}, "webm", "", {25, 1}, 16, 16, "25/1,1/1000", true, 1},
    {{"FlvX26464x48"}, "flv", "libx264", {25, 1}, 64, 48, "25/1,1/1000", false},
    {{"Ogv64x48"}, "ogv", "", {24, 1}, 64, 48, "0/0,1/24"},
};

class VideoFileWritten : public VideoFileContainers, public testing::WithParamInterface<Written> {};
INSTANTIATE_TEST_SUITE_P(Every, VideoFileWritten, testing::ValuesIn(written), test::rowName);

TEST_P(VideoFileWritten, ComesBackInOrderAndTime) {
    const Written& c = GetParam();
    std::vector<Ko::Image<>> frames;
    for (int n = 0; n < c.frames; ++n)
        frames.push_back(test::numberedFrame(n, c.width, c.height));
    const std::string file = write(c.extension, c.encoder, c.rate, frames[0].width, frames[0].height, frames);
    const test::Decoded decoded = test::decode(file, frames[0].width, frames[0].height);
    EXPECT_EQ(decoded.numbers, test::indices(c.frames));
    EXPECT_EQ(decoded.complaints, "");
    EXPECT_EQ(test::probe(file, "stream=avg_frame_rate,time_base"), c.stream);
    std::istringstream times(test::probe(file, "frame=pts_time"));
    double time = -1;
    for (int n = 0; c.timed && n < c.frames; ++n)
        EXPECT_TRUE(times >> time && std::abs(time - 1.0 * n * c.rate.den / c.rate.num) < 0.0006)
            << time << " at frame " << n;
}

TEST_F(VideoFileContainers, EveryFormatIsWrittenExactlyAndMissingChromaIsNeutral) {
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_YCC444P, Ko::PF_YCC420P, Ko::PF_Y}) {
        SCOPED_TRACE(fmt2string(format));
        Ko::Image full(Ko::PF_YCC444P), im(format), planar(Ko::PF_YCC420P);
        Ko::convertIm(full, test::numberedFrame(1, 49, 37));
        Ko::convertIm(im, full);
        Ko::convertIm(planar, im);
        std::string expected;
        for (int p = 0; p < 3; ++p) {
            for (unsigned int y = 0; y < planar.plane[p].height; ++y)
                expected.append(planar.plane[p].view[y], planar.plane[p].view[y] + planar.plane[p].width)
                    .append(p == 0 ? 0 : 1, '\x80');
            expected.append(p == 0 ? 0 : 25, '\x80');
        }
        EXPECT_TRUE(test::rawPictures(write("avi", "ffv1", {25, 1}, 49, 37, {im, im})) == expected + expected);
    }
}

TEST_F(VideoFileContainers, AFileWithoutFramesIsNoError) {
    for (const char* extension : {"avi", "mp4", "mov", "3gp", "mkv", "webm", "mpg", "ts", "flv", "ogv"}) {
        SCOPED_TRACE(extension);
        EXPECT_TRUE(std::filesystem::exists(write(extension, "", {25, 1}, 176, 144, {})));
    }
}

TEST_F(VideoFileContainers, InterlacedCodingIsSwitchedOnAndOff) {
    const auto order = [&](bool on) {
        return test::probe(write("mkv", "mpeg2video", {25, 1}, 64, 48, {test::numberedFrame(1)}, on),
                           "stream=field_order");
    };
    EXPECT_EQ(order(false), "progressive");
    EXPECT_NE(order(true), "progressive");
}

} // namespace
