#include "Kovanta/VideoInput.h"
#include "videoin/FakeCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>

namespace {

using Ko::Image;
using Ko::VideoInputCaptureV4L;
using testing::ElementsAre;

constexpr unsigned int deviceNumber = 3;

const std::string initPrefix = "[VideoInputCaptureV4L::init]: ";
const char* const unsupported =
    "[VideoInputCaptureV4L::setFormat]: Pixel format of camera is not supported. Uncle Brom "
    "wants YOU to implement it.";

template <class Error>
std::string thrown(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& e) {
        return e.what();
    }
    return "nothing thrown";
}

std::string failure(const std::function<void()>& action) {
    return thrown<std::runtime_error>(action);
}

std::string reason(int error) {
    return std::strerror(error) + std::string(".");
}

class CameraFake : public testing::Test {
protected:
    CameraFake() {
        fake::reset();
        fake::cameras[deviceNumber] = {};
    }
    ~CameraFake() override { expectNothingHeld(); }

    static void expectNothingHeld() {
        EXPECT_EQ(fake::openDescriptors(), 0);
        EXPECT_EQ(fake::liveMappings(), 0);
    }

    static void expectFrame(VideoInputCaptureV4L& camera, unsigned int number) {
        Image<unsigned char> image(Ko::PF_YCC444P);
        ASSERT_TRUE(camera.read(image));
        EXPECT_EQ(camera::difference(image, fake::frameNumber(number)), "");
        EXPECT_EQ(image.sequenceNumber, number);
    }
};

TEST_F(CameraFake, StartsAndEndsInTheDocumentedOrder) {
    fake::cameras[deviceNumber].maxWidth = 32;
    {
        VideoInputCaptureV4L camera;
        EXPECT_THAT(fake::calls, ElementsAre());
        EXPECT_EQ(camera.getWidth() + camera.getHeight(), 0u);
        EXPECT_EQ(camera.getLength(), -1);
        camera.close();
        camera.init(deviceNumber, 64, 16, 1);
        EXPECT_THAT(fake::calls,
                    ElementsAre("open 3", "QUERYCAP", "G_FMT", "TRY_FMT", "S_FMT", "G_FMT", "S_INPUT 0", "REQBUFS 2",
                                "QUERYBUF", "mmap", "QBUF", "QUERYBUF", "mmap", "QBUF", "STREAMON"));
        EXPECT_EQ(camera.getWidth(), 32u);
        EXPECT_EQ(camera.getHeight(), 16u);
        EXPECT_EQ(fake::lastFormat.fmt.pix.field, std::uint32_t{V4L2_FIELD_ANY});

        for (unsigned int number = 0; number < 5; ++number) {
            EXPECT_EQ(camera.tell(), number);
            EXPECT_EQ(camera.seek(2, Ko::VP_BEGIN), number);
            expectFrame(camera, number);
            EXPECT_FALSE(camera.eof());
        }
        EXPECT_EQ(fake::openDescriptors(), 1);
        EXPECT_EQ(fake::liveMappings(), 2);

        // The next init ends the first stream before it opens anything.
        fake::calls.clear();
        camera.setBufferCount(3);
        camera.setFieldOrder(Ko::FO_TOP);
        camera.init(deviceNumber, 16, 8, 0);
        EXPECT_EQ((std::vector<std::string>(fake::calls.begin(), fake::calls.begin() + 4)),
                  (std::vector<std::string>{"munmap", "munmap", "close", "open 3"}));
        EXPECT_THAT(fake::calls, testing::Contains("REQBUFS 3"));
        EXPECT_EQ(fake::lastFormat.fmt.pix.field, std::uint32_t{V4L2_FIELD_TOP});
        EXPECT_EQ(camera.tell(), 0);
        expectFrame(camera, 0);
        fake::calls.clear();
    }
    EXPECT_THAT(fake::calls, ElementsAre("munmap", "munmap", "munmap", "close"));
}

