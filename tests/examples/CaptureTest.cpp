// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"
#include "Kovanta/VideoInput.h"
#include "support/Commands.h"
#include "support/TempDirectory.h"
#include "videoin/VirtualCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>

namespace {

using testing::HasSubstr;

/// @return both streams, then the exit code
std::string capture(const std::string& arguments, const std::string& launcher = "") {
    return test::outputOf(launcher + " " CAPTURE_EXAMPLE " " + arguments + " 2>&1 </dev/null; echo $?");
}

/// Runs it as at a terminal, with the command as soon as the pattern shows there. @return as capture()
std::string captureUntil(const std::string& pattern, const std::string& then, const std::string& arguments) {
    const test::TempDirectory folder;
    return test::outputOf("cd " + folder.file(".") + "; script -qfec 'echo $$ >pid; exec " CAPTURE_EXAMPLE " " +
                          arguments + "' log >/dev/null & until grep -qs '" + pattern +
                          "' log; do kill -0 $! || break; sleep 0.05; done; " + then +
                          "; wait $!; code=$?; tr '\\r' '\\n' <log; echo $code");
}

/// @return the number of frames in the file, which the program said to have captured
int framesIn(const std::string& file, const std::string& said) {
    Ko::VideoInputVideoFile source(file);
    Ko::Image image(Ko::PF_YCC444P);
    int frames = 0;
    while (source.read(image))
        ++frames;
    EXPECT_THAT(said, HasSubstr("\n" + std::to_string(frames) + " frames of "));
    return frames;
}

const std::string interrupt = "kill -INT $(cat pid)";

TEST(CaptureExample, RecordsAndShowsACamera) {
    const test::TempDirectory folder;
    const std::string file = folder.file("red.avi");
    EXPECT_EQ(capture(""), "No camera found.\n0\n");
    const camera::Driver vivid("vivid", "n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0 vid_cap_nr=2");
    test::outputOf("mknod /dev/video1 c 1 3"); // opens, but is no camera
    EXPECT_EQ(capture(""), "2: vivid platform:vivid-000\n0\n");
    std::filesystem::remove("/dev/video1");
    EXPECT_EQ(capture("", "setpriv --reuid 65534 --clear-groups"),
              "2: Permission denied (are you in the group video?)\n0\n");
    EXPECT_THAT(capture("2 --formats"), testing::ContainsRegex("format Planar YUV 4:2:0\n    320x180 at .*60"));
    camera::Node node(2);
    node.set(camera::testPattern, 7); // red
    node.set(camera::textMode, 2);    // no text
    node.setFormat(V4L2_PIX_FMT_YUYV, 320, 180);
    EXPECT_THAT(capture("/dev/video2 320x180 -n 40 --camera-rate 30 " + file),
                testing::ContainsRegex("40 frames of 320x180 in .* dropped\n.*\n0\n$"));

    Ko::VideoInputVideoFile source(file);
    EXPECT_EQ(source.getWidth(), 320u);
    EXPECT_EQ(source.getHeight(), 180u);
    EXPECT_NEAR(1.0 * source.getFrameRate().num / source.getFrameRate().den, 30, 1); // whatever was lost
    Ko::Image image(Ko::PF_YCC444P);
    int frames = 0;
    for (; source.read(image); ++frames) {
        // Red all over, the dark field of the label in the corner, white letters on it.
        const int red[] = {81, 90, 239};
        for (int p = 0; p < 3; ++p)
            EXPECT_NEAR(image.plane[p].view[60][160], red[p], 8);
        EXPECT_NEAR(image.plane[0].view[173][12], 40, 16);
        int brightest = 0;
        for (int y = 160; y < 176; ++y)
            for (int x = 10; x < 60; ++x)
                brightest = std::max<int>(brightest, image.plane[0].view[y][x]);
        EXPECT_GT(brightest, 150);
    }
    EXPECT_EQ(frames, 40);

    // Without -noreset a slow server is still resetting after SDL's first try when SDL connects again.
    const std::string both = folder.file("both.mkv");
    // The window does not cost frames, unless something else holds this machine up.
    std::string shown;
    for (int trial = 0; trial < 4 && shown.find(", 0 dropped\n") == std::string::npos; ++trial) {
        shown = "\n" + capture("2 320x180 -n 20 --camera-rate 5 --force --show " + both,
                               "xvfb-run -a -s '-screen 0 640x480x24 -noreset'");
        EXPECT_EQ(framesIn(both, shown), 20);
    }
    EXPECT_THAT(shown, HasSubstr(", 0 dropped\n"));
    const std::string blind = folder.file("blind.avi");
    EXPECT_THAT(capture("2 320x180 -n 20 --show " + blind, "env -u DISPLAY"), testing::EndsWith("\n1\n"));
    EXPECT_FALSE(std::filesystem::exists(blind)) << "without a window";
    EXPECT_EQ(capture("7 " + folder.file("no.avi")),
              "capture: [VideoInputCaptureV4L::init]: Cannot open /dev/video7: No such file or directory.\n1\n");
    // What cannot be written is found before a frame is waited for.
    EXPECT_THAT(capture("2 /nowhere/out.avi"), testing::StartsWith("capture: [VideoOutputVideoFile::open]: "));
    EXPECT_THAT(capture("2 -n -1 --show"), HasSubstr("from 1 to"));

    // An interrupt, and a camera that goes away before its rate is known, leave what came before in the file.
    const std::string begun = folder.file("begun.avi");
    const std::string said = captureUntil("frame [2-9][0-9] ", interrupt, "2 320x180 " + begun);
    EXPECT_THAT(said, testing::EndsWith("\n130\n"));
    EXPECT_GT(framesIn(begun, said), 20);
    node.setFormat(V4L2_PIX_FMT_YUYV, 640, 360); // five frames a second
    const std::string sign = folder.file("sign");
    std::thread unplug([&] {
        while (!std::filesystem::exists(sign))
            std::this_thread::yield();
        node.set(camera::disconnect, 1);
    });
    const std::string gone = captureUntil("frame [1-9]", "touch " + sign, "2 640x360 " + folder.file("gone.avi"));
    unplug.join();
    EXPECT_THAT(gone, HasSubstr("No such device."));
    EXPECT_THAT(gone, testing::EndsWith("\n1\n"));
    EXPECT_GT(framesIn(folder.file("gone.avi"), gone), 0);
}

TEST(CaptureExample, ListsWhatItDoesNotReadAndLeavesASilentCamera) {
    const auto fed = [](unsigned int fourcc, const auto& look) {
        const camera::Driver loopback("v4l2loopback", "devices=1 video_nr=9 card_label=Fed");
        camera::Node producer(9);
        producer.setFormat(fourcc, 320, 240, V4L2_BUF_TYPE_VIDEO_OUTPUT);
        camera::Frame frame{fourcc, 320, 240, 640};
        frame.bytes = std::vector<unsigned char>(640 * 240);
        if (fourcc == V4L2_PIX_FMT_MJPEG) {
            Ko::Image image(Ko::PF_YCC444P);
            image.size(320, 240);
            Ko::writeImage(frame.bytes, image, ".jpg");
        }
        producer.writeFrame(frame);
        return look();
    };
    EXPECT_THAT(fed(V4L2_PIX_FMT_MJPEG, [] { return capture("9 --formats"); }),
                HasSubstr("\nformat Motion-JPEG: only with --emulated, if at all\n0\n"));
    const test::TempDirectory folder;
    const auto one = [&](const std::string& option) {
        return fed(V4L2_PIX_FMT_MJPEG, [&] { return capture("9 320x240 -n 1 " + folder.file("a.avi") + option); });
    };
    EXPECT_THAT(one(""), testing::EndsWith("\nIt offers Motion-JPEG: try --emulated.\n1\n"));
    EXPECT_EQ(framesIn(folder.file("a.avi"), "\n" + one(" --emulated")), 1);
    const std::string file = folder.file("one.avi");
    const std::string said =
        fed(V4L2_PIX_FMT_YUYV, [&] { return captureUntil("nothing from the camera", interrupt, "9 320x240 " + file); });
    EXPECT_THAT(said, testing::EndsWith("\n130\n"));
    EXPECT_EQ(framesIn(file, said), 1);
}

} // namespace
