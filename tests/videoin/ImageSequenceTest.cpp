#include "Kovanta/ImageFile.h"
#include "Kovanta/VideoInput.h"

#include "support/TempDirectory.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;

using testing_support::Image;
using testing_support::samples;
using testing_support::TempDirectory;
using testing_support::thrownText;

using Ko::VideoInputImageFile;

const std::string made = "[VideoInputImageFile::VideoInputImageFile]: ";

/// A grey still whose samples tell which one it is (0 to 21), roundings of the file formats notwithstanding.
void writeStill(const std::string& path, unsigned char number, unsigned width = 4, unsigned height = 2) {
    Image im(Ko::PF_YCC444P);
    im.size(width, height);
    testing_support::fill(im, 128);
    for (unsigned y = 0; y < height; ++y)
        std::fill_n(im.plane[0].view[y], width, static_cast<unsigned char>(16 + 10 * number));
    Ko::writeImage(path, im);
}

/// A directory of numbered PGM stills.
struct Sequence {
    explicit Sequence(unsigned char count) {
        for (unsigned char i = 0; i < count; ++i)
            writeStill(directory.file("img" + std::to_string(100 + i) + ".pgm"), i);
    }
    TempDirectory directory;
};

/// Which still an image holds; -1 when nothing was read.
int nextStill(VideoInputImageFile& input) {
    Image frame(Ko::PF_YCC444P);
    return input.read(frame) ? (frame.plane[0].view[0][0] - 16 + 5) / 10 : -1;
}

TEST(ImageSequence, PlaysStillsInByteOrderAndNothingElse) {
    const TempDirectory directory;
    writeStill(directory.file("img10.png"), 4);
    writeStill(directory.file("img2.png"), 5);
    writeStill(directory.file("b.PNG"), 2);
    writeStill(directory.file("a.ppm"), 1);
    writeStill(directory.file("e.Pgm"), 3);
    writeStill(directory.file(".pgm"), 0);
    writeStill(directory.file("zz.pgm"), 9);
    fs::create_symlink("zz.pgm", directory.file("link.pgm"));
    fs::create_symlink("nowhere.pgm", directory.file("dangling.pgm"));
    fs::create_directory(directory.file("d.png"));
    writeStill(directory.file("d.png/inner.png"), 20);
    directory.write("c.txt", "no still");
    directory.write("x.jpg.bak", "no still");
    directory.write("pgm", "no still");

    for (const std::string tail : {"", "/"}) {
        VideoInputImageFile input(directory.path() + tail);
        EXPECT_EQ(input.getLength(), 8);
        for (const int expected : {0, 1, 2, 3, 4, 5, 9, 9, -1})
            EXPECT_EQ(nextStill(input), expected);
    }
    EXPECT_EQ(fs::status(directory.file("link.pgm")).type(), fs::file_type::regular);
}

TEST(ImageSequence, EndsOnTheLastStill) {
    const Sequence three(3);
    VideoInputImageFile input(three.directory.path());
    input.setLoop(true); // of no effect here
    EXPECT_EQ(input.getWidth(), 4u);
    EXPECT_EQ(input.getHeight(), 2u);
    for (const int position : {1, 2, 2}) {
        EXPECT_FALSE(input.eof());
        EXPECT_NE(nextStill(input), -1);
        EXPECT_EQ(input.tell(), position);
    }
    EXPECT_TRUE(input.eof());
    Image untouched = testing_support::randomImage(Ko::PF_RGB, 3, 3);
    const auto before = samples(untouched, 0);
    EXPECT_FALSE(input.read(untouched));
    EXPECT_EQ(samples(untouched, 0), before);
}

TEST(ImageSequence, ASingleStillIsAtItsEndUntilASeek) {
    const Sequence one(1);
    VideoInputImageFile input(one.directory.path());
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(input.eof());
        EXPECT_EQ(nextStill(input), -1);
        EXPECT_EQ(input.seek(0, Ko::VP_BEGIN), 0);
        EXPECT_FALSE(input.eof());
        EXPECT_EQ(nextStill(input), 0);
    }
}

TEST(ImageSequence, SeeksInUnsignedArithmetic) {
    const Sequence ten(10);
    VideoInputImageFile input(ten.directory.path());
    const struct {
        long from;
        long offset;
        Ko::VideoPosId origin;
        long position;
    } cases[] = {
        {0, 3, Ko::VP_BEGIN, 3},
        {0, 100, Ko::VP_BEGIN, 9},
        {5, -1, Ko::VP_BEGIN, 9},
        {0, 9, Ko::VP_BEGIN, 9},
        {4, -1, Ko::VP_CURRENT, 3},
        {0, -1, Ko::VP_CURRENT, 9},
        {4, 2, Ko::VP_CURRENT, 6},
        {4, 5, Ko::VP_CURRENT, 9},
        {4, 50, Ko::VP_CURRENT, 9},
        {4, -4, Ko::VP_CURRENT, 0},
        {4, -5, Ko::VP_CURRENT, 9},
        {2, 0, Ko::VP_END, 9},
        {2, 3, Ko::VP_END, 6},
        {2, 9, Ko::VP_END, 0},
        {2, 20, Ko::VP_END, 0},
        {2, -1, Ko::VP_END, 0},
        {2, LONG_MAX, Ko::VP_CURRENT, 9},
        {2, LONG_MIN, Ko::VP_CURRENT, 9},
    };
    for (const auto& c : cases) {
        while (nextStill(input) != -1) {
        }
        input.seek(c.from, Ko::VP_BEGIN);
        EXPECT_EQ(input.seek(c.offset, c.origin), c.position) << c.from << " " << c.offset << " " << c.origin;
        EXPECT_EQ(input.tell(), c.position);
        EXPECT_FALSE(input.eof());
        EXPECT_EQ(nextStill(input), c.position);
    }
    input.seek(4, Ko::VP_BEGIN);
    EXPECT_EQ(thrownText<std::logic_error>([&] { input.seek(0, static_cast<Ko::VideoPosId>(3)); }),
              "[VideoInputImageFile::seek]: Erroneous position indicator given!");
    EXPECT_EQ(input.tell(), 4);
}

