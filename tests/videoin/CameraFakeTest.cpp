// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInput.h"
#include "support/Resources.h"
#include "videoin/FakeCamera.h"

#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Camera = Ko::VideoInputCaptureV4L;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::ThrowsMessage;

constexpr unsigned int deviceNumber = 3;

const std::string initPrefix = "[VideoInputCaptureV4L::init]: ";
const std::string unsupported = "[VideoInputCaptureV4L::setFormat]: Pixel format of camera is not supported. "
                                "Uncle Brom wants YOU to implement it.";

void init(Camera& camera) {
    camera.init(deviceNumber, 32, 16, 0);
}

std::string reason(int error) {
    return std::strerror(error) + std::string(".");
}

void expectReadFails(Camera& camera, const std::string& text) {
    Ko::Image image(Ko::PF_YCC444P);
    EXPECT_THAT([&] { camera.read(image); }, ThrowsMessage<std::runtime_error>(text));
}

void expectHeld(unsigned int descriptors, unsigned int mappings) {
    EXPECT_EQ(test::openDescriptors(fake::memoryName), descriptors);
    EXPECT_EQ(test::mappedFiles(fake::memoryName), mappings);
}

void expectFrame(Camera& camera, unsigned int number) {
    Ko::Image image(Ko::PF_YCC444P);
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
                    ElementsAre("open 3", "QUERYCAP", "G_INPUT", "G_FMT", "TRY_FMT", "S_FMT", "G_FMT", "S_INPUT 0",
                                "REQBUFS 2", "QUERYBUF", "mmap", "QBUF", "QUERYBUF", "mmap", "QBUF", "STREAMON"));
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
        fake::calls.resize(12);
        EXPECT_THAT(fake::calls, ElementsAre("munmap", "munmap", "close", "open 3", "QUERYCAP", "G_INPUT", "G_FMT",
                                             "TRY_FMT", "S_FMT", "G_FMT", "S_INPUT 0", "REQBUFS 3"));
        EXPECT_EQ(fake::lastFormat.fmt.pix.field, std::uint32_t{V4L2_FIELD_TOP});
        expectFrame(camera, 0);
        fake::calls.clear();
    }
    EXPECT_THAT(fake::calls, ElementsAre("munmap", "munmap", "munmap", "close"));
}

TEST_F(CameraFake, AnInitThatFailsReleasesEverythingAndCanBeRepeated) {
    const struct {
        std::string call;
        int nth;
    } rows[] = {{"open", 1},     {"QUERYCAP", 1}, {"G_FMT", 1}, {"S_FMT", 1}, {"G_FMT", 2},   {"REQBUFS", 1},
                {"QUERYBUF", 2}, {"mmap", 1},     {"mmap", 2},  {"QBUF", 2},  {"STREAMON", 1}};
    for (const auto& [call, nth] : rows) {
        SCOPED_TRACE(testing::Message() << call << nth);
        Camera camera;
        camera.init(deviceNumber, 64, 48, 0);
        fake::calls.clear();
        fake::faults = {{call.c_str(), nth, EBUSY}};
        const std::string what = call == "open" ? "Cannot open /dev/video3: " : call + " failed: ";
        EXPECT_THAT([&] { init(camera); }, ThrowsMessage<std::runtime_error>(EndsWith(what + reason(EBUSY))));
        expectHeld(0, 0);
        EXPECT_EQ(camera.getWidth(), 64u);
        expectReadFails(camera, "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " + reason(EBADF));
        fake::calls.clear();
        camera.close();
        EXPECT_THAT(fake::calls, ElementsAre());
        fake::faults.clear();
        init(camera);
        expectFrame(camera, 0);
    }
}

