#include "Kovanta/LibAvMutex.h"
#include "Kovanta/VideoOutput.h"
#include "support/VideoMedia.h"
#include "videoout/CountedAllocations.h"
#include "videoout/Programs.h"

#include <boost/thread/lock_types.hpp>
#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Ko::VideoOutputVideoFile;
using Image = Ko::Image<unsigned char>;
using testing::MatchesRegex;

constexpr Ko::Frac<unsigned int> rate = {25, 1};
const char* const wrongSize =
    "[VideoOutputVideoFile::frameWrite]: Image size is not equal to the output file image size.";

/// The writers' lines out of what went to standard error, where libav writes too.
std::vector<std::string> writerLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (line.rfind("Thread ", 0) == 0)
            lines.push_back(line);
    return lines;
}

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::logic_error& e) {
        return std::string("logic ") + e.what();
    } catch (const std::runtime_error& e) {
        return std::string("runtime ") + e.what();
    }
    return "none";
}

Image frame(unsigned int n, int width = 64, int height = 48) {
    return test::numberedFrame(static_cast<int>(n), width, height);
}

// By the ffmpeg program, as our own source has threads inside that the thread sanitizer cannot follow.
std::vector<int> numbersIn(const std::string& file) {
    return test::decode(file, 64, 48).numbers;
}

void waitForError(const VideoOutputVideoFile& out) {
    while (out.getError().empty())
        boost::this_thread::yield();
}

void writeFrames(VideoOutputVideoFile& out, unsigned int first, unsigned int end) {
    for (unsigned int n = first; n < end; ++n)
        EXPECT_TRUE(out.write(frame(n)));
}

