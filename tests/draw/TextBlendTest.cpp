// SPDX-License-Identifier: BSD-2-Clause
#include "draw/TextBlend.h"

#include <gtest/gtest.h>

#include <array>

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

} // namespace
