#include "Kovanta/VideoInput.h"
#include "support/TempDirectory.h"
#include "videoin/VirtualCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using testing::HasSubstr;

struct Outcome {
    int code;
    std::string output; // both streams
};

Outcome capture(const std::string& arguments, const std::string& launcher = "") {
    const std::string command = launcher + " " CAPTURE_EXAMPLE " " + arguments + " 2>&1";
    FILE* const pipe = ::popen(command.c_str(), "r");
    Outcome outcome{-1, ""};
    if (!pipe)
        return outcome;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        outcome.output += static_cast<char>(c);
    outcome.code = WEXITSTATUS(::pclose(pipe));
    return outcome;
}

TEST(CaptureExample, RecordsAndShowsACamera) {
    const testing_support::TempDirectory folder;
    const std::string file = folder.file("red.avi");
    EXPECT_EQ(capture("").output, "No camera found.\n");
    const camera::Driver vivid("vivid", "n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0 vid_cap_nr=2");
    EXPECT_EQ(capture("").output, "2: vivid platform:vivid-000\n");
    EXPECT_THAT(capture("2 --formats").output, HasSubstr("[VideoInputCaptureV4L::enumFmts]: Planar YUV 4:2:0\n"));
    camera::Node(2).setPattern("100% Red");
    camera::Node(2).setFormat(V4L2_PIX_FMT_YUYV, 320, 180);
    camera::Node(2).setRate(30);

    const Outcome recorded = capture("2 320x180 -n 40 " + file);
    EXPECT_EQ(recorded.code, 0) << recorded.output;
    EXPECT_THAT(recorded.output, HasSubstr("40 frames of 320x180 in "));
    EXPECT_THAT(recorded.output, HasSubstr(" dropped\n"));

    Ko::VideoInputVideoFile source(file);
    EXPECT_EQ(source.getWidth(), 320u);
    EXPECT_EQ(source.getHeight(), 180u);
    EXPECT_EQ(source.getFrameRate().den, 1u);
    Ko::Image<unsigned char> image(Ko::PF_YCC444P);
    int frames = 0;
    for (; source.read(image); ++frames) {
        // Red all over, the black box of the label in the corner, white letters on it.
        EXPECT_NEAR(image.plane[0].view[60][160], 81, 8);
        EXPECT_NEAR(image.plane[1].view[60][160], 90, 8);
        EXPECT_NEAR(image.plane[2].view[60][160], 239, 8);
        EXPECT_NEAR(image.plane[0].view[168][200], 16, 16);
        int brightest = 0;
        for (int y = 152; y < 172; ++y)
            for (int x = 10; x < 60; ++x)
                brightest = std::max<int>(brightest, image.plane[0].view[y][x]);
        EXPECT_GT(brightest, 150);
    }
    EXPECT_EQ(frames, 40);

    // Without -noreset a slow server is still resetting after SDL's first try when SDL connects again.
    const Outcome shown = capture("2 320x180 -n 20 --show", "xvfb-run -a -s '-screen 0 640x480x24 -noreset'");
    EXPECT_EQ(shown.code, 0) << shown.output;
    EXPECT_THAT(shown.output, HasSubstr("20 frames of 320x180 in "));

    const Outcome absent = capture("7 " + file);
    EXPECT_EQ(absent.code, 1);
    EXPECT_EQ(absent.output,
              "capture: [VideoInputCaptureV4L::init]: Cannot open /dev/video7: No such file or directory.\n");
}

} // namespace
