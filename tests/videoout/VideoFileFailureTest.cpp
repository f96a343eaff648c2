// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoOutput.h"
#include "support/LibavFaults.h"
#include "support/RefusedMemory.h"
#include "support/Rows.h"
#include "support/TestImages.h"
#include "support/VideoMedia.h"
#include "videoout/KnownLeaks.h"
#include "videoout/Programs.h"

#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/error.h>
}

#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// What the sink does when the file cannot be written.

namespace {

using Ko::VideoOutputVideoFile;
using test::LibavCall;
using test::LibavFault;
using testing::ThrowsMessage;

constexpr Ko::Frac<unsigned int> rate = {25, 1};
const std::string cannotWrite = "[VideoOutputVideoFile::frameWrite]: av_write_frame failed.";

void waitForError(const VideoOutputVideoFile& out) {
    while (out.getError().empty())
        boost::this_thread::yield();
}

class VideoFileFailure : public testing::Test {
protected:
    void open(const std::string& name) { out.open(64, 48, folder / name, rate, 500000); }

    const test::TempDirectory folder;
    VideoOutputVideoFile out;
};

TEST_F(VideoFileFailure, AWriteThatWaitsIsFreedAndThrows) {
    std::promise<void> waiting;
    const LibavFault full(LibavCall::WriteFrame, [fails = waiting.get_future().share()](int) {
        fails.wait();
        return AVERROR(ENOSPC);
    });
    const LibavFault trailer(LibavCall::WriteTrailer, [](int) { return AVERROR(EIO); }); // the first reason stays
    out.setEncoder("mpeg4").setQueueSize(2).setThrowOnFailure(true);
    open("a.avi");
    for (int n = 0; n < 3; ++n) // one is the writer's, two wait
        EXPECT_TRUE(out.write(test::numberedFrame(n)));
    auto thrown = std::async(std::launch::async, [&] {
        for (int n = 0; n < 2; ++n)
            out.write(test::numberedFrame(n));
    });
    waiting.set_value();
    EXPECT_THAT([&] { thrown.get(); }, ThrowsMessage<std::runtime_error>(cannotWrite));
    EXPECT_EQ(out.getError(), cannotWrite);
    EXPECT_THAT([&] { out.write(test::numberedFrame(0)); }, ThrowsMessage<std::runtime_error>(cannotWrite));
    EXPECT_THAT([&] { out.close(); }, ThrowsMessage<std::runtime_error>(cannotWrite));
    EXPECT_EQ(out.getError(), cannotWrite);
    EXPECT_FALSE(out.isOpened());
    EXPECT_NO_THROW(out.close());
}

TEST_F(VideoFileFailure, OnlyCloseMayFindIt) {
    const LibavFault full(LibavCall::WriteTrailer, [](int) { return AVERROR(ENOSPC); });
    for (const bool on : {false, true}) {
        out.setThrowOnFailure(on);
        open("a.avi");
        EXPECT_TRUE(out.write(test::numberedFrame(0)));
        if (on)
            EXPECT_THROW(out.close(), std::runtime_error);
        else
            EXPECT_NO_THROW(out.close());
        EXPECT_EQ(out.getError(), "[VideoOutputVideoFile::close]: av_write_trailer failed.");
    }
    testing::internal::CaptureStderr();
    VideoOutputVideoFile(64, 48, folder / "b.avi", rate, 500000).setThrowOnFailure(true);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::MatchesRegex("Thread [0-9a-f]+: Interrupted\\.\n"));
}

TEST_F(VideoFileFailure, AWriterWithoutMemoryTellsItAndTheProcessLives) {
    bool refusedSome = true;
    testing::internal::CaptureStderr();
    for (long n = 0; refusedSome; ++n) {
        SCOPED_TRACE(n);
        refusedSome = false;
        // From the writer's first packet on, which fails, its n-th request for memory is refused.
        const LibavFault full(LibavCall::WriteFrame, [&refusedSome, n](int) {
            struct Request {
                Request(long number, bool& f)
                    : refused(number)
                    , happened(f) {}
                ~Request() { happened = refused.happened(); } // with the thread
                test::RefusedMemory refused;
                bool& happened;
            };
            thread_local std::optional<Request> request;
            if (!request)
                request.emplace(n, refusedSome);
            return AVERROR(ENOSPC);
        });
        out.setEncoder("mpeg4").setThrowOnFailure(n % 2 == 0);
        open("a.avi");
        try {
            out.write(test::numberedFrame(0));
            waitForError(out);
            out.close();
        } catch (const std::runtime_error&) {
        }
        EXPECT_THAT(out.getError(), testing::AnyOf(cannotWrite, "std::bad_alloc"));
        EXPECT_NO_THROW(out.setThrowOnFailure(false).close());
    }
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::MatchesRegex("(Thread [0-9a-f]+: Error: [^\n]+\n)+"));
}

