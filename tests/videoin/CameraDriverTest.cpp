// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/Colors.h"
#include "Kovanta/Draw.h"
#include "Kovanta/ImageFile.h"
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
    source.setFrameRate({60, 1});
    source.init(0, 1, 1, 0); // the driver's smallest
    EXPECT_EQ(source.getFrameRate(), (Ko::Frac<unsigned int>{60, 1}));
    expectFrames(source, 300);
    Node(0).set(camera::errorInBuffer, 1); // a damaged frame is a frame all the same
    expectFrames(source, 4);
    source.setBufferCount(1000);
    source.init(0, 641, 361, 0);
    EXPECT_THAT(test::mappedFiles("/dev/video"), testing::AnyOf(32u, 64u)); // what the driver grants
    expectFrames(source, 66, 640, 360);
    EXPECT_THAT([&] { second.init(0, 320, 180, 0); },
                ThrowsMessage<std::runtime_error>(
                    "[VideoInputCaptureV4L::setFormat]: Ioctl VIDIOC_S_FMT failed: Device or resource busy."));
    expectFrames(source, 2, 640, 360);
}

TEST_F(CameraDriver, TellsOfLostFramesAndWakesWhenItGoesAway) {
    const Driver vivid("vivid", "n_devs=1 node_types=0x1 num_inputs=2 input_types=0x1"); // television, then a webcam
    Node(0).selectInput(1);
    Camera source;
    source.init(0, 640, 480, 0);
    Node(0).set(camera::testPattern, 7); // red
    Node(0).set(camera::textMode, 2);    // none
    Ko::Image image(Ko::PF_YCC444P);
    for (int i = 0; i < 4; ++i) // the first ones are from before
        source.read(image);
    EXPECT_NEAR(image.plane[0].view[300][300], 81, 2) << "the other input's layout";
    EXPECT_NEAR(image.plane[1].view[300][300], 90, 2) << "the other input's layout";
    const std::uint32_t first = source.getDriverSequence();
    const std::int64_t start = source.getTimeStamp();
    const std::uint64_t lostBefore = source.getLostFrames(); // this machine may be slow
    Node(0).set(camera::dropped, 50);                        // of a hundred
    expectFrames(source, 20, 640, 480);
    EXPECT_GT(source.getLostFrames(), lostBefore);
    EXPECT_EQ(source.getDriverSequence() - first, 20 + source.getLostFrames() - lostBefore);
    // 25 frames a second
    EXPECT_NEAR(static_cast<double>(source.getTimeStamp() - start) / (source.getDriverSequence() - first), 4e4, 1e4);
    Node(0).set(camera::dropped, 100);
    source.waitForFrame(1000);
    Node(0).set(camera::disconnect, 1);
    EXPECT_TRUE(source.waitForFrame(60000));
    EXPECT_THAT([&] { source.read(image); }, ThrowsMessage<std::runtime_error>(testing::HasSubstr("No such device")));
}

TEST_F(CameraDriver, TakesWhatALoopbackIsFedWith) {
    Camera source;
    for (const unsigned int fourcc : {V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_YUV420}) {
        // Anew for each: newer ones give an empty frame first after a change of format.
        const Driver loopback("v4l2loopback", "devices=1 video_nr=9 card_label=Fed");
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

TEST_F(CameraDriver, TakesMotionJpegThroughLibv4l2) {
    const Driver loopback("v4l2loopback", "devices=1 video_nr=9 card_label=Fed");
    Node producer(9);
    producer.setFormat(V4L2_PIX_FMT_MJPEG, 320, 240, V4L2_BUF_TYPE_VIDEO_OUTPUT);
    Frame picture{V4L2_PIX_FMT_MJPEG, 320, 240, 0};
    Ko::Image bands(Ko::PF_YCC444P);
    bands.size(320, 240);
    const Ko::YCCColor colors[] = {Ko::colors::red, Ko::colors::white, Ko::fromRgb(0, 0, 128)};
    for (int band = 0; band < 3; ++band)
        Ko::drawBbox(bands, {0, 80 * band, 319, 80 * band + 79}, colors[band], true);
    Ko::writeImage(picture.bytes, bands, ".jpg");
    producer.writeFrame(picture);

    Camera source;
    EXPECT_THROW(source.init(9, 320, 240, 0), std::runtime_error);
    source.setEmulatedFormats(true).init(9, 320, 240, 0);
    EXPECT_EQ(source.fmt2string(V4L2_PIX_FMT_YUV420), "YU12");
    expectFrames(source, 1, 320, 240);
    Ko::Image image(Ko::PF_YCC444P);
    Frame damaged = picture;
    damaged.bytes.resize(300);
    source.setTimeout(300);
    producer.writeFrame(damaged);
    EXPECT_THAT([&] { source.read(image); }, ThrowsMessage<std::runtime_error>(testing::HasSubstr("timeout")));
    source.setTimeout(0);
    producer.writeFrame(damaged);
    producer.writeFrame(picture);
    ASSERT_TRUE(source.read(image));
    for (unsigned int band = 0; band < 3; ++band)
        for (int p = 0; p < 3; ++p)
            EXPECT_NEAR(image.plane[p].view[40 + 80 * band][160], bands.plane[p].view[40 + 80 * band][160], 3) << band;
}

} // namespace