TEST(ImageSequence, StillsThatChangeOrVanishBetweenReads) {
    const Sequence three(3);
    const std::string second = three.directory.file("img101.pgm");
    VideoInputImageFile input(three.directory.path());
    writeStill(second, 20, 8, 6);
    EXPECT_EQ(nextStill(input), 0);
    Image frame(Ko::PF_Y);
    EXPECT_TRUE(input.read(frame)); // in the size that it has by now
    EXPECT_EQ(frame.width, 8u);
    EXPECT_EQ(frame.format, Ko::PF_Y);
    EXPECT_EQ(input.getWidth(), 4u);

    input.seek(1, Ko::VP_BEGIN);
    fs::remove(second);
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(thrownText<std::runtime_error>([&] { input.read(frame); }),
                  "[VideoInputImageFile::read]: Error reading image! ([readPgmImage]: Cannot open " + second +
                      ": No such file or directory.)");
        EXPECT_EQ(input.tell(), 1);
        EXPECT_FALSE(input.eof());
    }
    Image bgr(Ko::PF_BGR);
    input.seek(2, Ko::VP_BEGIN);
    EXPECT_EQ(thrownText<std::runtime_error>([&] { input.read(bgr); }),
              "[VideoInputImageFile::read]: Error reading image! ([convertIm]: Don't know how to convert from "
              "PF_Y (Grayscale) to PF_BGR (Packed BGR).)");
    EXPECT_EQ(nextStill(input), 2);
    EXPECT_TRUE(input.eof());
}

TEST(ImageSequence, DirectoriesThatCannotBePlayed) {
    const TempDirectory directory;
    const auto refusal = [](const std::string& name) {
        return thrownText<std::runtime_error>([&] { VideoInputImageFile input(name); });
    };
    const std::string invalid = made + "Invalid image file directory given!";
    EXPECT_EQ(refusal(directory.file("missing")), invalid);
    EXPECT_EQ(refusal(directory.write("file.png", "")), invalid);
    EXPECT_EQ(refusal(""), invalid);
    EXPECT_EQ(refusal(directory.file(std::string(300, 'n'))), invalid);

    fs::remove(directory.file("file.png"));
    EXPECT_EQ(refusal(directory.path()), made + "No image files found!");
    directory.write("notes.txt", "");
    EXPECT_EQ(refusal(directory.path()), made + "No image files found!");

    // What readImage() says about the first still comes through as it is.
    directory.write("a.pgm", "P6 1 1 255 xxx");
    EXPECT_EQ(refusal(directory.path()), "[ConvertIm::parseHeader]: Incorrect PPM/PGM header.");

    fs::create_symlink("loop", directory.file("loop"));
    const std::string unreadable = refusal(directory.path());
    EXPECT_EQ(unreadable.rfind(made + "Error reading image directory! (", 0), 0u) << unreadable;
    EXPECT_EQ(unreadable.back(), ')');
    EXPECT_NE(unreadable.find("Too many levels of symbolic links"), std::string::npos) << unreadable;
}

TEST(ImageSequence, IsAFrameSourceLikeAnyOther) {
    const Sequence two(2);
    const std::unique_ptr<Ko::VideoInput> input = std::make_unique<VideoInputImageFile>(two.directory.path());
    Image frame(Ko::PF_YCC420P);
    int frames = 0;
    while (input->read(frame))
        ++frames;
    EXPECT_EQ(frames, 2);
    EXPECT_TRUE(input->eof());
    EXPECT_EQ(input->seek(0, Ko::VP_END), 1);
}

TEST(ImageSequence, ManyStillsAreListedInOrder) {
    const TempDirectory directory;
    constexpr unsigned count = 1000;
    for (unsigned i = 0; i < count; ++i)
        directory.write(std::to_string(10000 + i * 7919 % count) + ".pgm", "P5 1 1 255 x");
    VideoInputImageFile input(directory.path());
    EXPECT_EQ(input.getLength(), long{count});
    fs::remove(directory.file("10345.pgm"));
    input.seek(345, Ko::VP_BEGIN);
    EXPECT_NE(thrownText<std::runtime_error>([&] { nextStill(input); }).find("10345.pgm"), std::string::npos);
}

} // namespace
