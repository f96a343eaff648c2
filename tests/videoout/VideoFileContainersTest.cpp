#include "Kovanta/VideoOutputVideoFile.h"
#include "videoout/NumberedFrames.h"
#include "videoout/OutputFolder.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

namespace {

using Ko::VideoOutputVideoFile;
using Rate = Ko::Frac<unsigned int>;

/// One file: what goes in, and what time base comes out.
struct Case {
    const char* extension;
    const char* encoder; ///< Empty for the container's default one.
    Rate rate;
    unsigned int width;
    unsigned int height;
    unsigned int frames;
    const char* timeBase;
};

std::string nameOf(const Case& c) {
    return std::string(c.extension) + " " + c.encoder + " " + std::to_string(c.rate.num) + "/" +
           std::to_string(c.rate.den) + " " + std::to_string(c.width) + "x" + std::to_string(c.height) + " " +
           std::to_string(c.frames) + " frames";
}

std::vector<int> countTo(unsigned int n) {
    std::vector<int> numbers(n);
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

class VideoFileContainers : public OutputFolder {
protected:
    /// Writes the case's file, which must go without an error.
    std::string write(const Case& c, Ko::PIXEL_FORMAT format = Ko::PF_YCC444P) {
        const std::string file = path(std::string("video.") + c.extension);
        VideoOutputVideoFile out;
        if (*c.encoder)
            out.setEncoder(c.encoder);
        out.open(c.width, c.height, file, c.rate, c.width > 1000 ? 8000000 : 1000000);
        for (unsigned int n = 0; n < c.frames; ++n)
            EXPECT_TRUE(out.write(numbered::frame(n, c.width, c.height, format)));
        out.close();
        EXPECT_EQ(out.getError(), "");
        return file;
    }
};

TEST_F(VideoFileContainers, EveryFrameComesBackInOrderAndTime) {
    const Case cases[] = {
        {"avi", "", {25, 1}, 320, 240, 5, "1/25"},
        {"avi", "", {30000, 1001}, 49, 37, 100, "1001/30000"},
        {"avi", "", {15, 2}, 16, 16, 1, "2/15"},
        {"avi", "libx264", {50, 2}, 176, 144, 100, "1/25"},
        {"avi", "ffv1", {24, 1}, 50, 38, 2, "1/24"},
        {"mp4", "", {25, 1}, 176, 144, 100, "1/25"},
        {"mp4", "", {30000, 1001}, 50, 38, 5, "1/30000"},
        {"mp4", "", {24, 1}, 16, 16, 2, "1/24"},
        {"mp4", "", {15, 2}, 64, 48, 1, "1/15"},
        {"mp4", "mpeg4", {30000, 1001}, 49, 37, 1, "1/30000"},
        {"mov", "", {24, 1}, 320, 240, 5, "1/24"},
        {"mov", "mpeg2video", {25, 1}, 64, 48, 2, "1/25"},
        {"3gp", "", {25, 1}, 176, 144, 5, "1/25"},
        {"mkv", "", {15, 2}, 64, 48, 100, "1/1000"},
        {"mkv", "ffv1", {30000, 1001}, 49, 37, 5, "1/1000"},
        {"mkv", "", {25, 1}, 1920, 1080, 2, "1/1000"},
        {"webm", "", {24, 1}, 64, 48, 100, "1/1000"},
        {"webm", "libvpx", {30000, 1001}, 49, 37, 5, "1/1000"},
        {"webm", "", {25, 1}, 16, 16, 1, "1/1000"},
        {"mpg", "", {25, 1}, 64, 48, 100, "1/90000"},
        {"mpg", "mpeg2video", {30000, 1001}, 49, 37, 5, "1/90000"},
        {"ts", "", {24, 1}, 64, 48, 100, "1/90000"},
        {"ts", "", {25, 1}, 16, 16, 2, "1/90000"},
        {"ts", "", {30000, 1001}, 176, 144, 5, "1/90000"},
        {"ts", "libx264", {25, 1}, 64, 48, 1, "1/90000"},
        {"flv", "", {25, 1}, 64, 48, 100, "1/1000"},
        {"flv", "libx264", {30000, 1001}, 64, 48, 5, "1/1000"},
        {"ogv", "", {24, 1}, 64, 48, 100, "1/24"},
        {"ogv", "", {25, 1}, 50, 38, 1, "1/25"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(nameOf(c));
        const std::string file = write(c);
        const numbered::Decoded decoded = numbered::decode(file, c.width, c.height);
        EXPECT_EQ(decoded.numbers, countTo(c.frames));
        EXPECT_EQ(decoded.complaints, "");
        EXPECT_EQ(numbered::probe(file, "time_base,nb_read_frames"),
                  std::string(c.timeBase) + "," + std::to_string(c.frames));
    }
}

TEST_F(VideoFileContainers, PositionsCountFramesWhereTheContainerAllows) {
    const struct {
        Case c;
        std::vector<long> times;
    } cases[] = {
        {{"avi", "", {30000, 1001}, 64, 48, 4, ""}, {0, 1, 2, 3}},
        {{"mp4", "", {25, 1}, 64, 48, 4, ""}, {0, 1, 2, 3}},
        {{"mov", "", {30000, 1001}, 64, 48, 4, ""}, {0, 1001, 2002, 3003}},
        {{"mp4", "", {15, 2}, 64, 48, 4, ""}, {0, 2, 4, 6}},
        {{"mkv", "", {15, 2}, 64, 48, 4, ""}, {0, 133, 267, 400}},
    };
    for (const auto& [c, times] : cases) {
        SCOPED_TRACE(nameOf(c));
        const std::string file = write(c);
        EXPECT_EQ(numbered::presentationTimes(file), times);
        EXPECT_EQ(numbered::probe(file, "avg_frame_rate"),
                  std::to_string(c.rate.num) + "/" + std::to_string(c.rate.den));
    }
}

TEST_F(VideoFileContainers, FramesMayBePlanarOrGrey) {
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_YCC444P, Ko::PF_YCC420P, Ko::PF_Y}) {
        SCOPED_TRACE(fmt2string(format));
        const Case c = {"avi", "", {25, 1}, 64, 48, 3, ""};
        EXPECT_EQ(numbered::decode(write(c, format), c.width, c.height, format != Ko::PF_Y).numbers, countTo(3));
    }
}

TEST_F(VideoFileContainers, OddSizesAreWrittenExactlyAndTheirLastChromaIsNeutral) {
    const Case c = {"avi", "ffv1", {25, 1}, 49, 37, 3, ""};
    const numbered::Decoded decoded = numbered::decode(write(c), c.width, c.height);
    ASSERT_EQ(decoded.numbers, countTo(3));
    std::string expected;
    for (unsigned int n = 0; n < c.frames; ++n) {
        const auto im = numbered::frame(n, c.width, c.height, Ko::PF_YCC420P);
        for (const auto& plane : {im.plane[0], im.plane[1], im.plane[2]}) {
            for (unsigned int y = 0; y < plane.height; ++y) {
                expected.append(reinterpret_cast<const char*>(plane.view[y]), plane.width);
                if (plane.width != c.width)
                    expected += '\x80';
            }
            if (plane.height != c.height)
                expected.append(plane.width + 1, '\x80');
        }
    }
    EXPECT_TRUE(decoded.yuv == expected);
}

TEST_F(VideoFileContainers, InterlacedCodingIsSwitchedOnAndOff) {
    std::string order[2];
    for (const bool on : {true, false}) {
        const std::string file = path("video.mkv");
        VideoOutputVideoFile out;
        out.setEncoder("mpeg2video").setInterlace(true).setInterlace(on).setQueueSize(2);
        out.open(64, 64, file, {25, 1}, 1000000);
        out.write(numbered::frame(1, 64, 64));
        out.close();
        order[on] = numbered::probe(file, "field_order");
    }
    EXPECT_EQ(order[false], "progressive");
    EXPECT_NE(order[true], "progressive");
}

} // namespace
