// SPDX-License-Identifier: BSD-2-Clause
// Pictures of any pixel format: every one that libav describes, straight from memory, and files as phones, cameras and
// editors make them. What is expected is computed sample by sample from libav's own reading of each format.
#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoInput.h"
#include "image/kernels/KernelLevels.h"
#include "libav/Handles.h"
#include "support/Allocations.h"
#include "support/Commands.h"
#include "support/ConversionOracle.h"
#include "support/Rows.h"
#include "support/VideoMedia.h"
#include "videoin/ConvertStored.h"
#include "videoin/StreamColor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace {

using Ko::Image;
using Ko::VideoInputVideoFile;
using testing::ThrowsMessage;

unsigned char toByte(double v) {
    return static_cast<unsigned char>(std::min(255.0, std::floor(v + 0.5)));
}

/// A sample of Y'CbCr or grey in eight bits, studio range.
unsigned char studioSample(int component, int v, int depth, bool full) {
    const double all = std::pow(2, depth) - 1;
    if (!full)
        return toByte(v / std::pow(2, depth - 8));
    if (depth == 8)
        return test::studioFromFull(v, v, v)[static_cast<std::size_t>(component)];
    return component == 0 ? toByte(219 * v / all + 16) : toByte(224 * (v - std::pow(2, depth - 1)) / all + 128);
}

/// What a picture has to become in PF_YCC444P.
Image<> expectedOf(const AVFrame& picture, bool full) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    const bool palette = (format.flags & AV_PIX_FMT_FLAG_PAL) != 0;
    const bool rgb = palette || (format.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    Image<> expected(Ko::PF_YCC444P);
    expected.size(static_cast<unsigned>(picture.width), static_cast<unsigned>(picture.height));
    const std::uint8_t* data[4];
    std::copy_n(picture.data, 4, data);
    for (int y = 0; y < picture.height; ++y) {
        std::vector<std::uint16_t> line[3];
        const int components = format.nb_components < 3 ? 1 : 3;
        for (int c = 0; c < components; ++c) {
            line[c].resize(static_cast<std::size_t>(picture.width));
            const bool chroma = !rgb && c > 0;
            av_read_image_line2(line[c].data(), data, picture.linesize, &format, 0,
                                chroma ? y >> format.log2_chroma_h : y, c,
                                chroma ? AV_CEIL_RSHIFT(picture.width, format.log2_chroma_w) : picture.width, 0, 2);
        }
        for (std::size_t x = 0; x < expected.width; ++x) {
            test::Triple pixel = {0, 128, 128};
            if (palette) {
                const std::uint8_t* color = picture.data[1] + 4 * line[0][x];
                pixel = test::studioFromRgb(color[2], color[1], color[0]);
            } else if (rgb) {
                const auto eight = [&](int c) {
                    return toByte(255 * line[c][x] / (std::pow(2, format.comp[c].depth) - 1));
                };
                pixel = test::studioFromRgb(eight(0), eight(1), eight(2));
            } else
                for (int c = 0; c < components; ++c)
                    pixel[static_cast<std::size_t>(c)] =
                        studioSample(c, line[c][c == 0 ? x : x >> format.log2_chroma_w], format.comp[c].depth, full);
            for (int p = 0; p < 3; ++p)
                expected.plane[p].row(static_cast<unsigned>(y))[x] = pixel[static_cast<std::size_t>(p)];
        }
    }
    return expected;
}

/// A picture of random bytes in memory that ends where its last sample does, upside down or not.
class RandomPicture {
public:
    RandomPicture(AVPixelFormat format, int width, int height, bool upsideDown) {
        static std::mt19937 random(11);
        const AVPixFmtDescriptor& about = *av_pix_fmt_desc_get(format);
        const AVComponentDescriptor& first = about.comp[0];
        const bool inLowBits = first.depth > 8 && first.shift == 0; // those above are 0
        const unsigned upper = inLowBits ? (1U << (first.depth - 8)) - 1 : 255;
        const std::size_t bigEnd = (about.flags & AV_PIX_FMT_FLAG_BE) != 0 ? 0 : 1;
        frame->format = format;
        frame->width = width;
        frame->height = height;
        av_image_fill_linesizes(frame->linesize, format, width);
        std::ptrdiff_t strides[4];
        std::copy_n(frame->linesize, 4, strides);
        std::size_t sizes[4] = {};
        av_image_fill_plane_sizes(sizes, format, height, strides);
        for (int p = 0; p < 4; ++p) {
            if (sizes[p] == 0)
                continue;
            memory[p] = std::make_unique<std::uint8_t[]>(sizes[p]);
            for (std::size_t i = 0; i < sizes[p]; ++i)
                memory[p][i] = static_cast<std::uint8_t>(random() >> 3 & (i % 2 == bigEnd ? upper : 255));
            frame->data[p] = memory[p].get();
            if (upsideDown && strides[p] != 0) {
                frame->data[p] += static_cast<std::ptrdiff_t>(sizes[p]) - strides[p];
                frame->linesize[p] = -frame->linesize[p];
            }
        }
    }

