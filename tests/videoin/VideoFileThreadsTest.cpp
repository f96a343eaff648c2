#include "Kovanta/VideoInput.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(VideoFileThreads, SixteenThreadsOpenReadSeekAndCloseFilesOfTheirOwn) {
    const test::TempDirectory directory;
    const char* const kinds[][2] = {{"a.mp4", "-c:v libx264 -bf 2 -g 6"},
                                    {"b.avi", "-c:v mpeg4"},
                                    {"c.mpg", "-c:v mpeg2video -bf 2"},
                                    {"d.webm", "-c:v libvpx"}};
    for (const auto& [name, options] : kinds)
        test::encodeNumbered(directory / name, {64, 48, 12}, options);
    std::vector<std::thread> threads;
    for (int t = 0; t < 16; ++t)
        threads.emplace_back([file = directory / kinds[t % 4][0]] {
            Ko::VideoInputVideoFile in;
            Ko::Image<unsigned char> frame(Ko::PF_YCC444P);
            for (int i = 0; i < 2 * 13; ++i) {
                if (i % 13 == 0)
                    in.open(file);
                if (i % 13 == 12)
                    in.seek(0, Ko::VP_BEGIN);
                EXPECT_TRUE(in.read(frame) && test::frameIndex(frame) == i % 13 % 12) << i;
            }
            in.close();
            EXPECT_THROW(in.open(file + "?"), std::runtime_error);
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(VideoFileThreads, OpeningAndClosingHoldTheLock) {
    const test::TempDirectory directory;
    const std::string pipe = directory / "pipe.avi";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Ko::VideoInputVideoFile in;
    std::thread opening([&] { EXPECT_THROW(in.open(pipe), std::runtime_error); });
    {
        const std::ofstream feed(pipe); // waits for the reader, who is then in the middle of opening
        const bool taken = libAvMutex.try_lock();
        EXPECT_FALSE(taken);
        if (taken)
            libAvMutex.unlock();
    }
    opening.join();

    test::encodeNumbered(directory / "a.avi", {64, 48, 2}, "-c:v mpeg4");
    in.open(directory / "a.avi");
    std::atomic<bool> closed{false};
    ASSERT_TRUE(libAvMutex.try_lock());
    std::thread closing([&] {
        in.close();
        closed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30)); // enough to be done, if nothing held it up
    EXPECT_FALSE(closed);
    libAvMutex.unlock();
    closing.join();
    EXPECT_THROW(in.eof(), std::logic_error);
}

} // namespace
