// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoOutputDisplay.h"

#include <gtest/gtest.h>

// On a server without other clients, which starts anew whenever the last one leaves.
TEST(DisplayAloneTest, OpensOneWindowAfterAnother) {
    for (int i = 0; i < 15; ++i)
        EXPECT_NO_THROW(Ko::VideoOutputDisplay(64, 1, 64, 48, false)) << i;
}
