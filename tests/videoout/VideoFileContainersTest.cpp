#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoOutputVideoFile.h"
#include "support/VideoMedia.h"
#include "videoout/Programs.h"

#include <gtest/gtest.h>

#include <filesystem>
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

Ko::Image<unsigned char> frame(const Case& c, unsigned int n) {
    return test::numberedFrame(static_cast<int>(n), static_cast<int>(c.width), static_cast<int>(c.height));
}

class VideoFileContainers : public testing::Test {
protected:
    /// Writes the case's file, which must go without an error.
    std::string write(const Case& c, Ko::PIXEL_FORMAT format = Ko::PF_YCC420P) {
        const std::string file = folder / (std::string("video.") + c.extension);
        VideoOutputVideoFile out;
        if (*c.encoder)
            out.setEncoder(c.encoder);
        out.open(c.width, c.height, file, c.rate, c.width > 1000 ? 8000000 : 1000000);
        for (unsigned int n = 0; n < c.frames; ++n)
            EXPECT_TRUE(out.write(inFormat(frame(c, n), format)));
        out.close();
        EXPECT_EQ(out.getError(), "");
        return file;
    }

    static Ko::Image<unsigned char> inFormat(const Ko::Image<unsigned char>& im, Ko::PIXEL_FORMAT format) {
        Ko::Image<unsigned char> full(Ko::PF_YCC444P);
        Ko::convertIm(full, im);
        Ko::Image<unsigned char> converted(format);
        Ko::convertIm(converted, format == Ko::PF_YCC420P ? im : full);
        return converted;
    }

    const test::TemporaryDirectory folder;
};

TEST_F(VideoFileContainers, EveryFrameComesBackInOrderAndTime) {
    const Case cases[] = {
        {"avi", "", {30000, 1001}, 49, 37, 100, "1001/30000"},
        {"avi", "", {15, 2}, 16, 16, 1, "2/15"},
        {"avi", "libx264", {50, 2}, 176, 144, 100, "1/25"},
        {"mp4", "", {25, 1}, 176, 144, 100, "1/25"},
        {"mp4", "", {30000, 1001}, 50, 38, 5, "1/30000"},
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
        {"ts", "libx264", {25, 1}, 64, 48, 1, "1/90000"},
        {"flv", "", {25, 1}, 64, 48, 100, "1/1000"},
        {"flv", "libx264", {30000, 1001}, 64, 48, 5, "1/1000"},
        {"ogv", "", {24, 1}, 64, 48, 100, "1/24"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(nameOf(c));
        const std::string file = write(c);
        const test::Decoded decoded = test::decode(file, c.width, c.height);
        EXPECT_EQ(decoded.numbers, countTo(c.frames));
        EXPECT_EQ(decoded.complaints, "");
        EXPECT_EQ(test::probe(file, "stream=time_base,nb_read_frames"),
                  std::string(c.timeBase) + "," + std::to_string(c.frames));
    }
}

TEST_F(VideoFileContainers, PositionsCountFramesWhereTheContainerAllows) {
    const struct {
        Case c;
        const char* times;
        const char* duration;
    } cases[] = {
        {{"avi", "", {30000, 1001}, 64, 48, 4, ""}, "0\n1\n2\n3", "4"},
        {{"mp4", "", {25, 1}, 64, 48, 4, ""}, "0\n1\n2\n3", "4"},
        {{"mov", "", {30000, 1001}, 64, 48, 4, ""}, "0\n1001\n2002\n3003", "4004"},
        {{"mp4", "", {15, 2}, 64, 48, 4, ""}, "0\n2\n4\n6", "8"},
        {{"mkv", "", {15, 2}, 64, 48, 4, ""}, "0\n133\n267\n400", "N/A"},
    };
    for (const auto& [c, times, duration] : cases) {
        SCOPED_TRACE(nameOf(c));
        const std::string file = write(c);
        EXPECT_EQ(test::probe(file, "frame=pts"), times);
        EXPECT_EQ(test::probe(file, "stream=avg_frame_rate"),
                  std::to_string(c.rate.num) + "/" + std::to_string(c.rate.den));
    }
}

TEST_F(VideoFileContainers, EveryFormatIsWrittenExactlyAndMissingChromaIsNeutral) {
    const Case c = {"avi", "ffv1", {25, 1}, 49, 37, 3, ""};
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_YCC444P, Ko::PF_YCC420P, Ko::PF_Y}) {
        SCOPED_TRACE(fmt2string(format));
        std::string expected;
        for (unsigned int n = 0; n < c.frames; ++n) {
            Ko::Image<unsigned char> im(Ko::PF_YCC420P);
            Ko::convertIm(im, inFormat(frame(c, n), format));
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
        EXPECT_TRUE(test::decode(write(c, format), c.width, c.height).yuv == expected);
    }
}

TEST_F(VideoFileContainers, AFileWithoutFramesIsNoError) {
    for (const char* extension : {"avi", "mp4", "mov", "3gp", "mkv", "webm", "mpg", "ts", "flv", "ogv"}) {
        SCOPED_TRACE(extension);
        EXPECT_TRUE(std::filesystem::exists(write({extension, "", {25, 1}, 176, 144, 0, ""})));
    }
}

TEST_F(VideoFileContainers, InterlacedCodingIsSwitchedOnAndOff) {
    std::string order[2];
    for (const bool on : {true, false}) {
        const std::string file = folder / "video.mkv";
        VideoOutputVideoFile out;
        out.setEncoder("mpeg2video").setInterlace(true).setInterlace(on).setQueueSize(2);
        out.open(64, 64, file, {25, 1}, 1000000);
        out.write(test::numberedFrame(1, 64, 64));
        out.close();
        order[on] = test::probe(file, "stream=field_order");
    }
    EXPECT_EQ(order[false], "progressive");
    EXPECT_NE(order[true], "progressive");
}

} // namespace
