#include "Kovanta/Font.h"

#include "draw/AllocationCount.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

using Image = Ko::Image<unsigned char>;

std::string picture(const Ko::Font& font) {
    Image im(Ko::PF_YCC444P);
    im.size(150, 60);
    std::string samples;
    for (int p = 0; p < 3; ++p)
        for (unsigned int y = 0; y < 60; ++y)
            std::fill_n(im.plane[p].view[y], 150, static_cast<unsigned char>(y));
    font.drawText(im, "threads\n\xff{}", {3, 25}, {235, 90, 170});
    for (int p = 0; p < 3; ++p)
        for (unsigned int y = 0; y < 60; ++y)
            samples.append(reinterpret_cast<const char*>(im.plane[p].view[y]), 150);
    return samples;
}

TEST(FontThreads, ShareOneFontOrMakeTheirOwn) {
    Ko::Font shared;
    shared.init(nullptr, 0, 20);
    const std::string want = picture(shared);
    std::vector<std::thread> threads;
    std::vector<int> right(4);
    for (int& result : right)
        threads.emplace_back([&shared, &want, &result] {
            for (int i = 0; i < 20; ++i)
                result += picture(shared) == want;
            Ko::Font own;
            own.init(nullptr, 0, 20);
            result += picture(own) == want;
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(right, std::vector<int>(4, 21));
}

TEST(FontThreads, DrawingAllocatesNothing) {
    Ko::Font font;
    font.init(nullptr, 0, 20);
    Image im(Ko::PF_YCC444P);
    im.size(200, 60);
    const std::string text = "none at all,\nnot even over edges";
    const long before = allocationCount();
    font.drawText(im, text, {-5, 10}, {235, 128, 128});
    EXPECT_EQ(allocationCount(), before);
    EXPECT_GT(before, 0);
}

} // namespace
