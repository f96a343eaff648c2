// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInput.h"
#include "Kovanta/Wrap.h"
#include "support/Commands.h"
#include "support/Rows.h"
#include "support/TestImages.h"
#include "support/VideoMedia.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Ko::Image;
using Ko::VideoInputVideoFile;
using test::samples;
using testing::ThrowsMessage;

/// What one file is made of.
struct Case : test::Row {
    const char* extension;
    const char* options;
    bool ticksAreFrames = false; ///< The k-th picture's time is k.
    const char* rate = "25";
    const char* inputs = "";
};

constexpr const char* sound = "-f lavfi -i sine=d=1 ";

const Case cases[] = {
    {{"Mpeg4InAvi"}, "avi", "-c:v mpeg4 -g 8", true, "24"},
    {{"ClosedGroupsInAvi"}, "avi", "-c:v mpeg4 -g 8 -bf 2 -flags +cgop -sc_threshold 1000000000", true},
    {{"OpenGroupsInAvi"}, "avi", "-c:v mpeg4 -g 8 -bf 2", true},
    {{"Mpeg2InAvi"}, "avi", "-c:v mpeg2video -g 8 -bf 2", true, "30000/1001"},
    {{"H264InAvi"}, "avi", "-c:v libx264 -g 9 -bf 3", true, "30000/1001"},
    {{"H264OpenGroupsInAvi"}, "avi", "-c:v libx264 -g 7 -sc_threshold 0 -bf 3 -x264-params open-gop=1", true},
    {{"Jpeg422InAvi"}, "avi", "-c:v mjpeg -pix_fmt yuvj422p -q:v 2", true},
    {{"SoundFirstInAvi"}, "avi", "-map 0:a -map 1:v -c:a mp2 -c:v mpeg4 -g 8", true, "25", sound},
    {{"Mpeg2InAsf"}, "asf", "-c:v mpeg2video -g 8 -bf 2", false, "24"},
    {{"H264InMp4"}, "mp4", "-c:v libx264 -g 9 -bf 3", false, "30000/1001"},
    {{"Fragments"}, "mp4", "-c:v libx264 -g 9 -bf 3 -movflags frag_keyframe+empty_moov"},
    {{"HourLateInMp4"}, "mp4", "-c:v libx264 -g 9 -bf 3 -output_ts_offset 3600"},
    {{"H264InMkv"}, "mkv", "-c:v libx264 -g 9 -bf 3", false, "24"},
    {{"OneKeyFrame"}, "mkv", "-c:v libx264 -g 999 -keyint_min 999 -sc_threshold 0 -bf 3", false, "30000/1001"},
    {{"H264OpenGroupsInMkv"}, "mkv", "-c:v libx264 -g 7 -sc_threshold 0 -bf 3 -x264-params open-gop=1"},
    {{"Mpeg2InTs"}, "ts", "-c:v mpeg2video -bf 2 -g 9", false, "30000/1001"},
    {{"DayLateInTs"}, "ts", "-c:v mpeg2video -g 9 -bf 2 -output_ts_offset 86400"},
    {{"StampsWrapInTs"}, "ts", "-c:v libx264 -g 9 -bf 3 -output_ts_offset 95441.5"},
    // Entered between key frames, or where nothing tells the time.
    {{"Mpeg4InTs"}, "ts", "-c:v mpeg4 -g 8"},
    {{"H265InTs"}, "ts", "-c:v libx265 -g 9 -x265-params log-level=none"},
    {{"H264InMpg"}, "mpg", "-c:v libx264 -g 9 -bf 3 -qp 1 -muxdelay 0 -muxpreload 0"},
    // The gaps between its few stamps look like half the rate.
    {{"H264WithFewStampsInMpg"}, "mpg", "-c:v libx264 -g 6 -bf 3 -qp 2 -muxdelay 0 -muxpreload 0"},
    {{"Mpeg2InMpg"}, "mpg", "-c:v mpeg2video -bf 2"}, // its length is too short by some pictures
    {{"Vp8InWebm"}, "webm", "-c:v libvpx -g 9"},
    {{"TheoraInOgv"}, "ogv", "-c:v libtheora -g 9 -q:v 9", true},
    {{"H264InFlv"}, "flv", "-c:v libx264 -g 9 -bf 3"},
};
constexpr int frameCount = 33;

