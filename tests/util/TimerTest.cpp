// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Timer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <iostream>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

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
    const unsigned int passed = timer.get();
    EXPECT_GE(passed, 10000u);
    EXPECT_LT(passed, 1u << 31);
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

/// What is written to the stream at once, piece by piece.
struct Pieces : std::streambuf {
    std::vector<std::string> written;
    std::streamsize xsputn(const char* text, std::streamsize n) override {
        written.emplace_back(text, static_cast<std::size_t>(n));
        return n;
    }
    int_type overflow(int_type c) override {
        written.emplace_back(1, traits_type::to_char_type(c));
        return c;
    }
};

TEST(Timer, ALineIsWrittenAtOnceSoThatThoseOfTwoThreadsDoNotMix) {
    Pieces pieces;
    std::streambuf* const before = std::cout.rdbuf(&pieces);
    Ko::Timer().getCum("stage");
    std::cout.rdbuf(before);
    EXPECT_EQ(pieces.written, std::vector<std::string>{"[Timer::getCum()]: Comment: stage Time: 0 usec.\n"});
}

} // namespace