TEST_F(CameraFake, FailedInitReleasesEverythingAndCanBeRepeated) {
    struct Case {
        fake::Fault fault;
        const char* message; // before the reason of the system
    };
    const Case cases[] = {
        {{"open", 1, EACCES}, "[VideoInputCaptureV4L::init]: Cannot open /dev/video3: "},
        {{"open", 1, EMFILE}, "[VideoInputCaptureV4L::init]: Cannot open /dev/video3: "},
        {{"QUERYCAP", 1, ENOTTY}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_QUERYCAP failed: "},
        {{"G_FMT", 1, EIO}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_G_FMT failed: "},
        {{"S_FMT", 1, EBUSY}, "[VideoInputCaptureV4L::setFormat]: Ioctl VIDIOC_S_FMT failed: "},
        {{"G_FMT", 2, ENODEV}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_G_FMT failed: "},
        {{"REQBUFS", 1, ENOMEM}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_REQBUFS failed: "},
        {{"QUERYBUF", 1, EINVAL}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_QUERYBUF failed: "},
        {{"QUERYBUF", 2, EPERM}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_QUERYBUF failed: "},
        {{"mmap", 1, ENOMEM}, "[VideoInputCaptureV4L::init]: mmap failed: "},
        {{"mmap", 2, EAGAIN}, "[VideoInputCaptureV4L::init]: mmap failed: "},
        {{"QBUF", 1, EIO}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_QBUF failed: "},
        {{"QBUF", 2, EINVAL}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_QBUF failed: "},
        {{"STREAMON", 1, ENOSPC}, "[VideoInputCaptureV4L::init]: Ioctl VIDIOC_STREAMON failed: "},
    };
    for (const bool wasInitialised : {false, true})
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message() << c.fault.call << " " << c.fault.nth);
            VideoInputCaptureV4L camera;
            if (wasInitialised)
                camera.init(deviceNumber, 64, 48, 0);
            fake::calls.clear();
            fake::faults = {c.fault};
            EXPECT_EQ(failure([&] { camera.init(deviceNumber, 32, 16, 0); }), c.message + reason(c.fault.error));
            expectNothingHeld();
            EXPECT_EQ(camera.getWidth(), wasInitialised ? 64u : 0u);
            Image<unsigned char> image(Ko::PF_YCC444P);
            EXPECT_EQ(failure([&] { camera.read(image); }),
                      "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " + reason(EBADF));
            fake::calls.clear();
            camera.close();
            EXPECT_THAT(fake::calls, ElementsAre());

            fake::faults.clear();
            camera.init(deviceNumber, 32, 16, 0);
            expectFrame(camera, 0);
        }
}

TEST_F(CameraFake, RefusalsOfReadLeaveTheStreamGoing) {
    VideoInputCaptureV4L camera;
    camera.init(deviceNumber, 32, 16, 0);
    // More refused conversions than there are buffers: each was given back.
    Image<unsigned char> rgb(Ko::PF_RGB);
    for (unsigned int i = 0; i < 5; ++i)
        EXPECT_THAT(thrown<std::logic_error>([&] { camera.read(rgb); }), testing::StartsWith("[convertIm]: "));
    EXPECT_EQ(camera.tell(), 0);
    Image<unsigned char> image(Ko::PF_YCC444P);

    fake::calls.clear();
    fake::faults = {{"DQBUF", 1, EIO}, {"QBUF", 1, ENODEV}};
    EXPECT_EQ(failure([&] { camera.read(image); }),
              "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " + reason(EIO));
    EXPECT_EQ(failure([&] { camera.read(image); }),
              "[VideoInputCaptureV4L::read]: Ioctl VIDIOC_QBUF failed: " + reason(ENODEV));
    EXPECT_EQ(camera.tell(), 0);
    ASSERT_TRUE(camera.read(image)); // the other buffer
    EXPECT_EQ(image.sequenceNumber, 0u);
    EXPECT_EQ(camera.tell(), 1);

    fake::cameras[deviceNumber].reportedIndex = 2;
    camera.init(deviceNumber, 32, 16, 0);
    EXPECT_EQ(failure([&] { camera.read(image); }), "[VideoInputCaptureV4L::read]: Driver returned an unknown buffer.");
}

TEST_F(CameraFake, FailuresOfCloseAreToldOnceAndReleaseAll) {
    struct Case {
        std::vector<fake::Fault> faults;
        std::string message;
    };
    const std::string closePrefix = "[VideoInputCaptureV4L::close]: ";
    const Case cases[] = {
        {{{"munmap", 1, EINVAL}}, closePrefix + "munmap failed: " + reason(EINVAL)},
        {{{"munmap", 2, ENOMEM}, {"close", 1, EIO}}, closePrefix + "munmap failed: " + reason(ENOMEM)},
        {{{"close", 1, EIO}}, closePrefix + "close failed: " + reason(EIO)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        testing::internal::CaptureStderr();
        {
            VideoInputCaptureV4L camera;
            camera.init(deviceNumber, 32, 16, 0);
            fake::calls.clear();
            fake::faults = c.faults;
            EXPECT_EQ(failure([&] { camera.close(); }), c.message);
            expectNothingHeld();
            fake::faults.clear();
            camera.init(deviceNumber, 32, 16, 0);
            fake::calls.clear();
            fake::faults = c.faults;
            EXPECT_EQ(failure([&] { camera.init(deviceNumber, 32, 16, 0); }), c.message);
            expectNothingHeld();
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_THAT(fake::calls, ElementsAre("munmap", "munmap", "close"));
        fake::faults.clear();

        testing::internal::CaptureStderr();
        {
            VideoInputCaptureV4L camera;
            camera.init(deviceNumber, 32, 16, 0);
            fake::calls.clear();
            fake::faults = c.faults;
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "[VideoInputCaptureV4L::~VideoInputCaptureV4L]: Exception caught: " + c.message + "\n");
        expectNothingHeld();
        fake::faults.clear();
    }
}

TEST_F(CameraFake, InterruptedCallsAreRepeatedAndTheInputIsNotInsistedOn) {
    for (const char* call :
         {"QUERYCAP", "G_FMT", "TRY_FMT", "S_FMT", "REQBUFS", "QUERYBUF", "QBUF", "STREAMON", "DQBUF"})
        fake::faults.push_back({call, 1, EINTR});
    fake::faults.push_back({"S_INPUT 0", 1, EINVAL});
    VideoInputCaptureV4L camera;
    camera.init(deviceNumber, 32, 16, 0);
    expectFrame(camera, 0);
    EXPECT_EQ(fake::lastFormat.fmt.pix.pixelformat, std::uint32_t{V4L2_PIX_FMT_YUV420});
}

TEST_F(CameraFake, TellsCapableNodesFromOthers) {
    constexpr std::uint32_t capture = V4L2_CAP_VIDEO_CAPTURE, streaming = V4L2_CAP_STREAMING;
    constexpr std::uint32_t own = V4L2_CAP_DEVICE_CAPS, output = V4L2_CAP_VIDEO_OUTPUT;
    struct Case {
        std::uint32_t capabilities, deviceCapabilities;
        bool accepted;
    };
    const Case cases[] = {
        {capture | streaming, 0, true},
        {capture, capture | streaming, false},
        {streaming, 0, false},
        {0, 0, false},
        {capture | output | streaming | own, capture | streaming, true},
        {capture | output | streaming | own, output | streaming, false},
        {output | own, capture | streaming, true},
    };
    for (const Case& c : cases) {
        fake::cameras[deviceNumber].capabilities = c.capabilities;
        fake::cameras[deviceNumber].deviceCapabilities = c.deviceCapabilities;
        VideoInputCaptureV4L camera;
        EXPECT_EQ(failure([&] { camera.init(deviceNumber, 32, 16, 0); }),
                  c.accepted ? "nothing thrown"
                             : initPrefix + "Device does not support V4L2_CAP_VIDEO_CAPTURE and V4L2_CAP_STREAMING.");
    }
}

TEST_F(CameraFake, TakesTheFirstPreferenceThatTheDeviceReallyHas) {
    constexpr std::uint32_t planar = V4L2_PIX_FMT_YUV420, packed = V4L2_PIX_FMT_YUYV, jpeg = V4L2_PIX_FMT_MJPEG;
    struct Case {
        std::vector<std::uint32_t> formats;
        std::uint32_t chosen; // 0: refused
    };
    const Case cases[] = {
        {{jpeg, packed, planar}, planar}, {{packed}, packed}, {{jpeg, packed}, packed}, {{planar}, planar}, {{jpeg}, 0},
        {{V4L2_PIX_FMT_RGB24, jpeg}, 0}};
    for (const bool substitutes : {false, true})
        for (const Case& c : cases) {
            fake::reset();
            fake::cameras[deviceNumber].formats = c.formats;
            fake::cameras[deviceNumber].substitutes = substitutes;
            VideoInputCaptureV4L camera;
            EXPECT_EQ(failure([&] { camera.init(deviceNumber, 32, 16, 0); }),
                      c.chosen ? "nothing thrown" : unsupported);
            EXPECT_EQ(fake::lastFormat.fmt.pix.pixelformat, c.chosen);
            if (c.chosen)
                expectFrame(camera, 0);
        }
    VideoInputCaptureV4L camera;
    EXPECT_EQ(failure([&] { camera.setFormat({}); }), unsupported); // no device at all
}

TEST_F(CameraFake, LaysRowsAsTheDriverDoesAndNeverPastItsBuffer) {
    struct Case {
        std::uint32_t width, height, padding;
        bool tellsStride;
        std::uint32_t missingBytes; // when above 0, the buffer is too small
    };
    const Case cases[] = {{32, 16, 0, true, 0}, {32, 16, 0, false, 0},      {32, 16, 12, true, 0},
                          {6, 2, 0, true, 0},   {5, 3, 0, true, 0},         {1, 1, 0, true, 0},
                          {1, 4, 2, true, 0},   {0, 16, 0, true, 0},        {32, 0, 0, true, 0},
                          {32, 16, 0, true, 1}, {64, 64, 0, true, 64 * 64}, {32, 16, 32, true, 33}};
    for (const std::uint32_t fourcc : {V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_YUYV})
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message() << fourcc << " " << c.width << "x" << c.height << " " << c.missingBytes);
            fake::Camera& fakeCamera = fake::cameras[deviceNumber];
            fakeCamera.formats = {fourcc};
            fakeCamera.padding = c.padding;
            fakeCamera.tellsStride = c.tellsStride;
            fakeCamera.missingBytes = c.missingBytes;
            VideoInputCaptureV4L camera;
            const std::string outcome = failure([&] { camera.init(deviceNumber, c.width, c.height, 0); });
            if (c.missingBytes != 0) {
                EXPECT_EQ(outcome, initPrefix + "Driver's buffer is smaller than a frame.");
                expectNothingHeld();
            } else if (c.width * c.height == 0) {
                EXPECT_EQ(outcome, initPrefix + "mmap failed: " + reason(EINVAL)); // a buffer of no bytes
            } else {
                ASSERT_EQ(outcome, "nothing thrown");
                expectFrame(camera, 0);
                expectFrame(camera, 1);
                expectFrame(camera, 2);
            }
        }
}

TEST_F(CameraFake, TakesTheNumberOfBuffersThatTheDriverGrants) {
    fake::cameras[deviceNumber].maxBuffers = 5;
    VideoInputCaptureV4L camera;
    camera.setBufferCount(1000);
    camera.init(deviceNumber, 32, 16, 0);
    EXPECT_EQ(fake::liveMappings(), 5);
    fake::calls.clear();
    camera.init(deviceNumber, 32, 16, 0);
    EXPECT_THAT(fake::calls, testing::Contains("REQBUFS 5"));

    camera.setBufferCount(0);
    EXPECT_EQ(failure([&] { camera.init(deviceNumber, 32, 16, 0); }),
              initPrefix + "Ioctl VIDIOC_STREAMON failed: " + reason(EINVAL));
}

TEST_F(CameraFake, RefusesUnknownFieldOrders) {
    VideoInputCaptureV4L camera;
    for (const unsigned int order : {2u, 77u, 0xFFFFFFFFu})
        EXPECT_EQ(thrown<std::logic_error>([&] { camera.setFieldOrder(static_cast<Ko::FIELD_ORDER>(order)); }),
                  "[VideoInputCaptureV4L::setFieldOrder]: Unknown field order.");
}

std::string printed(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

TEST_F(CameraFake, NamesInputsFormatsAndStandards) {
    VideoInputCaptureV4L camera;
    EXPECT_EQ(printed([&] {
                  camera.enumInputs();
                  camera.enumFmts();
              }),
              "");
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_YUYV), "unknown");
    EXPECT_EQ(camera.std2string(~0ull), "");

    camera.init(deviceNumber, 32, 16, 0);
    EXPECT_EQ(printed([&] { camera.enumInputs(); }), "VideoInputCaptureV4L::enumInputs: Input: 0: Camera 0\n"
                                                     "VideoInputCaptureV4L::enumInputs: Input: 1: Camera 1\n");
    EXPECT_EQ(printed([&] { camera.enumFmts(); }), "[VideoInputCaptureV4L::enumFmts]: Format 0\n"
                                                   "[VideoInputCaptureV4L::enumFmts]: Format 1\n");
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_YUYV), "Format 0");
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_YUV420), "Format 1");
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_MJPEG), "unknown");
    EXPECT_EQ(camera.std2string(V4L2_STD_PAL_B), "PAL PAL-B ");
    EXPECT_EQ(camera.std2string(V4L2_STD_NTSC_M | V4L2_STD_PAL_I), "PAL NTSC ");
    EXPECT_EQ(camera.std2string(V4L2_STD_SECAM), "");

    fake::cameras[deviceNumber].endless = true;
    camera.init(deviceNumber, 32, 16, 0);
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_MJPEG), "unknown"); // comes back at all
}