/// The index of the next frame, or -2 at the end.
int nextIndex(Ko::VideoInput& in) {
    Image frame(Ko::PF_YCC444P);
    return in.read(frame) ? test::frameIndex(frame) : -2;
}

/// The position after each frame, which must all come, in order.
std::vector<long> positions(VideoInputVideoFile& in, const std::vector<int>& expected) {
    std::vector<long> after;
    for (const int index : expected) {
        EXPECT_FALSE(in.eof());
        EXPECT_EQ(nextIndex(in), index);
        EXPECT_EQ(in.getFrameNumber(), index - expected.front() + 1);
        EXPECT_TRUE(after.empty() || in.tell() > after.back()) << in.tell() << " after frame " << index;
        after.push_back(in.tell());
    }
    return after;
}

/// Every frame comes once, in order; then come the end and two rounds of the loop.
std::vector<long> checkReading(VideoInputVideoFile& in, const std::vector<int>& expected) {
    EXPECT_EQ(in.tell(), 0);
    const std::vector<long> after = positions(in, expected);
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(nextIndex(in), -2);
        EXPECT_TRUE(in.eof());
        EXPECT_EQ(in.tell(), after.back());
    }
    in.setLoop(true);
    for (int round = 0; round < 2; ++round)
        for (const int index : expected) {
            EXPECT_EQ(nextIndex(in), index) << "round " << round;
            const bool atEnd = index == expected.back() && after.back() == after.front() - 1 + in.getLength();
            EXPECT_TRUE(!atEnd || in.tell() == 0) << in.tell();
        }
    in.setLoop(false);
    return after;
}

/// After a seek the next frame is the one that tell() names, from every place and by every origin.
void checkSeeking(VideoInputVideoFile& in, const std::vector<int>& expected, const std::vector<long>& after,
                  bool counted = false) {
    const long length = in.getLength();
    const long start = after.front() - 1;
    auto check = [&](long offset, Ko::VideoPosId origin, bool beginning, long target) {
        SCOPED_TRACE(testing::Message() << "to " << target << " by origin " << origin);
        const auto at = std::lower_bound(after.begin(), after.end(), target);
        const long named = beginning ? 0 : at == after.end() ? after.back() : *at;
        EXPECT_EQ(in.seek(offset, origin), named);
        EXPECT_EQ(in.tell(), named);
        const auto next = static_cast<std::size_t>(
            beginning ? 0 : std::upper_bound(after.begin(), after.end(), named) - after.begin());
        EXPECT_EQ(nextIndex(in), next < expected.size() ? expected[next] : -2);
        EXPECT_EQ(in.tell(), next < expected.size() ? after[next] : named);
        const auto number = static_cast<long>(std::min(next + 1, expected.size()));
        EXPECT_TRUE(in.getFrameNumber() == number || (in.getFrameNumber() == -1 && !counted)) << in.getFrameNumber();
    };
    // Forward and backward, at, before and behind every position.
    std::vector<long> targets = after;
    targets.insert(targets.end(), after.rbegin(), after.rend());
    for (const long at : targets) {
        if (at > 0) // what lies before 0 can only be read
            check(at, Ko::VP_BEGIN, false, at);
        if (in.tell() > 0)
            check(at + 1 - in.tell(), Ko::VP_CURRENT, at + 1 <= 0, at + 1);
        const long fromEnd = start + length - at;
        check(fromEnd, Ko::VP_END, fromEnd >= length || at <= 0, fromEnd <= 0 ? LONG_MAX : at);
    }
    for (const Ko::VideoPosId origin : {Ko::VP_BEGIN, Ko::VP_CURRENT}) {
        check(LONG_MAX, origin, false, LONG_MAX);
        check(LONG_MIN, origin, true, 0);
    }
    check(LONG_MIN, Ko::VP_END, false, LONG_MAX);
    check(length, Ko::VP_END, true, 0);
    const long before = in.tell();
    EXPECT_THAT([&] { in.seek(1, static_cast<Ko::VideoPosId>(3)); },
                ThrowsMessage<std::logic_error>("[VideoInputVideoFile::seek]: Erroneous position indicator given!"));
    EXPECT_EQ(in.tell(), before);
}