    const Ko::libav::FrameHandle frame{av_frame_alloc()};

private:
    std::unique_ptr<std::uint8_t[]> memory[4];
};

class KernelLevels : public testing::TestWithParam<Ko::KernelLevel> {};
INSTANTIATE_TEST_SUITE_P(All, KernelLevels,
                         testing::Values(Ko::KernelLevel::portable, Ko::KernelLevel::sse4, Ko::KernelLevel::avx2,
                                         Ko::KernelLevel::avx512));

TEST_P(KernelLevels, ConvertEveryPixelFormatExactly) {
    if (!Ko::useKernels(GetParam()))
        GTEST_SKIP() << "this processor does not have the level";
    constexpr std::uint64_t foreign =
        AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;
    int taken = 0;
    for (const AVPixFmtDescriptor* each = nullptr; (each = av_pix_fmt_desc_next(each));) {
        const std::string name = each->name;
        const AVPixelFormat format = av_pix_fmt_desc_get_id(each);
        const bool odd = name.substr(0, 3) == "xyz" || name == "uyyvyy411" || each->comp[0].depth > 16;
        const auto stored = Ko::storedFormatOf(format, Ko::CR_UNKNOWN);
        ASSERT_EQ(stored.has_value(), (each->flags & foreign) == 0 && !odd) << name;
        if (!stored)
            continue;
        ++taken;
        const bool grey = each->nb_components < 3;
        Ko::RowRoom room;
        for (const auto& [width, height] : {std::pair(131, 6), {1, 1}, {1, 2}, {3, 3}, {38, 5}})
            for (const Ko::ColorRange range : {Ko::CR_UNKNOWN, Ko::CR_STUDIO, Ko::CR_FULL}) {
                const RandomPicture picture(format, width, height, range == Ko::CR_STUDIO);
                const Image<> expected =
                    expectedOf(*picture.frame, range == Ko::CR_FULL || (grey && range == Ko::CR_UNKNOWN));
                const std::string what =
                    name + std::to_string(width) + "x" + std::to_string(height) + " range " + std::to_string(range);
                Image<> full(Ko::PF_YCC444P), halved(Ko::PF_YCC420P);
                test::WrappedImage apart(Ko::PF_YCC420P, expected.width, expected.height);
                for (Image<>* target : {&full, &halved, &apart.im}) {
                    Ko::convertStored(*target, *picture.frame, *Ko::storedFormatOf(format, range), room);
                    ASSERT_EQ(test::difference(*target, test::inFormat(target->format, expected)), "") << what;
                }
                ASSERT_TRUE(apart.intact()) << what;
            }
    }
    EXPECT_GT(taken, 150);
}

/// As xv30le of later libav: U in the lowest ten bits of a word of 32, then Y, then V.
TEST(AnyFormat, ComponentsThatShareAWordAreToldApart) {
    std::uint32_t words[6];
    std::fill_n(words, 6, 0xC0000000U | 300U << 20 | 700U << 10 | 400U);
    const Ko::libav::FrameHandle picture(av_frame_alloc());
    picture->width = 3;
    picture->height = 2;
    picture->data[0] = reinterpret_cast<std::uint8_t*>(words);
    picture->linesize[0] = 12;
    Ko::RowRoom room;
    for (const bool all : {false, true}) {
        const Ko::StoredFormat format{
            Ko::StoredFormat::Kind::ycc, all, false, 0, 0, {{0, 1, 4, 2, 10}, {0, 0, 4, 0, 10}, {0, 2, 4, 4, 10}}};
        Image<> frame(Ko::PF_YCC444P);
        Ko::convertStored(frame, *picture, format, room);
        const int samples[] = {700, 400, 300};
        for (int p = 0; p < 3; ++p)
            EXPECT_EQ(frame.plane[p].row(1)[2], studioSample(p, samples[p], 10, all)) << p;
    }
}

/// What people hand in.
struct Stream : test::Row {
    const char* name;
    const char* options;
    const char* pixelFormat; ///< Of the decoder.
    Ko::ColorRange range = Ko::CR_UNKNOWN;
    Ko::ColorMatrix matrix = Ko::CM_UNKNOWN;
    bool byDefault = false; ///< Opens without the setter too.
};
constexpr auto studio = Ko::CR_STUDIO;
constexpr auto full = Ko::CR_FULL;

