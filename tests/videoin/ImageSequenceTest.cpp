// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/ImageFile.h"
#include "Kovanta/VideoInput.h"

#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

using Ko::VideoInputImageFile;
using test::TempDirectory;
using testing::ThrowsMessage;

/// A grey still whose samples tell which one it is (0 to 21), roundings of the file formats notwithstanding.
void writeStill(const std::string& path, int number, unsigned width = 4, unsigned height = 2) {
    Ko::Image im(Ko::PF_YCC444P);
    im.size(width, height);
    test::fill(im, 128);
    std::fill_n(im.plane[0].data, width * height, static_cast<unsigned char>(16 + 10 * number));
    Ko::writeImage(path, im);
}

/// A directory of numbered PGM stills.
struct Sequence : TempDirectory {
    explicit Sequence(int count) {
        for (int i = 0; i < count; ++i)
            writeStill(file("img" + std::to_string(100 + i) + ".pgm"), i);
    }
};

/// Which still an image holds; -1 when nothing was read.
int nextStill(Ko::VideoInput& input) {
    Ko::Image frame(Ko::PF_YCC444P);
    return input.read(frame) ? (frame.plane[0].view[0][0] - 16 + 5) / 10 : -1;
}

TEST(ImageSequence, PlaysStillsInByteOrderAndNothingElse) {
    const TempDirectory directory;
    const char* const stills[] = {".pgm", "a.ppm", "b.PNG", "e.Pgm", "img10.png", "img2.png", "zz.pgm"};
    for (int i = 7; i-- > 0;)
        writeStill(directory / stills[i], i);
    fs::create_symlink("zz.pgm", directory / "link.pgm");
    fs::create_symlink("nowhere.pgm", directory / "dangling.pgm");
    fs::create_directory(directory / "d.png");
    writeStill(directory / "d.png/inner.png", 20);
    for (const char* other : {"c.txt", "x.jpg.bak", "pgm"})
        directory.write(other, "no still");

    for (const std::string tail : {"", "/"}) {
        VideoInputImageFile input(directory.path() + tail);
        input.setLoop(true); // of no effect here
        EXPECT_EQ(input.getLength(), 8);
        for (const int expected : {0, 1, 2, 3, 4, 5, 6, 6})
            EXPECT_EQ(nextStill(input), expected);
        Ko::Image untouched(Ko::PF_RGB);
        EXPECT_FALSE(input.read(untouched));
        EXPECT_EQ(untouched.width, 0u);
    }
}

TEST(ImageSequence, SeeksInUnsignedArithmetic) {
    const Sequence ten(10);
    VideoInputImageFile input(ten.path());
    const struct {
        Ko::VideoPosId origin;
        long offset, position;
    } rows[] = {{Ko::VP_BEGIN, 100, 9},        {Ko::VP_BEGIN, -1, 9}, {Ko::VP_CURRENT, LONG_MAX, 9},
                {Ko::VP_CURRENT, LONG_MIN, 9}, {Ko::VP_END, 3, 6},    {Ko::VP_END, -1, 0}};
    for (const auto& row : rows) {
        input.seek(9, Ko::VP_BEGIN);
        EXPECT_EQ(nextStill(input), 9); // at the end now
        input.seek(4, Ko::VP_BEGIN);
        EXPECT_EQ(input.seek(row.offset, row.origin), row.position) << row.origin << " " << row.offset;
        EXPECT_FALSE(input.eof());
        EXPECT_EQ(nextStill(input), row.position);
    }
    input.seek(4, Ko::VP_BEGIN);
    EXPECT_THAT([&] { input.seek(0, static_cast<Ko::VideoPosId>(3)); },
                ThrowsMessage<std::logic_error>("[VideoInputImageFile::seek]: Erroneous position indicator given!"));
    EXPECT_EQ(input.tell(), 4);
}

TEST(ImageSequence, StillsThatChangeOrVanishBetweenReads) {
    const Sequence three(3);
    const std::string second = three / "img101.pgm";
    VideoInputImageFile input(three.path());
    writeStill(second, 20, 8, 6);
    EXPECT_EQ(nextStill(input), 0);
    Ko::Image frame(Ko::PF_Y);
    EXPECT_TRUE(input.read(frame)); // in the size that it has by now
    EXPECT_EQ(frame.width, 8u);
    EXPECT_EQ(frame.format, Ko::PF_Y);
    EXPECT_EQ(input.getWidth(), 4u);
    EXPECT_EQ(input.getHeight(), 2u);

    input.seek(1, Ko::VP_BEGIN);
    fs::remove(second);
    const std::string reading = "[VideoInputImageFile::read]: Error reading image! (";
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_THAT([&] { input.read(frame); },
                    ThrowsMessage<std::runtime_error>(reading + "[readPgmImage]: Cannot open " + second +
                                                      ": No such file or directory.)"));
        EXPECT_EQ(input.tell(), 1);
        EXPECT_FALSE(input.eof());
    }
    Ko::Image bgr(Ko::PF_BGR);
    input.seek(2, Ko::VP_BEGIN);
    EXPECT_THAT([&] { input.read(bgr); }, ThrowsMessage<std::runtime_error>(testing::StartsWith(reading)));
    EXPECT_EQ(nextStill(input), 2);
}

TEST(ImageSequence, DirectoriesThatCannotBePlayed) {
    const TempDirectory directory, empty;
    const auto expectRefusal = [](const std::string& name, const testing::Matcher<const std::string&>& text) {
        EXPECT_THAT([&] { VideoInputImageFile input(name); }, ThrowsMessage<std::runtime_error>(text));
    };
    const std::string made = "[VideoInputImageFile::VideoInputImageFile]: ";
    for (const std::string& name : {std::string(), directory / "missing", directory.write("a.pgm", "P6 1 1 255 xxx"),
                                    directory / std::string(300, 'n')})
        expectRefusal(name, made + "Invalid image file directory given!");
    empty.write("notes.txt", "");
    expectRefusal(empty.path(), made + "No image files found!");
    // What readImage() says about the first still comes through as it is.
    expectRefusal(directory.path(), "[ConvertIm::parseHeader]: Incorrect PPM/PGM header.");
    fs::create_symlink("loop", directory / "loop");
    expectRefusal(directory.path(),
                  testing::AllOf(testing::StartsWith(made + "Error reading image directory! ("),
                                 testing::HasSubstr("Too many levels of symbolic links"), testing::EndsWith(")")));
}

} // namespace
