#include "videoout/EncoderPictures.h"
#include "videoout/FramePool.h"

#include <gtest/gtest.h>

namespace {

using Ko::EncoderPicture;
using Ko::EncoderPictures;

TEST(EncoderPictures, APictureThatTheEncoderHoldsIsLeftAlone) {
    EncoderPictures pictures(7, 5);
    EncoderPicture& first = pictures.writable();
    EXPECT_EQ(&pictures.writable(), &first);
    Ko::libav::FrameHandle held(av_frame_clone(first.frame.get()));
    ASSERT_TRUE(held);
    EncoderPicture& second = pictures.writable();
    EXPECT_NE(second.frame->data[0], held->data[0]);
    held.reset();
    EXPECT_EQ(&pictures.writable(), &first);
}

TEST(EncoderPictures, TheImageIsThePictureAndFreshMemoryIsNeutral) {
    EncoderPictures pictures(7, 5);
    const EncoderPicture& picture = pictures.writable();
    const unsigned int widths[] = {7, 3, 3};
    const unsigned int heights[] = {5, 2, 2};
    for (int p = 0; p < 3; ++p) {
        const auto& plane = picture.image.plane[p];
        ASSERT_EQ(plane.width, widths[p]);
        ASSERT_EQ(plane.height, heights[p]);
        for (unsigned int y = 0; y < plane.height; ++y)
            EXPECT_EQ(plane.view[y], picture.frame->data[p] + static_cast<int>(y) * picture.frame->linesize[p]);
        const int rounded = (p == 0 ? 5 : 3);
        for (int y = 0; y < rounded; ++y)
            for (int x = 0; x < (p == 0 ? 7 : 4); ++x)
                ASSERT_EQ(picture.frame->data[p][y * picture.frame->linesize[p] + x], 128);
    }
}

TEST(FramePool, MemoryComesBack) {
    Ko::FramePool pool;
    Ko::Image<unsigned char> frame = pool.take();
    frame.size(16, 16);
    const unsigned char* const memory = frame.plane[0].data;
    pool.give(std::move(frame));
    const Ko::Image<unsigned char> again = pool.take();
    EXPECT_EQ(again.plane[0].data, memory);
    EXPECT_EQ(pool.take().plane[0].data, nullptr);
}

} // namespace