class VideoFileOf : public testing::TestWithParam<Case> {
protected:
    VideoFileOf() {
        test::encodeNumbered(file, {64, 48, frameCount, GetParam().rate}, GetParam().options, GetParam().inputs);
    }
    const test::TempDirectory directory;
    const std::string file = directory / (std::string("video.") + GetParam().extension);
};
INSTANTIATE_TEST_SUITE_P(Every, VideoFileOf, testing::ValuesIn(cases), test::rowName);

TEST_P(VideoFileOf, IsReadInOrderAndSought) {
    VideoInputVideoFile in(file);
    EXPECT_EQ(in.getWidth(), 64u);
    EXPECT_EQ(in.getHeight(), 48u);
    const Ko::Frac<unsigned int> rate = in.getFrameRate();
    EXPECT_EQ(std::to_string(rate.num) + (rate.den == 1 ? "" : "/" + std::to_string(rate.den)), GetParam().rate);
    const std::vector<long> after = checkReading(in, test::indices(frameCount));
    for (int i = 0; GetParam().ticksAreFrames && i < frameCount; ++i)
        EXPECT_EQ(after[static_cast<std::size_t>(i)], i + 1);
    EXPECT_TRUE(!GetParam().ticksAreFrames || in.getLength() == frameCount);
    VideoInputVideoFile sought(file);
    checkSeeking(sought, test::indices(frameCount), after, GetParam().ticksAreFrames);
    // The rate is constant, but that not every container's ticks are as fine.
    const Ko::Frac<unsigned int> tick = in.getTimeBase();
    for (std::size_t i = 0; i < after.size(); ++i) {
        const double time = in.seconds(after[i] - 1);
        EXPECT_NEAR(time, double(i) * rate.den / rate.num, 1.0 * tick.num / tick.den);
        const long target = sought.position(time);
        sought.seek(target, Ko::VP_BEGIN);
        EXPECT_EQ(nextIndex(sought), target > 0 ? int(i) : 0); // what lies before 0 can only be read
        EXPECT_TRUE(target > 0 || i == 0 || after[0] < 0) << i;
    }
    EXPECT_EQ(in.getError() + sought.getError(), "");
}

class VideoFile : public testing::Test {
protected:
    std::string media(const std::string& name, const std::string& options, test::NumberedFrames frames = {}) const {
        frames.count = frameCount;
        test::encodeNumbered(directory / name, frames, options);
        return directory / name;
    }
    const test::TempDirectory directory;
};

TEST_F(VideoFile, AnEditListIsObeyed) {
    std::string mp4 = test::fileBytes(media("whole.mp4", "-c:v libx264 -g 9 -bf 3"));
    // 800 ms from tick 3584 on, which is the sixth picture: there are 512 ticks each, from 1024 on.
    mp4.replace(mp4.find("elst") + 12, 8, std::string("\0\0\x03\x20\0\0\x0E\0", 8));
    VideoInputVideoFile in(directory.write("cut.mp4", mp4));
    checkSeeking(in, test::indices(20, 5), checkReading(in, test::indices(20, 5)));
}

