#include "Kovanta/VideoInput.h"
#include "support/Resources.h"
#include "support/TestImages.h"
#include "videoin/VirtualCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

// Every test loads the drivers that it needs, so nothing of one is left for the next.

namespace {

using camera::Driver;
using camera::Frame;
using camera::Node;
using test::Image;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Camera = Ko::VideoInputCaptureV4L;

const char* const webcam = "n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0";

std::string failure(const std::function<void()>& action) {
    return test::thrownText<std::runtime_error>(action);
}

void expectHeld(unsigned int descriptors, unsigned int mappings = 0) {
    EXPECT_EQ(test::openDescriptors("/dev/video"), descriptors);
    EXPECT_EQ(test::mappedFiles("/dev/video"), mappings);
}

/// Of the size asked for, and numbered from tell() on.
void expectFrames(Camera& source, unsigned int count, unsigned int width = 320, unsigned int height = 180) {
    Image image(Ko::PF_YCC444P);
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
        expectHeld(0);
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
    const unsigned int sizes[][4] = {
        {320, 180, 320, 180}, {1, 1, 320, 180}, {500, 300, 640, 360}, {641, 481, 640, 480}}; // asked, granted
    const std::pair<const char*, std::array<unsigned char, 3>> colours[] = {{"100% Black", {16, 128, 128}},
                                                                            {"100% White", {234, 128, 128}},
                                                                            {"100% Red", {81, 90, 239}},
                                                                            {"100% Green", {144, 54, 34}},
                                                                            {"100% Blue", {40, 239, 109}}};
    for (const unsigned int fourcc : {V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_YUYV})
        for (const auto& [askedWidth, askedHeight, width, height] : sizes) {
            camera::hidePlanar = fourcc == V4L2_PIX_FMT_YUYV;
            SCOPED_TRACE(testing::Message() << fourcc << " " << askedWidth << "x" << askedHeight);
            const Frame bars = colorBars(fourcc, width, height);
            Node(0).setFormat(V4L2_PIX_FMT_RGB24, 320, 180);
            Camera source;
            source.init(0, askedWidth, askedHeight, 0);
            Node node(0);
            ASSERT_EQ(node.format().pixelformat, fourcc);
            ASSERT_EQ(source.getWidth(), width);
            ASSERT_EQ(source.getHeight(), height);
            Image image(Ko::PF_YCC444P);
            ASSERT_TRUE(source.read(image));
            EXPECT_EQ(camera::difference(image, bars), "");
            if (width > 320)
                continue;
            for (const auto& [name, sample] : colours) {
                node.setPattern(name);
                for (int inFlight = 0; inFlight < 4; ++inFlight)
                    source.read(image);
                Frame solid{V4L2_PIX_FMT_YUYV, width, height, width * 2};
                for (std::size_t i = 0; i < solid.bytes.size(); ++i)
                    solid.bytes[i] = sample[i % 2 == 0 ? 0 : i % 4 == 1 ? 1 : 2];
                EXPECT_EQ(camera::difference(image, solid), "") << name;
            }
        }
}

TEST_F(CameraDriver, FollowsThePaddingOfRows) {
    const Driver vivid("vivid", webcam);
    for (const unsigned int fourcc : {V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_YUYV}) {
        camera::hidePlanar = fourcc == V4L2_PIX_FMT_YUYV;
        const Frame bars = colorBars(fourcc, 320, 180);
        Node(0).setFormat(V4L2_PIX_FMT_YUYV, 640, 360); // its 1280 bytes a row stay in force
        Camera source;
        source.init(0, 320, 180, 0);
        ASSERT_EQ(Node(0).format().bytesperline, 1280u);
        Image image(Ko::PF_YCC444P);
        ASSERT_TRUE(source.read(image));
        EXPECT_EQ(camera::difference(image, bars), "");
    }
}

TEST_F(CameraDriver, DeliversThreeHundredFramesAndAnyNumberOfBuffers) {
    const Driver vivid("vivid", webcam);
    Camera source;
    source.init(0, 320, 180, 0);
    Node(0).setRate(60);
    expectFrames(source, 300);
    EXPECT_EQ(source.tell(), 300);
    EXPECT_EQ(source.seek(7, Ko::VP_BEGIN), 300);

    const std::pair<unsigned int, unsigned int> counts[] = {{1, 2}, {4, 4}, {9, 9}, {1000, 32}};
    for (const auto& [wished, granted] : counts) {
        source.setBufferCount(wished);
        source.init(0, 320, 180, 0);
        expectHeld(1, granted);
        expectFrames(source, granted + 2);
    }

    // Another size while it streams, and a second user of a device that streams.
    source.setBufferCount(2);
    source.init(0, 640, 360, 0);
    expectFrames(source, 2, 640, 360);
    source.init(0, 320, 180, 0);
    Camera second;
    EXPECT_EQ(failure([&] { second.init(0, 320, 180, 0); }),
              "[VideoInputCaptureV4L::setFormat]: Ioctl VIDIOC_S_FMT failed: Device or resource busy.");
    expectHeld(1, 2);
    expectFrames(source, 2);
}

TEST_F(CameraDriver, TwoCamerasAtOnceAndAListWithGaps) {
    Camera left, right;
    EXPECT_THAT(left.listDevs(), ElementsAre());
    const Driver vivid("vivid", "n_devs=2 node_types=0x1,0x1 num_inputs=1,1 input_types=0x0,0x0 vid_cap_nr=5,7");
    EXPECT_THAT(left.listDevs(), ElementsAre("none", "none", "none", "none", "none", "vivid platform:vivid-000", "none",
                                             "vivid platform:vivid-001"));
    Node(5).setPattern("100% Red");
    Node(7).setPattern("100% Blue");
    left.init(5, 320, 180, 0);
    right.init(7, 640, 360, 0);
    Image image(Ko::PF_YCC444P);
    for (unsigned int i = 0; i < 5; ++i) {
        left.read(image);
        EXPECT_EQ(image.plane[1].view[90][160], 90);
        left.read(image);
        right.read(image);
        EXPECT_EQ(image.plane[1].view[180][320], 239);
        EXPECT_EQ(image.sequenceNumber, i);
    }
    EXPECT_EQ(left.tell(), 10);
    EXPECT_EQ(left.listDevs().size(), 8u); // beside the streams
    left.close();                          // the driver goes first
    right.close();
}

TEST_F(CameraDriver, SurvivesUnpluggingInMidStream) {
    const Driver vivid("vivid", webcam);
    Camera source;
    source.init(0, 320, 180, 0);
    expectFrames(source, 3);
    Node(0).set(camera::disconnect, 1);
    for (int again = 0; again < 2; ++again)
        EXPECT_EQ(failure([&] { expectFrames(source, 1); }),
                  "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: No such device.");
    EXPECT_EQ(source.tell(), 3);
    Camera other;
    EXPECT_EQ(failure([&] { other.init(0, 320, 180, 0); }),
              "[VideoInputCaptureV4L::init]: Cannot open /dev/video0: No such device.");
    source.close();
    expectHeld(0);
    source.init(0, 320, 180, 0);
    expectFrames(source, 3);
}

TEST_F(CameraDriver, ReportsTheFaultsOfTheDriver) {
    const Driver vivid("vivid", webcam);
    Camera source;
    source.init(0, 320, 180, 0);
    Node(0).set(camera::errorInBuffer, 1); // a damaged frame is a frame all the same
    expectFrames(source, 4);
    Node(0).set(camera::errorInQbuf, 1);
    EXPECT_EQ(failure([&] { expectFrames(source, 1); }),
              "[VideoInputCaptureV4L::read]: Ioctl VIDIOC_QBUF failed: Invalid argument.");
    Node(0).set(camera::dropPercentage, 50);
    expectFrames(source, 6);
    Node(0).set(camera::dropPercentage, 0);
    Node(0).set(camera::errorInDqbuf, 1);
    EXPECT_EQ(failure([&] { expectFrames(source, 4); }), // some are in flight
              "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: Input/output error.");
    source.close();
    expectHeld(0);
    source.init(0, 320, 180, 0);
    expectFrames(source, 3);
}

TEST_F(CameraDriver, NamesWhatTheDeviceOffersAndTakesTopFields) {
    // Input 0 of a television card, and its output node, whose driver can capture while the node cannot.
    const Driver vivid("vivid",
                       "n_devs=1 node_types=0x101 num_inputs=2 input_types=0x1 num_outputs=1 output_types=0x0");
    Camera source;
    EXPECT_EQ(failure([&] { source.init(1, 320, 180, 0); }),
              "[VideoInputCaptureV4L::init]: Device does not support V4L2_CAP_VIDEO_CAPTURE and V4L2_CAP_STREAMING.");
    expectHeld(0);

    source.setFieldOrder(Ko::FO_TOP);
    source.init(0, 720, 288, 1);
    EXPECT_EQ(Node(0).format().field, std::uint32_t{V4L2_FIELD_TOP});
    expectFrames(source, 3, 720, 288);
    testing::internal::CaptureStdout();
    source.enumInputs();
    source.enumFmts();
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(printed, StartsWith("VideoInputCaptureV4L::enumInputs: Input: 0: TV 0\n"
                                    "VideoInputCaptureV4L::enumInputs: Input: 1: Webcam 0\n"
                                    "[VideoInputCaptureV4L::enumFmts]: "));
    EXPECT_THAT(printed, HasSubstr("[VideoInputCaptureV4L::enumFmts]: Planar YUV 4:2:0\n"));
    EXPECT_EQ(source.fmt2string(V4L2_PIX_FMT_YUV420), "Planar YUV 4:2:0");
    EXPECT_EQ(source.fmt2string(V4L2_PIX_FMT_MJPEG), "unknown");
    EXPECT_EQ(source.std2string(V4L2_STD_PAL_B), "PAL PAL-BG ");

    source.setFieldOrder(Ko::FO_ANY);
    source.init(0, 720, 576, 0);
    EXPECT_EQ(Node(0).format().field, std::uint32_t{V4L2_FIELD_INTERLACED});
    expectFrames(source, 3, 720, 576);
}

TEST_F(CameraDriver, TakesWhatALoopbackIsFedWithAndRefusesCompressedVideo) {
    const Driver loopback("v4l2loopback", "devices=1 video_nr=9 card_label=Fed");
    const std::pair<unsigned int, unsigned int> sizes[] = {{48, 32}, {354, 246}, {642, 2}};
    Camera source;
    for (const unsigned int fourcc : {V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_YUV420})
        for (const auto& [width, height] : sizes) {
            Node producer(9);
            ASSERT_EQ(producer.setFormat(fourcc, width, height, V4L2_BUF_TYPE_VIDEO_OUTPUT).width, width);
            Frame frame{fourcc, width, height, width * (fourcc == V4L2_PIX_FMT_YUYV ? 2 : 1)};
            frame.fill(0);
            producer.writeFrame(frame);
            source.init(9, 1, 1, 0);
            Image image(Ko::PF_YCC444P);
            for (unsigned int number = 0; number < 10; ++number) {
                ASSERT_TRUE(source.read(image));
                ASSERT_EQ(camera::difference(image, frame), "") << number;
                frame.fill(number + 1);
                producer.writeFrame(frame);
            }
            EXPECT_THAT(source.listDevs().back(), StartsWith("Fed "));
            source.close();
        }

    Node producer(9);
    producer.setFormat(V4L2_PIX_FMT_MJPEG, 320, 240, V4L2_BUF_TYPE_VIDEO_OUTPUT);
    producer.writeFrame({V4L2_PIX_FMT_YUYV, 64, 1, 128});
    EXPECT_THAT(failure([&] { source.init(9, 320, 240, 0); }),
                StartsWith("[VideoInputCaptureV4L::setFormat]: Pixel format of camera is not supported. "));
    expectHeld(1); // the producer's
}

} // namespace