TEST_F(CameraFake, TwoCamerasShareNothing) {
    fake::cameras[4] = device;
    Camera camera, other;
    init(camera);
    for (unsigned int number = 0; number < 3; ++number)
        expectFrame(camera, number);
    other.init(4, 32, 16, 0);
    for (unsigned int number = 0; number < 3; ++number) {
        expectFrame(other, number);
        expectFrame(camera, number + 3);
    }
}

TEST_F(CameraFake, RefusalsOfReadLeaveTheStreamGoing) {
    Camera camera;
    init(camera);
    Ko::Image image(Ko::PF_RGB);
    for (unsigned int i = 0; i < 5; ++i) // more than there are buffers: each was given back
        EXPECT_THAT([&] { camera.read(image); }, ThrowsMessage<std::logic_error>(testing::StartsWith("[convertIm]: ")));
    fake::calls.clear();
    fake::faults = {{"DQBUF", 1, EIO}, {"QBUF", 1, ENODEV}};
    expectReadFails(camera, "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " + reason(EIO));
    expectReadFails(camera, "[VideoInputCaptureV4L::read]: Ioctl VIDIOC_QBUF failed: " + reason(ENODEV));
    EXPECT_EQ(camera.tell(), 0);
    image = Ko::Image(Ko::PF_YCC444P);
    ASSERT_TRUE(camera.read(image)); // the other buffer
    EXPECT_EQ(image.sequenceNumber, 0u);

    device.reportedIndex = 2;
    init(camera);
    expectReadFails(camera, "[VideoInputCaptureV4L::read]: Driver returned an unknown buffer.");
}

