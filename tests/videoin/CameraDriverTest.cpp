// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInput.h"
#include "support/Resources.h"
#include "videoin/VirtualCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

// What only real drivers show: the faults of every call are the fake camera's. Every test loads the drivers that it
// needs, so nothing of one is left for the next.

namespace {

using camera::Driver;
using camera::Frame;
using camera::Node;
using testing::ThrowsMessage;
using Camera = Ko::VideoInputCaptureV4L;

const char* const webcam = "n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0";

/// Of the size asked for, and numbered from tell() on.
void expectFrames(Camera& source, unsigned int count, unsigned int width = 320, unsigned int height = 180) {
    Ko::Image image(Ko::PF_YCC444P);
    const auto first = static_cast<std::uint64_t>(source.tell());
    for (std::uint64_t i = first; i < first + count; ++i) {
        ASSERT_TRUE(source.read(image));
        ASSERT_EQ(image.sequenceNumber, i);
    }
    EXPECT_EQ(image.width, width);
    EXPECT_EQ(image.height, height);
}

class CameraDriver : public testing::Test {
protected:
    ~CameraDriver() override { EXPECT_EQ(test::openDescriptors("/dev/video"), 0u); }
};

TEST_F(CameraDriver, StreamsAgainInAnotherSizeButNotBesideItself) {
    const Driver vivid("vivid", webcam);
    Camera source, second;
    source.init(0, 1, 1, 0); // the driver's smallest
    Node(0).setRate(60);
    expectFrames(source, 300);
    Node(0).set(camera::errorInBuffer, 1); // a damaged frame is a frame all the same
    expectFrames(source, 4);
    source.setBufferCount(1000);
    source.init(0, 641, 361, 0);
    EXPECT_EQ(test::mappedFiles("/dev/video"), 32u);
    expectFrames(source, 34, 640, 360);
    EXPECT_THAT([&] { second.init(0, 320, 180, 0); },
                ThrowsMessage<std::runtime_error>(
                    "[VideoInputCaptureV4L::setFormat]: Ioctl VIDIOC_S_FMT failed: Device or resource busy."));
    expectFrames(source, 2, 640, 360);
}

TEST_F(CameraDriver, TakesWhatALoopbackIsFedWith) {
    const Driver loopback("v4l2loopback", "devices=1 video_nr=9 card_label=Fed");
    Camera source;
    for (const unsigned int fourcc : {V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_YUV420}) {
        Node producer(9);
        producer.setFormat(fourcc, 354, 246, V4L2_BUF_TYPE_VIDEO_OUTPUT);
        Frame frame{fourcc, 354, 246, fourcc == V4L2_PIX_FMT_YUYV ? 708u : 354u};
        frame.fill(0);
        producer.writeFrame(frame);
        source.init(9, 1, 1, 0);
        Ko::Image image(Ko::PF_YCC444P);
        ASSERT_TRUE(source.read(image));
        EXPECT_EQ(camera::difference(image, frame), "");
        source.close();
    }
}

} // namespace