const Stream streams[] = {
    {{"H264"},
     "a.mp4",
     "libx264 -pix_fmt yuv420p -color_range tv -colorspace bt709",
     "yuv420p",
     studio,
     Ko::CM_BT709,
     true},
    {{"PhoneFullRange"},
     "a.mp4",
     "libx264 -pix_fmt yuvj420p -color_range pc -colorspace smpte170m",
     "yuvj420p",
     full,
     Ko::CM_BT601},
    {{"PhoneHdr"},
     "a.mov",
     "libx265 -x265-params log-level=none -pix_fmt yuv420p10le -color_range tv -colorspace bt2020nc",
     "yuv420p10le",
     studio,
     Ko::CM_BT2020},
    {{"TaggedFullRange"}, "a.mkv", "ffv1 -pix_fmt yuv420p -color_range pc", "yuv420p", full, Ko::CM_UNKNOWN, true},
    {{"ProRes422"}, "a.mov", "prores_ks -pix_fmt yuv422p10le", "yuv422p10le", studio},
    {{"ProRes4444"}, "a.mov", "prores_ks -pix_fmt yuva444p10le", "yuva444p12le", studio},
    {{"DnxHr"},
     "a.mov",
     "dnxhd -profile:v dnxhr_hqx -pix_fmt yuv422p10le -s 256x120",
     "yuv422p10le",
     studio,
     Ko::CM_BT709},
    {{"Mjpeg422"}, "a.avi", "mjpeg -pix_fmt yuvj422p", "yuvj422p", full, Ko::CM_BT601, true},
    {{"Mjpeg420"}, "a.avi", "mjpeg -pix_fmt yuvj420p", "yuvj420p", full, Ko::CM_BT601},
    {{"Mjpeg444"}, "a.avi", "mjpeg -pix_fmt yuvj444p", "yuvj444p", full, Ko::CM_BT601},
    {{"Screen444"}, "a.mkv", "libx264 -qp 0 -pix_fmt yuv444p -color_range tv", "yuv444p", studio},
    {{"ScreenRgb"}, "a.mkv", "libx264rgb -qp 0", "gbrp", full, Ko::CM_BT601},
    {{"Broadcast422"}, "a.mpg", "mpeg2video -pix_fmt yuv422p -color_range tv", "yuv422p", studio},
    {{"Vp9Profile2"}, "a.webm", "libvpx-vp9 -pix_fmt yuv420p12le -color_range tv", "yuv420p12le", studio},
    {{"ArchiveRgb"}, "a.mkv", "ffv1 -pix_fmt bgr0", "bgr0", full, Ko::CM_BT601},
    {{"ArchiveGrey"}, "a.mkv", "ffv1 -pix_fmt gray -color_range pc", "gray", full},
    {{"Microscope"}, "a.mkv", "ffv1 -vf format=gray12le,setparams=range=tv -color_range tv", "gray12le", studio},
    {{"Png"}, "a.mov", "png -pix_fmt rgba", "rgba", full, Ko::CM_BT601},
    {{"Png16"}, "a.mov", "png -pix_fmt rgb48be", "rgb48be", full, Ko::CM_BT601},
    {{"Gif"}, "a.gif", "gif", "bgra", full, Ko::CM_BT601},
    {{"Palette"}, "a.avi", "rawvideo -pix_fmt pal8", "pal8", full, Ko::CM_BT601},
    {{"Nv12"}, "a.avi", "rawvideo -pix_fmt nv12", "nv12"},
    {{"Yuyv"}, "a.avi", "rawvideo -pix_fmt yuyv422", "yuyv422"},
    {{"Dv"}, "a.avi", "dvvideo -s 720x480 -r 30000/1001 -pix_fmt yuv411p", "yuv411p"},
};

std::string fileOf(const test::TempDirectory& directory, const char* name, const std::string& codec) {
    std::mt19937 random(5);
    std::string noise(66 * 50 * 6 * 4, '\0');
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random() >> 7); });
    const std::string file = directory / name;
    test::outputOf("ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt yuv444p16le -s 66x50 -i '" +
                   directory.write("noise", noise) + "' -c:v " + codec + " '" + file + "'");
    return file;
}

class Streams : public testing::TestWithParam<Stream> {};
INSTANTIATE_TEST_SUITE_P(All, Streams, testing::ValuesIn(streams), test::rowName);

