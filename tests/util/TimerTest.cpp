#include "Kovanta/Timer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

namespace {

void pass(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

TEST(Timer, StopAddsTheWholeTimeSinceStartEachTime) {
    Ko::Timer timer;
    EXPECT_EQ(timer.getCum(), 0u);
    timer.start();
    pass(20);
    const unsigned int first = timer.stop();
    EXPECT_GE(first, 20000u);
    EXPECT_EQ(timer.getCum(), first);
    const unsigned int second = timer.stop();
    EXPECT_GE(second, 2 * first);
}

TEST(Timer, GetChangesNothingAndResetKeepsTheStart) {
    Ko::Timer timer;
    pass(10);
    EXPECT_GE(timer.get(), 10000u);
    EXPECT_EQ(timer.getCum(), 0u);
    timer.stop();
    timer.reset();
    EXPECT_EQ(timer.getCum(), 0u);
    EXPECT_GE(timer.get(), 10000u);
}

TEST(Timer, TotalsAddAndWrapAt32Bits) {
    Ko::Timer total;
    Ko::Timer stage;
    pass(2);
    const unsigned int one = stage.stop();
    total += stage;
    EXPECT_EQ(total.getCum(), one);
    // Doubling 32 times shifts every bit out.
    for (int i = 0; i < 32; ++i) {
        EXPECT_EQ(stage.getCum(), static_cast<unsigned int>(std::uint64_t{one} << i));
        stage += stage;
    }
    EXPECT_EQ(stage.getCum(), 0u);
}

TEST(Timer, PrintsOneLineForACommentAndNoneWithout) {
    Ko::Timer timer;
    testing::internal::CaptureStdout();
    const std::string stopped = std::to_string(timer.stop("decode"));
    timer.stop("");
    const std::string total = std::to_string(timer.getCum("sum"));
    const std::string read = std::to_string(timer.get("now"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[Timer::stop()]: Comment: decode Time: " + stopped + " usec.\n[Timer::getCum()]: Comment: sum Time: " +
                  total + " usec.\n[Timer::get()]: Comment: now Time: " + read + " usec.\n");
}

TEST(Timer, LinesOfTwoThreadsDoNotMix) {
    testing::internal::CaptureStdout();
    std::thread threads[2];
    for (std::thread& thread : threads)
        thread = std::thread([] {
            for (int i = 0; i < 500; ++i)
                Ko::Timer().getCum("stage");
        });
    for (std::thread& thread : threads)
        thread.join();
    std::string expected;
    for (int i = 0; i < 1000; ++i)
        expected += "[Timer::getCum()]: Comment: stage Time: 0 usec.\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
}

} // namespace
