// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInput.h"
#include "support/LibavFaults.h"
#include "support/Resources.h"
#include "support/TestImages.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

#include <cerrno>
#include <climits>
#include <new>
#include <string>

namespace {

using Ko::Image;
using Ko::VideoInputVideoFile;
using test::fileBytes;
using test::thrownText;

class VideoFileFaults : public testing::Test {
protected:
    test::TempDirectory directory;
    std::string good = directory / "good.avi";

    void SetUp() override { test::encodeNumbered(good, {64, 48, 10}, "-c:v mpeg4"); }

    std::string make(const std::string& name, const std::string& options, test::NumberedFrames frames = {64, 48, 10}) {
        std::string file = directory / name;
        test::encodeNumbered(file, frames, options);
        return file;
    }
};

int countFrames(Ko::VideoInput& in) {
    Image frame(Ko::PF_YCC444P);
    int count = 0;
    while (in.read(frame))
        EXPECT_EQ(test::frameIndex(frame), count++);
    return count;
}

TEST_F(VideoFileFaults, WhatCannotBeOpenedIsRefusedWithItsReasonAndLeaksNothing) {
    const std::string constructor = "[VideoInputVideoFile::VideoInputVideoFile]: ";
    const std::string format = "[VideoInputVideoFile::open]: Input pixel format of stream is not supported.";
    std::string unknownCodec = fileBytes(good);
    for (std::size_t at = 0; (at = unknownCodec.find("FMP4", at)) != std::string::npos;)
        unknownCodec.replace(at, 4, "ZQZQ");
    const std::string soundOnly = directory / "sound.wav";
    test::encodeNumbered(soundOnly, {64, 48, 1}, "-map 0:a", "-f lavfi -i sine=d=0.2");
    const std::string noVideo = directory.write("text.avi", std::string(5000, 'a'));
    const struct {
        std::string file, message;
    } refusals[] = {
        {"missing.avi", constructor + "Failed to open missing.avi."},
        {"", constructor + "Failed to open ."},
        {noVideo, constructor + "Failed to open " + noVideo + "."},
        {soundOnly, constructor + "Failed to find video stream in " + soundOnly + "."},
        {directory.write("unknown.avi", unknownCodec), constructor + "avcodec_find_decoder failed."},
        {make("rgb.mkv", "-c:v ffv1 -pix_fmt bgr0"), format},
        {make("422.mkv", "-c:v ffv1 -pix_fmt yuv422p"), format},
        {make("full.avi", "-c:v mjpeg -pix_fmt yuvj420p"), format},
    };
    const auto before = test::openDescriptors();
    VideoInputVideoFile used;
    for (const auto& refusal : refusals) {
        EXPECT_EQ(thrownText<std::runtime_error>([&] { VideoInputVideoFile in(refusal.file); }), refusal.message);
        EXPECT_EQ(test::openDescriptors(), before);
        EXPECT_EQ(thrownText<std::runtime_error>([&] { used.open(refusal.file); }), refusal.message);
        Image frame(Ko::PF_YCC444P);
        EXPECT_EQ(thrownText<std::logic_error>([&] { used.read(frame); }), "[VideoInputVideoFile::read]: Not opened.");
        used.open(good);
        EXPECT_EQ(countFrames(used), 10);
        used.close();
        EXPECT_EQ(test::openDescriptors(), before);
    }
}

TEST_F(VideoFileFaults, ClosesAnyNumberOfTimesAndIsThenOfNoUse) {
    VideoInputVideoFile in;
    in.close();
    for (int time = 0; time < 2; ++time) {
        in.open(good); // closes what is open
        EXPECT_EQ(in.tell(), 0);
        EXPECT_EQ(countFrames(in), 10);
    }
    in.close();
    in.close();
    EXPECT_EQ(in.tell(), 0);
    EXPECT_THROW(in.seek(0, Ko::VP_BEGIN), std::logic_error);
    EXPECT_THROW(in.getWidth(), std::logic_error);
    EXPECT_THROW(in.getHeight(), std::logic_error);
    EXPECT_THROW(in.getLength(), std::logic_error);
    EXPECT_THROW(in.getFrameRate(), std::logic_error);
    EXPECT_THROW(in.eof(), std::logic_error);
}

TEST_F(VideoFileFaults, AForcedContainerHoldsUntilItIsLifted) {
    VideoInputVideoFile in;
    in.setFormat("matroska");
    EXPECT_THROW(in.open(good), std::runtime_error);
    EXPECT_EQ(thrownText<std::logic_error>([&] { in.setFormat("no such format"); }),
              "[VideoInputVideoFile::setFormat]: av_find_input_format failed.");
    in.open(good);
    in.setFormat("avi");
    in.open(good);
    EXPECT_EQ(countFrames(in), 10);
}

TEST_F(VideoFileFaults, DamagedPacketsAreSkipped) {
    std::string bytes = fileBytes(make("vp8.avi", "-c:v libvpx -g 1", {64, 48, 20}));
    int packets = 0;
    auto spoil = [&](bool all) {
        packets = 0;
        for (std::size_t at = bytes.find("movi"); (at = bytes.find("00dc", at)) < bytes.find("idx1"); at += 16)
            if (all || packets++ % 4 == 1)
                bytes.replace(at + 8, 8, 8, '\0');
    };
    spoil(false);
    VideoInputVideoFile in(directory.write("spoilt.avi", bytes));
    Image frame(Ko::PF_YCC444P);
    for (int i = 0; i < packets; ++i)
        if (i % 4 != 1) {
            ASSERT_TRUE(in.read(frame));
            EXPECT_EQ(test::frameIndex(frame), i);
            EXPECT_EQ(in.tell(), i + 1);
        }
    EXPECT_FALSE(in.read(frame));
    EXPECT_EQ(packets, 20);
    EXPECT_EQ(in.getError(), "Invalid data found when processing input (damaged packets: 5)");

    // Nothing at all to show: neither a loop nor a seek may search for ever.
    spoil(true);
    in.open(directory.write("spoilt.avi", bytes));
    in.setLoop(true);
    EXPECT_FALSE(in.read(frame));
    EXPECT_EQ(in.seek(7, Ko::VP_BEGIN), 0);
    EXPECT_FALSE(in.read(frame));
    EXPECT_TRUE(in.eof());
}

TEST_F(VideoFileFaults, ADecoderThatRefusesEveryPacketOnceLosesNoPicture) {
    const test::LibavFault busy(test::LibavCall::SendPacket,
                                [](int call) { return call < 20 && call % 2 == 0 ? AVERROR(EAGAIN) : 0; });
    VideoInputVideoFile in(good);
    EXPECT_EQ(countFrames(in), 10);
    EXPECT_EQ(in.tell(), 10);
    EXPECT_EQ(in.getError(), "");
}

TEST_F(VideoFileFaults, AReadErrorEndsTheFileAndIsTold) {
    VideoInputVideoFile in(good);
    {
        const test::LibavFault broken(test::LibavCall::ReadFrame,
                                      [](int call) { return call == 5 ? AVERROR(EIO) : 0; });
        EXPECT_EQ(countFrames(in), 5);
    }
    EXPECT_TRUE(in.eof());
    EXPECT_EQ(in.getError(), "Input/output error");
    in.open(good);
    EXPECT_EQ(in.getError(), "");
}

TEST_F(VideoFileFaults, ALackOfMemoryIsNoEndOfTheFile) {
    for (const std::string options : {"-c:v mpeg4", "-c:v libx264 -bf 2", "-c:v mpeg2video", "-c:v ffv1"}) {
        SCOPED_TRACE(options);
        VideoInputVideoFile in(make("video.mkv", options));
        Image frame(Ko::PF_YCC444P);
        {
            const test::LibavFault noPacket(test::LibavCall::ReadFrame, [](int) { return AVERROR(ENOMEM); });
            EXPECT_THROW(in.read(frame), std::bad_alloc);
        }
        EXPECT_EQ(countFrames(in), 10);
        EXPECT_EQ(in.seek(0, Ko::VP_BEGIN), 0);
        in.open(directory / "video.mkv"); // decoders keep buffers
        av_max_alloc(3000);               // bytes at a time, too few for a picture
        EXPECT_THROW(while (in.read(frame)){}, std::bad_alloc);
        av_max_alloc(INT_MAX);
        EXPECT_FALSE(in.eof());
        in.seek(0, Ko::VP_BEGIN);
        EXPECT_EQ(countFrames(in), 10);
    }
}

} // namespace
