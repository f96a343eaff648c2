#include "draw/TextBlend.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

namespace {

using Byte = unsigned char;

int rule(int s, int a, int c) {
    return ((256 - a) * s + a * c) >> 8;
}

TEST(TextBlend, EverySampleCoverageAndColour) {
    std::array<Byte, 256> coverage;
    for (unsigned int a = 0; a < 256; ++a)
        coverage[a] = static_cast<Byte>(a);
    long wrong = 0;
    for (int s = 0; s < 256; ++s)
        for (int c = 0; c < 256; ++c) {
            std::array<Byte, 256> planes[3];
            const int colors[3] = {c, 255 - c, c ^ 0x55};
            for (auto& plane : planes)
                plane.fill(static_cast<Byte>(s));
            Ko::blendText(planes[0].data(), planes[1].data(), planes[2].data(), coverage.data(), 256,
                          {static_cast<Byte>(colors[0]), static_cast<Byte>(colors[1]), static_cast<Byte>(colors[2])});
            for (std::size_t p = 0; p < 3; ++p)
                for (std::size_t a = 0; a < 256; ++a)
                    wrong += planes[p][a] != rule(s, static_cast<int>(a), colors[p]);
        }
    EXPECT_EQ(wrong, 0);
}

TEST(TextBlend, EveryWidthAndAlignmentWithinItsBytes) {
    constexpr std::size_t guard = 40;
    std::mt19937 random(7);
    for (std::size_t n = 0; n <= 70; ++n)
        for (std::size_t offset = 0; offset < 9; ++offset) {
            std::vector<Byte> coverage(n); // no spare byte, so that a sanitizer sees any reading beyond it
            std::vector<Byte> planes[3];
            for (auto& a : coverage)
                a = static_cast<Byte>(random());
            for (auto& plane : planes) {
                plane.resize(guard + n + guard);
                for (auto& s : plane)
                    s = static_cast<Byte>(random());
            }
            std::vector<Byte> want[3] = {planes[0], planes[1], planes[2]};
            const Ko::YCCColor c{static_cast<Byte>(random()), static_cast<Byte>(random()), static_cast<Byte>(random())};
            const Byte colors[3] = {c.y, c.cb, c.cr};
            for (std::size_t p = 0; p < 3; ++p)
                for (std::size_t i = 0; i < n; ++i)
                    want[p][offset + i] = static_cast<Byte>(rule(want[p][offset + i], coverage[i], colors[p]));
            Ko::blendText(&planes[0][offset], &planes[1][offset], &planes[2][offset], coverage.data(), n, c);
            for (std::size_t p = 0; p < 3; ++p)
                ASSERT_EQ(planes[p], want[p]) << n << " at " << offset;
        }
}

} // namespace
