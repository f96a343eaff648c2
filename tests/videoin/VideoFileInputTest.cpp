#include "Kovanta/VideoInput.h"
#include "Kovanta/Wrap.h"
#include "support/TestImages.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>
#include <vector>

namespace {

using Ko::Image;
using Ko::VideoInputVideoFile;
using test::samples;
using test::thrownText;

/// What one file is made of, and what it must look like when it is read.
struct Case {
    const char* name;
    const char* options;
    bool ticksAreFrames = false;
    const char* rate = "25";
    int width = 64;
    int height = 48;
    const char* inputs = "";
};

constexpr const char* sound = "-f lavfi -i sine=d=1 ";

// Transport and program streams begin near 0 here: their targets would all be beyond the length otherwise.
const Case cases[] = {
    {"mpeg4.avi", "-c:v mpeg4 -g 8", true, "24"},
    {"mpeg4-b.avi", "-c:v mpeg4 -g 8 -bf 2 -flags +cgop -sc_threshold 1000000000", true},
    {"h264-b.avi", "-c:v libx264 -g 9 -bf 3", true, "30000/1001"},
    {"h264-b.mp4", "-c:v libx264 -g 9 -bf 3", false, "30000/1001"},
    {"h264-fragments.mp4", "-c:v libx264 -g 9 -bf 3 -movflags frag_keyframe+empty_moov"},
    {"h264-b.mkv", "-c:v libx264 -g 9 -bf 3", false, "24"},
    {"h264-b-one-key.mkv", "-c:v libx264 -g 999 -keyint_min 999 -sc_threshold 0 -bf 3", false, "30000/1001"},
    {"h264-open-gop.mkv", "-c:v libx264 -g 7 -sc_threshold 0 -bf 3 -x264-params open-gop=1"},
    {"h264-b.ts", "-c:v libx264 -g 9 -bf 3 -muxdelay 0 -muxpreload 0"},
    {"mpeg2-b.mpg", "-c:v mpeg2video -bf 2 -muxdelay 0 -muxpreload 0"},
    {"mpeg2-b.ts", "-c:v mpeg2video -bf 2 -g 9 -muxdelay 0 -muxpreload 0", false, "30000/1001"},
    {"mjpeg422.avi", "-c:v mjpeg -pix_fmt yuvj422p -q:v 2", true},
    {"vp8.webm", "-c:v libvpx -g 9"},
    {"vp9.webm", "-c:v libvpx-vp9 -g 9 -speed 8", false, "30000/1001"},
    {"theora.ogv", "-c:v libtheora -g 9 -q:v 9", true},
    {"ffv1.mkv", "-c:v ffv1", false, "15/2"},
    {"h264-b.flv", "-c:v libx264 -g 9 -bf 3"},
    {"sound-first.avi", "-map 0:a -map 1:v -c:a mp2 -c:v mpeg4 -g 8", true, "25", 64, 48, sound},
    // Entered between key frames, or where nothing tells the time.
    {"mpeg4.ts", "-c:v mpeg4 -g 8 -muxdelay 0 -muxpreload 0"},
    {"h265-b.ts", "-c:v libx265 -g 9 -x265-params log-level=none -muxdelay 0 -muxpreload 0"},
    {"h264-b.mpg", "-c:v libx264 -g 9 -bf 3 -qp 1 -muxdelay 0 -muxpreload 0"},
};
constexpr int frameCount = 33;

class VideoFile : public testing::Test {
protected:
    std::string media(const Case& c) const {
        test::encodeNumbered(directory / c.name, {c.width, c.height, frameCount, c.rate}, c.options, c.inputs);
        return directory / c.name;
    }
    const test::TempDirectory directory;
};

/// The index of the next frame, or -2 at the end.
int nextIndex(Ko::VideoInput& in) {
    Image<unsigned char> frame(Ko::PF_YCC444P);
    return in.read(frame) ? test::frameIndex(frame) : -2;
}

/// The position after each frame, which must all come, in order.
std::vector<long> positions(Ko::VideoInput& in, bool ticksAreFrames = false) {
    std::vector<long> after;
    for (int i = 0; i < frameCount; ++i) {
        EXPECT_EQ(nextIndex(in), i);
        EXPECT_GT(in.tell(), after.empty() ? 0 : after.back());
        EXPECT_TRUE(!ticksAreFrames || in.tell() == i + 1) << in.tell();
        after.push_back(in.tell());
    }
    return after;
}

/// Where a seek to a target within the length ends.
long reached(const std::vector<long>& after, long target) {
    const auto at = std::lower_bound(after.begin(), after.end(), target);
    return at == after.end() ? after.back() : *at;
}

/// Every frame comes once, in order; then come the end and the next round of the loop.
void checkReading(VideoInputVideoFile& in, const Case& c) {
    EXPECT_EQ(in.getWidth(), static_cast<unsigned int>(c.width));
    EXPECT_EQ(in.getHeight(), static_cast<unsigned int>(c.height));
    EXPECT_EQ(in.tell(), 0);
    EXPECT_FALSE(in.eof());
    const Ko::Frac<unsigned int> rate = in.getFrameRate();
    EXPECT_EQ(std::to_string(rate.num) + (rate.den == 1 ? "" : "/" + std::to_string(rate.den)), c.rate);
    const std::vector<long> after = positions(in, c.ticksAreFrames);
    EXPECT_TRUE(!c.ticksAreFrames || (in.eof() && in.getLength() == frameCount));
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(nextIndex(in), -2);
        EXPECT_TRUE(in.eof());
        EXPECT_EQ(in.tell(), after.back());
    }
    in.setLoop(true);
    for (int i = 0; i < 2 * frameCount; ++i) {
        EXPECT_EQ(nextIndex(in), i % frameCount);
        EXPECT_TRUE(!c.ticksAreFrames || in.tell() == (i + 1) % frameCount);
    }
    EXPECT_EQ(in.seek(0, Ko::VP_END), reached(after, in.getLength())) << "a seek to the end does not go round";
}

