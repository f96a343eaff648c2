#include "Kovanta/VideoInput.h"
#include "support/Resources.h"
#include "support/TestImages.h"
#include "videoin/FakeCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Camera = Ko::VideoInputCaptureV4L;
using test::Image;
using test::thrownText;
using testing::Contains;
using testing::ElementsAre;

constexpr unsigned int deviceNumber = 3;

const std::string initPrefix = "[VideoInputCaptureV4L::init]: ";
const std::string unsupported = "[VideoInputCaptureV4L::setFormat]: Pixel format of camera is not supported. "
                                "Uncle Brom wants YOU to implement it.";

std::string failure(const std::function<void()>& action) {
    return thrownText<std::runtime_error>(action);
}

/// Initialises, and is to fail so.
std::string initFailure(Camera& camera, unsigned int width = 32, unsigned int height = 16) {
    return failure([&] { camera.init(deviceNumber, width, height, 0); });
}

std::string readFailure(Camera& camera) {
    Image image(Ko::PF_YCC444P);
    return failure([&] { camera.read(image); });
}

std::string reason(int error) {
    return std::strerror(error) + std::string(".");
}

void expectHeld(unsigned int descriptors, unsigned int mappings) {
    EXPECT_EQ(test::openDescriptors(fake::memoryName), descriptors);
    EXPECT_EQ(test::mappedFiles(fake::memoryName), mappings);
}

void expectFrame(Camera& camera, unsigned int number) {
    Image image(Ko::PF_YCC444P);
    EXPECT_EQ(camera.tell(), number);
    ASSERT_TRUE(camera.read(image));
    EXPECT_EQ(camera::difference(image, fake::frameNumber(number)), "");
    EXPECT_EQ(image.sequenceNumber, number);
}

class CameraFake : public testing::Test {
protected:
    ~CameraFake() override { expectHeld(0, 0); }

    fake::Camera& device = (fake::reset(), fake::cameras[deviceNumber]);
};

TEST_F(CameraFake, StartsAndEndsInTheDocumentedOrder) {
    device.maxWidth = 32;
    {
        Camera camera;
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
            EXPECT_EQ(camera.seek(2, Ko::VP_BEGIN), number);
            expectFrame(camera, number);
            EXPECT_FALSE(camera.eof());
        }
        expectHeld(1, 2);

        // The next init ends the first stream before it opens anything.
        fake::calls.clear();
        camera.setBufferCount(3);
        camera.setFieldOrder(Ko::FO_TOP);
        camera.init(deviceNumber, 16, 8, 0);
        fake::calls.resize(11);
        EXPECT_THAT(fake::calls, ElementsAre("munmap", "munmap", "close", "open 3", "QUERYCAP", "G_FMT", "TRY_FMT",
                                             "S_FMT", "G_FMT", "S_INPUT 0", "REQBUFS 3"));
        EXPECT_EQ(fake::lastFormat.fmt.pix.field, std::uint32_t{V4L2_FIELD_TOP});
        expectFrame(camera, 0);
        fake::calls.clear();
    }
    EXPECT_THAT(fake::calls, ElementsAre("munmap", "munmap", "munmap", "close"));
}

