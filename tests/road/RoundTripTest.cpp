#include "Kovanta/Kovanta.h"

#include "support/Rows.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// The main road: what the sink wrote, the source reads, frame for frame.

namespace {

using Rate = Ko::Frac<unsigned int>;

struct Container : test::Row {
    const char* extension;
    const char* encoder; ///< Empty for the default one.
    Rate rate;
    unsigned width;
    unsigned height;
    bool countsFrames = false; ///< Whether positions are frame numbers.
    bool fragments = false;
};

const Container containers[] = {
    {{"Avi"}, "avi", "", {25, 1}, 320, 240, true},
    {{"AviH264"}, "avi", "libx264", {24, 1}, 64, 48, true},
    {{"Mp4"}, "mp4", "", {25, 1}, 64, 48, true},
    {{"Mp4Mpeg4"}, "mp4", "mpeg4", {24, 1}, 320, 240, true},
    {{"Mp4Fragments"}, "mp4", "", {25, 1}, 64, 48, true, true},
    {{"Mov"}, "mov", "", {24, 1}, 72, 52, true},
    {{"F4v"}, "f4v", "", {25, 1}, 64, 48}, // its pictures begin late
    {{"Mkv"}, "mkv", "", {30000, 1001}, 64, 48},
    {{"MkvFfv1Odd"}, "mkv", "ffv1", {25, 1}, 49, 37},
    {{"WebmVp8"}, "webm", "libvpx", {25, 1}, 64, 48},
    {{"Mpg"}, "mpg", "", {25, 1}, 64, 48},
    {{"Ts"}, "ts", "mpeg2video", {30000, 1001}, 72, 52},
    {{"Flv"}, "flv", "", {24, 1}, 64, 48},
    {{"Ogv"}, "ogv", "", {25, 1}, 64, 48},
};

void writeNumbered(const std::string& file, const Container& c, int count) {
    Ko::VideoOutputVideoFile sink;
    sink.setThrowOnFailure(true).setFragments(c.fragments);
    if (*c.encoder)
        sink.setEncoder(c.encoder);
    sink.open(c.width, c.height, file, c.rate, 1500000);
    for (int n = 0; n < count; ++n)
        ASSERT_TRUE(sink.write(test::numberedFrame(n, static_cast<int>(c.width), static_cast<int>(c.height))));
    sink.close();
}

class RoundTripOf : public testing::TestWithParam<Container> {};
INSTANTIATE_TEST_SUITE_P(Every, RoundTripOf, testing::ValuesIn(containers), test::rowName);

TEST_P(RoundTripOf, BringsEveryFrameInOrderAndSought) {
    const Container& c = GetParam();
    const test::TempDirectory directory;
    const std::string file = directory / (std::string("video.") + c.extension);
    for (const int count : {1, 2, 5, 100}) {
        SCOPED_TRACE(std::to_string(count) + " frames");
        writeNumbered(file, c, count);
        Ko::VideoInputVideoFile source(file);
        EXPECT_EQ(source.getWidth(), c.width);
        EXPECT_EQ(source.getHeight(), c.height);
        Ko::Image frame(Ko::PF_YCC444P);
        std::vector<long> before{0};
        for (int n = 0; n < count; ++n) {
            ASSERT_TRUE(source.read(frame));
            EXPECT_EQ(test::frameIndex(frame), n);
            EXPECT_TRUE(!c.countsFrames || source.tell() == n + 1) << source.tell();
            before.push_back(source.tell());
        }
        EXPECT_FALSE(source.read(frame));
        EXPECT_TRUE(source.eof());
        for (const int n : {count - 1, 0, count / 2, count / 3}) {
            const long position = before[static_cast<std::size_t>(n)];
            EXPECT_EQ(source.seek(position, Ko::VP_BEGIN), position);
            ASSERT_TRUE(source.read(frame));
            EXPECT_EQ(test::frameIndex(frame), n);
        }
        if (c.countsFrames) {
            EXPECT_EQ(source.getLength(), count);
            EXPECT_EQ(source.getFrameRate(), c.rate);
        }
    }
}

TEST(RoundTrip, DrawnFramesArriveAsTheyWereDrawn) {
    // Lossless in between, so that what differs is what the road itself changes.
    const test::TempDirectory directory;
    const std::string file = directory / "drawn.mkv";
    Ko::Image drawn(Ko::PF_YCC444P);
    drawn.size(96, 64);
    for (int p = 0; p < 3; ++p)
        for (unsigned y = 0; y < 64; ++y)
            std::fill_n(drawn.plane[p].view[y], 96, static_cast<unsigned char>(p == 0 ? 60 : 128));
    Ko::Font font;
    font.init(nullptr, 0, 20);
    font.drawText(drawn, "Ko", {8, 40}, {235, 100, 180});
    Ko::drawBbox(drawn, {2, 2, 90, 60}, {200, 90, 90}, false);
    Ko::drawVector2D(drawn, {30, -12}, {50, 50}, 6, {120, 200, 60});
    {
        Ko::VideoOutputVideoFile sink;
        sink.setEncoder("ffv1").open(96, 64, file, {25, 1}, 1000000);
        sink.write(drawn);
    } // the destructor closes
    Ko::Image subsampled(Ko::PF_YCC420P);
    Ko::convertIm(subsampled, drawn);
    Ko::Image expected(Ko::PF_YCC444P);
    Ko::convertIm(expected, subsampled);

    Ko::VideoInputVideoFile source(file);
    Ko::Image read(Ko::PF_YCC444P);
    ASSERT_TRUE(source.read(read));
    for (int p = 0; p < 3; ++p)
        for (unsigned y = 0; y < 64; ++y)
            ASSERT_TRUE(std::equal(read.plane[p].view[y], read.plane[p].view[y] + 96, expected.plane[p].view[y]))
                << "plane " << p << " row " << y;
    EXPECT_FALSE(source.read(read));
}

} // namespace