/// The pictures as the ffmpeg program decodes them, which converts nothing.
TEST_P(Streams, AreReadExactlyIntoEveryFormat) {
    const Stream& stream = GetParam();
    const test::TempDirectory directory;
    const std::string file = fileOf(directory, stream.name, stream.options);
    VideoInputVideoFile in;
    const auto open = [&] {
        in.open(file);
    };
    if (stream.byDefault)
        open();
    else
        EXPECT_THAT(open, ThrowsMessage<std::runtime_error>(
                              "[VideoInputVideoFile::open]: Input pixel format of stream is not supported."));
    in.setAnyFormat(true).open(file);
    // Whether ProRes, which has one range only, is said to tell it depends on FFmpeg's version.
    const bool silent = std::string(stream.options).find("prores") == 0 && in.getColorRange() == Ko::CR_UNKNOWN;
    EXPECT_EQ(in.getColorRange(), silent ? Ko::CR_UNKNOWN : stream.range);
    EXPECT_EQ(in.getColorMatrix(), stream.matrix);

    std::string raw = test::outputOf("ffmpeg -nostdin -v error -i '" + file + "' -fps_mode passthrough -f rawvideo -");
    const Ko::libav::FrameHandle picture(av_frame_alloc());
    picture->format = av_get_pix_fmt(stream.pixelFormat);
    picture->width = static_cast<int>(in.getWidth());
    picture->height = static_cast<int>(in.getHeight());
    std::vector<Image<>> expected;
    while (!raw.empty()) {
        const int size =
            av_image_fill_arrays(picture->data, picture->linesize, reinterpret_cast<const std::uint8_t*>(raw.data()),
                                 static_cast<AVPixelFormat>(picture->format), picture->width, picture->height, 1);
        ASSERT_TRUE(size > 0 && static_cast<std::size_t>(size) <= raw.size()) << "decoded to another format";
        expected.push_back(expectedOf(*picture, stream.range == full));
        raw.erase(0, static_cast<std::size_t>(size));
    }
    ASSERT_GE(expected.size(), 4u);

    in.setLoop(true);
    std::size_t before = 0; // what pixels take
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_YCC444P, Ko::PF_YCC420P, Ko::PF_RGB, Ko::PF_Y, Ko::PF_YCC444P}) {
        Image<> frame(format);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_TRUE(in.read(frame));
            EXPECT_EQ(test::difference(frame, test::inFormat(format, expected[i])), "") << i;
        }
        in.read(frame);
        before = test::bigAllocations();
        for (std::size_t i = 1; i < expected.size(); ++i)
            in.read(frame);
        EXPECT_EQ(test::bigAllocations(), before) << "a frame costs memory";
    }
    in.setLoop(false);
    Image<> frame(Ko::PF_YCC444P);
    in.seek(0, Ko::VP_BEGIN);
    in.read(frame);
    in.seek(in.tell(), Ko::VP_BEGIN);
    in.read(frame);
    EXPECT_EQ(test::difference(frame, expected[1]), "") << "sought";
    Image<> foreign(Ko::PF_YAP);
    EXPECT_THAT([&] { in.read(foreign); },
                ThrowsMessage<std::logic_error>("[convertIm]: Don't know how to convert from PF_YCC444P (Planar Y'CbCr "
                                                "4:4:4) to PF_YAP (Planar grayscale with alpha)."));
    EXPECT_EQ(in.getError(), "");
}

TEST(AnyFormat, WhatStaysRefusedIsNamed) {
    const std::string refusal = "[VideoInputVideoFile::open]: Input pixel format of stream is not supported.";
    const test::TempDirectory directory;
    const std::string file = fileOf(directory, "a.nut", "rawvideo -pix_fmt xyz12le");
    VideoInputVideoFile in;
    for (const bool any : {true, false, true})
        EXPECT_THAT([&] { in.setAnyFormat(any).open(file); },
                    ThrowsMessage<std::runtime_error>(refusal + (any ? " (xyz12le)" : "")));

    const std::string colors = test::fileBytes(fileOf(directory, "a.png", "png -pix_fmt rgb24 -frames:v 1"));
    const std::string bits = test::fileBytes(fileOf(directory, "b.png", "png -pix_fmt monob -frames:v 1"));
    in.setFormat("png_pipe");
    in.open(directory.write("ab.png", colors + bits));
    Image<> frame(Ko::PF_YCC444P);
    EXPECT_TRUE(in.read(frame));
    EXPECT_THAT([&] { in.read(frame); }, ThrowsMessage<std::runtime_error>(refusal + " (monob)"));
}

TEST(AnyFormat, JpegsFormatsAreFullRangeWhereNothingIsSaid) {
    EXPECT_EQ(Ko::colorRangeOf(AV_PIX_FMT_YUVJ420P, AVCOL_RANGE_UNSPECIFIED), Ko::CR_FULL);
    EXPECT_EQ(Ko::colorRangeOf(AV_PIX_FMT_YUV420P, AVCOL_RANGE_UNSPECIFIED), Ko::CR_UNKNOWN);
}

} // namespace