TEST_F(CameraFake, FailuresOfCloseAreToldOnceAndReleaseAll) {
    enum Way { byClose, byInit, byDestructor };
    const std::pair<Way, std::vector<fake::Fault>> rows[] = {
        {byClose, {{"munmap", 1, EINVAL}}},
        {byClose, {{"munmap", 2, ENOMEM}, {"close", 1, EIO}}},
        {byInit, {{"close", 1, EIO}}},
        {byDestructor, {{"munmap", 1, EINVAL}, {"munmap", 2, ENOMEM}}},
    };
    for (const auto& [way, faults] : rows) {
        SCOPED_TRACE(testing::Message() << faults[0].call << way);
        const std::string text =
            "[VideoInputCaptureV4L::close]: " + std::string(faults[0].call) + " failed: " + reason(faults[0].error);
        testing::internal::CaptureStderr();
        {
            Camera camera;
            fake::faults.clear();
            init(camera);
            fake::calls.clear();
            fake::faults = faults;
            if (way != byDestructor) {
                EXPECT_THAT(([&, end = way] { end == byClose ? camera.close() : init(camera); }),
                            ThrowsMessage<std::runtime_error>(text));
                expectHeld(0, 0);
            }
        }
        const std::string printed = "[VideoInputCaptureV4L::~VideoInputCaptureV4L]: Exception caught: ";
        EXPECT_EQ(testing::internal::GetCapturedStderr(), way == byDestructor ? printed + text + "\n" : "");
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
    init(camera);
    expectFrame(camera, 0);
    EXPECT_EQ(fake::lastFormat.fmt.pix.pixelformat, std::uint32_t{V4L2_PIX_FMT_YUV420});
}

TEST_F(CameraFake, NothingStaleReachesTheDriver) {
    device.input = 2;
    device.staleStride = 4096;
    Camera camera;
    init(camera);
    fake::calls.resize(5);
    EXPECT_THAT(fake::calls, ElementsAre("open 3", "QUERYCAP", "G_INPUT", "S_INPUT 0", "G_FMT"));
    EXPECT_EQ(fake::lastFormat.fmt.pix.bytesperline, 32u);
    expectFrame(camera, 0);
}

TEST_F(CameraFake, AWishedFrameRateIsAskedForAndAnswered) {
    using Rate = Ko::Frac<unsigned int>;
    Camera camera;
    EXPECT_EQ(camera.getFrameRate(), (Rate{0, 1}));
    camera.setFrameRate({30000, 1001});
    device.rate.capability = V4L2_CAP_TIMEPERFRAME;
    init(camera);
    EXPECT_EQ(camera.getFrameRate(), (Rate{30000, 1001}));
    fake::faults = {{"S_PARM", 2, EINVAL}, {"G_PARM", 2, ENOTTY}};
    init(camera); // a wish is no condition
    EXPECT_EQ(camera.getFrameRate(), (Rate{0, 1}));
}

TEST_F(CameraFake, TellsWhatTheDriverSaysOfItsFrames) {
    constexpr std::uint32_t most = 0xFFFFFFFF;
    const struct {
        std::vector<std::uint32_t> numbers;
        std::uint64_t lost;
    } rows[] = {
        {{0, 1, 2, 3}, 0}, {{7, 8, 10, 14}, 4}, {{most - 1, most, 1, 2}, 1}, {{0, 0, 0, 0}, 0}, {{9, 3, 4, 6}, 1}};
    device.seconds = {5, 6, 7, std::numeric_limits<long>::max()};
    Camera camera;
    for (const auto& row : rows) {
        device.sequences = row.numbers;
        init(camera);
        EXPECT_EQ(camera.getDriverSequence() + camera.getLostFrames(), 0u);
        EXPECT_EQ(camera.getTimeStamp(), 0);
        for (unsigned int i = 0; i < 4; ++i) {
            expectFrame(camera, i);
            EXPECT_EQ(camera.getDriverSequence(), row.numbers[i]);
            EXPECT_TRUE(i == 3 || camera.getTimeStamp() == 5250000 + 1000000 * i);
        }
        EXPECT_EQ(camera.getLostFrames(), row.lost) << row.numbers[3];
    }
}

TEST_F(CameraFake, EmulatedFormatsComeThroughLibv4l2) {
    device.formats = {V4L2_PIX_FMT_UYVY};
    {
        Camera camera;
        EXPECT_THAT([&] { init(camera); }, ThrowsMessage<std::runtime_error>(unsupported));
        fake::calls.clear();
        camera.setEmulatedFormats(true).init(deviceNumber, 32, 16, 0);
        EXPECT_THAT(fake::calls, ElementsAre("open 3", "v4l2_fd_open", "v4l2 QUERYCAP", "v4l2 G_INPUT", "v4l2 G_FMT",
                                             "v4l2 TRY_FMT", "v4l2 S_FMT", "v4l2 G_FMT", "v4l2 S_INPUT 0",
                                             "v4l2 REQBUFS 2", "v4l2 QUERYBUF", "v4l2 mmap", "v4l2 QBUF",
                                             "v4l2 QUERYBUF", "v4l2 mmap", "v4l2 QBUF", "v4l2 STREAMON", "G_FMT"));
        EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_YUV420), "Format 1");
        // What cannot be decoded is passed over, as long as there is time.
        fake::calls.clear();
        fake::faults = {{"v4l2 DQBUF", 1, EAGAIN}, {"v4l2 DQBUF", 2, EAGAIN}};
        expectFrame(camera, 0);
        EXPECT_THAT(fake::calls,
                    ElementsAre("poll", "v4l2 DQBUF", "poll", "v4l2 DQBUF", "poll", "v4l2 DQBUF", "v4l2 QBUF"));
        fake::faults = {{"v4l2 DQBUF", fake::always, EAGAIN}};
        camera.setTimeout(1);
        expectReadFails(camera, "[VideoInputCaptureV4L::read]: No frame within the timeout.");
        fake::faults = {{"v4l2 DQBUF", fake::always, EIO}};
        expectReadFails(camera, "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " + reason(EIO));
        fake::faults.clear();
        camera.setEmulatedFormats(false); // for the next time
        expectFrame(camera, 1);
        fake::calls.clear();
        EXPECT_THAT([&] { init(camera); }, ThrowsMessage<std::runtime_error>(unsupported));
        fake::calls.resize(4);
        EXPECT_THAT(fake::calls, ElementsAre("v4l2 munmap", "v4l2 munmap", "v4l2 close", "open 3"));

        fake::calls.clear();
        fake::faults = {{"v4l2_fd_open", 1, EINVAL}};
        camera.setEmulatedFormats(true);
        EXPECT_THAT([&] { init(camera); },
                    ThrowsMessage<std::runtime_error>(initPrefix + "Cannot open /dev/video3: " + reason(EINVAL)));
        EXPECT_THAT(fake::calls, ElementsAre("open 3", "v4l2_fd_open", "close"));
        init(camera);
        fake::calls.clear();
        fake::faults = {{"v4l2 STREAMON", 1, EIO}};
        EXPECT_THAT([&] { init(camera); }, ThrowsMessage<std::runtime_error>(EndsWith(reason(EIO))));
        EXPECT_THAT(fake::calls, Contains("v4l2 close").Times(2));
    }
    // A JPEG's samples have the full range; packed ones come from elsewhere.
    Camera camera;
    camera.setEmulatedFormats(true);
    for (const std::uint32_t fourcc : {V4L2_PIX_FMT_MJPEG, V4L2_PIX_FMT_JPEG, V4L2_PIX_FMT_PJPG})
        for (const bool packed : {false, true}) {
            device.formats = {fourcc, V4L2_PIX_FMT_YUYV};
            fake::calls.clear();
            fake::faults = {{"v4l2 TRY_FMT", packed ? 1 : -1, EINVAL}};
            init(camera);
            Ko::Image image(Ko::PF_YCC444P);
            camera.read(image);
            camera::Frame frame = fake::frameNumber(0);
            for (std::size_t i = 0; i < frame.bytes.size() && !packed; ++i)
                frame.bytes[i] = static_cast<unsigned char>(frame.bytes[i] * (i < 32 * 16 ? 219 : 224) / 255 + 16);
            EXPECT_EQ(camera::difference(image, frame), "") << fourcc << packed;
        }

    fake::calls.clear();
    fake::faults = {{"DQBUF", 1, EAGAIN}}; // without libv4l2 it means what the driver means
    device.formats = {V4L2_PIX_FMT_YUYV};
    camera.setEmulatedFormats(false);
    init(camera);
    expectReadFails(camera, "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " + reason(EAGAIN));
}

