// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ConvertIm.h"
#include "Kovanta/VideoOutput.h"
#include "support/VideoMedia.h"
#include "videoout/Programs.h"

#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Ko::VideoOutputVideoFile;

constexpr Ko::Frac<unsigned int> rate = {25, 1};

// By the ffmpeg program, as our own source has threads inside that the thread sanitizer cannot follow.
std::vector<int> numbersIn(const std::string& file) {
    return test::decode(file).numbers;
}

void waitForError(const VideoOutputVideoFile& out) {
    while (out.getError().empty())
        boost::this_thread::yield();
}

void writeFrames(VideoOutputVideoFile& out, int first, int count) {
    for (int n = first; n < first + count; ++n)
        EXPECT_TRUE(out.write(test::numberedFrame(n)));
}

class VideoFileLife : public testing::Test {
protected:
    std::string path(const std::string& name) const { return folder / name; }
    void open(const std::string& name) { out.open(64, 48, path(name), rate, 500000); }

    const test::TempDirectory folder;
    VideoOutputVideoFile out;
};

TEST_F(VideoFileLife, CloseWritesWhatIsQueuedAndLeavesOneLineAlsoInAnInterruptedThread) {
    out.close();
    EXPECT_FALSE(out.isOpened());
    testing::internal::CaptureStderr();
    open("a.mp4");
    EXPECT_TRUE(out.isOpened());
    writeFrames(out, 0, 5);
    bool stillInterrupted = false;
    boost::thread closer([&] {
        while (!boost::this_thread::interruption_requested())
            boost::this_thread::yield();
        out.close();
        stillInterrupted = boost::this_thread::interruption_requested();
    });
    closer.interrupt();
    closer.join();
    EXPECT_TRUE(stillInterrupted);
    out.close();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::MatchesRegex("Thread [0-9a-f]+: Interrupted\\.\n"));
    EXPECT_FALSE(out.isOpened());
    EXPECT_EQ(numbersIn(path("a.mp4")), test::indices(5));
}

TEST_F(VideoFileLife, OptionsReachTheEncoderAndWhatIsNoneIsNamed) {
    const auto keyFrames = [&](const std::string& name) {
        const std::string keys = test::probe(path(name), "frame=key_frame");
        return std::count(keys.begin(), keys.end(), '1');
    };
    out.setOption("g", "4").setOption("threads", "1").setPixelAspect({32, 30});
    open("a.avi");
    writeFrames(out, 0, 12);
    out.close();
    EXPECT_EQ(keyFrames("a.avi"), 3);
    out.setOption("g", "");
    open("b.mkv");
    writeFrames(out, 0, 12);
    out.close();
    EXPECT_EQ(keyFrames("b.mkv"), 1);
    EXPECT_EQ(test::probe(path("b.mkv"), "stream=sample_aspect_ratio"), "16:15");
    const std::string function = "[VideoOutputVideoFile::openVideo]: The ";
    for (const auto& [name, value, text] :
         {std::tuple{"presett", "fast", "encoder has no option presett."},
          {"threads", "many", "option threads does not take many."},
          {"pixel_format", "gray", "option pixel_format would change what is written."},
          {"video_size", "2x2", "option video_size would change what is written."}}) {
        VideoOutputVideoFile refused;
        refused.setOption(name, value);
        EXPECT_THAT([&] { refused.open(64, 48, path("c.mp4"), rate, 500000); },
                    testing::ThrowsMessage<std::logic_error>(function + text));
    }
}