TEST_F(CameraFake, FailedInitReleasesEverythingAndCanBeRepeated) {
    const fake::Fault cases[] = {{"open", 1, EACCES},     {"QUERYCAP", 1, ENOTTY}, {"G_FMT", 1, EIO},
                                 {"S_FMT", 1, EBUSY},     {"G_FMT", 2, ENODEV},    {"REQBUFS", 1, ENOMEM},
                                 {"QUERYBUF", 1, EINVAL}, {"QUERYBUF", 2, EPERM},  {"mmap", 1, ENOMEM},
                                 {"mmap", 2, EAGAIN},     {"QBUF", 1, EIO},        {"QBUF", 2, EINVAL},
                                 {"STREAMON", 1, ENOSPC}};
    for (const bool wasInitialised : {false, true})
        for (const fake::Fault& fault : cases) {
            const std::string call = fault.call;
            SCOPED_TRACE(call);
            Camera camera;
            if (wasInitialised)
                camera.init(deviceNumber, 64, 48, 0);
            fake::calls.clear();
            fake::faults = {fault};
            EXPECT_EQ(initFailure(camera), (call == "S_FMT" ? "[VideoInputCaptureV4L::setFormat]: " : initPrefix) +
                                               (call == "open"   ? "Cannot open /dev/video3: "
                                                : call == "mmap" ? "mmap failed: "
                                                                 : "Ioctl VIDIOC_" + call + " failed: ") +
                                               reason(fault.error));
            expectHeld(0, 0);
            EXPECT_EQ(camera.getWidth(), wasInitialised ? 64u : 0u);
            EXPECT_EQ(readFailure(camera), "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " + reason(EBADF));
            fake::calls.clear();
            camera.close();
            EXPECT_THAT(fake::calls, ElementsAre());
            fake::faults.clear();
            camera.init(deviceNumber, 32, 16, 0);
            expectFrame(camera, 0);
        }
}

TEST_F(CameraFake, RefusalsOfReadLeaveTheStreamGoing) {
    Camera camera;
    camera.init(deviceNumber, 32, 16, 0);
    Image image(Ko::PF_RGB);
    for (unsigned int i = 0; i < 5; ++i) // more than there are buffers: each was given back
        EXPECT_THAT(thrownText<std::logic_error>([&] { camera.read(image); }), testing::StartsWith("[convertIm]: "));
    fake::calls.clear();
    fake::faults = {{"DQBUF", 1, EIO}, {"QBUF", 1, ENODEV}};
    EXPECT_EQ(readFailure(camera), "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " + reason(EIO));
    EXPECT_EQ(readFailure(camera), "[VideoInputCaptureV4L::read]: Ioctl VIDIOC_QBUF failed: " + reason(ENODEV));
    EXPECT_EQ(camera.tell(), 0);
    image = Image(Ko::PF_YCC444P);
    ASSERT_TRUE(camera.read(image)); // the other buffer
    EXPECT_EQ(image.sequenceNumber, 0u);

    device.reportedIndex = 2;
    camera.init(deviceNumber, 32, 16, 0);
    EXPECT_EQ(readFailure(camera), "[VideoInputCaptureV4L::read]: Driver returned an unknown buffer.");
}

TEST_F(CameraFake, FailuresOfCloseAreToldOnceAndReleaseAll) {
    const std::vector<fake::Fault> cases[] = {
        {{"munmap", 1, EINVAL}}, {{"munmap", 2, ENOMEM}, {"close", 1, EIO}}, {{"close", 1, EIO}}};
    enum Way { close, init, destructor };
    for (const auto& faults : cases)
        for (const auto way : {close, init, destructor}) {
            SCOPED_TRACE(testing::Message() << faults[0].call << way);
            const std::string message =
                "[VideoInputCaptureV4L::close]: " + std::string(faults[0].call) + " failed: " + reason(faults[0].error);
            testing::internal::CaptureStderr();
            {
                Camera camera;
                fake::faults.clear();
                camera.init(deviceNumber, 32, 16, 0);
                fake::calls.clear();
                fake::faults = faults;
                if (way != destructor) {
                    EXPECT_EQ(way == close ? failure([&] { camera.close(); }) : initFailure(camera), message);
                }
            }
            EXPECT_EQ(testing::internal::GetCapturedStderr(),
                      way != destructor
                          ? ""
                          : "[VideoInputCaptureV4L::~VideoInputCaptureV4L]: Exception caught: " + message + "\n");
            EXPECT_THAT(fake::calls, ElementsAre("munmap", "munmap", "close"));
            expectHeld(0, 0);
        }
}

