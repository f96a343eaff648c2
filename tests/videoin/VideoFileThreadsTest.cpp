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
    const test::TemporaryDirectory directory;
    const char* const kinds[][2] = {{"a.mp4", "-c:v libx264 -bf 2 -g 6"},
                                    {"b.avi", "-c:v mpeg4"},
                                    {"c.mpg", "-c:v mpeg2video -bf 2"},
                                    {"d.webm", "-c:v libvpx"}};
    constexpr int frames = 12;
    for (const auto& kind : kinds)
        test::encodeNumbered(directory / kind[0], {64, 48, frames}, kind[1]);

    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < 16; ++t)
        threads.emplace_back([&, file = directory / kinds[t % 4][0]] {
            Ko::VideoInputVideoFile in;
            Ko::Image<unsigned char> frame(Ko::PF_YCC444P);
            for (int round = 0; round < 2; ++round) {
                in.open(file);
                for (int i = 0; i < frames; ++i)
                    right += in.read(frame) && test::frameIndex(frame) == i ? 1 : 0;
                in.seek(0, Ko::VP_BEGIN);
                right += in.read(frame) && test::frameIndex(frame) == 0 ? 1 : 0;
                in.close();
                EXPECT_THROW(in.open(file + "?"), std::runtime_error);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, 16 * 2 * (frames + 1));
}

TEST(VideoFileThreads, OpeningAndClosingHoldTheLock) {
    const test::TemporaryDirectory directory;
    const std::string pipe = directory / "pipe.avi";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread opening([&] {
        Ko::VideoInputVideoFile in;
        EXPECT_THROW(in.open(pipe), std::runtime_error);
    });
    {
        const std::ofstream feed(pipe); // waits for the reader, who is then in the middle of opening
        EXPECT_FALSE(libAvMutex.try_lock());
    }
    opening.join();

    const std::string file = directory / "a.avi";
    test::encodeNumbered(file, {64, 48, 2}, "-c:v mpeg4");
    Ko::VideoInputVideoFile in(file);
    std::atomic<bool> closed{false};
    ASSERT_TRUE(libAvMutex.try_lock());
    std::thread closing([&] {
        in.close();
        closed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(closed);
    libAvMutex.unlock();
    closing.join();
    EXPECT_TRUE(closed);
}

} // namespace
