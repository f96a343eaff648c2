#include "Kovanta/Kovanta.h"

#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// The main road: what the sink wrote, the source reads, frame for frame.

namespace {

using Image = Ko::Image<unsigned char>;
using Rate = Ko::Frac<unsigned int>;

struct Container {
    const char* extension;
    const char* encoder; ///< Empty for the default one.
    Rate rate;
    unsigned width;
    unsigned height;
    bool countsFrames; ///< Whether positions are frame numbers.
};

const Container containers[] = {
    {"avi", "", {25, 1}, 320, 240, true},    {"avi", "libx264", {24, 1}, 64, 48, true},
    {"mp4", "", {25, 1}, 64, 48, true},      {"mp4", "mpeg4", {24, 1}, 320, 240, true},
    {"mov", "", {24, 1}, 72, 52, true},      {"mkv", "", {30000, 1001}, 64, 48, false},
    {"mkv", "ffv1", {25, 1}, 49, 37, false}, {"webm", "libvpx", {25, 1}, 64, 48, false},
    {"mpg", "", {25, 1}, 64, 48, false},     {"ts", "mpeg2video", {30000, 1001}, 72, 52, false},
    {"flv", "", {24, 1}, 64, 48, false},     {"ogv", "", {25, 1}, 64, 48, false},
};

void writeNumbered(const std::string& file, const Container& c, int count) {
    Ko::VideoOutputVideoFile sink;
    if (*c.encoder)
        sink.setEncoder(c.encoder);
    sink.open(c.width, c.height, file, c.rate, 1500000);
    for (int n = 0; n < count; ++n)
        ASSERT_TRUE(sink.write(test::numberedFrame(n, static_cast<int>(c.width), static_cast<int>(c.height))));
    sink.close();
    ASSERT_EQ(sink.getError(), "");
}

TEST(RoundTrip, EveryFrameOfEveryContainerInOrder) {
    const test::TempDirectory directory;
    for (const Container& c : containers)
        for (const int count : {1, 2, 5, 100}) {
            SCOPED_TRACE(std::string(c.extension) + " " + c.encoder + " " + std::to_string(count) + " frames");
            const std::string file = directory / (std::string("video.") + c.extension);
            writeNumbered(file, c, count);
            Ko::VideoInputVideoFile source(file);
            EXPECT_EQ(source.getWidth(), c.width);
            EXPECT_EQ(source.getHeight(), c.height);
            Image frame(Ko::PF_YCC444P);
            std::vector<int> numbers;
            while (source.read(frame)) {
                numbers.push_back(test::frameIndex(frame));
                EXPECT_TRUE(!c.countsFrames || source.tell() == static_cast<long>(numbers.size())) << source.tell();
            }
            EXPECT_EQ(numbers, test::indices(count));
            EXPECT_TRUE(source.eof());
            if (!c.countsFrames)
                continue;
            EXPECT_EQ(source.getLength(), count);
            EXPECT_EQ(source.getFrameRate().num * c.rate.den, source.getFrameRate().den * c.rate.num);
            for (const int t : {count - 1, 0, count / 2, count / 3}) {
                EXPECT_EQ(source.seek(t, Ko::VP_BEGIN), t);
                ASSERT_TRUE(source.read(frame));
                EXPECT_EQ(test::frameIndex(frame), t);
            }
        }
}

TEST(RoundTrip, DrawnFramesArriveAsTheyWereDrawn) {
    // Lossless in between, so that what differs is what the road itself changes.
    const test::TempDirectory directory;
    const std::string file = directory / "drawn.mkv";
    Image drawn(Ko::PF_YCC444P);
    drawn.size(96, 64);
    for (int p = 0; p < 3; ++p)
        for (unsigned y = 0; y < 64; ++y)
            std::fill_n(drawn.plane[p].view[y], 96, static_cast<unsigned char>(p == 0 ? 60 : 128));
    Ko::Font font;
    font.init(nullptr, 0, 20);
    font.drawText(drawn, "Ko", {8, 40}, {235, 100, 180});
    Ko::drawBbox(drawn, {2, 2, 90, 60}, {200, 90, 90}, false);
    Ko::drawVector2D(drawn, Ko::Vector2D<int>{30, -12}, {50, 50}, 6, {120, 200, 60});
    {
        Ko::VideoOutputVideoFile sink;
        sink.setEncoder("ffv1").open(96, 64, file, {25, 1}, 1000000);
        sink.write(drawn);
    } // the destructor closes
    Image subsampled(Ko::PF_YCC420P);
    Ko::convertIm(subsampled, drawn);
    Image expected(Ko::PF_YCC444P);
    Ko::convertIm(expected, subsampled);

    Ko::VideoInputVideoFile source(file);
    Image read(Ko::PF_YCC444P);
    ASSERT_TRUE(source.read(read));
    for (int p = 0; p < 3; ++p)
        for (unsigned y = 0; y < 64; ++y)
            ASSERT_TRUE(std::equal(read.plane[p].view[y], read.plane[p].view[y] + 96, expected.plane[p].view[y]))
                << "plane " << p << " row " << y;
    EXPECT_FALSE(source.read(read));
}

} // namespace
