// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/EncoderPictures.h"

#include <gtest/gtest.h>

namespace {

TEST(EncoderPictures, APictureThatTheEncoderHoldsIsLeftAlone) {
    Ko::EncoderPictures pictures(7, 5, {AV_PIX_FMT_YUV420P, Ko::PF_YCC420P});
    Ko::EncoderPicture& first = pictures.writable();
    EXPECT_EQ(&pictures.writable(), &first);
    Ko::libav::FrameHandle held(av_frame_clone(first.frame.get()));
    ASSERT_TRUE(held);
    EXPECT_NE(pictures.writable().frame->data[0], held->data[0]);
    held.reset();
    EXPECT_EQ(&pictures.writable(), &first);
}

} // namespace