TEST_F(VideoFileLife, AWriterThatDiedTellsWhyAndTheNextFullQueueBlocks) {
    const std::string wrongSize =
        "[VideoOutputVideoFile::frameWrite]: Image size is not equal to the output file image size.";
    out.setQueueSize(3);
    testing::internal::CaptureStderr();
    open("a.avi");
    writeFrames(out, 0, 2);
    EXPECT_TRUE(out.write(test::numberedFrame(2, 64, 50)));
    waitForError(out);
    EXPECT_EQ(out.getError(), wrongSize);
    writeFrames(out, 3, 3);
    bool interrupted = false;
    boost::thread blocked([&] {
        try {
            out.write(test::numberedFrame(6));
        } catch (const boost::thread_interrupted&) {
            interrupted = true;
        }
    });
    blocked.interrupt();
    blocked.join();
    EXPECT_TRUE(interrupted);
    out.close();
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::AllOf(testing::StartsWith("Thread "), testing::EndsWith(": Error: " + wrongSize + "\n")));
    EXPECT_EQ(out.getError(), wrongSize);
    EXPECT_EQ(numbersIn(path("a.avi")), test::indices(2));

    open("b.avi"); // starts anew: no error, no frame left over
    EXPECT_EQ(out.getError(), "");
    writeFrames(out, 7, 2);
    out.close();
    EXPECT_EQ(numbersIn(path("b.avi")), test::indices(2, 7));
}

TEST_F(VideoFileLife, OneFileAfterAnotherWithTheEncoderThatWasChosenLast) {
    const auto check = [&](const char* name, const char* encoder, int first, int count) {
        EXPECT_EQ(test::probe(path(name), "stream=codec_name"), encoder);
        EXPECT_EQ(numbersIn(path(name)), test::indices(count, first));
    };
    EXPECT_THAT([&] { out.setEncoder("ffv1").setEncoder("no such encoder"); },
                testing::ThrowsMessage<std::logic_error>(
                    "[VideoOutputVideoFile::setEncoder]: avcodec_find_encoder_by_name failed."));
    open("a:b.avi"); // no protocol is called so
    writeFrames(out, 0, 4);
    open("b.mkv"); // finishes the one before
    check("a:b.avi", "mpeg4", 0, 4);
    writeFrames(out, 10, 2);
    EXPECT_THROW(open("c.nosuch"), std::runtime_error);
    check("b.mkv", "mpeg4", 10, 2);
    std::make_unique<VideoOutputVideoFile>(64, 48, path("c.avi"), rate, 500000)->write(test::numberedFrame(20));
    check("c.avi", "mpeg4", 20, 1);
}

TEST_F(VideoFileLife, EveryFormatIsWrittenExactlyAndMissingChromaIsNeutral) {
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_YCC444P, Ko::PF_YCC420P, Ko::PF_Y}) {
        SCOPED_TRACE(fmt2string(format));
        Ko::Image full(Ko::PF_YCC444P), im(format), planar(Ko::PF_YCC420P);
        Ko::convertIm(full, test::numberedFrame(1, 49, 37));
        Ko::convertIm(im, full);
        Ko::convertIm(planar, im);
        std::string expected;
        for (int p = 0; p < 3; ++p) {
            for (unsigned int y = 0; y < planar.plane[p].height; ++y)
                expected.append(planar.plane[p].view[y], planar.plane[p].view[y] + planar.plane[p].width)
                    .append(p == 0 ? 0 : 1, '\x80');
            expected.append(p == 0 ? 0 : 25, '\x80');
        }
        out.setEncoder("ffv1").open(49, 37, path("a.avi"), rate, 500000);
        out.write(im);
        out.write(im);
        out.close();
        EXPECT_TRUE(test::rawPictures(path("a.avi")) == expected + expected);
    }
}

TEST_F(VideoFileLife, InterlacedCodingIsSwitchedOnAndOff) {
    const auto order = [&](bool on) {
        out.setEncoder("mpeg2video").setInterlace(!on).setInterlace(on);
        open("a.mkv");
        writeFrames(out, 0, 1);
        out.close();
        return test::probe(path("a.mkv"), "stream=field_order");
    };
    EXPECT_EQ(order(false), "progressive");
    EXPECT_NE(order(true), "progressive");
}

} // namespace