/// Stands in for the small disk of those who may not mount one: no file may grow beyond its size.
class SmallFiles {
public:
    SmallFiles() {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit = {32768, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFiles() { setrlimit(RLIMIT_FSIZE, &before); }

private:
    rlimit before;
};

class VideoFileLife : public testing::Test {
protected:
    std::string path(const std::string& name) const { return folder / name; }

    const test::TemporaryDirectory folder;
};

TEST_F(VideoFileLife, CloseWritesWhatIsQueuedAndLeavesOneLine) {
    VideoOutputVideoFile out;
    out.close();
    EXPECT_FALSE(out.isOpened());
    testing::internal::CaptureStderr();
    out.open(64, 48, path("a.mp4"), rate, 500000);
    EXPECT_TRUE(out.isOpened());
    writeFrames(out, 0, 5);
    out.close();
    out.close();
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_THAT(text, MatchesRegex("Thread [0-9a-f]+: Interrupted\\.\n"));
    EXPECT_FALSE(out.isOpened());
    EXPECT_EQ(numbersIn(path("a.mp4")), (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST_F(VideoFileLife, AWriterThatDiedTellsWhyAndTheNextFullQueueBlocks) {
    VideoOutputVideoFile out;
    out.setQueueSize(3);
    testing::internal::CaptureStderr();
    out.open(64, 48, path("a.avi"), rate, 500000);
    writeFrames(out, 0, 2);
    EXPECT_TRUE(out.write(frame(2, 64, 50)));
    waitForError(out);
    EXPECT_EQ(out.getError(), wrongSize);
    writeFrames(out, 3, 6);
    bool interrupted = false;
    boost::thread blocked([&] {
        try {
            out.write(frame(6));
        } catch (const boost::thread_interrupted&) {
            interrupted = true;
        }
    });
    blocked.interrupt();
    blocked.join();
    EXPECT_TRUE(interrupted);
    out.close();
    const auto lines = writerLines(testing::internal::GetCapturedStderr());
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].substr(lines[0].find(':')), std::string(": Error: ") + wrongSize);
    EXPECT_EQ(out.getError(), wrongSize);
    EXPECT_EQ(numbersIn(path("a.avi")), (std::vector<int>{0, 1}));

    out.open(64, 48, path("b.avi"), rate, 500000); // starts anew: no error, no frame left over
    EXPECT_EQ(out.getError(), "");
    writeFrames(out, 7, 9);
    out.close();
    EXPECT_EQ(numbersIn(path("b.avi")), (std::vector<int>{7, 8}));

    Image unfit(Ko::PF_YCCA4444P);
    unfit.size(64, 48);
    out.open(64, 48, path("c.avi"), rate, 500000);
    EXPECT_TRUE(out.write(unfit));
    waitForError(out);
    EXPECT_THAT(out.getError(), testing::HasSubstr("Don't know how to convert"));
}

TEST_F(VideoFileLife, RefusedOpensLeaveSomethingToClose) {
    std::filesystem::create_directory(path("folder.avi"));
    const std::string nowhere = path("missing/a.avi");
    const struct {
        std::string file;
        const char* encoder;
        unsigned int width;
        Ko::Frac<unsigned int> rate;
        std::string error;
    } cases[] = {
        {"", "", 64, rate, "runtime [VideoOutputVideoFile::open]: guess_format failed."},
        {path("a.nosuch"), "", 64, rate, "runtime [VideoOutputVideoFile::open]: guess_format failed."},
        {path("a.wav"), "", 64, rate, "runtime [VideoOutputVideoFile::open]: avcodec_find_encoder failed."},
        {path("a.gif"), "", 64, rate, "logic [VideoOutputVideoFile::openVideo]: Can only convert to 4:2:0 Planar YUV."},
        {path("a.avi"), "rawvideo", 64, rate,
         "logic [VideoOutputVideoFile::openVideo]: Can only convert to 4:2:0 Planar YUV."},
        {path("a.avi"), "aac", 64, rate,
         "logic [VideoOutputVideoFile::openVideo]: Can only convert to 4:2:0 Planar YUV."},
        {path("a.mpg"), "", 64, {15, 2}, "runtime [VideoOutputVideoFile::openVideo]: avcodec_open failed."},
        {path("a.avi"), "", 0, rate, "runtime [VideoOutputVideoFile::openVideo]: avcodec_open failed."},
        {path("a.avi"), "", 0xFFFFFFF0u, rate, "runtime [VideoOutputVideoFile::openVideo]: avcodec_open failed."},
        {path("a.avi"), "", 64, {0, 1}, "runtime [VideoOutputVideoFile::openVideo]: avcodec_open failed."},
        {path("a.avi"), "", 64, {1, 0}, "runtime [VideoOutputVideoFile::openVideo]: avcodec_open failed."},
        {path("a.avi"), "", 64, {4000000000u, 1}, "runtime [VideoOutputVideoFile::openVideo]: avcodec_open failed."},
        {nowhere, "", 64, rate, "runtime [VideoOutputVideoFile::open]: url_fopen failed to open " + nowhere + "."},
        {path("folder.avi"), "", 64, rate,
         "runtime [VideoOutputVideoFile::open]: url_fopen failed to open " + path("folder.avi") + "."},
        {path("a.webm"), "mpeg4", 64, rate, "runtime [VideoOutputVideoFile::open]: av_write_header failed."},
    };
    testing::internal::CaptureStderr();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file + " " + c.encoder);
        VideoOutputVideoFile out;
        if (*c.encoder)
            out.setEncoder(c.encoder);
        EXPECT_EQ(errorOf([&] { out.open(c.width, 48, c.file, c.rate, 500000); }), c.error);
        EXPECT_TRUE(out.isOpened());
        EXPECT_EQ(errorOf([&] { out.write(frame(0)); }), "logic [VideoOutputVideoFile::write]: Not opened.");
        if (c.width != 64)
            continue; // the destructor's turn
        out.close();
        EXPECT_FALSE(out.isOpened());
        EXPECT_NE(errorOf([&] { VideoOutputVideoFile now(0, 48, c.file, c.rate, 500000); }), "none");
    }
    EXPECT_TRUE(writerLines(testing::internal::GetCapturedStderr()).empty());
}

TEST_F(VideoFileLife, TheEncoderStaysChosenUntilAnotherIs) {
    VideoOutputVideoFile out;
    EXPECT_EQ(errorOf([&] { out.setEncoder("ffv1").setEncoder("no such encoder"); }),
              "logic [VideoOutputVideoFile::setEncoder]: avcodec_find_encoder_by_name failed.");
    const auto encoderOf = [&](const char* name) {
        out.open(64, 48, path(name), rate, 500000);
        writeFrames(out, 0, 1);
        out.close();
        return test::probe(path(name), "stream=codec_name");
    };
    EXPECT_EQ(encoderOf("a.avi"), "mpeg4");
    EXPECT_EQ(encoderOf("a.mkv"), "mpeg4");
    out.setEncoder("ffv1");
    EXPECT_EQ(encoderOf("b.mkv"), "ffv1");
}

TEST_F(VideoFileLife, OpenAgainFinishesTheFileBefore) {
    {
        VideoOutputVideoFile out(64, 48, path("a.mkv"), rate, 500000);
        writeFrames(out, 0, 4);
        out.open(64, 48, path("b.mkv"), rate, 500000);
        writeFrames(out, 10, 12);
        EXPECT_EQ(errorOf([&] { out.open(64, 48, path("c.nosuch"), rate, 500000); }),
                  "runtime [VideoOutputVideoFile::open]: guess_format failed.");
        out.open(64, 48, path("c.mkv"), rate, 500000);
        writeFrames(out, 20, 21);
    }
    EXPECT_EQ(numbersIn(path("a.mkv")), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(numbersIn(path("b.mkv")), (std::vector<int>{10, 11}));
    EXPECT_EQ(numbersIn(path("c.mkv")), (std::vector<int>{20}));
}

TEST_F(VideoFileLife, AnInterruptedThreadClosesProperlyAndStaysInterrupted) {
    VideoOutputVideoFile out(64, 48, path("a.mp4"), rate, 500000);
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
    EXPECT_EQ(numbersIn(path("a.mp4")), (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST_F(VideoFileLife, AFullDiskIsAnErrorAndNothingWorse) {
    // The device refuses every byte; a small disk takes the beginning.
    std::vector<std::string> files;
    for (const char* name : {"full.avi", "full.mp4", "full.mkv", "full.ts", "full.mpg"}) {
        std::filesystem::create_symlink("/dev/full", path(name));
        files.push_back(path(name));
    }
    const std::string disk = path("disk");
    std::filesystem::create_directory(disk);
    // In a mount namespace of our own, so that nothing is left behind whatever happens.
    const bool mounted = unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                         mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=32k") == 0;
    std::optional<SmallFiles> small;
    if (!mounted)
        small.emplace();
    for (const char* name : {"/a.avi", "/a.mp4", "/a.mkv", "/a.ts", "/a.webm"})
        files.push_back(disk + name);
    constexpr unsigned int frames = 12; // and as much room in the queue: nobody takes them out after the error
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        VideoOutputVideoFile out;
        bool opened = true;
        try {
            out.setEncoder(file.find("webm") == std::string::npos ? "mpeg4" : "libvpx");
            out.setQueueSize(frames);
            out.open(320, 240, file, rate, 100000000);
        } catch (const std::runtime_error& e) {
            opened = false; // some containers push their header out at once
            EXPECT_STREQ(e.what(), "[VideoOutputVideoFile::open]: av_write_header failed.");
        }
        auto noise = frame(0, 320, 240);
        for (unsigned int i = 0; opened && i < frames; ++i) {
            for (unsigned int k = 0; k < 320 * 240; ++k)
                noise.plane[0].data[k] = static_cast<unsigned char>((k * 2654435761u + i * 40503u) >> 13);
            out.write(noise);
        }
        out.close();
        EXPECT_TRUE(!opened || !out.getError().empty());
        std::filesystem::remove(file);
    }
    EXPECT_TRUE(!mounted || umount(disk.c_str()) == 0);
}

TEST_F(VideoFileLife, OpenAndCloseRunUnderLibAvMutex) {
    std::atomic<int> done{0};
    VideoOutputVideoFile out;
    const auto heldUp = [&](const std::function<void()>& action) {
        boost::unique_lock<boost::mutex> lock(libAvMutex);
        const int before = done;
        boost::thread thread([&] {
            action();
            ++done;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(30)); // enough to be done, if nothing held it up
        EXPECT_EQ(done, before);
        EXPECT_EQ(std::filesystem::exists(path("a.avi")), before > 0);
        lock.unlock();
        thread.join();
    };
    heldUp([&] { out.open(64, 48, path("a.avi"), rate, 500000); });
    {
        const boost::unique_lock<boost::mutex> lock(libAvMutex);
        writeFrames(out, 0, 20); // encoding needs no lock
    }
    heldUp([&] { out.close(); });
    EXPECT_EQ(numbersIn(path("a.avi")).size(), 20u);
}

TEST_F(VideoFileLife, SixteenThreadsWriteSixteenFiles) {
    const char* const extensions[] = {"avi", "mkv", "mpg", "ts", "flv", "mov", "mp4", "webm"};
    std::atomic<int> failures{0};
    testing::internal::CaptureStderr();
    boost::thread_group threads;
    for (int t = 0; t < 16; ++t)
        threads.create_thread([&, t] {
            try {
                const std::string file = path(std::to_string(t) + "." + extensions[t % 8]);
                for (int round = 0; round < 2; ++round) {
                    VideoOutputVideoFile out(64, 48, file, rate, 500000);
                    for (unsigned int n = 0; n < 8; ++n)
                        out.write(frame(n + static_cast<unsigned int>(t)));
                    out.close();
                    failures += !out.getError().empty();
                }
            } catch (const std::exception&) {
                ++failures;
            }
        });
    threads.join_all();
    const auto lines = writerLines(testing::internal::GetCapturedStderr());
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(lines.size(), 32u);
    for (const std::string& line : lines)
        EXPECT_THAT(line, MatchesRegex("Thread [0-9a-f]+: Interrupted\\."));
    for (int t = 0; t < 16; t += 7) {
        const auto numbers = numbersIn(path(std::to_string(t) + "." + extensions[t % 8]));
        EXPECT_EQ(numbers, (std::vector<int>{t, t + 1, t + 2, t + 3, t + 4, t + 5, t + 6, t + 7}));
    }
}

TEST_F(VideoFileLife, ALongRoadNeedsNoMoreMemoryThanAShortOne) {
    const auto im = frame(5, 160, 120);
    VideoOutputVideoFile out(160, 120, path("a.avi"), rate, 500000);
    const std::size_t before = bigAllocations();
    for (int i = 0; i < 200; ++i)
        out.write(im);
    out.close();
    // Five queued, one in the writer's hands, one in ours, each of three planes.
    EXPECT_LE(bigAllocations() - before, 3u * 7);
}

} // namespace
