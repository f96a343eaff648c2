// SPDX-License-Identifier: BSD-2-Clause
// The road of a frame from file to file asks for no memory once it is under way.
#include "Kovanta/Draw.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"
#include "support/Allocations.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

TEST(Road, FramesOnTheirWayAreRecycled) {
    constexpr int count = 120;
    const test::TempDirectory folder;
    test::encodeNumbered(folder / "in.avi", {160, 120, count}, "-c:v mpeg4");
    Ko::VideoInputVideoFile in(folder / "in.avi");
    Ko::VideoOutputVideoFile out(160, 120, folder / "out.avi", {25, 1}, 500000);
    Ko::Image frame(Ko::PF_YCC444P);
    const std::size_t before = test::bigAllocations();
    int frames = 0;
    for (; in.read(frame); ++frames) {
        Ko::drawBbox(frame, {20, 20, 60, 50}, {173, 42, 26}, false);
        ASSERT_TRUE(out.write(frame));
    }
    out.close();
    EXPECT_EQ(frames, count);
    EXPECT_EQ(out.getError(), "");
    // At any time five are queued, one is the writer's, one ours and one being copied, of three planes each.
    EXPECT_GT(test::bigAllocations(), before);
    EXPECT_LE(test::bigAllocations() - before, 3u * 8);
}

} // namespace