Camera* waiting = nullptr;

TEST_F(CameraFake, AWaitForASilentCameraCanBeEnded) {
    Camera camera;
    EXPECT_TRUE(camera.waitForFrame(0)); // read() has something to say at once
    camera.setTimeout(1);
    init(camera);
    expectFrame(camera, 0); // limited or not, and in spite of signals
    EXPECT_TRUE(camera.waitForFrame(0));
    fake::calls.clear();
    fake::faults = {{"poll", 1, EINTR}, {"poll", 3, ENOMEM}};
    expectFrame(camera, 1);
    expectFrame(camera, 2);
    EXPECT_THAT(fake::calls, ElementsAre("poll", "poll", "DQBUF", "QBUF", "poll", "DQBUF", "QBUF"));

    device.silent = true;
    init(camera);
    const std::string timedOut = "[VideoInputCaptureV4L::read]: No frame within the timeout.";
    expectReadFails(camera, timedOut);
    EXPECT_FALSE(camera.waitForFrame(60)); // more than a slice
    camera.setTimeout(0);

    // A handled signal ends one wait, and the other by setting its limit.
    waiting = &camera;
    struct sigaction action {};
    action.sa_handler = [](int) {
        waiting->setTimeout(1);
    };
    ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
    const itimerval soon{{0, 5000}, {0, 5000}};
    setitimer(ITIMER_REAL, &soon, nullptr);
    expectReadFails(camera, timedOut);
    EXPECT_FALSE(camera.waitForFrame(std::numeric_limits<unsigned int>::max()));
    setitimer(ITIMER_REAL, std::array<itimerval, 1>().data(), nullptr);

    camera.setTimeout(0);
    std::vector<bool> interrupted(2);
    boost::thread reader([&] {
        for (const bool reads : {true, false})
            try {
                Ko::Image image(Ko::PF_YCC444P);
                reads ? camera.read(image) : camera.waitForFrame(std::numeric_limits<unsigned int>::max());
            } catch (const boost::thread_interrupted&) {
                interrupted[reads] = true;
            }
    });
    while (!reader.timed_join(boost::posix_time::milliseconds(5)))
        reader.interrupt();
    EXPECT_THAT(interrupted, ElementsAre(true, true));
    EXPECT_EQ(camera.tell(), 0);
}