/// As the ffmpeg program turns pictures, which obeys the matrix as well.
TEST_F(VideoFile, IsTurnedAsTheDisplayMatrixSays) {
    const std::string upright = test::fileBytes(media("upright.mp4", "-c:v libx264 -qp 0"));
    const std::size_t matrix = upright.find("tkhd") + 44;
    const struct {
        Ko::Orientation orientation;
        int xx, yx, xy, yy;
    } turns[] = {{Ko::OR_UPRIGHT, 1, 0, 0, 1},           {Ko::OR_MIRRORED, -1, 0, 0, 1},
                 {Ko::OR_ROTATED_180, -1, 0, 0, -1},     {Ko::OR_FLIPPED, 1, 0, 0, -1},
                 {Ko::OR_TRANSPOSED, 0, 1, 1, 0},        {Ko::OR_ROTATED_90, 0, 1, -1, 0},
                 {Ko::OR_ANTI_TRANSPOSED, 0, -1, -1, 0}, {Ko::OR_ROTATED_270, 0, -1, 1, 0}};
    for (const auto& turn : turns) {
        std::string bytes = upright;
        const int values[] = {turn.xx, turn.yx, 0, turn.xy, turn.yy};
        for (std::size_t i = 0; i < 5; ++i) // 16.16, big end first
            bytes.replace(matrix + 4 * i, 4,
                          values[i] < 0 ? std::string("\xff\xff\0\0", 4)
                                        : std::string{'\0', char(values[i]), '\0', '\0'});
        const std::string file = directory.write("turned.mp4", bytes);
        VideoInputVideoFile in(file);
        EXPECT_EQ(in.getOrientation(), turn.orientation);
        Image stored(Ko::PF_YCC420P), shown(Ko::PF_YCC420P);
        in.read(stored);
        Ko::rotate(shown, stored, in.getOrientation());
        std::string planes;
        for (const auto& plane : shown.plane)
            for (unsigned y = 0; plane.rows && y < plane.height; ++y)
                planes.append(plane.row(y), plane.row(y) + plane.width);
        EXPECT_TRUE(planes == test::outputOf("ffmpeg -nostdin -v error -i '" + file + "' -frames:v 1 -f rawvideo -"))
            << turn.orientation;
    }
}

TEST_F(VideoFile, ACoverPictureIsNotTheVideo) {
    const std::string cover = directory / "cover.jpg";
    test::encodeNumbered(cover, {64, 48, 1}, "-update 1");
    const std::string video = media("video.mp4", "-c:v mpeg4");
    test::encodeNumbered(directory / "both.mp4", {64, 48, 1}, "-map 0 -map 1 -c copy -disposition:v:0 attached_pic",
                         "-i '" + cover + "' -i '" + video + "' ");
    VideoInputVideoFile in(directory / "both.mp4");
    positions(in, test::indices(frameCount));
    EXPECT_EQ(nextIndex(in), -2);
}

TEST_F(VideoFile, NamesWithAColonAreFilesWhereNoProtocolIsCalledSo) {
    std::filesystem::rename(media("plain.avi", "-c:v mpeg4"), directory / "cam1:front.avi");
    const std::filesystem::path home = std::filesystem::current_path();
    std::filesystem::current_path(directory.path());
    for (const char* name : {"cam1:front.avi", "file:cam1:front.avi"})
        EXPECT_EQ(nextIndex(*std::make_unique<VideoInputVideoFile>(name)), 0);
    std::filesystem::current_path(home);
}

TEST_F(VideoFile, PixelsArriveExactlyInTheCallersOwnMemory) {
    VideoInputVideoFile in(media("odd.avi", "-c:v ffv1", {67, 49}));
    Image memory = test::numberedFrame(0, 67, 49);
    auto at = [&](int p) -> Ko::PlaneMemory {
        return {memory.plane[p].row(0), memory.plane[p].row(1) - memory.plane[p].row(0)};
    };
    Image wrapping = Ko::wrapMemory(Ko::PF_YCC420P, 67, 49, {at(0), at(1), at(2)});
    Image owning = memory;
    const unsigned char* data = owning.plane[0].data;
    for (int i = 0; i < 6; ++i) {
        Image<>& target = i % 2 == 0 ? owning : wrapping;
        ASSERT_TRUE(in.read(target));
        for (int p = 0; p < 3; ++p)
            EXPECT_EQ(samples(target, p), samples(test::numberedFrame(i, 67, 49), p));
    }
    EXPECT_EQ(wrapping.plane[0].rows[1], memory.plane[0].rows[1]);
    EXPECT_EQ(owning.plane[0].data, data) << "a frame costs no new memory";
}