TEST_F(VideoFileFailure, AFullDiskIsAnErrorAndFragmentsKeepWhatWasWritten) {
    constexpr int frames = 12;
    std::vector<test::Image> noise;
    for (unsigned int seed = 0; seed < frames; ++seed)
        noise.push_back(test::randomImage(Ko::PF_YCC420P, 320, 240, seed));
    // The device refuses every byte; the limit on a file's size, like a small disk, takes the beginning.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limit = {150000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const struct {
        std::string name;
        bool device;
        bool readable;
        bool fragments = false;
    } rows[] = {
        {"full.mkv", true, false}, {"a.avi", false, true},       {"a.ts", false, true},
        {"a.mp4", false, false},   {"b.mp4", false, true, true}, {"b.mov", false, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string file = folder / row.name;
        if (row.device)
            std::filesystem::create_symlink("/dev/full", file);
        VideoOutputVideoFile sink;
        sink.setEncoder("mpeg4").setFragments(row.fragments).setThrowOnFailure(true);
        EXPECT_THROW(
            {
                sink.open(320, 240, file, rate, 100000000); // some containers push their header out at once
                for (int n = 0;; ++n)
                    sink.write(noise[static_cast<std::size_t>(n % frames)]);
            },
            std::runtime_error);
        EXPECT_TRUE(sink.isOpened());
        EXPECT_TRUE(sink.getError().empty() || sink.getError() == cannotWrite) << sink.getError();
        EXPECT_NO_THROW(sink.setThrowOnFailure(false).close());
        if (row.device)
            continue;
        EXPECT_EQ(!test::rawPictures(file).empty(), row.readable);
    }
    setrlimit(RLIMIT_FSIZE, &before);
}

TEST_F(VideoFileFailure, EncodersAreSilent) {
    const LeaksAllowed byLibx265;
    testing::internal::CaptureStderr();
    out.setEncoder("libx265");
    open("a.mkv");
    out.close();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::MatchesRegex("Thread [0-9a-f]+: Interrupted\\.\n"));
}

/// An open that is refused.
struct Refusal : test::Row {
    const char* file;
    const char* encoder;
    const char* message;
    Ko::Frac<unsigned int> frameRate = rate;
    unsigned int width = 64;
    bool mistake = false; ///< The caller's.
};

const char* const noFormat = "[VideoOutputVideoFile::open]: guess_format failed.";
const char* const noHeader = "[VideoOutputVideoFile::open]: av_write_header failed.";
const char* const noRate = "[VideoOutputVideoFile::open]: The container cannot hold the frame rate.";
const char* const noEncoder = "[VideoOutputVideoFile::openVideo]: avcodec_open failed.";
const char* const not420 = "[VideoOutputVideoFile::openVideo]: Can only convert to 4:2:0 Planar YUV.";
const char* const noFile = "[VideoOutputVideoFile::open]: url_fopen failed to open ";

const Refusal refusals[] = {
    {{"NoName"}, "", "", noFormat},
    {{"NoVideoInContainer"}, "a.wav", "", "[VideoOutputVideoFile::open]: avcodec_find_encoder failed."},
    {{"NotPlanarFirst"}, "a.avi", "rawvideo", not420, rate, 64, true},
    {{"SoundEncoder"}, "a.avi", "aac", not420, rate, 64, true},
    {{"RateOfNoFilm"}, "a.mpg", "", noEncoder, {15, 2}},
    {{"NoWidth"}, "a.avi", "", noEncoder, rate, 0},
    {{"HugeWidth"}, "a.avi", "", noEncoder, rate, 0xFFFFFFF0u},
    {{"NoRate"}, "a.avi", "", noEncoder, {0, 1}},
    {{"RateOverNothing"}, "a.avi", "", noEncoder, {1, 0}},
    {{"HugeRate"}, "a.avi", "", noEncoder, {4000000000u, 1}},
    {{"MissingFolder"}, "missing/a.avi", "", noFile},
    {{"NameOfAFolder"}, "folder.avi", "", noFile},
    {{"RefusedByTheContainer"}, "a.webm", "mpeg4", noHeader},
    {{"NoCodeInAvi"}, "a.avi", "rv10", noHeader},
    {{"NoCodeInTs"}, "a.ts", "libvpx", noHeader},
    {{"NoCodeInM2ts"}, "a.m2ts", "vc2", noHeader},
    {{"TooFastForMkv"}, "a.mkv", "mpeg4", noRate, {1001, 1}},
    {{"TooFineForMp4"}, "a.mp4", "libx264", noRate, {2147483647, 2147483646}},
};

class VideoFileRefusal : public testing::TestWithParam<Refusal> {};
INSTANTIATE_TEST_SUITE_P(Every, VideoFileRefusal, testing::ValuesIn(refusals), test::rowName);

TEST_P(VideoFileRefusal, LeavesSomethingToClose) {
    const Refusal& row = GetParam();
    const test::TempDirectory folder;
    std::filesystem::create_directory(folder / "folder.avi");
    const std::string file = *row.file ? folder / row.file : "";
    const std::string message = row.message == noFile ? noFile + file + "." : row.message;
    VideoOutputVideoFile refused;
    if (*row.encoder)
        refused.setEncoder(row.encoder);
    const auto open = [&] {
        refused.open(row.width, 48, file, row.frameRate, 500000);
    };
    testing::internal::CaptureStderr();
    for (int time = 0; time < 2; ++time) { // the destructor's turn is the second
        if (row.mistake)
            EXPECT_THAT(open, ThrowsMessage<std::logic_error>(message));
        else
            EXPECT_THAT(open, ThrowsMessage<std::runtime_error>(message));
        EXPECT_TRUE(refused.isOpened());
        EXPECT_THAT([&] { refused.write(test::numberedFrame(0)); },
                    ThrowsMessage<std::logic_error>("[VideoOutputVideoFile::write]: Not opened."));
        if (time == 0)
            refused.close();
        EXPECT_EQ(refused.isOpened(), time == 1);
    }
    EXPECT_ANY_THROW(VideoOutputVideoFile(0, 48, file, rate, 500000));
    EXPECT_EQ(testing::internal::GetCapturedStderr().find("Thread"), std::string::npos);
}

} // namespace
