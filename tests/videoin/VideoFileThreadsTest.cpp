#include "Kovanta/VideoInput.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <atomic>
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

} // namespace