TEST_F(CameraFake, ListsDevices) {
    const auto named = [](const char* card) {
        fake::Camera camera;
        camera.card = card;
        return camera;
    };
    VideoInputCaptureV4L camera;
    fake::reset();
    EXPECT_THAT(camera.listDevs(), ElementsAre());
    EXPECT_EQ(fake::calls.size(), 64u);
    EXPECT_EQ(fake::calls.back(), "open 63 read-only");

    fake::cameras[0] = named("First");
    EXPECT_THAT(camera.listDevs(), ElementsAre("First platform:fake"));
    fake::cameras[2] = named("Third");
    EXPECT_THAT(camera.listDevs(), ElementsAre("First platform:fake", "none", "Third platform:fake"));

    // A device that opens but does not answer has no entry: those after it move up, and the list is shorter by it.
    fake::cameras[1] = named("Second");
    fake::calls.clear();
    fake::faults = {{"QUERYCAP", 2, EIO}};
    EXPECT_THAT(camera.listDevs(), ElementsAre("First platform:fake", "Third platform:fake", "none"));
    fake::faults.clear();
    expectNothingHeld();

    fake::reset();
    fake::cameras[63] = named("A name of exactly thirty-two ch.");
    fake::cameras[63].bus = "A bus of exactly thirty-two ch.."; // neither leaves room for its end
    fake::cameras[64] = named("Never probed");
    const auto entries = camera.listDevs();
    ASSERT_EQ(entries.size(), 64u);
    EXPECT_EQ(entries[62], "none");
    EXPECT_EQ(entries[63], "A name of exactly thirty-two ch. A bus of exactly thirty-two ch..");
}

} // namespace
