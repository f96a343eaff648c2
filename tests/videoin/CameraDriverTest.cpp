#include "Kovanta/VideoInput.h"
#include "videoin/VirtualCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

// Every test loads the drivers that it needs, so nothing of one is left for the next.

namespace {

using camera::Driver;
using camera::Frame;
using camera::Node;
using Ko::Image;
using Ko::VideoInputCaptureV4L;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const char* const webcam = "n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0";
const char* const twoWebcams = "n_devs=2 node_types=0x1,0x1 num_inputs=1,1 input_types=0x0,0x0 vid_cap_nr=5,7";
const char* const unsupported =
    "[VideoInputCaptureV4L::setFormat]: Pixel format of camera is not supported. Uncle Brom "
    "wants YOU to implement it.";

std::string failure(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "nothing thrown";
}

std::string printed(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

void expectNothingHeld() {
    EXPECT_EQ(camera::openDescriptors(), 0);
    EXPECT_EQ(camera::liveMappings(), 0);
}

void expectFrames(VideoInputCaptureV4L& source, unsigned int count) {
    Image<unsigned char> image(Ko::PF_YCC444P);
    const auto first = static_cast<std::uint64_t>(source.tell());
    for (std::uint64_t i = first; i < first + count; ++i) {
        ASSERT_TRUE(source.read(image));
        ASSERT_EQ(image.sequenceNumber, i);
    }
    EXPECT_EQ(image.width, source.getWidth());
    EXPECT_EQ(image.height, source.getHeight());
}

class CameraDriver : public testing::Test {
protected:
    ~CameraDriver() override {
        camera::hidePlanar = false;
        expectNothingHeld();
    }
};

TEST_F(CameraDriver, DeliversTestPatternsByteForByte) {
    const Driver vivid("vivid", webcam);
    struct Size {
        unsigned int askedWidth, askedHeight, width, height;
    };
    struct Colour {
        const char* name;
        camera::Sample sample;
    };
    const Size sizes[] = {{320, 180, 320, 180}, {1, 1, 320, 180}, {500, 300, 640, 360}, {641, 481, 640, 480}};
    const Colour colours[] = {{"100% Black", {16, 128, 128}},
                              {"100% White", {234, 128, 128}},
                              {"100% Red", {81, 90, 239}},
                              {"100% Green", {144, 54, 34}},
                              {"100% Blue", {40, 239, 109}}};
    for (const bool planar : {true, false}) {
        camera::hidePlanar = !planar;
        const unsigned int fourcc = planar ? V4L2_PIX_FMT_YUV420 : V4L2_PIX_FMT_YUYV;
        for (const Size& size : sizes) {
            SCOPED_TRACE(testing::Message()
                         << (planar ? "YU12 " : "YUYV ") << size.askedWidth << "x" << size.askedHeight);
            Frame bars(fourcc, 0, 0, 0);
            {
                Node node(0);
                node.setPattern("75% Colorbar");
                node.setFormat(fourcc, size.width, size.height);
                node.setRate(60);
                bars = node.readFrame();
            }
            Node(0).setFormat(V4L2_PIX_FMT_RGB24, 320, 180);
            VideoInputCaptureV4L source;
            source.init(0, size.askedWidth, size.askedHeight, 0);
            Node node(0);
            const v4l2_pix_format format = node.format();
            ASSERT_EQ(format.pixelformat, fourcc);
            ASSERT_EQ(source.getWidth(), size.width);
            ASSERT_EQ(source.getHeight(), size.height);

            Image<unsigned char> image(Ko::PF_YCC444P);
            ASSERT_TRUE(source.read(image));
            EXPECT_EQ(camera::difference(image, bars), "");
            if (size.width > 320)
                continue;
            for (const Colour& colour : colours) {
                node.setPattern(colour.name);
                for (int inFlight = 0; inFlight < 4; ++inFlight)
                    source.read(image);
                Frame solid(V4L2_PIX_FMT_YUYV, size.width, size.height, size.width * 2);
                for (std::size_t i = 0; i < solid.bytes.size(); ++i)
                    solid.bytes[i] = colour.sample[i % 2 == 0 ? 0 : i % 4 == 1 ? 1 : 2];
                EXPECT_EQ(camera::difference(image, solid), "") << colour.name;
            }
        }
    }
}

TEST_F(CameraDriver, FollowsThePaddingOfRows) {
    const Driver vivid("vivid", webcam);
    Frame bars(V4L2_PIX_FMT_YUV420, 0, 0, 0);
    {
        Node node(0);
        node.setPattern("75% Colorbar");
        node.setFormat(V4L2_PIX_FMT_YUV420, 320, 180);
        bars = node.readFrame();
    }
    Node(0).setFormat(V4L2_PIX_FMT_YUYV, 640, 360); // its 1280 bytes a row stay in force
    for (const bool planar : {true, false}) {
        camera::hidePlanar = !planar;
        VideoInputCaptureV4L source;
        source.init(0, 320, 180, 0);
        Node node(0);
        ASSERT_EQ(node.format().bytesperline, 1280u);
        Image<unsigned char> image(Ko::PF_YCC444P);
        ASSERT_TRUE(source.read(image));
        if (planar)
            EXPECT_EQ(camera::difference(image, bars), "");
        else // the packed format has its own chroma rows; luma is the same
            for (unsigned int y = 0; y < 180; ++y)
                ASSERT_EQ(std::vector<unsigned char>(image.plane[0].view[y], image.plane[0].view[y] + 320),
                          std::vector<unsigned char>(&bars.bytes[y * 320], &bars.bytes[y * 320] + 320));
    }
}

TEST_F(CameraDriver, DeliversThreeHundredFramesAndAnyNumberOfBuffers) {
    const Driver vivid("vivid", webcam);
    VideoInputCaptureV4L source;
    source.init(0, 320, 180, 0);
    Node(0).setRate(60);
    expectFrames(source, 300);
    EXPECT_EQ(source.tell(), 300);
    EXPECT_EQ(source.seek(7, Ko::VP_BEGIN), 300);

    struct Case {
        unsigned int wished;
        int granted;
    };
    for (const Case& c : {Case{1, 2}, Case{2, 2}, Case{4, 4}, Case{9, 9}, Case{1000, 32}}) {
        source.setBufferCount(c.wished);
        source.init(0, 320, 180, 0);
        EXPECT_EQ(camera::liveMappings(), c.granted);
        expectFrames(source, static_cast<unsigned int>(c.granted) + 2);
    }

    // Another size while it streams, and a second user of a device that streams.
    source.setBufferCount(2);
    source.init(0, 640, 360, 0);
    expectFrames(source, 2);
    EXPECT_EQ(source.getWidth(), 640u);
    source.init(0, 320, 180, 0);
    expectFrames(source, 2);
    EXPECT_EQ(source.getWidth(), 320u);
    VideoInputCaptureV4L second;
    EXPECT_EQ(failure([&] { second.init(0, 320, 180, 0); }),
              "[VideoInputCaptureV4L::setFormat]: Ioctl VIDIOC_S_FMT failed: Device or resource busy.");
    EXPECT_EQ(camera::openDescriptors(), 1);
    expectFrames(source, 2);
}

TEST_F(CameraDriver, TwoCamerasAtOnceAndAListWithGaps) {
    VideoInputCaptureV4L left, right;
    EXPECT_THAT(left.listDevs(), ElementsAre());
    EXPECT_EQ(failure([&] { left.init(5, 320, 180, 0); }),
              "[VideoInputCaptureV4L::init]: Cannot open /dev/video5: No such file or directory.");
    const Driver vivid("vivid", twoWebcams);
    EXPECT_THAT(left.listDevs(), ElementsAre("none", "none", "none", "none", "none", "vivid platform:vivid-000", "none",
                                             "vivid platform:vivid-001"));
    {
        Node five(5), seven(7);
        five.setPattern("100% Red");
        seven.setPattern("100% Blue");
    }
    left.init(5, 320, 180, 0);
    right.init(7, 640, 360, 0);
    Image<unsigned char> image(Ko::PF_YCC444P);
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
    left.close();
    right.close();
    expectNothingHeld();
}

TEST_F(CameraDriver, SurvivesUnpluggingInMidStream) {
    const Driver vivid("vivid", webcam);
    VideoInputCaptureV4L source;
    source.init(0, 320, 180, 0);
    expectFrames(source, 3);
    Node(0).set(camera::disconnect, 1);
    Image<unsigned char> image(Ko::PF_YCC444P);
    for (int again = 0; again < 2; ++again)
        EXPECT_EQ(failure([&] { source.read(image); }),
                  "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: No such device.");
    EXPECT_EQ(source.tell(), 3);
    VideoInputCaptureV4L other;
    EXPECT_EQ(failure([&] { other.init(0, 320, 180, 0); }),
              "[VideoInputCaptureV4L::init]: Cannot open /dev/video0: No such device.");
    source.close();
    expectNothingHeld();
    source.init(0, 320, 180, 0);
    expectFrames(source, 3);
}

TEST_F(CameraDriver, ReportsTheFaultsOfTheDriver) {
    const Driver vivid("vivid", webcam);
    struct Case {
        camera::Control fault;
        const char* message;
    };
    for (const Case& c :
         {Case{camera::errorInReqbufs, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_REQBUFS failed: "},
          Case{camera::errorInQbuf, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_QBUF failed: "},
          Case{camera::errorInStreamon, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_STREAMON failed: "}}) {
        VideoInputCaptureV4L source;
        Node(0).set(c.fault, 1);
        EXPECT_EQ(failure([&] { source.init(0, 320, 180, 0); }), c.message + std::string("Invalid argument."));
        expectNothingHeld();
        source.init(0, 320, 180, 0);
        expectFrames(source, 3);
    }

    VideoInputCaptureV4L source;
    Image<unsigned char> image(Ko::PF_YCC444P);
    source.init(0, 320, 180, 0);
    Node(0).set(camera::errorInBuffer, 1); // a damaged frame is a frame all the same
    expectFrames(source, 4);
    Node(0).set(camera::errorInQbuf, 1);
    EXPECT_EQ(failure([&] { source.read(image); }),
              "[VideoInputCaptureV4L::read]: Ioctl VIDIOC_QBUF failed: Invalid argument.");
    Node(0).set(camera::dropPercentage, 50);
    expectFrames(source, 6);
    Node(0).set(camera::dropPercentage, 0);
    Node(0).set(camera::errorInDqbuf, 1);
    EXPECT_EQ(failure([&] {
                  for (int inFlight = 0; inFlight < 4; ++inFlight)
                      source.read(image);
              }),
              "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: Input/output error.");
    source.close();
    expectNothingHeld();
    source.init(0, 320, 180, 0);
    expectFrames(source, 3);
}

TEST_F(CameraDriver, NamesWhatTheDeviceOffersAndTakesTopFields) {
    // Input 0 of a television card, and its output node, whose driver can capture while the node cannot.
    const Driver vivid("vivid",
                       "n_devs=1 node_types=0x101 num_inputs=2 input_types=0x1 num_outputs=1 output_types=0x0");
    VideoInputCaptureV4L source;
    EXPECT_EQ(failure([&] { source.init(1, 320, 180, 0); }),
              "[VideoInputCaptureV4L::init]: Device does not support V4L2_CAP_VIDEO_CAPTURE and V4L2_CAP_STREAMING.");
    expectNothingHeld();

    source.setFieldOrder(Ko::FO_TOP);
    source.init(0, 720, 288, 1);
    EXPECT_EQ(Node(0).format().field, std::uint32_t{V4L2_FIELD_TOP});
    expectFrames(source, 3);
    EXPECT_EQ(printed([&] { source.enumInputs(); }), "VideoInputCaptureV4L::enumInputs: Input: 0: TV 0\n"
                                                     "VideoInputCaptureV4L::enumInputs: Input: 1: Webcam 0\n");
    const std::string formats = printed([&] { source.enumFmts(); });
    EXPECT_THAT(formats, HasSubstr("[VideoInputCaptureV4L::enumFmts]: YUYV 4:2:2\n"));
    EXPECT_THAT(formats, HasSubstr("[VideoInputCaptureV4L::enumFmts]: Planar YUV 4:2:0\n"));
    EXPECT_EQ(source.fmt2string(V4L2_PIX_FMT_YUV420), "Planar YUV 4:2:0");
    EXPECT_EQ(source.fmt2string(V4L2_PIX_FMT_MJPEG), "unknown");
    EXPECT_EQ(source.std2string(V4L2_STD_PAL_B), "PAL PAL-BG ");

    source.setFieldOrder(Ko::FO_ANY);
    source.init(0, 720, 576, 0);
    EXPECT_EQ(Node(0).format().field, std::uint32_t{V4L2_FIELD_INTERLACED});
    expectFrames(source, 3);
}

TEST_F(CameraDriver, TakesWhatALoopbackIsFedWithAndRefusesCompressedVideo) {
    const Driver loopback("v4l2loopback", "devices=1 video_nr=9 card_label=Fed");
    struct Size {
        unsigned int width, height;
    };
    VideoInputCaptureV4L source;
    for (const unsigned int fourcc : {V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_YUV420})
        for (const Size& size : {Size{48, 32}, Size{354, 246}, Size{642, 2}}) {
            Node producer(9);
            const v4l2_pix_format fed = producer.setFormat(fourcc, size.width, size.height, V4L2_BUF_TYPE_VIDEO_OUTPUT);
            ASSERT_EQ(fed.width, size.width);
            Frame frame(fourcc, size.width, size.height, size.width * (fourcc == V4L2_PIX_FMT_YUYV ? 2 : 1));
            frame.fill(0);
            producer.writeFrame(frame);
            source.init(9, 1, 1, 0);
            Image<unsigned char> image(Ko::PF_YCC444P);
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
    producer.writeFrame(Frame(V4L2_PIX_FMT_YUYV, 64, 1, 128));
    EXPECT_EQ(failure([&] { source.init(9, 320, 240, 0); }), unsupported);
    EXPECT_EQ(camera::openDescriptors(), 1); // the producer's
}

} // namespace
