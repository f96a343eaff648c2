// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"
#include "support/VideoMedia.h"

#include <boost/thread/lock_types.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(VideoThreads, SixteenWriteReadAndSeekFilesOfTheirOwn) {
    const test::TempDirectory directory;
    const char* const extensions[] = {"avi", "mkv", "mpg", "ts", "flv", "mov", "mp4", "webm"};
    testing::internal::CaptureStderr();
    std::vector<std::thread> threads;
    for (int t = 0; t < 16; ++t)
        threads.emplace_back([t, file = directory / (std::to_string(t) + "." + extensions[t % 8])] {
            for (int round = 0; round < 2; ++round) {
                Ko::VideoOutputVideoFile sink(64, 48, file, {25, 1}, 500000);
                for (int n = 0; n < 8; ++n)
                    sink.write(test::numberedFrame(t + n));
                sink.close();
                Ko::VideoInputVideoFile source(file);
                Ko::Image frame(Ko::PF_YCC444P);
                for (int n = 0; n < 16; ++n) {
                    if (n == 8)
                        source.seek(0, Ko::VP_BEGIN);
                    EXPECT_TRUE(source.read(frame) && test::frameIndex(frame) == t + n % 8) << file << " " << n;
                }
                EXPECT_THROW(source.open(file + "?"), std::runtime_error);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    int lines = 0; // which do not mix
    std::istringstream told(testing::internal::GetCapturedStderr());
    for (std::string line; std::getline(told, line); ++lines)
        EXPECT_EQ(line.substr(line.find(':')), ": Interrupted.");
    EXPECT_EQ(lines, 32);
}

TEST(VideoThreads, OpeningAndClosingHoldTheLock) {
    const test::TempDirectory directory;
    const std::string file = directory / "a.avi";
    const auto heldUp = [&](bool fileThere, const std::function<void()>& action) {
        std::atomic<bool> done{false};
        boost::unique_lock<boost::mutex> lock(libAvMutex);
        std::thread thread([&] {
            action();
            done = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(30)); // enough to be done, if nothing held it up
        EXPECT_FALSE(done);
        EXPECT_EQ(std::filesystem::exists(file), fileThere);
        lock.unlock();
        thread.join();
    };
    Ko::VideoOutputVideoFile sink;
    heldUp(false, [&] { sink.open(64, 48, file, {25, 1}, 500000); });
    {
        const boost::unique_lock<boost::mutex> lock(libAvMutex);
        for (int n = 0; n < 20; ++n) // encoding needs no lock
            sink.write(test::numberedFrame(n));
    }
    heldUp(true, [&] { sink.close(); });
    Ko::VideoInputVideoFile source;
    heldUp(true, [&] { source.open(file); });
    heldUp(true, [&] { source.close(); });
    EXPECT_THROW(source.eof(), std::logic_error);
}

} // namespace