TEST_F(CameraFake, TellsCapableNodesFromOthers) {
    constexpr std::uint32_t capture = V4L2_CAP_VIDEO_CAPTURE, streaming = V4L2_CAP_STREAMING;
    constexpr std::uint32_t own = V4L2_CAP_DEVICE_CAPS, output = V4L2_CAP_VIDEO_OUTPUT;
    Camera camera;
    const auto start = [&](std::uint32_t ofAllNodes, std::uint32_t ofThisNode) {
        device.capabilities = ofAllNodes;
        device.deviceCapabilities = ofThisNode;
        init(camera);
    };
    const auto isRefused = ThrowsMessage<std::runtime_error>(
        initPrefix + "Device does not support V4L2_CAP_VIDEO_CAPTURE and V4L2_CAP_STREAMING.");
    start(capture | streaming, 0);
    start(capture | output | streaming | own, capture | streaming);
    start(output | own, capture | streaming);
    EXPECT_THAT([&] { start(capture, capture | streaming); }, isRefused);
    EXPECT_THAT([&] { start(streaming, 0); }, isRefused);
    EXPECT_THAT([&] { start(capture | output | streaming | own, output | streaming); }, isRefused);
}

TEST_F(CameraFake, TakesTheFirstPreferenceThatTheDeviceReallyHas) {
    constexpr std::uint32_t planar = V4L2_PIX_FMT_YUV420, packed = V4L2_PIX_FMT_YUYV, jpeg = V4L2_PIX_FMT_MJPEG;
    for (const bool substitutes : {false, true}) {
        device.substitutes = substitutes;
        Camera camera;
        device.formats = {jpeg, packed, planar};
        init(camera);
        EXPECT_EQ(fake::lastFormat.fmt.pix.pixelformat, planar);
        device.formats = {jpeg, packed};
        init(camera);
        EXPECT_EQ(fake::lastFormat.fmt.pix.pixelformat, packed);
        device.formats = {jpeg, V4L2_PIX_FMT_RGB24};
        EXPECT_THAT([&] { init(camera); }, ThrowsMessage<std::runtime_error>(unsupported));
    }
    EXPECT_THAT([] { Camera().setFormat({}); }, ThrowsMessage<std::runtime_error>(unsupported)); // no device at all
}

