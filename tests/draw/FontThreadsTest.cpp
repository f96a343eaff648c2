// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Font.h"

#include "support/Allocations.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

test::Image picture(const Ko::Font& font) {
    test::Image im = test::randomImage(Ko::PF_YCC444P, 150, 60);
    font.drawText(im, "threads\n\xff{}", {3, 25}, {235, 90, 170});
    return im;
}

TEST(FontThreads, ShareOneFontOrMakeTheirOwn) {
    Ko::Font shared;
    shared.init(nullptr, 0, 20);
    const auto want = picture(shared);
    std::vector<std::thread> threads;
    std::vector<int> right(4);
    for (int& result : right)
        threads.emplace_back([&shared, &want, &result] {
            for (int i = 0; i < 20; ++i)
                result += test::difference(picture(shared), want).empty();
            Ko::Font own;
            own.init(nullptr, 0, 20);
            result += test::difference(picture(own), want).empty();
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(right, std::vector<int>(4, 21));
}

TEST(FontThreads, DrawingAllocatesNothing) {
    Ko::Font font;
    font.init(nullptr, 0, 20);
    auto im = test::randomImage(Ko::PF_YCC444P, 200, 60);
    const std::string text = "none at all,\nnot even over edges";
    const std::size_t before = test::allocations();
    font.drawText(im, text, {-5, 10}, {235, 128, 128});
    EXPECT_EQ(test::allocations(), before);
    EXPECT_GT(before, 0u);
}

} // namespace
