#include "Kovanta/LibAvMutex.h"
#include "Kovanta/VideoOutput.h"
#include "support/VideoMedia.h"
#include "videoout/Programs.h"

#include <boost/thread/lock_types.hpp>
#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using Ko::VideoOutputVideoFile;

constexpr Ko::Frac<unsigned int> rate = {25, 1};

/// What the writers told, out of what went to standard error, where libav writes too.
std::vector<std::string> writerLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (line.rfind("Thread ", 0) == 0)
            lines.push_back(line.substr(line.find(':')));
    return lines;
}

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
    EXPECT_THAT(writerLines(testing::internal::GetCapturedStderr()), testing::ElementsAre(": Error: " + wrongSize));
    EXPECT_EQ(out.getError(), wrongSize);
    EXPECT_EQ(numbersIn(path("a.avi")), test::indices(2));

    open("b.avi"); // starts anew: no error, no frame left over
    EXPECT_EQ(out.getError(), "");
    writeFrames(out, 7, 2);
    out.close();
    EXPECT_EQ(numbersIn(path("b.avi")), test::indices(2, 7));

    Ko::Image unfit(Ko::PF_YCCA4444P);
    unfit.size(64, 48);
    open("c.avi");
    EXPECT_TRUE(out.write(unfit));
    waitForError(out);
    EXPECT_THAT(out.getError(), testing::HasSubstr("Don't know how to convert"));
}

TEST_F(VideoFileLife, OneFileAfterAnotherWithTheEncoderThatWasChosenLast) {
    {
        VideoOutputVideoFile sink;
        EXPECT_THAT([&] { sink.setEncoder("ffv1").setEncoder("no such encoder"); },
                    testing::ThrowsMessage<std::logic_error>(
                        "[VideoOutputVideoFile::setEncoder]: avcodec_find_encoder_by_name failed."));
        sink.open(64, 48, path("a:b.avi"), rate, 500000); // no protocol is called so
        writeFrames(sink, 0, 4);
        sink.open(64, 48, path("b.mkv"), rate, 500000); // finishes the one before
        writeFrames(sink, 10, 2);
        EXPECT_THROW(sink.open(64, 48, path("c.nosuch"), rate, 500000), std::runtime_error);
        sink.setEncoder("ffv1").open(64, 48, path("c.mkv"), rate, 500000);
        writeFrames(sink, 20, 1);
    }
    const std::tuple<const char*, const char*, std::vector<int>> files[] = {
        {"a:b.avi", "mpeg4", test::indices(4)},
        {"b.mkv", "mpeg4", test::indices(2, 10)},
        {"c.mkv", "ffv1", test::indices(1, 20)},
    };
    for (const auto& [name, encoder, numbers] : files) {
        EXPECT_EQ(test::probe(path(name), "stream=codec_name"), encoder);
        EXPECT_EQ(numbersIn(path(name)), numbers);
    }
}

TEST_F(VideoFileLife, OpenAndCloseRunUnderLibAvMutex) {
    const auto heldUp = [&](bool fileThere, const std::function<void()>& action) {
        std::atomic<bool> done{false};
        boost::unique_lock<boost::mutex> lock(libAvMutex);
        boost::thread thread([&] {
            action();
            done = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(30)); // enough to be done, if nothing held it up
        EXPECT_FALSE(done);
        EXPECT_EQ(std::filesystem::exists(path("a.avi")), fileThere);
        lock.unlock();
        thread.join();
    };
    heldUp(false, [&] { open("a.avi"); });
    {
        const boost::unique_lock<boost::mutex> lock(libAvMutex);
        writeFrames(out, 0, 20); // encoding needs no lock
    }
    heldUp(true, [&] { out.close(); });
    EXPECT_EQ(numbersIn(path("a.avi")), test::indices(20));
}

TEST_F(VideoFileLife, SixteenThreadsWriteSixteenFiles) {
    const char* const extensions[] = {"avi", "mkv", "mpg", "ts", "flv", "mov", "mp4", "webm"};
    const auto file = [&](int t) {
        return path(std::to_string(t) + "." + extensions[t % 8]);
    };
    testing::internal::CaptureStderr();
    boost::thread_group threads;
    for (int t = 0; t < 16; ++t)
        threads.create_thread([&, t] {
            for (int round = 0; round < 2; ++round) {
                VideoOutputVideoFile sink(64, 48, file(t), rate, 500000);
                writeFrames(sink, t, 8);
                sink.close();
                EXPECT_EQ(sink.getError(), "");
            }
        });
    threads.join_all();
    EXPECT_EQ(writerLines(testing::internal::GetCapturedStderr()), std::vector<std::string>(32, ": Interrupted."));
    for (int t = 0; t < 16; t += 7)
        EXPECT_EQ(numbersIn(file(t)), test::indices(8, t));
}

} // namespace
