// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"
#include "support/Rows.h"
#include "support/TempDirectory.h"
#include "support/TestImages.h"
#include "videoout/KnownLeaks.h"
#include "videoout/Programs.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>

// setAnyFormat(): frames and encoders of other formats than 4:2:0, and odd sizes.

namespace {

struct Source : test::Row {
    Ko::PIXEL_FORMAT format;
    unsigned width;
    unsigned height;
};
constexpr Source sources[] = {
    {{"Rgb"}, Ko::PF_RGB, 64, 48},         {{"Rgba"}, Ko::PF_RGBA, 64, 48},
    {{"Jfif"}, Ko::PF_JFIF, 64, 48},       {{"Jfif422"}, Ko::PF_JFIF422P, 64, 48},
    {{"Yuy2"}, Ko::PF_YUY2, 64, 48},       {{"Grey"}, Ko::PF_Y, 64, 48},
    {{"Full"}, Ko::PF_YCC444P, 64, 48},    {{"Halved"}, Ko::PF_YCC420P, 64, 48},
    {{"RgbOdd"}, Ko::PF_RGB, 65, 49},      {{"Yuy2Odd"}, Ko::PF_YUY2, 65, 49},
    {{"FullOdd"}, Ko::PF_YCC444P, 65, 48}, {{"HalvedOdd"}, Ko::PF_YCC420P, 65, 49},
};

std::string bytesOf(const Ko::Image<>& im) {
    std::string bytes;
    for (int p = 0; p < 3; ++p)
        for (unsigned y = 0; y < im.plane[p].height; ++y)
            bytes.append(reinterpret_cast<const char*>(im.plane[p].row(y)), im.plane[p].width);
    return bytes;
}

class Frames : public testing::TestWithParam<Source> {
protected:
    const test::TempDirectory directory;
    const std::string file = directory / "video.mkv";
};
INSTANTIATE_TEST_SUITE_P(Every, Frames, testing::ValuesIn(sources), test::rowName);

TEST_P(Frames, ReachALosslessEncoderAsConvertImWouldBringThem) {
    const auto& [format, width, height] = std::tuple(GetParam().format, GetParam().width, GetParam().height);
    const Ko::Image frame = test::randomImage(format, width, height);
    Ko::VideoOutputVideoFile sink;
    sink.setThrowOnFailure(true).setEncoder("ffv1").setAnyFormat(true).setColor(Ko::CM_BT709, Ko::CR_UNKNOWN);
    sink.open(width, height, file, {25, 1}, 1000000);
    sink.write(frame);
    sink.close();

    Ko::Image full(Ko::PF_YCC444P), halved(Ko::PF_YCC420P), rgb(Ko::PF_RGB);
    Ko::convertIm(full, frame, Ko::CM_BT709);
    if (format == Ko::PF_JFIF || format == Ko::PF_JFIF422P) { // are BT.601
        Ko::convertIm(rgb, full);
        Ko::convertIm(full, rgb, Ko::CM_BT709);
    }
    Ko::convertIm(halved, full);
    const bool odd = width % 2 != 0;
    EXPECT_EQ(test::probe(file, "stream=pix_fmt"), odd ? "yuv444p" : "yuv420p");
    EXPECT_TRUE(test::rawPictures(file, odd ? "yuv444p" : "yuv420p") == bytesOf(odd ? full : halved));
}

struct Encoder : test::Row {
    const char* encoder;
    const char* extension;
    unsigned width;
    unsigned height;
    const char* pixels; ///< Of the file; the exception where there is none.
};
constexpr Encoder encoders[] = {
    {{"H264"}, "libx264", "mp4", 65, 48, "yuv444p"},
    {{"H264Even"}, "libx264", "mp4", 64, 48, "yuv420p"},
    {{"H265"}, "libx265", "mkv", 65, 49, "yuv444p"},
    {{"Mpeg4"}, "mpeg4", "avi", 65, 49, "yuv420p"},
    {{"Vp8"}, "libvpx", "webm", 64, 49, "yuv420p"},
    {{"MotionJpeg"}, "mjpeg", "avi", 64, 48, "yuvj420p"},
    {{"MotionJpegOdd"}, "mjpeg", "avi", 65, 49, "yuvj444p"},
    {{"NotItsFirst"}, "utvideo", "avi", 64, 48, "yuv420p"},
    {{"NoList"},
     "rawvideo",
     "avi",
     65,
     49,
     "[VideoOutputVideoFile::openVideo]: The encoder lists neither 4:2:0 nor 4:4:4 of eight bits."},
    {{"EvenOnly"}, "wmv2", "avi", 65, 49, "[VideoOutputVideoFile::openVideo]: avcodec_open failed."},
    {{"Neither"},
     "prores_ks",
     "mov",
     64,
     48,
     "[VideoOutputVideoFile::openVideo]: The encoder lists neither 4:2:0 nor 4:4:4 of eight bits."},
};
class Encoders : public testing::TestWithParam<Encoder> {};
INSTANTIATE_TEST_SUITE_P(Every, Encoders, testing::ValuesIn(encoders), test::rowName);

/// Each pixel of a plain picture, the last column and row too.
TEST_P(Encoders, KeepTheColorUpToTheLastPixel) {
    const Encoder& e = GetParam();
    const test::TempDirectory directory;
    const std::string file = directory / (std::string("video.") + e.extension);
    constexpr unsigned char color[] = {100, 60, 235};
    Ko::Image frame(Ko::PF_YCC444P);
    frame.size(e.width, e.height);
    for (int p = 0; p < 3; ++p)
        for (unsigned y = 0; y < e.height; ++y)
            std::fill_n(frame.plane[p].row(y), e.width, color[p]);
    std::optional<LeaksAllowed> byLibx265;
    if (e.encoder == std::string("libx265"))
        byLibx265.emplace();
    Ko::VideoOutputVideoFile sink;
    sink.setThrowOnFailure(true).setEncoder(e.encoder).setAnyFormat(true);
    try {
        sink.open(e.width, e.height, file, {25, 1}, 2000000);
    } catch (const std::exception& refusal) {
        EXPECT_STREQ(refusal.what(), e.pixels);
        return;
    }
    for (int n = 0; n < 3; ++n)
        sink.write(frame);
    sink.close();
    EXPECT_EQ(test::probe(file, "stream=pix_fmt"), e.pixels);
    const std::string pictures = test::rawPictures(file, "yuv444p -vf scale=out_range=tv");
    const std::size_t plane = std::size_t{e.width} * e.height;
    ASSERT_EQ(pictures.size(), 3 * 3 * plane);
    for (std::size_t i = 0; i < pictures.size(); ++i)
        ASSERT_LE(std::abs(static_cast<unsigned char>(pictures[i]) - color[i / plane % 3]), 4) << i << " of " << plane;
}

struct Colored : test::Row {
    const char* encoder;
    const char* extension;
    Ko::ColorMatrix matrix;
    Ko::ColorRange range;
    Ko::PIXEL_FORMAT frames;
};
constexpr Colored colored[] = {
    {{"RgbToJpeg"}, "mjpeg", "avi", Ko::CM_BT709, Ko::CR_STUDIO, Ko::PF_RGB},
    {{"HdToJpeg"}, "mjpeg", "mkv", Ko::CM_BT709, Ko::CR_STUDIO, Ko::PF_YCC420P},
    {{"JpegToHd"}, "libx264", "mp4", Ko::CM_BT709, Ko::CR_STUDIO, Ko::PF_JFIF},
    {{"RgbTo444"}, "v308", "mov", Ko::CM_BT709, Ko::CR_UNKNOWN, Ko::PF_RGB},    // which has nothing else
    {{"RgbUntold"}, "ffv1", "mkv", Ko::CM_UNKNOWN, Ko::CR_UNKNOWN, Ko::PF_RGB}, // is BT.601
    {{"RgbToFullRange"}, "libx264", "mp4", Ko::CM_BT2020, Ko::CR_FULL, Ko::PF_RGB},
    {{"HdToFullRange"}, "ffv1", "mkv", Ko::CM_BT709, Ko::CR_FULL, Ko::PF_YCC444P},
};
class Colors : public testing::TestWithParam<Colored> {};
INSTANTIATE_TEST_SUITE_P(Every, Colors, testing::ValuesIn(colored), test::rowName);

TEST_P(Colors, AreThoseOfTheFramesForWhoReadsTheFile) {
    const Colored& c = GetParam();
    const test::TempDirectory directory;
    const std::string file = directory / (std::string("video.") + c.extension);
    constexpr unsigned char color[] = {200, 30, 40};
    Ko::Image rgb(Ko::PF_RGB), full(Ko::PF_YCC444P), frame(c.frames);
    rgb.size(64, 48);
    for (unsigned y = 0; y < 48; ++y)
        for (unsigned i = 0; i < 3 * 64; ++i)
            rgb.plane[0].row(y)[i] = color[i % 3];
    const Ko::ColorMatrix told = c.matrix == Ko::CM_UNKNOWN ? Ko::CM_BT601 : c.matrix;
    Ko::convertIm(full, rgb, c.frames == Ko::PF_JFIF ? Ko::CM_BT601 : told);
    Ko::convertIm(frame, c.frames == Ko::PF_RGB ? rgb : full);
    Ko::VideoOutputVideoFile sink;
    sink.setThrowOnFailure(true).setEncoder(c.encoder).setAnyFormat(true).setColor(c.matrix, c.range);
    sink.open(64, 48, file, {25, 1}, 4000000);
    sink.write(frame);
    sink.close();

    Ko::VideoInputVideoFile source;
    source.setAnyFormat(true).open(file);
    ASSERT_TRUE(source.read(full));
    const bool jpeg = std::string(c.encoder) == "mjpeg";
    Ko::convertIm(rgb, full, jpeg ? Ko::CM_BT601 : told);
    for (unsigned i = 0; i < 3; ++i)
        EXPECT_NEAR(rgb.plane[0].row(20)[3 * 30 + i], color[i], 5) << i;
    EXPECT_EQ(source.getColorMatrix(), jpeg ? Ko::CM_BT601 : c.matrix);
    EXPECT_EQ(source.getColorRange(), jpeg ? Ko::CR_FULL : c.range);
}

TEST(AnyFormat, WhatConvertImDoesNotKnowEndsTheWriterByName) {
    const test::TempDirectory directory;
    Ko::VideoOutputVideoFile sink;
    sink.setThrowOnFailure(true).setAnyFormat(true).open(64, 48, directory / "a.avi", {25, 1}, 1000000);
    const auto write = [&] {
        sink.write(test::randomImage(Ko::PF_BGR, 64, 48)); // throws if the thread was quick
        sink.close();
    };
    EXPECT_THAT(write, testing::ThrowsMessage<std::runtime_error>(
                           "[convertIm]: Don't know how to convert from PF_BGR (Packed BGR) "
                           "to PF_YCC420P (Planar Y'CbCr 4:2:0)."));
}

} // namespace
