#include "Kovanta/ImageFile.h"
#include "Kovanta/VideoInput.h"

#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Ko::VideoInputImageFile;
using test::Image;
using test::TempDirectory;
using test::thrownText;

/// A grey still whose samples tell which one it is (0 to 21), roundings of the file formats notwithstanding.
void writeStill(const std::string& path, int number, unsigned width = 4, unsigned height = 2) {
    Image im(Ko::PF_YCC444P);
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
    Image frame(Ko::PF_YCC444P);
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
        EXPECT_EQ(input.getLength(), 8);
        for (const int expected : {0, 1, 2, 3, 4, 5, 6, 6, -1})
            EXPECT_EQ(nextStill(input), expected);
    }
}

TEST(ImageSequence, EndsOnTheLastStill) {
    const Sequence three(3);
    VideoInputImageFile input(three.path());
    input.setLoop(true); // of no effect here
    EXPECT_EQ(input.getWidth(), 4u);
    EXPECT_EQ(input.getHeight(), 2u);
    for (const int position : {1, 2, 2}) {
        EXPECT_FALSE(input.eof());
        EXPECT_NE(nextStill(input), -1);
        EXPECT_EQ(input.tell(), position);
    }
    EXPECT_TRUE(input.eof());
    Image untouched(Ko::PF_RGB);
    EXPECT_FALSE(input.read(untouched));
    EXPECT_EQ(untouched.width, 0u);

    // A single one is at its end until a seek.
    const Sequence one(1);
    VideoInputImageFile single(one.path());
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(single.eof());
        EXPECT_EQ(nextStill(single), -1);
        EXPECT_EQ(single.seek(0, Ko::VP_BEGIN), 0);
        EXPECT_FALSE(single.eof());
        EXPECT_EQ(nextStill(single), 0);
    }
}

TEST(ImageSequence, SeeksInUnsignedArithmetic) {
    const Sequence ten(10);
    VideoInputImageFile input(ten.path());
    const struct {
        long from;
        Ko::VideoPosId origin;
        std::vector<std::pair<long, long>> ends; ///< offset, position
    } cases[] = {
        {5, Ko::VP_BEGIN, {{3, 3}, {9, 9}, {100, 9}, {-1, 9}}},
        {4, Ko::VP_CURRENT, {{-1, 3}, {2, 6}, {5, 9}, {50, 9}, {-4, 0}, {-5, 9}, {LONG_MAX, 9}, {LONG_MIN, 9}}},
        {2, Ko::VP_END, {{0, 9}, {3, 6}, {9, 0}, {20, 0}, {-1, 0}}},
    };
    for (const auto& c : cases)
        for (const auto& [offset, position] : c.ends) {
            while (nextStill(input) != -1) {
            }
            input.seek(c.from, Ko::VP_BEGIN);
            EXPECT_EQ(input.seek(offset, c.origin), position) << c.from << " " << offset << " " << c.origin;
            EXPECT_EQ(input.tell(), position);
            EXPECT_FALSE(input.eof());
            EXPECT_EQ(nextStill(input), position);
        }
    input.seek(4, Ko::VP_BEGIN);
    EXPECT_EQ(thrownText<std::logic_error>([&] { input.seek(0, static_cast<Ko::VideoPosId>(3)); }),
              "[VideoInputImageFile::seek]: Erroneous position indicator given!");
    EXPECT_EQ(input.tell(), 4);
}

TEST(ImageSequence, StillsThatChangeOrVanishBetweenReads) {
    const Sequence three(3);
    const std::string second = three / "img101.pgm";
    VideoInputImageFile input(three.path());
    writeStill(second, 20, 8, 6);
    EXPECT_EQ(nextStill(input), 0);
    Image frame(Ko::PF_Y);
    EXPECT_TRUE(input.read(frame)); // in the size that it has by now
    EXPECT_EQ(frame.width, 8u);
    EXPECT_EQ(frame.format, Ko::PF_Y);
    EXPECT_EQ(input.getWidth(), 4u);

    input.seek(1, Ko::VP_BEGIN);
    fs::remove(second);
    const std::string reading = "[VideoInputImageFile::read]: Error reading image! (";
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(thrownText<std::runtime_error>([&] { input.read(frame); }),
                  reading + "[readPgmImage]: Cannot open " + second + ": No such file or directory.)");
        EXPECT_EQ(input.tell(), 1);
        EXPECT_FALSE(input.eof());
    }
    Image bgr(Ko::PF_BGR);
    input.seek(2, Ko::VP_BEGIN);
    EXPECT_EQ(thrownText<std::runtime_error>([&] { input.read(bgr); }),
              reading + "[convertIm]: Don't know how to convert from PF_Y (Grayscale) to PF_BGR (Packed BGR).)");
    EXPECT_EQ(nextStill(input), 2);
}

TEST(ImageSequence, DirectoriesThatCannotBePlayed) {
    const TempDirectory directory, empty;
    const auto refusal = [](const std::string& name) {
        return thrownText<std::runtime_error>([&] { VideoInputImageFile input(name); });
    };
    const std::string made = "[VideoInputImageFile::VideoInputImageFile]: ";
    for (const std::string& name : {std::string(), directory / "missing", directory.write("a.pgm", "P6 1 1 255 xxx"),
                                    directory / std::string(300, 'n')})
        EXPECT_EQ(refusal(name), made + "Invalid image file directory given!");
    EXPECT_EQ(refusal(empty.path()), made + "No image files found!");
    empty.write("notes.txt", "");
    EXPECT_EQ(refusal(empty.path()), made + "No image files found!");
    // What readImage() says about the first still comes through as it is.
    EXPECT_EQ(refusal(directory.path()), "[ConvertIm::parseHeader]: Incorrect PPM/PGM header.");

    fs::create_symlink("loop", directory / "loop");
    const std::string unreadable = refusal(directory.path());
    EXPECT_EQ(unreadable.rfind(made + "Error reading image directory! (", 0), 0u) << unreadable;
    EXPECT_EQ(unreadable.back(), ')');
    EXPECT_NE(unreadable.find("Too many levels of symbolic links"), std::string::npos) << unreadable;
}

} // namespace