TEST_F(CameraFake, InterruptedCallsAreRepeatedAndTheInputIsNotInsistedOn) {
    for (const char* call :
         {"QUERYCAP", "G_FMT", "TRY_FMT", "S_FMT", "REQBUFS", "QUERYBUF", "QBUF", "STREAMON", "DQBUF"})
        fake::faults.push_back({call, 1, EINTR});
    fake::faults.push_back({"S_INPUT", 1, EINVAL});
    Camera camera;
    camera.init(deviceNumber, 32, 16, 0);
    expectFrame(camera, 0);
    EXPECT_EQ(fake::lastFormat.fmt.pix.pixelformat, std::uint32_t{V4L2_PIX_FMT_YUV420});
}

TEST_F(CameraFake, TellsCapableNodesFromOthers) {
    constexpr std::uint32_t capture = V4L2_CAP_VIDEO_CAPTURE, streaming = V4L2_CAP_STREAMING;
    constexpr std::uint32_t own = V4L2_CAP_DEVICE_CAPS, output = V4L2_CAP_VIDEO_OUTPUT;
    const auto expect = [this](const std::string& outcome, std::uint32_t capabilities, std::uint32_t ofTheNode) {
        device.capabilities = capabilities;
        device.deviceCapabilities = ofTheNode;
        Camera camera;
        EXPECT_EQ(initFailure(camera), outcome);
    };
    const std::string refused = initPrefix + "Device does not support V4L2_CAP_VIDEO_CAPTURE and V4L2_CAP_STREAMING.";
    expect("nothing thrown", capture | streaming, 0);
    expect(refused, capture, capture | streaming);
    expect(refused, streaming, 0);
    expect("nothing thrown", capture | output | streaming | own, capture | streaming);
    expect(refused, capture | output | streaming | own, output | streaming);
    expect("nothing thrown", output | own, capture | streaming);
}

TEST_F(CameraFake, TakesTheFirstPreferenceThatTheDeviceReallyHas) {
    constexpr std::uint32_t planar = V4L2_PIX_FMT_YUV420, packed = V4L2_PIX_FMT_YUYV, jpeg = V4L2_PIX_FMT_MJPEG;
    const std::pair<std::vector<std::uint32_t>, std::uint32_t> cases[] = {
        {{jpeg, packed, planar}, planar}, {{jpeg, packed}, packed}, {{V4L2_PIX_FMT_RGB24, jpeg}, 0}};
    for (const bool substitutes : {false, true})
        for (const auto& [formats, chosen] : cases) {
            device.formats = formats;
            device.substitutes = substitutes;
            fake::lastFormat = {};
            Camera camera;
            EXPECT_EQ(initFailure(camera), chosen ? "nothing thrown" : unsupported);
            EXPECT_EQ(fake::lastFormat.fmt.pix.pixelformat, chosen);
        }
    EXPECT_EQ(failure([] { Camera().setFormat({}); }), unsupported); // no device at all
}

TEST_F(CameraFake, LaysRowsAsTheDriverDoesAndNeverPastItsBuffer) {
    // width, height, padding, whether the stride is told, bytes by which the buffer is too small
    using Case = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, bool, std::uint32_t>;
    const Case cases[] = {{32, 16, 0, true, 0}, {32, 16, 0, false, 0},      {32, 16, 12, true, 0},
                          {6, 2, 0, true, 0},   {5, 3, 0, true, 0},         {1, 1, 0, true, 0},
                          {1, 4, 2, true, 0},   {0, 16, 0, true, 0},        {32, 0, 0, true, 0},
                          {32, 16, 0, true, 1}, {64, 64, 0, true, 64 * 64}, {32, 16, 32, true, 33}};
    for (const std::uint32_t fourcc : {V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_YUYV})
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::PrintToString(c));
            device.formats = {fourcc};
            std::uint32_t width = 0, height = 0;
            std::tie(width, height, device.padding, device.tellsStride, device.missingBytes) = c;
            Camera camera;
            const std::string outcome = initFailure(camera, width, height);
            if (device.missingBytes != 0 || width * height == 0) { // or a buffer of no bytes
                EXPECT_EQ(outcome, initPrefix + (device.missingBytes != 0 ? "Driver's buffer is smaller than a frame."
                                                                          : "mmap failed: " + reason(EINVAL)));
                expectHeld(0, 0);
                continue;
            }
            ASSERT_EQ(outcome, "nothing thrown");
            for (unsigned int number = 0; number < 3; ++number)
                expectFrame(camera, number);
        }
}

