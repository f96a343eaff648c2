// The road of a frame from file to file asks for no memory once it is under way.
#include "Kovanta/Draw.h"
#include "Kovanta/VideoInput.h"
#include "Kovanta/VideoOutput.h"
#include "support/Allocations.h"
#include "support/VideoMedia.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace {

class Road : public testing::Test {
protected:
    static constexpr unsigned int width = 160;
    static constexpr unsigned int height = 120;
    static constexpr int count = 120;

    void SetUp() override {
        Ko::VideoOutputVideoFile out(width, height, path("in.avi"), {25, 1}, 500000);
        for (int n = 0; n < count; ++n)
            out.write(test::numberedFrame(n, width, height));
        out.close();
        ASSERT_EQ(out.getError(), "");
    }
    std::string path(const char* name) const { return folder / name; }

    test::TempDirectory folder;
};

TEST_F(Road, ReadingAsksForMemoryOnlyForTheFirstFrame) {
    Ko::VideoInputVideoFile in(path("in.avi"));
    Ko::Image<unsigned char> frame(Ko::PF_YCC444P);
    ASSERT_TRUE(in.read(frame));
    const std::size_t before = test::bigAllocations();
    int frames = 1;
    while (in.read(frame))
        ++frames;
    EXPECT_EQ(frames, count);
    EXPECT_EQ(test::bigAllocations(), before);
}

TEST_F(Road, FramesOnTheirWayAreRecycled) {
    Ko::VideoInputVideoFile in(path("in.avi"));
    Ko::VideoOutputVideoFile out(width, height, path("out.avi"), {25, 1}, 500000);
    Ko::Image<unsigned char> frame(Ko::PF_YCC444P);
    const std::size_t before = test::bigAllocations();
    int frames = 0;
    for (; in.read(frame); ++frames) {
        Ko::drawBbox(frame, Ko::Bbox<int>{20, 20, 60, 50}, Ko::YCCColor{173, 42, 26}, false);
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
