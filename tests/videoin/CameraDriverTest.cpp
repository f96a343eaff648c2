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
using testing::ElementsAre;
using testing::StartsWith;
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
    ~CameraDriver() override {
        camera::hidePlanar = false;
        EXPECT_EQ(test::openDescriptors("/dev/video"), 0u);
    }
};

/// What the driver itself delivers, by another way than the library's.
Frame colorBars(unsigned int fourcc, unsigned int width, unsigned int height) {
    Node node(0);
    node.setPattern("75% Colorbar");
    node.setFormat(fourcc, width, height);
    node.setRate(60);
    return node.readFrame();
}

TEST_F(CameraDriver, DeliversTestPatternsByteForByte) {
    const Driver vivid("vivid", webcam);
    const struct {
        unsigned int askedWidth, askedHeight, width, height;
    } sizes[] = {{320, 180, 320, 180}, {1, 1, 320, 180}, {641, 481, 640, 480}};
    for (const unsigned int fourcc : {V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_YUYV})
        for (const auto& size : sizes) {
            camera::hidePlanar = fourcc == V4L2_PIX_FMT_YUYV;
            const Frame bars = colorBars(fourcc, size.width, size.height);
            Node(0).setFormat(V4L2_PIX_FMT_RGB24, 320, 180);
            Camera source;
            source.init(0, size.askedWidth, size.askedHeight, 0);
            ASSERT_EQ(Node(0).format().pixelformat, fourcc);
            Ko::Image image(Ko::PF_YCC444P);
            ASSERT_TRUE(source.read(image));
            EXPECT_EQ(camera::difference(image, bars), "") << fourcc << " " << size.askedWidth;
        }
}

TEST_F(CameraDriver, StreamsAgainInAnotherSizeButNotBesideItself) {
    const Driver vivid("vivid", webcam);
    Camera source, second;
    source.init(0, 320, 180, 0);
    Node(0).setRate(60);
    expectFrames(source, 300);
    Node(0).set(camera::errorInBuffer, 1); // a damaged frame is a frame all the same
    expectFrames(source, 4);
    source.setBufferCount(1000);
    source.init(0, 640, 360, 0);
    EXPECT_EQ(test::mappedFiles("/dev/video"), 32u);
    expectFrames(source, 34, 640, 360);
    EXPECT_THAT([&] { second.init(0, 320, 180, 0); },
                ThrowsMessage<std::runtime_error>(
                    "[VideoInputCaptureV4L::setFormat]: Ioctl VIDIOC_S_FMT failed: Device or resource busy."));
    expectFrames(source, 2, 640, 360);
}

TEST_F(CameraDriver, TwoCamerasAtOnceAndAListWithGaps) {
    Camera left, right;
    EXPECT_THAT(left.listDevs(), ElementsAre());
    const Driver vivid("vivid", "n_devs=2 node_types=0x1,0x1 num_inputs=1,1 input_types=0x0,0x0 vid_cap_nr=5,7");
    Node(5).setPattern("100% Red");
    Node(7).setPattern("100% Blue");
    left.init(5, 320, 180, 0);
    right.init(7, 640, 360, 0);
    Ko::Image image(Ko::PF_YCC444P);
    for (unsigned int i = 0; i < 5; ++i) {
        left.read(image);
        EXPECT_EQ(image.plane[1].view[90][160], 90);
        right.read(image);
        EXPECT_EQ(image.plane[1].view[180][320], 239);
    }
    EXPECT_THAT(left.listDevs(), ElementsAre("none", "none", "none", "none", "none", "vivid platform:vivid-000", "none",
                                             "vivid platform:vivid-001")); // beside the streams
    left.close();                                                          // the driver goes first
    right.close();
}

TEST_F(CameraDriver, SurvivesUnpluggingInMidStream) {
    const Driver vivid("vivid", webcam);
    Camera source;
    source.init(0, 320, 180, 0);
    expectFrames(source, 3);
    Node(0).set(camera::disconnect, 1);
    for (int again = 0; again < 2; ++again)
        EXPECT_THAT([&] { expectFrames(source, 1); },
                    ThrowsMessage<std::runtime_error>(
                        "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: No such device."));
    EXPECT_EQ(source.tell(), 3);
    source.close();
    source.init(0, 320, 180, 0);
    expectFrames(source, 3);
}

TEST_F(CameraDriver, TellsNodesApartAndTakesTopFields) {
    // Input 0 of a television card, and its output node, whose driver can capture while the node cannot.
    const Driver vivid("vivid",
                       "n_devs=1 node_types=0x101 num_inputs=2 input_types=0x1 num_outputs=1 output_types=0x0");
    Camera source;
    EXPECT_THAT([&] { source.init(1, 320, 180, 0); },
                ThrowsMessage<std::runtime_error>("[VideoInputCaptureV4L::init]: Device does not support "
                                                  "V4L2_CAP_VIDEO_CAPTURE and V4L2_CAP_STREAMING."));
    source.setFieldOrder(Ko::FO_TOP);
    source.init(0, 720, 288, 1);
    EXPECT_EQ(Node(0).format().field, std::uint32_t{V4L2_FIELD_TOP});
    expectFrames(source, 3, 720, 288);
    testing::internal::CaptureStdout();
    source.enumInputs();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "VideoInputCaptureV4L::enumInputs: Input: 0: TV 0\n"
                                                      "VideoInputCaptureV4L::enumInputs: Input: 1: Webcam 0\n");
    EXPECT_EQ(source.fmt2string(V4L2_PIX_FMT_YUV420), "Planar YUV 4:2:0");
    EXPECT_EQ(source.std2string(V4L2_STD_PAL_B), "PAL PAL-BG ");
}

TEST_F(CameraDriver, TakesWhatALoopbackIsFedWithAndRefusesCompressedVideo) {
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
    Node producer(9);
    producer.setFormat(V4L2_PIX_FMT_MJPEG, 320, 240, V4L2_BUF_TYPE_VIDEO_OUTPUT);
    producer.writeFrame({V4L2_PIX_FMT_YUYV, 64, 1, 128});
    EXPECT_THAT([&] { source.init(9, 320, 240, 0); },
                ThrowsMessage<std::runtime_error>(
                    StartsWith("[VideoInputCaptureV4L::setFormat]: Pixel format of camera is not supported. ")));
}

} // namespace
