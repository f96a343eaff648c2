// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"
#include "support/Rows.h"
#include "support/VideoMedia.h"
#include "videoout/Programs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

// The main road: what the sink wrote, the source reads, frame for frame, and others do as well.

namespace {

struct Container : test::Row {
    const char* extension;
    const char* encoder; ///< Empty for the default one.
    Ko::Frac<unsigned int> rate;
    int width;
    int height;
    const char* stream;        ///< The rate and the time base that the file tells to others.
    bool countsFrames = false; ///< Whether positions are frame numbers.
    bool timed = true;         ///< Whether ffprobe knows every frame's time, the first one's being 0.
    bool fragments = false;
};

const Container containers[] = {
    {{"Avi"}, "avi", "", {30000, 1001}, 49, 37, "30000/1001,1001/30000", true},
    {{"AviH264"}, "avi", "libx264", {50, 2}, 176, 144, "25/1,1/25", true, false},
    {{"Mp4"}, "mp4", "", {25, 1}, 64, 48, "25/1,1/25", true},
    {{"Mp4Halves"}, "mp4", "", {15, 2}, 64, 48, "15/2,1/15"},
    {{"Mp4Mpeg4"}, "mp4", "mpeg4", {30000, 1001}, 49, 37, "30000/1001,1/30000"},
    {{"Mp4Fragments"}, "mp4", "", {25, 1}, 64, 48, "25/1,1/25", true, true, true},
    {{"MovMpeg2"}, "mov", "mpeg2video", {24, 1}, 320, 240, "24/1,1/24", true},
    {{"3gp"}, "3gp", "", {25, 1}, 176, 144, "25/1,1/25", true},
    {{"F4v"}, "f4v", "", {25, 1}, 64, 48, "25/1,1/25", false, false}, // its pictures begin late
    {{"Mkv"}, "mkv", "", {15, 2}, 64, 48, "15/2,1/1000"},
    {{"MkvFfv1"}, "mkv", "ffv1", {25, 1}, 49, 37, "25/1,1/1000"},
    {{"WebmVp8"}, "webm", "libvpx", {30000, 1001}, 49, 37, "30000/1001,1/1000"},
    {{"Mpg"}, "mpg", "", {25, 1}, 64, 48, "25/1,1/90000", false, false},
    {{"MpgMpeg2"}, "mpg", "mpeg2video", {25, 1}, 49, 37, "25/1,1/90000", false, false},
    {{"Ts"}, "ts", "", {24, 1}, 64, 48, "24/1,1/90000", false, false},
    {{"TsH264"}, "ts", "libx264", {25, 1}, 72, 52, "25/1,1/90000", false, false},
    {{"Flv"}, "flv", "", {24, 1}, 64, 48, "24/1,1/1000", false, false},
    {{"Ogv"}, "ogv", "", {24, 1}, 64, 48, "0/0,1/24"},
};

class RoundTripOf : public testing::TestWithParam<Container> {
protected:
    void write(int count) const {
        const Container& c = GetParam();
        Ko::VideoOutputVideoFile sink;
        sink.setThrowOnFailure(true).setFragments(c.fragments).setQueueSize(2);
        if (*c.encoder)
            sink.setEncoder(c.encoder);
        sink.open(static_cast<unsigned int>(c.width), static_cast<unsigned int>(c.height), file, c.rate, 1500000);
        for (int n = 0; n < count; ++n)
            EXPECT_TRUE(sink.write(test::numberedFrame(n, c.width, c.height)));
        sink.close();
    }

    const test::TempDirectory directory;
    const std::string file = directory / (std::string("video.") + GetParam().extension);
};
INSTANTIATE_TEST_SUITE_P(Every, RoundTripOf, testing::ValuesIn(containers), test::rowName);

TEST_P(RoundTripOf, BringsEveryFrameInOrderAndSought) {
    const Container& c = GetParam();
    write(0); // is no error
    for (const int count : {1, 2, 5, 100}) {
        SCOPED_TRACE(std::to_string(count) + " frames");
        write(count);
        Ko::VideoInputVideoFile source(file);
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
            EXPECT_EQ(source.getFrameRate().num * c.rate.den, c.rate.num * source.getFrameRate().den);
        }
        const test::Decoded decoded = test::decode(file, frame.width, frame.height);
        EXPECT_EQ(decoded.numbers, test::indices(count));
        // Shorter program streams are nothing but a beginning, in longer ones the null muxer meets rounded times.
        EXPECT_TRUE(count != 5 || decoded.complaints.empty()) << decoded.complaints;
    }
}

TEST_P(RoundTripOf, TellsOthersItsTimes) {
    const Container& c = GetParam();
    constexpr int count = 30;
    write(count);
    EXPECT_EQ(test::probe(file, "stream=avg_frame_rate,time_base"), c.stream);
    std::istringstream times(test::probe(file, "frame=pts_time"));
    double time = -1;
    for (int n = 0; c.timed && n < count; ++n)
        EXPECT_TRUE(times >> time && std::abs(time - 1.0 * n * c.rate.den / c.rate.num) < 0.0006)
            << time << " at frame " << n;
}

} // namespace