TEST_F(VideoFile, AnElementaryStreamIsOnlyRewound) {
    for (const auto& [name, options] :
         {std::pair("raw.h264", "-c:v libx264 -g 9"), {"raw.m2v", "-c:v mpeg2video -g 9 -bf 2"}}) {
        SCOPED_TRACE(name);
        const std::string file = media(name, options);
        VideoInputVideoFile in(file);
        for (const int next : {0, 1}) { // a seek that is refused costs no picture
            EXPECT_THAT(
                [&] { in.seek(1, Ko::VP_BEGIN); },
                ThrowsMessage<std::runtime_error>("[VideoInputVideoFile::seek]: " + file + ": error while seeking."));
            EXPECT_EQ(nextIndex(in), next);
        }
        EXPECT_EQ(in.seek(0, Ko::VP_BEGIN), 0);
        checkReading(in, test::indices(frameCount));
        EXPECT_LT(in.getLength(), 0);
        EXPECT_EQ(in.seek(5, Ko::VP_END), 0);
        EXPECT_FALSE(in.eof());
        EXPECT_EQ(nextIndex(in), 0);
    }
}

TEST_F(VideoFile, AFormatThatCannotBeConvertedIntoCostsThePicture) {
    VideoInputVideoFile in(media("video.avi", "-c:v mpeg4"));
    Image rgb(Ko::PF_RGB);
    EXPECT_THROW(in.read(rgb), std::logic_error);
    EXPECT_EQ(rgb.width, 64u);
    EXPECT_EQ(in.tell(), 1);
    EXPECT_EQ(nextIndex(in), 1);
}

TEST_F(VideoFile, PicturesOfAnotherFormatMidway) {
    const std::string options = "-c:v libx264 -qp 0 -bf 0 -pix_fmt ";
    const std::string first = media("a.ts", options + "yuv420p");
    const std::string second = media("b.ts", options + "yuvj422p");
    VideoInputVideoFile in(directory.write("ab.ts", test::fileBytes(first) + test::fileBytes(second)));
    for (const std::string& part : {first, second}) {
        VideoInputVideoFile alone(part);
        Image expected(Ko::PF_YCC444P), frame(Ko::PF_YCC444P);
        for (int i = 0; i < frameCount; ++i) {
            ASSERT_TRUE(alone.read(expected) && in.read(frame));
            ASSERT_EQ(test::difference(frame, expected), "") << part << i;
        }
    }
    EXPECT_EQ(nextIndex(in), -2);
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
    VideoInputVideoFile in;
    Image frame(Ko::PF_YCC444P);
    for (const bool any : {true, false}) {
        in.setAnyFormat(any).open(directory.write("joined.ts", bytes));
        for (int i = 0; i < (any ? 36 : 24); ++i) {
            EXPECT_EQ(in.getWidth(), i <= 12 ? 64u : i <= 24 ? 96u : 128u);
            ASSERT_TRUE(in.read(frame));
            EXPECT_EQ(test::frameIndex(frame), i);
            EXPECT_EQ(frame.height, i < 12 ? 48u : i < 24 ? 80u : 112u);
        }
    }
    for (int i = 0; i < 12; ++i)
        EXPECT_THAT([&] { in.read(frame); },
                    ThrowsMessage<std::runtime_error>(
                        "[VideoInputVideoFile::open]: Input pixel format of stream is not supported."));
    EXPECT_FALSE(in.read(frame));
}

} // namespace