TEST_F(CameraFake, TakesTheNumberOfBuffersThatTheDriverGrants) {
    device.maxBuffers = 5;
    Camera camera;
    camera.setBufferCount(1000);
    for (const char* wish : {"REQBUFS 1000", "REQBUFS 5"}) {
        camera.init(deviceNumber, 32, 16, 0);
        expectHeld(1, 5);
        EXPECT_THAT(fake::calls, Contains(wish));
    }
    camera.setBufferCount(0);
    EXPECT_EQ(initFailure(camera), initPrefix + "Ioctl VIDIOC_STREAMON failed: " + reason(EINVAL));
}

TEST_F(CameraFake, RefusesUnknownFieldOrders) {
    for (const unsigned int order : {2u, 0xFFFFFFFFu})
        EXPECT_EQ(thrownText<std::logic_error>([&] { Camera().setFieldOrder(static_cast<Ko::FIELD_ORDER>(order)); }),
                  "[VideoInputCaptureV4L::setFieldOrder]: Unknown field order.");
}

TEST_F(CameraFake, NamesInputsFormatsAndStandards) {
    Camera camera;
    const auto all = [&] {
        testing::internal::CaptureStdout();
        camera.enumInputs();
        camera.enumFmts();
        return testing::internal::GetCapturedStdout();
    };
    EXPECT_EQ(all(), "");
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_YUYV), "unknown");
    EXPECT_EQ(camera.std2string(~0ull), "");

    camera.init(deviceNumber, 32, 16, 0);
    EXPECT_EQ(all(), "VideoInputCaptureV4L::enumInputs: Input: 0: Camera 0\n"
                     "VideoInputCaptureV4L::enumInputs: Input: 1: Camera 1\n"
                     "[VideoInputCaptureV4L::enumFmts]: Format 0\n"
                     "[VideoInputCaptureV4L::enumFmts]: Format 1\n");
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_YUV420), "Format 1");
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_MJPEG), "unknown");
    EXPECT_EQ(camera.std2string(V4L2_STD_PAL_B), "PAL PAL-B ");
    EXPECT_EQ(camera.std2string(V4L2_STD_NTSC_M | V4L2_STD_PAL_I), "PAL NTSC ");
    EXPECT_EQ(camera.std2string(V4L2_STD_SECAM), "");

    device.endless = true;
    camera.init(deviceNumber, 32, 16, 0);
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_MJPEG), "unknown"); // comes back at all
}

TEST_F(CameraFake, ListsDevices) {
    Camera camera;
    fake::cameras.clear();
    EXPECT_THAT(camera.listDevs(), ElementsAre());
    EXPECT_EQ(fake::calls.size(), 64u);
    EXPECT_EQ(fake::calls.back(), "open 63 read-only");

    fake::cameras[0].card = "First";
    fake::cameras[2].card = "Third";
    EXPECT_THAT(camera.listDevs(), ElementsAre("First platform:fake", "none", "Third platform:fake"));

    // A device that opens but does not answer has no entry: those after it move up, and the list is shorter by it.
    fake::cameras[1].card = "Second";
    fake::calls.clear();
    fake::faults = {{"QUERYCAP", 2, EIO}};
    EXPECT_THAT(camera.listDevs(), ElementsAre("First platform:fake", "Third platform:fake", "none"));

    fake::reset();
    // Neither leaves room for its end.
    fake::cameras[63].card = "A name of exactly thirty-two ch.";
    fake::cameras[63].bus = "A bus of exactly thirty-two ch..";
    fake::cameras[64].card = "Never probed";
    std::vector<std::string> wanted(64, "none");
    wanted[63] = "A name of exactly thirty-two ch. A bus of exactly thirty-two ch..";
    EXPECT_EQ(camera.listDevs(), wanted);
}

} // namespace