/// After a seek the next frame is the one that tell() names.
void checkSeeking(VideoInputVideoFile& in) {
    const std::vector<long> after = positions(in);
    const long length = in.getLength();
    auto check = [&](long target, long offset, Ko::VideoPosId origin) {
        SCOPED_TRACE(testing::Message() << "to " << target << " of " << length << " by origin " << origin);
        const long named = target <= 0 ? 0 : reached(after, std::min(target, length));
        EXPECT_EQ(in.seek(offset, origin), named);
        EXPECT_EQ(in.tell(), named);
        const int next = static_cast<int>(std::upper_bound(after.begin(), after.end(), named) - after.begin());
        EXPECT_EQ(nextIndex(in), next < frameCount ? next : -2);
    };
    // Forward and backward, at, before and behind every position.
    for (int i = -1; i < 2 * frameCount; ++i) {
        const long at = i < 0 ? 0 : after[static_cast<std::size_t>(i < frameCount ? i : 2 * frameCount - 1 - i)];
        check(at, at, Ko::VP_BEGIN);
        check(at + 1, at + 1 - in.tell(), Ko::VP_CURRENT);
        check(at - 1, length - at + 1, Ko::VP_END);
    }
    for (const Ko::VideoPosId origin : {Ko::VP_BEGIN, Ko::VP_CURRENT}) {
        check(LONG_MAX, LONG_MAX, origin);
        check(LONG_MIN, LONG_MIN, origin);
    }
    check(LONG_MAX, LONG_MIN, Ko::VP_END);
    check(-1, length + 1, Ko::VP_END);
    const long before = in.tell();
    EXPECT_EQ(thrownText<std::logic_error>([&] { in.seek(1, static_cast<Ko::VideoPosId>(3)); }),
              "[VideoInputVideoFile::seek]: Erroneous position indicator given!");
    EXPECT_EQ(in.tell(), before);
}

