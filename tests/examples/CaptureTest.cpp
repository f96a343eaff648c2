// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInput.h"
#include "support/Commands.h"
#include "support/TempDirectory.h"
#include "videoin/VirtualCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using testing::HasSubstr;

/// @return both streams, then the exit code
std::string capture(const std::string& arguments, const std::string& launcher = "") {
    return test::outputOf(launcher + " " CAPTURE_EXAMPLE " " + arguments + " 2>&1; echo $?");
}

TEST(CaptureExample, RecordsAndShowsACamera) {
    const test::TempDirectory folder;
    const std::string file = folder.file("red.avi");
    EXPECT_EQ(capture(""), "No camera found.\n0\n");
    const camera::Driver vivid("vivid", "n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0 vid_cap_nr=2");
    EXPECT_EQ(capture(""), "2: vivid platform:vivid-000\n0\n");
    EXPECT_THAT(capture("2 --formats"), HasSubstr("[VideoInputCaptureV4L::enumFmts]: Planar YUV 4:2:0\n"));
    camera::Node(2).set(camera::testPattern, 7); // red
    camera::Node(2).set(camera::textMode, 2);    // no text
    camera::Node(2).setFormat(V4L2_PIX_FMT_YUYV, 320, 180);
    camera::Node(2).setRate(30);
    EXPECT_THAT(capture("2 320x180 -n 40 " + file),
                testing::ContainsRegex("40 frames of 320x180 in .* dropped\n.*\n0\n$"));

    Ko::VideoInputVideoFile source(file);
    EXPECT_EQ(source.getWidth(), 320u);
    EXPECT_EQ(source.getHeight(), 180u);
    EXPECT_EQ(source.getFrameRate().den, 1u);
    Ko::Image image(Ko::PF_YCC444P);
    int frames = 0;
    for (; source.read(image); ++frames) {
        // Red all over, the black box of the label in the corner, white letters on it.
        const int red[] = {81, 90, 239};
        for (int p = 0; p < 3; ++p)
            EXPECT_NEAR(image.plane[p].view[60][160], red[p], 8);
        EXPECT_NEAR(image.plane[0].view[168][200], 16, 16);
        int brightest = 0;
        for (int y = 152; y < 172; ++y)
            for (int x = 10; x < 60; ++x)
                brightest = std::max<int>(brightest, image.plane[0].view[y][x]);
        EXPECT_GT(brightest, 150);
    }
    EXPECT_EQ(frames, 40);

    // Without -noreset a slow server is still resetting after SDL's first try when SDL connects again.
    EXPECT_THAT(capture("2 320x180 -n 20 --show", "xvfb-run -a -s '-screen 0 640x480x24 -noreset'"),
                testing::ContainsRegex("20 frames of 320x180 in .*\n0\n$"));
    EXPECT_EQ(capture("7 " + file),
              "capture: [VideoInputCaptureV4L::init]: Cannot open /dev/video7: No such file or directory.\n1\n");
}

} // namespace