TEST_F(CameraFake, RowsLieAsTheDriverLaysThemAndNeverPastItsBuffer) {
    const std::string noBytes = "mmap failed: " + reason(EINVAL);
    const std::string tooSmall = "Driver's buffer is smaller than a frame.";
    const struct {
        std::uint32_t width, height, padding, missingBytes;
        bool tellsStride;
        std::string refusal;
    } rows[] = {{32, 16, 0, 0, true, ""},        {32, 16, 0, 0, false, ""},
                {32, 16, 12, 0, true, ""},       {5, 3, 0, 0, true, ""},
                {1, 1, 0, 0, true, ""},          {1, 4, 2, 0, true, ""},
                {0, 16, 0, 0, true, noBytes},    {32, 0, 0, 0, true, noBytes},
                {32, 16, 0, 1, true, tooSmall},  {64, 64, 0, 64 * 64, true, tooSmall},
                {32, 16, 32, 33, true, tooSmall}};
    for (const auto& row : rows)
        for (const std::uint32_t fourcc : {V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_YUYV}) {
            SCOPED_TRACE(testing::Message() << row.width << "x" << row.height << "+" << row.padding << " " << fourcc);
            device.padding = row.padding;
            device.tellsStride = row.tellsStride;
            device.missingBytes = row.missingBytes;
            device.formats = {fourcc};
            Camera camera;
            const auto play = [&] {
                camera.init(deviceNumber, row.width, row.height, 0);
                for (unsigned int number = 0; number < 3; ++number)
                    expectFrame(camera, number);
            };
            if (row.refusal.empty())
                play();
            else
                EXPECT_THAT(play, ThrowsMessage<std::runtime_error>(initPrefix + row.refusal));
            expectHeld(row.refusal.empty() ? 1 : 0, row.refusal.empty() ? 2 : 0);
        }
}

TEST_F(CameraFake, TakesTheNumberOfBuffersThatTheDriverGrants) {
    device.maxBuffers = 5;
    Camera camera;
    camera.setBufferCount(1000);
    for (const char* wish : {"REQBUFS 1000", "REQBUFS 5"}) {
        init(camera);
        expectHeld(1, 5);
        EXPECT_THAT(fake::calls, Contains(wish));
    }
    camera.setBufferCount(0);
    EXPECT_THAT([&] { init(camera); },
                ThrowsMessage<std::runtime_error>(initPrefix + "Ioctl VIDIOC_STREAMON failed: " + reason(EINVAL)));
}

TEST_F(CameraFake, RefusesUnknownFieldOrders) {
    for (const unsigned int order : {2u, 0xFFFFFFFFu})
        EXPECT_THAT([&] { Camera().setFieldOrder(static_cast<Ko::FIELD_ORDER>(order)); },
                    ThrowsMessage<std::logic_error>("[VideoInputCaptureV4L::setFieldOrder]: Unknown field order."));
}

TEST_F(CameraFake, NamesInputsFormatsAndStandards) {
    Camera camera;
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_YUYV), "unknown");
    EXPECT_EQ(camera.std2string(~0ull), "");

    init(camera);
    testing::internal::CaptureStdout();
    camera.enumInputs();
    camera.enumFmts();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "VideoInputCaptureV4L::enumInputs: Input: 0: Camera 0\n"
                                                      "VideoInputCaptureV4L::enumInputs: Input: 1: Camera 1\n"
                                                      "[VideoInputCaptureV4L::enumFmts]: Format 0\n"
                                                      "[VideoInputCaptureV4L::enumFmts]: Format 1\n");
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_YUV420), "Format 1");
    EXPECT_EQ(camera.std2string(V4L2_STD_NTSC_M | V4L2_STD_PAL_I), "PAL NTSC ");

    device.endless = true;
    init(camera);
    EXPECT_EQ(camera.fmt2string(V4L2_PIX_FMT_MJPEG), "unknown"); // comes back at all
}

TEST_F(CameraFake, ListsDevices) {
    Camera camera;
    fake::cameras.clear();
    EXPECT_THAT(camera.listDevs(), ElementsAre());
    EXPECT_EQ(fake::calls.size(), 64u);
    EXPECT_EQ(fake::calls.back(), "open 63 read-only");

    // A device that opens but does not answer has no entry: those after it move up, and the list is shorter by it.
    for (const unsigned int number : {0u, 1u, 2u})
        fake::cameras[number].card = "Camera " + std::to_string(number);
    fake::calls.clear();
    fake::faults = {{"QUERYCAP", 2, EIO}};
    EXPECT_THAT(camera.listDevs(), ElementsAre("Camera 0 platform:fake", "Camera 2 platform:fake", "none"));

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