TEST_F(VideoFile, EveryContainerIsReadInOrderAndSought) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        VideoInputVideoFile read(media(c));
        checkReading(read, c);
        VideoInputVideoFile sought(directory / c.name);
        checkSeeking(sought);
    }
}

TEST_F(VideoFile, PixelsArriveExactlyInTheCallersOwnMemory) {
    for (const Case& c : {Case{"even.mkv", "-c:v ffv1"}, Case{"odd.avi", "-c:v ffv1", true, "25", 67, 49}}) {
        VideoInputVideoFile in(media(c));
        Image<unsigned char> memory = test::numberedFrame(0, c.width, c.height);
        Image<unsigned char> wrapping = Ko::wrapRectangle(memory, 0, 0, memory.width, memory.height);
        Image<unsigned char> owning = memory;
        const unsigned char* data = owning.plane[0].data;
        for (int i = 0; i < 6; ++i) {
            Image<unsigned char>& target = i % 2 == 0 ? owning : wrapping;
            ASSERT_TRUE(in.read(target));
            for (int p = 0; p < 3; ++p)
                EXPECT_EQ(samples(target, p), samples(test::numberedFrame(i, c.width, c.height), p));
        }
        EXPECT_EQ(wrapping.plane[0].rows[1], memory.plane[0].rows[1]);
        EXPECT_EQ(owning.plane[0].data, data) << "a frame costs no new memory";
    }
}

TEST_F(VideoFile, AStreamWithoutTimeStampsIsOnlyRewound) {
    const std::string file = media({"raw.h264", "-c:v libx264 -g 9"});
    VideoInputVideoFile in(file);
    positions(in);
    EXPECT_EQ(nextIndex(in), -2);
    EXPECT_TRUE(in.eof());
    EXPECT_LT(in.getLength(), 0);
    EXPECT_EQ(in.seek(5, Ko::VP_END), 0);
    EXPECT_FALSE(in.eof());
    in.setLoop(true);
    for (int i = 0; i <= frameCount; ++i)
        EXPECT_EQ(nextIndex(in), i % frameCount);
    EXPECT_EQ(thrownText<std::runtime_error>([&] { in.seek(1, Ko::VP_BEGIN); }),
              "[VideoInputVideoFile::seek]: " + file + ": error while seeking.");
    EXPECT_EQ(nextIndex(in), 1);
}

TEST_F(VideoFile, AFormatThatCannotBeConvertedIntoCostsThePicture) {
    VideoInputVideoFile in(media(cases[0]));
    Image<unsigned char> rgb(Ko::PF_RGB);
    EXPECT_THROW(in.read(rgb), std::logic_error);
    EXPECT_EQ(rgb.width, 64u);
    EXPECT_EQ(in.tell(), 1);
    EXPECT_EQ(nextIndex(in), 1);
}

TEST_F(VideoFile, PicturesOfAnotherSizeOrFormatMidway) {
    // The decoder drops what it holds back when the size changes; here it holds back nothing.
    const std::string options = "-c:v mpeg2video -q:v 2 -flags +low_delay";
    const std::string part = directory / "part.ts";
    std::string bytes;
    for (const int kind : {0, 1, 2}) {
        test::encodeNumbered(part, {64 + 32 * kind, 48 + 32 * kind, 12, "25", 12 * kind},
                             options + (kind == 2 ? " -pix_fmt yuv422p" : ""));
        bytes += test::fileBytes(part);
    }
    VideoInputVideoFile in(directory.write("joined.ts", bytes));
    Image<unsigned char> frame(Ko::PF_YCC444P);
    for (int i = 0; i < 24; ++i) {
        EXPECT_EQ(in.getWidth(), i <= 12 ? 64u : 96u);
        ASSERT_TRUE(in.read(frame));
        EXPECT_EQ(test::frameIndex(frame), i);
        EXPECT_EQ(frame.height, i < 12 ? 48u : 80u);
    }
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(thrownText<std::runtime_error>([&] { in.read(frame); }),
                  "[VideoInputVideoFile::open]: Input pixel format of stream is not supported.");
    EXPECT_FALSE(in.read(frame));
}

} // namespace
